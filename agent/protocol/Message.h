#ifndef AGENT_PROTOCOL_MESSAGE_H
#define AGENT_PROTOCOL_MESSAGE_H

#include <cstdint>
#include <optional>
#include <string>

#include <json/value.h>

#include "session/LoginService.h"

namespace Kestrany::Agent {

// What goes over the pipe between a host's plugin module and the server application: JSON objects, one a message.

/// Grows with every change that the other side would misunderstand.
inline constexpr int ProtocolVersion = 1;

/// Bytes of one message; a longer one ends the connection.
inline constexpr std::size_t MaxMessage = 256 * 1024;

/// From the host. The first one on a connection is "attach".
struct Request
{
    std::uint32_t id = 0;
    std::string operation;
    Caller caller;
    Json::Value arguments{Json::objectValue};
};

/// From the server, once for each request, in any order.
struct Response
{
    std::uint32_t id = 0;
    IdErrorCode code = IdFailed;
    Json::Value result{Json::objectValue};
};

/// From the server: the answer to a request takes its time, which is no sign of trouble.
struct Extension
{
    std::uint32_t id = 0;
    std::uint32_t milliseconds = 0;
};

/// From the server: exactly one of them, or that the server quits because somebody asked.
struct ServerMessage
{
    std::optional<Response> response;
    std::optional<Extension> extension;
    std::optional<LoginEvent> event;
    bool quits = false;
};

std::string WriteRequest(const Request& request);
/// Nothing for what is no request; `problem` then says why.
std::optional<Request> ReadRequest(const std::string& message, std::string& problem);

std::string WriteResponse(const Response& response);
std::string WriteExtension(const Extension& extension);
std::string WriteEvent(const LoginEvent& event);
std::string WriteQuits();
/// Nothing for what is no message of a server.
std::optional<ServerMessage> ReadServerMessage(const std::string& message);

} // namespace Kestrany::Agent

#endif
