#include "connection/Message.h"

#include <algorithm>
#include <iterator>

#include "identity/Json.h"

namespace Kestrany::Agent {

namespace {

constexpr std::size_t HeaderSize = 4;

bool TakeNumber(const Json::Value& object, const char* key, std::uint32_t& number)
{
    const Json::Value& member = object[key];
    if (!member.isUInt())
        return false;
    number = member.asUInt();
    return true;
}

bool TakeObject(const Json::Value& object, const char* key, Json::Value& taken)
{
    const Json::Value& member = object[key];
    if (!member.isObject())
        return false;
    taken = member;
    return true;
}

bool TakeServer(const Json::Value& object, Server& server)
{
    std::string name;
    if (!TakeText(object, "server", name))
        return false;
    server = ServerOfName(name);
    return server != TALIX_SERVER_UNAVAILABLE;
}

/// Whether a request is on behalf of a caller.
bool HasCaller(const Json::Value& object)
{
    return object.isMember("server") || object.isMember("client") || object.isMember("scope");
}

bool TakeCode(const Json::Value& object, const char* key, IdErrorCode& code)
{
    const Json::Value& member = object[key];
    if (!member.isInt())
        return false;
    code = static_cast<IdErrorCode>(member.asInt());
    return true;
}

// --- What the host set, which is left out where it is the default ---------------------------------------------------

struct NumberMember
{
    const char* key;
    int BackoffSettings::* number;
};

constexpr NumberMember BackoffMembers[] = {
    {"initialInterval", &BackoffSettings::initialInterval},
    {"maxInterval", &BackoffSettings::maxInterval},
    {"multiplier", &BackoffSettings::multiplier},
    {"maxRetries", &BackoffSettings::maxRetries},
    {"jitter", &BackoffSettings::jitter},
};

void WriteSettings(const Caller& caller, Json::Value& object)
{
    if (caller.loginMode != TALIX_LOGIN_MODE_DEFAULT)
        object["mode"] = static_cast<int>(caller.loginMode);
    if (caller.proxy)
    {
        Json::Value& proxy = object["proxy"];
        proxy["host"] = caller.proxy->host;
        proxy["port"] = caller.proxy->port;
        proxy["user"] = caller.proxy->userName;
        proxy["password"] = caller.proxy->password;
    }
    if (caller.backoff)
    {
        for (const NumberMember& member : BackoffMembers)
            object["backoff"][member.key] = *caller.backoff.*member.number;
    }
}

bool TakeInteger(const Json::Value& object, const char* key, int minimum, int& number)
{
    const Json::Value& member = object[key];
    if (!member.isInt() || member.asInt() < minimum)
        return false;
    number = member.asInt();
    return true;
}

bool TakeProxy(const Json::Value& object, ProxySettings& proxy)
{
    return object.isObject() && TakeText(object, "host", proxy.host) && !proxy.host.empty() &&
           TakeInteger(object, "port", 1, proxy.port) && proxy.port <= 65535 &&
           TakeText(object, "user", proxy.userName) && TakeText(object, "password", proxy.password);
}

bool TakeBackoff(const Json::Value& object, BackoffSettings& backoff)
{
    return object.isObject() &&
           std::all_of(std::begin(BackoffMembers), std::end(BackoffMembers), [&](const NumberMember& member) {
               return TakeInteger(object, member.key, 0, backoff.*member.number);
           });
}

bool TakeSettings(const Json::Value& object, Caller& caller)
{
    int mode = TALIX_LOGIN_MODE_DEFAULT;
    if (object.isMember("mode") && !TakeInteger(object, "mode", TALIX_LOGIN_MODE_DEFAULT, mode))
        return false;
    caller.loginMode = static_cast<talix_login_mode>(mode);
    return (!object.isMember("proxy") || TakeProxy(object["proxy"], caller.proxy.emplace())) &&
           (!object.isMember("backoff") || TakeBackoff(object["backoff"], caller.backoff.emplace()));
}

std::optional<Response> ReadResponse(const Json::Value& object)
{
    Response response;
    if (!TakeNumber(object, "id", response.id) || !TakeCode(object, "code", response.code) ||
        !TakeObject(object, "result", response.result))
        return std::nullopt;
    return response;
}

std::optional<DeadlineExtension> ReadDeadlineExtension(const Json::Value& object)
{
    DeadlineExtension extension;
    if (!TakeNumber(object, "id", extension.id) || !TakeNumber(object, "takes", extension.milliseconds))
        return std::nullopt;
    return extension;
}

std::optional<LoginEvent> ReadEvent(const Json::Value& object)
{
    using Kind = IdentityServices::IdServicesConsts::IdServicesEvent;
    const Json::Value& kind = object["event"];
    LoginEvent event{};
    if (!kind.isInt() || !TakeServer(object, event.server) || !TakeText(object, "client", event.clientId) ||
        !TakeCode(object, "status", event.status))
        return std::nullopt;
    event.kind = static_cast<Kind>(kind.asInt());
    return event;
}

} // namespace

std::string WriteFrame(const std::string& message)
{
    std::string frame;
    for (std::size_t index = 0; index < HeaderSize; ++index)
        frame += static_cast<char>(message.size() >> (8 * index) & 0xFF);
    return frame + message;
}

std::optional<std::string> FrameReader::Next()
{
    if (broken_ || pending_.size() < HeaderSize)
        return std::nullopt;
    std::uint32_t size = 0;
    for (std::size_t index = 0; index < HeaderSize; ++index)
        size |= static_cast<std::uint32_t>(static_cast<unsigned char>(pending_[index])) << (8 * index);
    if (size > MaxMessage)
    {
        broken_ = true;
        pending_.clear();
        return std::nullopt;
    }
    if (pending_.size() - HeaderSize < size)
        return std::nullopt;
    std::string message = pending_.substr(HeaderSize, size);
    pending_.erase(0, HeaderSize + size);
    return message;
}

std::string WriteRequest(const Request& request)
{
    Json::Value object(Json::objectValue);
    object["id"] = request.id;
    object["do"] = request.operation;
    if (request.caller.server != TALIX_SERVER_UNAVAILABLE)
    {
        object["server"] = ServerName(request.caller.server);
        object["client"] = request.caller.clientId;
        object["scope"] = request.caller.scope;
        WriteSettings(request.caller, object);
    }
    object["with"] = request.arguments;
    return WriteJson(object);
}

std::optional<Request> ReadRequest(const std::string& message, std::string& problem)
{
    const std::optional<Json::Value> object = ReadJsonObject(message);
    Request request;
    if (!object)
        problem = "it is not a JSON object";
    else if (!TakeNumber(*object, "id", request.id))
        problem = "it has no \"id\"";
    else if (!TakeText(*object, "do", request.operation))
        problem = "it has no operation";
    else if (HasCaller(*object) && !TakeServer(*object, request.caller.server))
        problem = "it names no server";
    else if (HasCaller(*object) && (!TakeText(*object, "client", request.caller.clientId) ||
                                    !TakeText(*object, "scope", request.caller.scope)))
        problem = "it names no product";
    else if (HasCaller(*object) && !TakeSettings(*object, request.caller))
        problem = "its settings are malformed";
    else if (!TakeObject(*object, "with", request.arguments))
        problem = "it has no arguments";
    else
        return request;
    return std::nullopt;
}

std::string WriteResponse(const Response& response)
{
    Json::Value object(Json::objectValue);
    object["id"] = response.id;
    object["code"] = static_cast<int>(response.code);
    object["result"] = response.result;
    return WriteJson(object);
}

std::string WriteDeadlineExtension(const DeadlineExtension& extension)
{
    Json::Value object(Json::objectValue);
    object["id"] = extension.id;
    object["takes"] = extension.milliseconds;
    return WriteJson(object);
}

std::string WriteEvent(const LoginEvent& event)
{
    Json::Value object(Json::objectValue);
    object["event"] = static_cast<int>(event.kind);
    object["server"] = ServerName(event.server);
    object["client"] = event.clientId;
    object["status"] = static_cast<int>(event.status);
    return WriteJson(object);
}

std::string WriteShutdown()
{
    Json::Value object(Json::objectValue);
    object["shutdown"] = true;
    return WriteJson(object);
}

std::optional<ServerMessage> ReadServerMessage(const std::string& message)
{
    const std::optional<Json::Value> object = ReadJsonObject(message);
    if (!object)
        return std::nullopt;
    ServerMessage read;
    if (object->isMember("code"))
        read.response = ReadResponse(*object);
    else if (object->isMember("takes"))
        read.deadlineExtension = ReadDeadlineExtension(*object);
    else if (object->isMember("event"))
        read.event = ReadEvent(*object);
    else
        read.shutdown = (*object)["shutdown"] == Json::Value(true);
    if (!read.response && !read.deadlineExtension && !read.event && !read.shutdown)
        return std::nullopt;
    return read;
}

} // namespace Kestrany::Agent
