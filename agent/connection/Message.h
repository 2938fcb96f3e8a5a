#ifndef AGENT_CONNECTION_MESSAGE_H
#define AGENT_CONNECTION_MESSAGE_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include <json/value.h>

#include "identity/IdentitySource.h"

namespace Kestrany::Agent {

// What goes over the pipes between plugin modules and the server process: messages, each of them a JSON object.

/// To be raised with every change that the other side would misunderstand.
inline constexpr int ProtocolVersion = 2;

/// Bytes of one message; a longer one ends the connection.
inline constexpr std::size_t MaxMessage = 256 * 1024;

// --- Frames ---------------------------------------------------------------------------------------------------------

/// The bytes of a message on the pipe: its length in 4 bytes, little-endian, then the message.
std::string WriteFrame(const std::string& message);

/// Finds the messages in the bytes of a pipe, however they were split.
class FrameReader
{
public:
    void Add(const char* bytes, std::size_t size) { pending_.append(bytes, size); }
    /// The next complete message, if there is one.
    std::optional<std::string> Next();
    /// Whether a length beyond MaxMessage was announced. No message follows.
    bool IsBroken() const { return broken_; }

private:
    std::string pending_;
    bool broken_ = false;
};

// --- Messages -------------------------------------------------------------------------------------------------------

/// From a client. The first one of a host is "attach".
struct Request
{
    std::uint32_t id = 0;
    std::string operation;
    Caller caller; ///< Without a server in requests that concern the process itself.
    Json::Value arguments{Json::objectValue};
};

/// From the server, one for each request, in any order.
struct Response
{
    std::uint32_t id = 0;
    IdErrorCode code = IdFailed;
    Json::Value result{Json::objectValue};
};

/// From the server: the response to a request takes longer than usual. The host waits so many milliseconds from now.
struct DeadlineExtension
{
    std::uint32_t id = 0;
    std::uint32_t milliseconds = 0;
};

/// From the server: exactly one of these. A shutdown says that the server ends because somebody asked it to.
struct ServerMessage
{
    std::optional<Response> response;
    std::optional<DeadlineExtension> deadlineExtension;
    std::optional<LoginEvent> event;
    bool shutdown = false;
};

std::string WriteRequest(const Request& request);
/// nullopt if the text is no request; `problem` then says why.
std::optional<Request> ReadRequest(const std::string& message, std::string& problem);

std::string WriteResponse(const Response& response);
std::string WriteDeadlineExtension(const DeadlineExtension& extension);
std::string WriteEvent(const LoginEvent& event);
std::string WriteShutdown();
/// nullopt if the text is no message of a server.
std::optional<ServerMessage> ReadServerMessage(const std::string& message);

// --- Server ---------------------------------------------------------------------------------------------------------

/// Handles the messages of one client at the server.
class MessageHandler
{
public:
    /// Sends a message to the client. Must not call back.
    using Send = std::function<void(std::string message)>;

    virtual ~MessageHandler() = default;
    /// Handles one message. False if the client violates the protocol: it is disconnected once the messages to it are
    /// written.
    virtual bool Receive(const std::string& message) = 0;
    /// Whether the client is to be disconnected at once.
    virtual bool IsGivenUp() const = 0;
    /// Bytes of messages to the client that are held back.
    virtual std::size_t HeldBack() const { return 0; }
};

} // namespace Kestrany::Agent

#endif
