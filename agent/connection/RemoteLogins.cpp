#include "connection/RemoteLogins.h"

#include "identity/IdentitySource.h"
#include "identity/Json.h"

namespace Kestrany::Agent {

namespace {

/// The code of a response; IdProtocolError for a success whose result is not complete.
IdErrorCode CodeOf(const Response& response, bool complete)
{
    return response.code == IdSuccess && !complete ? IdProtocolError : response.code;
}

bool TakeFlag(const Json::Value& object, const char* key, bool& flag)
{
    if (!object[key].isBool())
        return false;
    flag = object[key].asBool();
    return true;
}

bool TakeSeconds(const Json::Value& object, const char* key, std::uint32_t& seconds)
{
    if (!object[key].isUInt())
        return false;
    seconds = object[key].asUInt();
    return true;
}

} // namespace

IdErrorCode RemoteLogins::Login(const Caller& caller, LoginDetail& detail)
{
    const Response response = Send(Operations::Login, caller);
    std::uint32_t number = 0;
    const bool complete = TakeSeconds(response.result, "detail", number) && number <= 2;
    detail = complete ? static_cast<LoginDetail>(number) : LoginDetail::NotLoggedIn;
    return CodeOf(response, complete);
}

IdErrorCode RemoteLogins::AutomatedLogin(const Caller& caller, const std::string& userName, const std::string& secret,
                                         bool replace)
{
    Json::Value arguments(Json::objectValue);
    arguments["user"] = userName;
    arguments["secret"] = secret;
    arguments["replace"] = replace;
    return Send(Operations::AutomatedLogin, caller, std::move(arguments)).code;
}

IdErrorCode RemoteLogins::Logout(const Caller& caller)
{
    return Send(Operations::Logout, caller).code;
}

IdErrorCode RemoteLogins::CancelLogin(const Caller& caller)
{
    return Send(Operations::CancelLogin, caller).code;
}

IdErrorCode RemoteLogins::GetStatus(const Caller& caller, LoginStatus& status)
{
    const Response response = Send(Operations::GetStatus, caller);
    LoginStatus read;
    const Json::Value& result = response.result;
    const bool complete =
        TakeFlag(result, "loggedIn", read.loggedIn) && TakeFlag(result, "loginExpired", read.loginExpired) &&
        TakeFlag(result, "tokenExpired", read.tokenExpired) && TakeSeconds(result, "loginExpiry", read.loginExpiry) &&
        TakeSeconds(result, "tokenExpiry", read.tokenExpiry) && TakeText(result, "user", read.userName);
    const IdErrorCode code = CodeOf(response, complete);
    if (code == IdSuccess)
        status = read;
    return code;
}

IdErrorCode RemoteLogins::GetAccount(const Caller& caller, Account& account)
{
    const Response response = Send(Operations::GetUser, caller);
    Account read;
    const Json::Value& result = response.result;
    const bool complete = TakeText(result, "userId", read.userId) && TakeText(result, "userName", read.userName) &&
                          TakeText(result, "firstName", read.firstName) &&
                          TakeText(result, "lastName", read.lastName) && TakeText(result, "email", read.email) &&
                          TakeText(result, "displayName", read.displayName) && result["profile"].isObject();
    const IdErrorCode code = CodeOf(response, complete);
    if (code == IdSuccess)
    {
        read.profile = result["profile"];
        account = read;
    }
    return code;
}

IdErrorCode RemoteLogins::GetAccessToken(const Caller& caller, bool renew, std::string& token)
{
    Json::Value arguments(Json::objectValue);
    arguments["renew"] = renew;
    return SendForText(Operations::GetAccessToken, caller, std::move(arguments), token);
}

IdErrorCode RemoteLogins::GetIdToken(const Caller& caller, std::string& token)
{
    return SendForText(Operations::GetIdToken, caller, Json::objectValue, token);
}

IdErrorCode RemoteLogins::RefreshToken(const Caller& caller, bool onlyExpired)
{
    Json::Value arguments(Json::objectValue);
    arguments["onlyExpired"] = onlyExpired;
    return Send(Operations::RefreshToken, caller, std::move(arguments)).code;
}

IdErrorCode RemoteLogins::OpenAddress(const Caller& caller, const std::string& target, std::uint16_t flag,
                                      std::string& address)
{
    Json::Value arguments(Json::objectValue);
    arguments["target"] = target;
    arguments["flag"] = flag;
    return SendForText(Operations::GetSessionUri, caller, std::move(arguments), address);
}

IdErrorCode RemoteLogins::Restore(const Caller& caller, bool replace)
{
    Json::Value arguments(Json::objectValue);
    arguments["replace"] = replace;
    return Send(Operations::Restore, caller, std::move(arguments)).code;
}

IdErrorCode RemoteLogins::GetFeatures(const Caller& caller, bool& idToken, bool& loginMode)
{
    const Response response = Send(Operations::GetFeatures, caller);
    const bool complete =
        TakeFlag(response.result, "idToken", idToken) && TakeFlag(response.result, "loginMode", loginMode);
    return CodeOf(response, complete);
}

Response RemoteLogins::Send(const char* operation, const Caller& caller, Json::Value arguments) const
{
    Request request;
    request.operation = operation;
    request.caller = caller;
    request.arguments = std::move(arguments);
    // Shortened texts are still too long for a token, so that the source refuses them. Requests that need no token stay
    // small.
    if (request.caller.scope.size() > MaxProductText)
        request.caller.scope.assign(MaxProductText + 1, 'x');
    if (request.caller.clientId.size() > MaxProductText)
        request.caller.clientId.assign(MaxProductText + 1, 'x');
    return ask_(std::move(request));
}

IdErrorCode RemoteLogins::SendForText(const char* operation, const Caller& caller, Json::Value arguments,
                                      std::string& text) const
{
    const Response response = Send(operation, caller, std::move(arguments));
    std::string read;
    const IdErrorCode code = CodeOf(response, TakeText(response.result, "text", read));
    if (code == IdSuccess)
        text = read;
    return code;
}

} // namespace Kestrany::Agent
