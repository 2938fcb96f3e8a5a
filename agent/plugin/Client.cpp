#include "plugin/Client.h"

#include <string>
#include <utility>

#include "identity/LoginService.h"
#include "platform/Base.h"
#include "plugin/NoThrow.h"
#include "plugin/ProductTexts.h"
#include "plugin/Texts.h"

namespace Kestrany::Agent {

using IdentityServices::ApiFeature;
using IdentityServices::IObserver;
using IdentityServices::ProductConfig;

Client::Client(Session& session, EventQueue& events, RemoteLogins& logins, ServerConnection& connection, LogSink log)
    : log_(std::move(log)), session_(session), events_(events), logins_(logins), connection_(connection)
{
}

void Client::Begin()
{
    connection_.Open();
}

void Client::End()
{
    connection_.Close();
    observers_.Clear();
    events_.Clear();
}

IdErrorCode Client::GetProductConfig(Server server, ProductConfig& config)
{
    return NoThrow(IdFailed, [&] {
        ProductSettings product;
        const IdErrorCode code = session_.GetProduct(server, product);
        if (code == IdSuccess)
            WriteProduct(product, config);
        return code;
    });
}

IdErrorCode Client::SetProductConfig(Server server, const ProductConfig& config)
{
    return NoThrow(IdFailed, [&] {
        ProductSettings product;
        IdErrorCode code = ReadProduct(config, product);
        if (code == IdSuccess)
            code = session_.SetProduct(server, product);
        return Done("Product configuration", code);
    });
}

IdErrorCode Client::GetUserInfo(talix_user_info* info)
{
    return NoThrow(IdFailed, [&] {
        if (info == nullptr)
            return IdFailed;
        Account account;
        if (const IdErrorCode code = session_.GetAccount(account); code != IdSuccess)
            return code;
        return CopyRecord({{account.userId, info->user_id, info->user_id_size},
                           {account.userName, info->user_name, info->user_name_size},
                           {account.firstName, info->first_name, info->first_name_size},
                           {account.lastName, info->last_name, info->last_name_size},
                           {account.email, info->email, info->email_size},
                           {account.displayName, info->display_name, info->display_name_size}});
    });
}

IdErrorCode Client::GetSessionUri(const wchar_t* uri, std::uint16_t flag, wchar_t* buffer, int capacity)
{
    return NoThrow(IdFailed, [&] {
        std::string target;
        std::string address;
        IdErrorCode code = TakeAddress(uri, target);
        if (code == IdSuccess)
            code = session_.OpenAddress(target, flag, address);
        return code == IdSuccess ? CopyWide(address, buffer, capacity) : code;
    });
}

bool Client::IsOAuth2TokenAvailable()
{
    return NoThrow(false, [&] { return session_.IsTokenAvailable(); });
}

IdErrorCode Client::GetOAuth2AccessToken(wchar_t* buffer, int capacity, bool wait)
{
    return NoThrow(IdFailed, [&] {
        std::string token;
        const IdErrorCode code = session_.GetAccessToken(token, wait);
        return code == IdSuccess ? CopyWide(token, buffer, capacity) : code;
    });
}

bool Client::IsLoggedIn()
{
    return NoThrow(false, [&] { return session_.IsLoggedIn(); });
}

std::uint32_t Client::GetOAuth2AccessTokenExpiryDate()
{
    return NoThrow(std::uint32_t{0}, [&] { return session_.TokenExpiry(); });
}

bool Client::IsOAuth2TokenExpired()
{
    return NoThrow(true, [&] { return session_.IsTokenExpired(); });
}

std::uint32_t Client::GetLoginExpiryDate()
{
    return NoThrow(std::uint32_t{0}, [&] { return session_.LoginExpiry(); });
}

bool Client::IsLoginExpired()
{
    return NoThrow(false, [&] { return session_.IsLoginExpired(); });
}

bool Client::IsLoginValid()
{
    return NoThrow(false, [&] { return session_.IsLoginValid(); });
}

IdErrorCode Client::RefreshOAuth2Token(bool flag)
{
    return NoThrow(IdFailed, [&] { return Done("Token refresh", session_.RefreshToken(flag)); });
}

Server Client::GetServer()
{
    return NoThrow(TALIX_SERVER_UNAVAILABLE, [&] { return session_.GetServer(); });
}

IdErrorCode Client::SetServer(Server server)
{
    return NoThrow(IdFailed, [&] { return Done("Change of server", session_.SetServer(server)); });
}

IdErrorCode Client::Logout(int& result, talix_logout_flags flags)
{
    return NoThrow(IdFailed, [&] {
        if (const IdErrorCode code = session_.CheckLoggedIn(); code != IdSuccess)
        {
            // A login that waits for its user ends.
            if (code == IdNotLoggedIn)
                session_.CancelLogin();
            return Done("Logout", code);
        }
        if (flags != TALIX_LOGOUT_FORCE && !observers_.ConsentToLogout())
        {
            result = 1;
            return Done("Logout", IdLogoutRefused);
        }
        result = 0;
        return Done("Logout", session_.Logout());
    });
}

IdErrorCode Client::AddObserver(IObserver* observer)
{
    return NoThrow(IdFailed, [&] {
        if (observer == nullptr)
            return IdFailed;
        observers_.Add(observer);
        return IdSuccess;
    });
}

IdErrorCode Client::RemoveObserver(IObserver* observer)
{
    return NoThrow(IdFailed, [&] {
        if (observer == nullptr)
            return IdFailed;
        observers_.Remove(observer);
        return IdSuccess;
    });
}

IdErrorCode Client::HasProxyInfo(const char* host, unsigned int port)
{
    return NoThrow(IdFailed, [&] {
        std::string name;
        if (const IdErrorCode code = TakeNarrow(host, name); code != IdSuccess)
            return code;
        return proxies_.Find(name, port) ? IdSuccess : IdUnknownProxy;
    });
}

IdErrorCode Client::GetProxyInfo(const char* host, unsigned int port, talix_proxy_info* info)
{
    return NoThrow(IdFailed, [&] {
        if (info == nullptr)
            return IdInvalidProxyRecord;
        std::string name;
        if (const IdErrorCode code = TakeNarrow(host, name); code != IdSuccess)
            return code;
        const std::optional<ProxySettings> proxy = proxies_.Find(name, port);
        if (!proxy)
            return IdUnknownProxy;
        const IdErrorCode code = CopyRecord({{proxy->host, info->host, info->host_size},
                                             {proxy->userName, info->user_name, info->user_name_size},
                                             {proxy->password, info->password, info->password_size}});
        if (code == IdSuccess)
            info->port = proxy->port;
        return code;
    });
}

IdErrorCode Client::SetProxyInfo(const talix_proxy_info* info)
{
    return NoThrow(IdFailed, [&] {
        if (info == nullptr)
            return IdInvalidProxyRecord;
        ProxySettings proxy;
        proxy.port = info->port;
        IdErrorCode code = TakeNarrow(info->host, info->host_size, proxy.host);
        if (code == IdSuccess)
            code = TakeNarrow(info->user_name, info->user_name_size, proxy.userName);
        if (code == IdSuccess)
            code = TakeNarrow(info->password, info->password_size, proxy.password);
        if (code == IdSuccess)
            code = proxies_.Store(std::move(proxy));
        if (code == IdSuccess)
            session_.SetProxy(proxies_.Find({}, 0));
        return Done("Proxy settings", code);
    });
}

IdErrorCode Client::ClearProxyInfo()
{
    return NoThrow(IdFailed, [&] {
        proxies_.Clear();
        session_.SetProxy(std::nullopt);
        return IdSuccess;
    });
}

IdErrorCode Client::GetProfileInfo(char* out, int* size)
{
    return NoThrow(IdFailed, [&] {
        if (size == nullptr)
            return IdFailed;
        Account account;
        if (const IdErrorCode code = session_.GetAccount(account); code != IdSuccess)
            return code;
        const std::string profile = ProfileJson(account);
        const bool fitted = CopyNarrowLength(profile, out, *size) > 0;
        *size = static_cast<int>(profile.size() + 1);
        return fitted ? IdSuccess : IdBufferTooSmall;
    });
}

TALIXEnvironment Client::GetEnvironment()
{
    switch (GetServer())
    {
    case TALIX_SERVER_PRODUCTION:
        return TALIX_ENVIRONMENT_PRODUCTION;
    case TALIX_SERVER_STAGING:
        return TALIX_ENVIRONMENT_STAGING;
    case TALIX_SERVER_DEVELOPMENT:
        return TALIX_ENVIRONMENT_DEVELOPMENT;
    default:
        return TALIX_ENVIRONMENT_NONE;
    }
}

talix_status_code Client::DispatchEvent()
{
    return NoThrow(IdFailed, [&] {
        observers_.Deliver(events_);
        return IdSuccess;
    });
}

bool Client::HasEvent()
{
    return NoThrow(false, [&] { return events_.Size() > 0; });
}

IdErrorCode Client::AutomatedLogin(const wchar_t* user, const wchar_t* secret, bool flag, const wchar_t* context)
{
    return NoThrow(IdFailed, [&] {
        std::string userName;
        std::string password;
        IdErrorCode code = TakeWide(user, userName);
        if (code == IdSuccess)
            code = TakeWide(secret, password);
        if (code == IdSuccess)
            code = session_.Login(userName, password, flag);
        const std::string purpose = context == nullptr ? std::string() : " for " + Narrow(context);
        return Done(("Automated login" + purpose).c_str(), code);
    });
}

IdErrorCode Client::Login(int& result)
{
    return NoThrow(IdFailed, [&] {
        auto detail = LoginDetail::NotLoggedIn;
        const IdErrorCode code = session_.Login(detail);
        result = static_cast<int>(detail);
        return Done("Login", code);
    });
}

IdErrorCode Client::ShowAccountSettings(int& result)
{
    return NoThrow(IdFailed, [&] {
        const IdErrorCode code = session_.CheckLoggedIn();
        if (code == IdSuccess)
            result = 0;
        return Done("Account settings", code);
    });
}

IdErrorCode Client::OverrideCallConfig(int interval, int failInterval, int minJitter, int maxJitter, const char* url)
{
    return NoThrow(IdFailed, [&] {
        std::string address;
        IdErrorCode code = TakeNarrow(url, address);
        if (code == IdSuccess)
            code = calls_.Override(CallSettings{interval, failInterval, minJitter, maxJitter, address});
        return Done("Call configuration", code);
    });
}

IdErrorCode Client::OverrideBackoffConfig(int initialInterval, int maxInterval, int multiplier, int maxRetries,
                                          int jitter)
{
    return NoThrow(IdFailed, [&] {
        const BackoffSettings settings{initialInterval, maxInterval, multiplier, maxRetries, jitter};
        const IdErrorCode code = calls_.Override(settings);
        if (code == IdSuccess)
            session_.SetBackoff(settings);
        return Done("Backoff configuration", code);
    });
}

bool Client::IsApiAvailable(ApiFeature feature)
{
    const bool known =
        feature == IdentityServices::ApiFeatureIdToken || feature == IdentityServices::ApiFeatureLoginMode;
    return NoThrow(false, [&] { return known && CheckOffered(feature) == IdSuccess; });
}

IdErrorCode Client::GetOAuth2IdToken(wchar_t* buffer, int capacity)
{
    return NoThrow(IdFailed, [&] {
        std::string token;
        const IdErrorCode code = session_.GetIdToken(token);
        return code == IdSuccess ? CopyWide(token, buffer, capacity) : code;
    });
}

IdErrorCode Client::SetLoginMode(talix_login_mode mode)
{
    return NoThrow(IdFailed, [&] {
        const IdErrorCode code = CheckOffered(IdentityServices::ApiFeatureLoginMode);
        return Done("Login mode", code == IdSuccess ? session_.SetLoginMode(mode) : code);
    });
}

IdErrorCode Client::GetLoginMode(talix_login_mode& mode)
{
    return NoThrow(IdFailed, [&] {
        mode = session_.GetLoginMode();
        return IdSuccess;
    });
}

IdErrorCode Client::Done(const char* operation, IdErrorCode code) const
{
    const std::string where = " (" + ServerName(session_.GetServer()) + "): result ";
    log_(code == IdSuccess ? TALIXLog::Info : TALIXLog::Warning,
         operation + where + std::to_string(static_cast<int>(code)));
    return code;
}

IdErrorCode Client::CheckOffered(ApiFeature feature) const
{
    bool idToken = false;
    bool loginMode = false;
    const IdErrorCode code = logins_.GetFeatures({session_.GetServer(), {}, {}}, idToken, loginMode);
    const bool offered = feature == IdentityServices::ApiFeatureIdToken ? idToken : loginMode;
    return code == IdSuccess && !offered ? IdFeatureNotOffered : code;
}

} // namespace Kestrany::Agent
