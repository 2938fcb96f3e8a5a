#include "identity/openid/StoredLogin.h"

#include "identity/Json.h"
#include "identity/openid/Limits.h"
#include "identity/openid/ReplyJson.h"

namespace Kestrany::Agent::OpenId {

namespace {

/// To be changed with the form: an older agent then refuses a login that it does not understand.
constexpr char Format[] = "openid-login-2";

/// Products of one login. A process has far fewer.
constexpr std::size_t MaxClients = 256;

void AppendName(Secret& text, const char* name)
{
    text.Append(text.View().back() == '{' ? "\"" : ",\"");
    text.Append(name);
    text.Append("\":");
}

void AppendMember(Secret& text, const char* name, const Json::Value& value)
{
    AppendName(text, name);
    text.Append(WriteJson(value));
}

/// Without a copy of the secret in the JSON library.
void AppendSecret(Secret& text, const char* name, const Secret& secret)
{
    AppendName(text, name);
    text.Append("\"");
    for (const char letter : secret.View())
    {
        if (letter == '"' || letter == '\\')
            text.Append("\\");
        text.Append({&letter, 1});
    }
    text.Append("\"");
}

Json::Value ToJson(TimePoint time)
{
    return static_cast<Json::Int64>(std::chrono::duration_cast<std::chrono::seconds>(time.time_since_epoch()).count());
}

void AppendClient(Secret& text, const ClientLogin& client)
{
    text.Append(text.View().back() == '[' ? "{" : ",{");
    AppendMember(text, "clientId", client.clientId);
    AppendMember(text, "scope", client.scope);
    AppendMember(text, "nonce", client.nonce);
    AppendMember(text, "subject", client.subject);
    // A text of its own, which has limits of its own.
    AppendMember(text, "claims", WriteJson(client.claims));
    AppendMember(text, "hasUserInfo", client.hasUserInfo);
    AppendMember(text, "accessExpiry", ToJson(client.accessExpiry));
    AppendMember(text, "idExpiry", ToJson(client.idExpiry));
    AppendSecret(text, "accessToken", client.accessToken);
    AppendSecret(text, "idToken", client.idToken);
    AppendSecret(text, "refreshToken", client.refreshToken);
    text.Append("}");
}

bool TakeUser(const Json::Value& value, ClientLogin& client)
{
    std::string claims;
    if (!TakeText(value, "subject", client.subject) || client.subject.empty() || !TakeText(value, "claims", claims) ||
        !Member(value, "hasUserInfo").isBool())
        return false;
    std::string problem;
    std::optional<Json::Value> parsed = ParseObject(claims, problem);
    if (!parsed)
        return false;
    client.claims = *std::move(parsed);
    client.hasUserInfo = Member(value, "hasUserInfo").asBool();
    return true;
}

bool TakeClient(SecretObject& object, const Json::Value& value, ClientLogin& client)
{
    const std::optional<std::int64_t> accessExpiry = SecondsMember(value, "accessExpiry");
    const std::optional<std::int64_t> idExpiry = SecondsMember(value, "idExpiry");
    if (!accessExpiry || !idExpiry || !TakeText(value, "clientId", client.clientId) || client.clientId.empty() ||
        !TakeText(value, "scope", client.scope) || !TakeText(value, "nonce", client.nonce) ||
        !TakeUser(value, client) || !Member(value, "accessToken").isString() || !Member(value, "idToken").isString() ||
        !Member(value, "refreshToken").isString())
        return false;
    client.accessExpiry = TimePoint(std::chrono::seconds(*accessExpiry));
    client.idExpiry = TimePoint(std::chrono::seconds(*idExpiry));
    client.accessToken = object.Take(Member(value, "accessToken"));
    client.idToken = object.Take(Member(value, "idToken"));
    client.refreshToken = object.Take(Member(value, "refreshToken"));
    return true;
}

bool TakeClients(SecretObject& object, std::vector<ClientLogin>& clients)
{
    const Json::Value& values = Member(object.Root(), "clients");
    if (!values.isArray() || values.size() > MaxClients)
        return false;
    for (const Json::Value& value : values)
    {
        if (!value.isObject() || !TakeClient(object, value, clients.emplace_back()))
            return false;
    }
    return true;
}

} // namespace

Secret WriteStoredLogin(const StoredLogin& login, const StoredLoginOrigin& origin)
{
    Secret text("{");
    AppendMember(text, "format", Format);
    AppendMember(text, "identity", origin.identity);
    AppendMember(text, "server", ServerName(origin.server));
    AppendMember(text, "issuer", origin.issuer);
    text.Append(",\"clients\":[");
    for (const ClientLogin& client : login.clients)
        AppendClient(text, client);
    text.Append("]}");
    return text;
}

std::optional<StoredLogin> ReadStoredLogin(Secret text, const StoredLoginOrigin& origin, std::string& problem)
{
    std::string cause;
    std::optional<SecretObject> object =
        SecretObject::Parse(std::move(text), {"accessToken", "idToken", "refreshToken"}, cause);
    StoredLogin login;
    std::string format;
    std::string identity;
    std::string server;
    std::string issuer;
    if (!object || !TakeText(object->Root(), "format", format) || format != Format ||
        !TakeText(object->Root(), "identity", identity) || !TakeText(object->Root(), "server", server) ||
        !TakeText(object->Root(), "issuer", issuer) || !TakeClients(*object, login.clients))
    {
        problem = "it holds no login";
        return std::nullopt;
    }
    if (identity != origin.identity || server != ServerName(origin.server) || issuer != origin.issuer)
    {
        problem = "it holds the login of " + identity + " at " + server + ", issued by " + issuer;
        return std::nullopt;
    }
    return login;
}

} // namespace Kestrany::Agent::OpenId
