// Any bytes that a plugin may write to the pipe of the process that loads it: lines stay within their limits, however
// the bytes arrive, and a parsed message can be written and parsed again.

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Require.h"
#include "doctor/MessageLines.h"

using Orlindex::Doctor::LineOf;
using Orlindex::Doctor::LineSplitter;
using Orlindex::Doctor::MessageLine;
using Orlindex::Doctor::ParseMessageLine;
using OrlindexTest::Require;

namespace {

std::vector<std::string> LinesOf(std::string_view bytes, std::size_t pieceSize)
{
    std::vector<std::string> lines;
    LineSplitter splitter([&lines](const std::string& line) { lines.push_back(line); });
    while (!bytes.empty())
    {
        const std::string_view piece = bytes.substr(0, pieceSize);
        if (!splitter.Take(piece.data(), piece.size()))
            break;
        bytes.remove_prefix(piece.size());
    }
    return lines;
}

bool AreEqual(const MessageLine& left, const MessageLine& right)
{
    return left.kind == right.kind && left.number == right.number && left.state == right.state &&
           left.error == right.error && left.text == right.text;
}

void CheckMessage(const std::string& line)
{
    const auto message = ParseMessageLine(line);
    if (!message)
        return;
    Require(message->kind <= MessageLine::Kind::End, "a message is of a known kind");
    Require(message->state < MessageLine::States, "a state is a known one");
    if (message->kind == MessageLine::Kind::Step)
        Require(message->number < MessageLine::Steps, "a step is a known one");
    if (message->kind == MessageLine::Kind::Object)
        Require(message->number < MessageLine::Objects, "an object is a known one");
    if (message->kind == MessageLine::Kind::End)
        Require(message->number <= 1, "an end says yes or no");
    Require(line.size() >= message->text.size() &&
                line.compare(line.size() - message->text.size(), std::string::npos, message->text) == 0,
            "the text is the end of the line");

    const auto again = ParseMessageLine(LineOf(*message));
    Require(again.has_value(), "a message can be written and read");
    MessageLine written = *message;
    std::replace_if(
        written.text.begin(), written.text.end(),
        [](char character) { return static_cast<unsigned char>(character) < 0x20; }, ' ');
    Require(AreEqual(*again, written), "a message that is written and read stays the same");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const std::size_t pieceSize = 1 + data[0];
    const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    const std::vector<std::string> lines = LinesOf(bytes, pieceSize);
    Require(lines == LinesOf(bytes, bytes.size()), "lines do not depend on how the bytes arrive");
    Require(lines.size() <= LineSplitter::MostLines, "no more lines than are taken");
    for (const std::string& line : lines)
    {
        Require(line.size() <= LineSplitter::LongestLine, "no line is longer than its limit");
        Require(line.find('\n') == std::string::npos, "a line has no line end");
        CheckMessage(line);
    }
    return 0;
}
