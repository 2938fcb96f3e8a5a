#include "plugin/Session.h"

#include <utility>

#include "identity/Json.h"
#include "identity/LoginService.h"

namespace Kestrany::Agent {

namespace Events = IdentityServices::IdServicesConsts;

Session::Session(LoginService& logins, EventQueue& events) : logins_(logins), events_(events)
{
    for (const Server server : Servers)
        products_[server] = {};
}

IdErrorCode Session::SetProduct(Server server, const ProductSettings& product)
{
    const std::lock_guard lock(mutex_);
    const auto entry = products_.find(server);
    if (entry == products_.end())
        return IdUnknownServer;
    if (product.clientId.empty())
        return IdInvalidClientId;
    entry->second = product;
    return IdSuccess;
}

IdErrorCode Session::GetProduct(Server server, ProductSettings& product) const
{
    const std::lock_guard lock(mutex_);
    const auto entry = products_.find(server);
    if (entry == products_.end())
        return IdUnknownServer;
    const std::optional<ProductSettings>& stored = entry->second;
    if (!stored)
        return IdNoProductConfig;
    product = *stored;
    return IdSuccess;
}

Server Session::GetServer() const
{
    const std::lock_guard lock(mutex_);
    return server_;
}

IdErrorCode Session::SetServer(Server server)
{
    const std::lock_guard lock(mutex_);
    if (products_.count(server) == 0)
        return IdUnknownServer;
    if (server == server_)
        return IdSuccess;
    events_.Push({Events::ServerChanged, IdSuccess, server});
    server_ = server;
    return IdSuccess;
}

talix_login_mode Session::GetLoginMode() const
{
    const std::lock_guard lock(mutex_);
    return loginMode_;
}

IdErrorCode Session::SetLoginMode(talix_login_mode mode)
{
    const std::lock_guard lock(mutex_);
    if (mode < TALIX_LOGIN_MODE_DEFAULT || mode > TALIX_LOGIN_MODE_BROWSER)
        return IdInvalidLoginMode;
    loginMode_ = mode;
    return IdSuccess;
}

void Session::SetProxy(std::optional<ProxySettings> proxy)
{
    const std::lock_guard lock(mutex_);
    proxy_ = std::move(proxy);
}

void Session::SetBackoff(const BackoffSettings& backoff)
{
    const std::lock_guard lock(mutex_);
    backoff_ = backoff;
}

void Session::Receive(const LoginEvent& event)
{
    const Caller caller = CurrentCaller();
    if (event.server == caller.server && (event.clientId.empty() || event.clientId == caller.clientId))
        events_.Push({event.kind, event.status, TALIX_SERVER_UNAVAILABLE});
}

IdErrorCode Session::Login(LoginDetail& detail)
{
    detail = LoginDetail::NotLoggedIn;
    return logins_.Login(CurrentCaller(), detail);
}

IdErrorCode Session::Login(const std::string& userName, const std::string& secret, bool replace)
{
    return logins_.AutomatedLogin(CurrentCaller(), userName, secret, replace);
}

IdErrorCode Session::Logout()
{
    return logins_.Logout(CurrentCaller());
}

IdErrorCode Session::CancelLogin()
{
    return logins_.CancelLogin(CurrentCaller());
}

IdErrorCode Session::Restore(bool replace)
{
    return logins_.Restore(CurrentCaller(), replace);
}

bool Session::IsLoggedIn() const
{
    return Status().loggedIn;
}

IdErrorCode Session::CheckLoggedIn() const
{
    LoginStatus status;
    const IdErrorCode code = logins_.GetStatus(CurrentCaller(), status);
    return code == IdSuccess && !status.loggedIn ? IdNotLoggedIn : code;
}

bool Session::IsLoginExpired() const
{
    return Status().loginExpired;
}

bool Session::IsLoginValid() const
{
    return Status().IsValid();
}

bool Session::IsTokenAvailable() const
{
    const LoginStatus status = Status();
    return status.IsValid() && !status.tokenExpired;
}

bool Session::IsTokenExpired() const
{
    return Status().tokenExpired;
}

std::uint32_t Session::LoginExpiry() const
{
    return Status().loginExpiry;
}

std::uint32_t Session::TokenExpiry() const
{
    return Status().tokenExpiry;
}

IdErrorCode Session::GetAccount(Account& account) const
{
    return logins_.GetAccount(CurrentCaller(), account);
}

IdErrorCode Session::GetAccessToken(std::string& token, bool renew)
{
    return logins_.GetAccessToken(CurrentCaller(), renew, token);
}

IdErrorCode Session::GetIdToken(std::string& token) const
{
    return logins_.GetIdToken(CurrentCaller(), token);
}

IdErrorCode Session::RefreshToken(bool onlyExpired)
{
    return logins_.RefreshToken(CurrentCaller(), onlyExpired);
}

IdErrorCode Session::OpenAddress(const std::string& target, std::uint16_t flag, std::string& address) const
{
    return logins_.OpenAddress(CurrentCaller(), target, flag, address);
}

std::string Session::StateJson() const
{
    const Caller caller = CurrentCaller();
    const LoginStatus status = Status();
    const auto state = [&](bool expired) { return !status.loggedIn ? "none" : expired ? "expired" : "valid"; };
    Json::Value object(Json::objectValue);
    object["server"] = ServerName(caller.server);
    object["product"] = !caller.clientId.empty();
    object["login"] = state(status.loginExpired);
    object["token"] = state(status.tokenExpired);
    object["user"] = status.userName;
    object["events"] = static_cast<Json::UInt64>(events_.Size());
    return WriteJson(object);
}

Caller Session::CurrentCaller() const
{
    const std::lock_guard lock(mutex_);
    Caller caller;
    caller.server = server_;
    if (const std::optional<ProductSettings>& product = products_.at(server_))
    {
        caller.clientId = product->clientId;
        caller.scope = product->tokenScope;
    }
    caller.loginMode = loginMode_;
    caller.proxy = proxy_;
    caller.backoff = backoff_;
    return caller;
}

LoginStatus Session::Status() const
{
    LoginStatus status;
    return logins_.GetStatus(CurrentCaller(), status) == IdSuccess ? status : LoginStatus();
}

} // namespace Kestrany::Agent
