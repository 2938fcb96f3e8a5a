#include "session/Session.h"

#include <algorithm>
#include <utility>

#include "session/Json.h"
#include "session/ServerNames.h"
#include "session/SessionAddress.h"

namespace Kestrany::Simulator {

namespace Events = IdentityServices::IdServicesConsts;

namespace {

constexpr std::size_t TokenBytes = 32;
constexpr std::size_t TicketBytes = 16;

std::uint32_t ToSeconds(TimePoint time)
{
    return static_cast<std::uint32_t>(
        std::chrono::duration_cast<std::chrono::seconds>(time.time_since_epoch()).count());
}

} // namespace

Session::Session(std::vector<Account> accounts, Clock clock, RandomSource random, EventQueue& events)
    : accounts_(std::move(accounts)), clock_(std::move(clock)), random_(std::move(random)), events_(events)
{
    for (const Server server : Servers)
        realms_[server] = {};
}

IdErrorCode Session::SetProduct(Server server, const ProductSettings& product)
{
    const std::lock_guard lock(mutex_);
    const auto realm = realms_.find(server);
    if (realm == realms_.end())
        return IdUnknownServer;
    if (product.clientId.empty())
        return IdInvalidClientId;
    realm->second.product = product;
    return IdSuccess;
}

IdErrorCode Session::GetProduct(Server server, ProductSettings& product) const
{
    const std::lock_guard lock(mutex_);
    const auto realm = realms_.find(server);
    if (realm == realms_.end())
        return IdUnknownServer;
    if (!realm->second.product)
        return IdNoProductConfig;
    product = *realm->second.product;
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
    if (realms_.count(server) == 0)
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

IdErrorCode Session::Login(LoginDetail& detail)
{
    const std::lock_guard lock(mutex_);
    if (CheckLogin() == IdSuccess)
    {
        detail = LoginDetail::AlreadyLoggedIn;
        return IdSuccess;
    }
    detail = LoginDetail::NotLoggedIn;
    if (!Current().product)
        return IdNoProductConfig;
    if (accounts_.empty())
        return IdCredentialsRefused;
    SignIn(accounts_.front());
    detail = LoginDetail::LoggedIn;
    return IdSuccess;
}

IdErrorCode Session::Login(const std::string& userName, const std::string& secret, bool replace)
{
    const std::lock_guard lock(mutex_);
    if (!Current().product)
        return IdNoProductConfig;
    const auto account = std::find_if(accounts_.begin(), accounts_.end(), [&](const Account& candidate) {
        return candidate.userName == userName && candidate.secret == secret;
    });
    if (account == accounts_.end())
        return IdCredentialsRefused;
    if (CheckLogin() == IdSuccess)
    {
        if (CurrentLogin()->account.userId == account->userId)
            return IdSuccess;
        if (!replace)
            return IdAlreadyLoggedIn;
        Happened(Events::LoggedOut);
    }
    SignIn(*account);
    return IdSuccess;
}

IdErrorCode Session::Logout()
{
    const std::lock_guard lock(mutex_);
    if (CurrentLogin() == nullptr)
        return IdNotLoggedIn;
    Happened(Events::LoggedOut);
    Current().login.reset();
    return IdSuccess;
}

std::optional<LoginRecord> Session::GetLogin(Server server) const
{
    const std::lock_guard lock(mutex_);
    const auto realm = realms_.find(server);
    if (realm == realms_.end() || !realm->second.login)
        return std::nullopt;
    const LoginState& login = *realm->second.login;
    return LoginRecord{login.account.userId, login.expiry, login.accessToken, login.idToken};
}

IdErrorCode Session::Restore(Server server, const LoginRecord& record, bool replace)
{
    const std::lock_guard lock(mutex_);
    const auto realm = realms_.find(server);
    if (realm == realms_.end())
        return IdUnknownServer;
    if (realm->second.login && !replace)
        return IdAlreadyLoggedIn;
    const Account* account = FindAccount(record.userId);
    if (account == nullptr)
        return IdCredentialsRefused;
    if (Passed(record.expiry))
        return IdLoginExpired;
    realm->second.login = LoginState{*account, record.expiry, record.accessToken, record.idToken};
    return IdSuccess;
}

void Session::Resume()
{
    const std::lock_guard lock(mutex_);
    if (CheckLogin() == IdSuccess)
        Happened(Events::LoginRestored);
}

bool Session::IsLoggedIn() const
{
    const std::lock_guard lock(mutex_);
    return CurrentLogin() != nullptr;
}

bool Session::IsLoginExpired() const
{
    const std::lock_guard lock(mutex_);
    return CheckLogin() == IdLoginExpired;
}

bool Session::IsLoginValid() const
{
    const std::lock_guard lock(mutex_);
    return CheckLogin() == IdSuccess;
}

bool Session::IsTokenAvailable() const
{
    const std::lock_guard lock(mutex_);
    return CheckLogin() == IdSuccess && !Passed(CurrentLogin()->accessToken.expiry);
}

bool Session::IsTokenExpired() const
{
    const std::lock_guard lock(mutex_);
    const LoginState* login = CurrentLogin();
    return login == nullptr || Passed(login->accessToken.expiry);
}

std::uint32_t Session::LoginExpiry() const
{
    const std::lock_guard lock(mutex_);
    const LoginState* login = CurrentLogin();
    return login == nullptr ? 0 : ToSeconds(login->expiry);
}

std::uint32_t Session::TokenExpiry() const
{
    const std::lock_guard lock(mutex_);
    const LoginState* login = CurrentLogin();
    return login == nullptr ? 0 : ToSeconds(login->accessToken.expiry);
}

IdErrorCode Session::GetAccount(Account& account) const
{
    const std::lock_guard lock(mutex_);
    const LoginState* login = CurrentLogin();
    if (login == nullptr)
        return IdNotLoggedIn;
    account = login->account;
    return IdSuccess;
}

IdErrorCode Session::GetAccessToken(std::string& token, bool renew)
{
    const std::lock_guard lock(mutex_);
    if (const IdErrorCode code = CheckLogin(); code != IdSuccess)
        return code;
    LoginState& login = *Current().login;
    if (Passed(login.accessToken.expiry))
    {
        if (!renew)
            return IdTokenExpired;
        Renew(login);
    }
    token = login.accessToken.text;
    return IdSuccess;
}

IdErrorCode Session::GetIdToken(std::string& token) const
{
    const std::lock_guard lock(mutex_);
    if (const IdErrorCode code = CheckLogin(); code != IdSuccess)
        return code;
    const Token& idToken = CurrentLogin()->idToken;
    if (Passed(idToken.expiry))
        return IdTokenExpired;
    token = idToken.text;
    return IdSuccess;
}

IdErrorCode Session::RefreshToken(bool onlyExpired)
{
    const std::lock_guard lock(mutex_);
    if (const IdErrorCode code = CheckLogin(); code != IdSuccess)
        return code;
    LoginState& login = *Current().login;
    if (!onlyExpired || Passed(login.accessToken.expiry))
        Renew(login);
    return IdSuccess;
}

IdErrorCode Session::OpenAddress(const std::string& target, std::uint16_t flag, std::string& address) const
{
    const std::lock_guard lock(mutex_);
    if (!IsWebAddress(target))
        return IdInvalidAddress;
    if (const IdErrorCode code = CheckLogin(); code != IdSuccess)
        return code;
    address = SessionAddress(server_, target, flag, RandomText(random_, TicketBytes));
    return IdSuccess;
}

std::string Session::StateJson() const
{
    const std::lock_guard lock(mutex_);
    const LoginState* login = CurrentLogin();
    const auto state = [&](TimePoint expiry) { return Passed(expiry) ? "expired" : "valid"; };
    Json::Value object(Json::objectValue);
    object["server"] = ServerName(server_);
    object["product"] = Current().product.has_value();
    object["login"] = login == nullptr ? "none" : state(login->expiry);
    object["token"] = login == nullptr ? "none" : state(login->accessToken.expiry);
    object["user"] = login == nullptr ? std::string() : login->account.userName;
    object["events"] = static_cast<Json::UInt64>(events_.Size());
    return WriteJson(object);
}

Session::Realm& Session::Current()
{
    return realms_.at(server_);
}

const Session::Realm& Session::Current() const
{
    return realms_.at(server_);
}

const Session::LoginState* Session::CurrentLogin() const
{
    const std::optional<LoginState>& login = Current().login;
    return login ? &*login : nullptr;
}

const Account* Session::FindAccount(const std::string& userId) const
{
    const auto found = std::find_if(accounts_.begin(), accounts_.end(),
                                    [&](const Account& account) { return account.userId == userId; });
    return found == accounts_.end() ? nullptr : &*found;
}

bool Session::Passed(TimePoint expiry) const
{
    return clock_() >= expiry;
}

IdErrorCode Session::CheckLogin() const
{
    const LoginState* login = CurrentLogin();
    if (login == nullptr)
        return IdNotLoggedIn;
    return Passed(login->expiry) ? IdLoginExpired : IdSuccess;
}

void Session::SignIn(const Account& account)
{
    Current().login = LoginState{account, clock_() + LoginLifetime, NewToken("access"), NewToken("id")};
    Happened(Events::LoggedIn);
    Happened(Events::TokenAvailable);
}

void Session::Renew(LoginState& login)
{
    login.accessToken = NewToken("access");
    login.idToken = NewToken("id");
    Happened(Events::TokenRefreshed);
}

Token Session::NewToken(const char* kind) const
{
    return {std::string("simulator-") + kind + "-" + RandomText(random_, TokenBytes), clock_() + TokenLifetime};
}

void Session::Happened(Events::IdServicesEvent kind)
{
    events_.Push({kind, IdSuccess, TALIX_SERVER_UNAVAILABLE});
}

} // namespace Kestrany::Simulator
