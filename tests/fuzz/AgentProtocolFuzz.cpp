// What goes over the pipe between hosts and the agent's server application: frames, however they are cut, and messages.

#include <cstdint>
#include <string>

#include "Require.h"
#include "connection/Message.h"

using namespace Kestrany::Agent;
using OrlindexTest::Require;

namespace {

/// The messages that a reader finds in bytes that come in pieces of this size, each as a frame again.
std::string FramesOf(const std::string& bytes, std::size_t piece)
{
    FrameReader reader;
    std::string frames;
    for (std::size_t start = 0; start < bytes.size(); start += piece)
    {
        const std::string cut = bytes.substr(start, piece);
        reader.Add(cut.data(), cut.size());
        while (const auto message = reader.Next())
            frames += WriteFrame(*message);
    }
    return frames;
}

void RequireFramesFound(const std::string& bytes)
{
    const std::string whole = FramesOf(bytes, bytes.size() + 1);
    Require(bytes.compare(0, whole.size(), whole) == 0, "frames that are found are the bytes that came");
    Require(FramesOf(bytes, 1) == whole, "a frame is found however it was cut");
    Require(FramesOf(bytes, 5) == whole, "a frame is found however it was cut");
}

void RequireRequestKept(const std::string& text)
{
    std::string problem;
    const auto request = ReadRequest(text, problem);
    Require(request.has_value() == problem.empty(), "there is a problem exactly where there is no request");
    if (!request)
        return;
    const std::string written = WriteRequest(*request);
    const auto again = ReadRequest(written, problem);
    Require(again.has_value(), "a request that was written can be read");
    Require(WriteRequest(*again) == written, "a request is kept by writing and reading");
}

std::string Write(const ServerMessage& message)
{
    if (message.response)
        return WriteResponse(*message.response);
    if (message.deadlineExtension)
        return WriteDeadlineExtension(*message.deadlineExtension);
    return message.event ? WriteEvent(*message.event) : WriteShutdown();
}

void RequireServerMessageKept(const std::string& text)
{
    const auto message = ReadServerMessage(text);
    if (!message)
        return;
    const int kinds = message->response.has_value() + message->deadlineExtension.has_value() +
                      message->event.has_value() + static_cast<int>(message->shutdown);
    Require(kinds == 1, "a message of a server is of one kind");
    const std::string written = Write(*message);
    const auto again = ReadServerMessage(written);
    Require(again.has_value(), "a message that was written can be read");
    Require(Write(*again) == written, "a message is kept by writing and reading");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(data, data + size);
    RequireFramesFound(text);
    RequireRequestKept(text);
    RequireServerMessageKept(text);
    return 0;
}
