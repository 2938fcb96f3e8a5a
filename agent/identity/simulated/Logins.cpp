#include "identity/simulated/Logins.h"

#include <algorithm>
#include <utility>

#include "identity/Json.h"
#include "identity/LoginService.h"
#include "identity/simulated/SessionAddress.h"

namespace Kestrany::Agent::Simulated {

namespace Events = IdentityServices::IdServicesConsts;

namespace {

constexpr std::size_t TicketBytes = 16;
constexpr std::size_t TokenIdBytes = 16;
constexpr char AccessTokenType[] = "at+jwt";

Json::Int64 ToSeconds(TimePoint time)
{
    return std::chrono::duration_cast<std::chrono::seconds>(time.time_since_epoch()).count();
}

void AddText(Json::Value& claims, const char* name, const std::string& text)
{
    if (!text.empty())
        claims[name] = text;
}

} // namespace

/// A login that waits as with a user who does nothing.
class Logins::WaitingLogin final : public PendingLogin
{
public:
    WaitingLogin(Logins& logins, Server server)
        : logins_(logins), server_(server),
          limit_(logins.parts_.ticks() + std::chrono::milliseconds(logins.scenario_.loginWait).count()),
          cancellations_(logins.realms_.at(server).cancellations)
    {
    }

    std::optional<LoginResult> Poll() override
    {
        if (logins_.IsValid(server_))
            return LoginResult{IdSuccess, LoginDetail::AlreadyLoggedIn};
        if (logins_.realms_.at(server_).cancellations != cancellations_)
            return LoginResult{IdLoginCancelled, LoginDetail::NotLoggedIn};
        if (logins_.parts_.ticks() < limit_)
            return std::nullopt;
        logins_.Notify(Events::LoginDialogTimeoutInIdIPCServer, server_, {}, IdLoginTimedOut);
        return LoginResult{IdLoginTimedOut, LoginDetail::NotLoggedIn};
    }
    std::int64_t Limit() const override { return limit_; }

private:
    Logins& logins_;
    const Server server_;
    const std::int64_t limit_;
    const unsigned int cancellations_;
};

Logins::Logins(const Scenario& scenario, LoginParts parts, LoginStorage& storage)
    : scenario_(scenario), parts_(std::move(parts)), storage_(storage)
{
    for (const Server server : Servers)
        realms_[server] = {};
}

IdErrorCode Logins::Login(const Caller& caller, LoginDetail& detail)
{
    detail = LoginDetail::NotLoggedIn;
    if (!scenario_.isValid)
        return IdScenarioInvalid;
    if (realms_.count(caller.server) == 0)
        return IdUnknownServer;
    if (CheckLogin(caller.server) == IdSuccess)
    {
        detail = LoginDetail::AlreadyLoggedIn;
        return IdSuccess;
    }
    if (caller.clientId.empty())
        return IdNoProductConfig;
    if (scenario_.login == LoginBehavior::Refuse)
        return IdLoginRefused;
    if (scenario_.login != LoginBehavior::Accept)
        return IdLoginCancelled;
    const auto account = std::find_if(scenario_.users.begin(), scenario_.users.end(), [&](const Account& candidate) {
        return scenario_.loginUser.empty() || candidate.userName == scenario_.loginUser;
    });
    if (account == scenario_.users.end())
        return IdCredentialsRefused;
    const IdErrorCode code = SignIn(caller, *account);
    if (code == IdSuccess)
        detail = LoginDetail::LoggedIn;
    return code;
}

IdErrorCode Logins::AutomatedLogin(const Caller& caller, const std::string& userName, const std::string& secret,
                                   bool replace)
{
    if (!scenario_.isValid)
        return IdScenarioInvalid;
    if (realms_.count(caller.server) == 0)
        return IdUnknownServer;
    if (caller.clientId.empty())
        return IdNoProductConfig;
    const auto account = std::find_if(scenario_.users.begin(), scenario_.users.end(), [&](const Account& candidate) {
        return candidate.userName == userName && candidate.secret == secret;
    });
    if (account == scenario_.users.end())
        return IdCredentialsRefused;
    if (CheckLogin(caller.server) == IdSuccess)
    {
        if (Find(caller.server)->userId == account->userId)
            return IdSuccess;
        if (!replace)
            return IdAlreadyLoggedIn;
    }
    return SignIn(caller, *account);
}

IdErrorCode Logins::Logout(const Caller& caller)
{
    if (Find(caller.server) == nullptr)
        return IdNotLoggedIn;
    if (const IdErrorCode code = Store(caller.server, std::nullopt); code != IdSuccess)
        return code;
    Notify(Events::LoggedOut, caller.server);
    return IdSuccess;
}

IdErrorCode Logins::CancelLogin(const Caller& caller)
{
    const auto realm = realms_.find(caller.server);
    if (realm == realms_.end())
        return IdUnknownServer;
    ++realm->second.cancellations;
    return IdSuccess;
}

IdErrorCode Logins::GetStatus(const Caller& caller, LoginStatus& status)
{
    status = {};
    const LoginRecord* login = Find(caller.server);
    if (login == nullptr)
        return IdSuccess;
    status.loggedIn = true;
    status.loginExpired = IsPast(login->expiry);
    status.loginExpiry = static_cast<std::uint32_t>(ToSeconds(login->expiry));
    status.userName = FindAccount(login->userId)->userName;
    ClientTokens tokens;
    if (TakeTokens(caller, tokens) == IdSuccess)
    {
        status.tokenExpiry = static_cast<std::uint32_t>(ToSeconds(tokens.access.expiry));
        status.tokenExpired = IsPast(tokens.access.expiry);
    }
    return IdSuccess;
}

IdErrorCode Logins::GetAccount(const Caller& caller, Account& account)
{
    const LoginRecord* login = Find(caller.server);
    if (login == nullptr)
        return IdNotLoggedIn;
    account = *FindAccount(login->userId);
    account.profile["source"] = "simulator";
    return IdSuccess;
}

IdErrorCode Logins::GetAccessToken(const Caller& caller, bool renew, std::string& token)
{
    ClientTokens tokens;
    IdErrorCode code = CheckLogin(caller.server);
    if (code == IdSuccess)
        code = TakeTokens(caller, tokens);
    if (code == IdSuccess && IsPast(tokens.access.expiry))
    {
        code = renew ? Renew(caller) : IdTokenExpired;
        if (code == IdSuccess)
            code = TakeTokens(caller, tokens);
    }
    if (code == IdSuccess)
        token = tokens.access.text;
    return code;
}

IdErrorCode Logins::GetIdToken(const Caller& caller, std::string& token)
{
    if (!scenario_.features.idToken)
        return IdFeatureNotOffered;
    ClientTokens tokens;
    IdErrorCode code = CheckLogin(caller.server);
    if (code == IdSuccess)
        code = TakeTokens(caller, tokens);
    if (code != IdSuccess)
        return code;
    if (IsPast(tokens.id.expiry))
        return IdTokenExpired;
    // Checked here only: a user with long texts can sign in and get an access token.
    if (tokens.id.text.size() > MaxToken)
        return IdTextTooLong;
    token = tokens.id.text;
    return IdSuccess;
}

IdErrorCode Logins::RefreshToken(const Caller& caller, bool onlyExpired)
{
    ClientTokens tokens;
    IdErrorCode code = CheckLogin(caller.server);
    if (code == IdSuccess)
        code = TakeTokens(caller, tokens);
    if (code == IdSuccess && (!onlyExpired || IsPast(tokens.access.expiry)))
        code = Renew(caller);
    return code;
}

IdErrorCode Logins::OpenAddress(const Caller& caller, const std::string& target, std::uint16_t flag,
                                std::string& address)
{
    if (!IsWebAddress(target))
        return IdInvalidAddress;
    if (const IdErrorCode code = CheckLogin(caller.server); code != IdSuccess)
        return code;
    address = SessionAddress(caller.server, target, flag, RandomText(parts_.random, TicketBytes));
    return IdSuccess;
}

IdErrorCode Logins::Restore(const Caller& caller, bool replace)
{
    const IdErrorCode code = RestoreStored(caller.server, replace);
    if (code == IdSuccess)
        Notify(Events::LoginRestored, caller.server);
    return code;
}

std::unique_ptr<PendingLogin> Logins::BeginLogin(const Caller& caller)
{
    if (scenario_.login != LoginBehavior::Wait || caller.clientId.empty() || realms_.count(caller.server) == 0 ||
        IsValid(caller.server))
        return nullptr;
    return std::make_unique<WaitingLogin>(*this, caller.server);
}

void Logins::RestoreAll()
{
    for (const Server server : Servers)
        RestoreStored(server, false);
}

TimePoint Logins::Now() const
{
    // Whole seconds, as in records and tokens, which are compared with it.
    return TimePoint(std::chrono::duration_cast<std::chrono::seconds>(parts_.clock().time_since_epoch()));
}

const LoginRecord* Logins::Find(Server server) const
{
    const auto realm = realms_.find(server);
    if (realm == realms_.end())
        return nullptr;
    const std::optional<LoginRecord>& login = realm->second.login;
    return login ? &*login : nullptr;
}

const Account* Logins::FindAccount(const std::string& userId) const
{
    const auto found = std::find_if(scenario_.users.begin(), scenario_.users.end(),
                                    [&](const Account& account) { return account.userId == userId; });
    return found == scenario_.users.end() ? nullptr : &*found;
}

IdErrorCode Logins::CheckLogin(Server server) const
{
    const LoginRecord* login = Find(server);
    if (login == nullptr)
        return IdNotLoggedIn;
    return IsPast(login->expiry) ? IdLoginExpired : IdSuccess;
}

IdErrorCode Logins::TakeTokens(const Caller& caller, ClientTokens& tokens)
{
    if (caller.clientId.empty())
        return IdNoProductConfig;
    const LoginRecord& login = *Find(caller.server);
    const auto isCallers = [&](const ClientTokens& candidate) {
        return candidate.clientId == caller.clientId && candidate.scope == caller.scope;
    };
    auto found = std::find_if(login.clients.begin(), login.clients.end(), isCallers);
    if (found == login.clients.end())
    {
        // Another product signed the user in: this one gets tokens of its own without a login.
        LoginRecord next = login;
        IdErrorCode code = CheckLogin(caller.server);
        if (code == IdSuccess)
            code = AddTokens(next, caller);
        if (code == IdSuccess)
            code = Store(caller.server, std::move(next));
        if (code != IdSuccess)
            return code;
        tokens = Find(caller.server)->clients.back();
        return IdSuccess;
    }
    tokens = *found;
    return IdSuccess;
}

IdErrorCode Logins::SignIn(const Caller& caller, const Account& account)
{
    const bool replaces = CheckLogin(caller.server) == IdSuccess;
    LoginRecord record;
    record.userId = account.userId;
    record.expiry = Now() + scenario_.loginLifetime;
    IdErrorCode code = AddTokens(record, caller);
    if (code == IdSuccess)
        code = Store(caller.server, std::move(record));
    if (code != IdSuccess)
        return code;
    if (replaces)
        Notify(Events::LoggedOut, caller.server);
    Notify(Events::LoggedIn, caller.server);
    Notify(Events::TokenAvailable, caller.server);
    return IdSuccess;
}

IdErrorCode Logins::Renew(const Caller& caller)
{
    LoginRecord next = *Find(caller.server);
    IdErrorCode code = AddTokens(next, caller);
    if (code == IdSuccess)
        code = Store(caller.server, std::move(next));
    if (code == IdSuccess)
        Notify(Events::TokenRefreshed, caller.server, caller.clientId);
    return code;
}

IdErrorCode Logins::AddTokens(LoginRecord& record, const Caller& caller) const
{
    if (caller.clientId.size() + caller.scope.size() > MaxProductText)
        return IdTextTooLong;
    const Account& account = *FindAccount(record.userId);
    const TimePoint now = Now();
    const TimePoint expiry = now + scenario_.tokenLifetime;

    Json::Value claims(Json::objectValue);
    claims["iss"] = ServerOrigin(caller.server);
    claims["aud"] = caller.clientId;
    claims["sub"] = account.userId;
    claims["iat"] = ToSeconds(now);
    claims["exp"] = ToSeconds(expiry);

    Json::Value access = claims;
    access["jti"] = RandomText(parts_.random, TokenIdBytes);
    access["client_id"] = caller.clientId;
    AddText(access, "scope", caller.scope);

    Json::Value id = claims;
    id["jti"] = RandomText(parts_.random, TokenIdBytes);
    AddText(id, "name", account.displayName);
    AddText(id, "given_name", account.firstName);
    AddText(id, "family_name", account.lastName);
    AddText(id, "preferred_username", account.userName);
    AddText(id, "email", account.email);

    ClientTokens tokens{caller.clientId,
                        caller.scope,
                        {WriteJwt(parts_.signer, AccessTokenType, access), expiry},
                        {WriteJwt(parts_.signer, "JWT", id), expiry}};
    if (tokens.access.text.size() > MaxToken)
        return IdTextTooLong;

    auto& clients = record.clients;
    clients.erase(std::remove_if(clients.begin(), clients.end(),
                                 [&](const ClientTokens& other) { return other.clientId == caller.clientId; }),
                  clients.end());
    if (clients.size() == MaxClients)
        clients.erase(clients.begin());
    clients.push_back(std::move(tokens));
    return IdSuccess;
}

IdErrorCode Logins::Store(Server server, std::optional<LoginRecord> record)
{
    if (!storage_.Save(server, record))
        return IdNotStored;
    realms_.at(server).login = std::move(record);
    return IdSuccess;
}

IdErrorCode Logins::RestoreStored(Server server, bool replace)
{
    const auto realm = realms_.find(server);
    if (realm == realms_.end())
        return IdUnknownServer;
    if (realm->second.login && !replace)
        return IdAlreadyLoggedIn;
    std::optional<LoginRecord> record = storage_.Load(server);
    if (!record)
        return IdNotLoggedIn;
    if (FindAccount(record->userId) == nullptr)
    {
        storage_.Refuse(server, "its user is not known");
        return IdCredentialsRefused;
    }
    if (IsPast(record->expiry))
    {
        storage_.Refuse(server, "the login has expired");
        return IdLoginExpired;
    }
    // Tokens of another key do not verify: they are dropped, and issued anew by the next request.
    auto& clients = record->clients;
    clients.erase(std::remove_if(clients.begin(), clients.end(),
                                 [this](const ClientTokens& tokens) {
                                     return !IsSignedBy(parts_.signer, AccessTokenType, tokens.access.text);
                                 }),
                  clients.end());
    realm->second.login = std::move(record);
    return IdSuccess;
}

void Logins::Notify(Kind kind, Server server, const std::string& clientId, IdErrorCode status) const
{
    parts_.onEvent({kind, server, clientId, status});
}

} // namespace Kestrany::Agent::Simulated
