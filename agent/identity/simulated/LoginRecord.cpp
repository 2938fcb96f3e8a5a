#include "identity/simulated/LoginRecord.h"

#include "identity/Json.h"
#include "identity/LoginService.h"

namespace Kestrany::Agent::Simulated {

namespace {

/// To be changed with the form: an older agent then refuses a record that it does not understand.
constexpr char Format[] = "login-state-2";

/// Far beyond any login. The clock counts fractions of seconds: a larger number from a file could overflow it.
constexpr std::int64_t LastSecond = 4'102'444'800; // 2100-01-01

Json::Value ToJson(TimePoint time)
{
    return static_cast<Json::Int64>(std::chrono::duration_cast<std::chrono::seconds>(time.time_since_epoch()).count());
}

Json::Value ToJson(const Token& token)
{
    Json::Value object(Json::objectValue);
    object["text"] = token.text;
    object["expiry"] = ToJson(token.expiry);
    return object;
}

Json::Value ToJson(const ClientTokens& tokens)
{
    Json::Value object(Json::objectValue);
    object["clientId"] = tokens.clientId;
    object["scope"] = tokens.scope;
    object["accessToken"] = ToJson(tokens.access);
    object["idToken"] = ToJson(tokens.id);
    return object;
}

bool TakeTime(const Json::Value& object, const char* key, TimePoint& time)
{
    const Json::Value& member = object[key];
    if (!member.isInt64() || member.asInt64() < 0 || member.asInt64() > LastSecond)
        return false;
    time = TimePoint(std::chrono::seconds(member.asInt64()));
    return true;
}

bool TakeToken(const Json::Value& object, const char* key, Token& token)
{
    const Json::Value& member = object[key];
    return member.isObject() && TakeText(member, "text", token.text) && !token.text.empty() &&
           TakeTime(member, "expiry", token.expiry);
}

bool TakeClients(const Json::Value& object, std::vector<ClientTokens>& clients)
{
    const Json::Value& members = object["clients"];
    if (!members.isArray())
        return false;
    for (const Json::Value& member : members)
    {
        ClientTokens tokens;
        if (!member.isObject() || !TakeText(member, "clientId", tokens.clientId) || tokens.clientId.empty() ||
            !TakeText(member, "scope", tokens.scope) || !TakeToken(member, "accessToken", tokens.access) ||
            !TakeToken(member, "idToken", tokens.id))
            return false;
        clients.push_back(std::move(tokens));
    }
    return true;
}

} // namespace

std::string WriteLoginRecord(const LoginRecord& record, const LoginOrigin& origin)
{
    Json::Value object(Json::objectValue);
    object["format"] = Format;
    object["identity"] = origin.identity;
    object["server"] = ServerName(origin.server);
    object["userId"] = record.userId;
    object["expiry"] = ToJson(record.expiry);
    Json::Value& clients = object["clients"] = Json::Value(Json::arrayValue);
    for (const ClientTokens& tokens : record.clients)
        clients.append(ToJson(tokens));
    return WriteJson(object);
}

std::optional<LoginRecord> ReadLoginRecord(const std::string& text, const LoginOrigin& origin, std::string& problem)
{
    const std::optional<Json::Value> object = ReadJsonObject(text);
    std::string format;
    std::string identity;
    std::string server;
    LoginRecord record;
    if (!object || !TakeText(*object, "format", format) || format != Format ||
        !TakeText(*object, "identity", identity) || !TakeText(*object, "server", server) ||
        !TakeText(*object, "userId", record.userId) || !TakeTime(*object, "expiry", record.expiry) ||
        !TakeClients(*object, record.clients))
    {
        problem = "it holds no login state";
        return std::nullopt;
    }
    if (identity != origin.identity || server != ServerName(origin.server))
    {
        problem = "it holds the login state of " + identity + " at " + server;
        return std::nullopt;
    }
    return record;
}

} // namespace Kestrany::Agent::Simulated
