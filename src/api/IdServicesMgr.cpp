#include "orlindex/IdServicesMgr.h"

#include "api/IdServicesMgrPrivate.h"
#include "load/contract/ISSOClient.h"
#include "load/contract/ISSOServerManager.h"
#include "locate/Forwarding.h"

namespace Kestrany::IdentityServices {

IObserver::~IObserver() = default; // not covered: Runs where a host's observer ends, as in the example host.

IdServicesMgr::IdServicesMgr() : d(new IdServicesMgrPrivate) {}

IdServicesMgr::~IdServicesMgr()
{
    delete d;
}

// Only the pointer is copied, on purpose: see the header.
IdServicesMgr& IdServicesMgr::operator=(const IdServicesMgr& other) = default;

/// Without client the empty configuration is assigned, which leaves the caller's texts unchanged: see
/// ProductConfig::operator=.
IdErrorCode IdServicesMgr::GetProductConfig(Server server, ProductConfig& config) const
{
    ISSOClient* client = ObtainInterface<ISSOClient>();
    if (client)
        return client->GetProductConfig(server, config);
    config = d->fallbackConfig;
    return IdClientUnavailable;
}

IdErrorCode IdServicesMgr::SetProductConfig(Server server, const ProductConfig& config)
{
    return Forward<&ISSOClient::SetProductConfig>(IdClientUnavailable, server, config);
}

IdErrorCode IdServicesMgr::GetUserInfo(talix_user_info* info)
{
    return Forward<&ISSOClient::GetUserInfo>(IdFailed, info);
}

IdErrorCode IdServicesMgr::GetSessionUri(const wchar_t* uri, std::uint16_t flag, wchar_t* buffer, int capacity)
{
    return Forward<&ISSOClient::GetSessionUri>(IdFailed, uri, flag, buffer, capacity);
}

bool IdServicesMgr::IsOAuth2TokenAvailable() const
{
    return Forward<&ISSOClient::IsOAuth2TokenAvailable>(false);
}

IdErrorCode IdServicesMgr::GetOAuth2AccessToken(wchar_t* buffer, int capacity, bool flag)
{
    return Forward<&ISSOClient::GetOAuth2AccessToken>(IdClientUnavailable, buffer, capacity, flag);
}

bool IdServicesMgr::IsLoggedIn() const
{
    return Forward<&ISSOClient::IsLoggedIn>(false);
}

std::uint32_t IdServicesMgr::GetOAuth2AccessTokenExpiryDate() const
{
    return Forward<&ISSOClient::GetOAuth2AccessTokenExpiryDate>(std::uint32_t{0});
}

/// Without client a token counts as expired, but a login does not (IsLoginExpired).
bool IdServicesMgr::IsOAuth2TokenExpired() const
{
    return Forward<&ISSOClient::IsOAuth2TokenExpired>(true);
}

std::uint32_t IdServicesMgr::GetLoginExpiryDate() const
{
    return Forward<&ISSOClient::GetLoginExpiryDate>(std::uint32_t{0});
}

bool IdServicesMgr::IsLoginExpired() const
{
    return Forward<&ISSOClient::IsLoginExpired>(false);
}

bool IdServicesMgr::IsLoginValid() const
{
    return Forward<&ISSOClient::IsLoginValid>(false);
}

IdErrorCode IdServicesMgr::RefreshOAuth2Token(bool flag)
{
    return Forward<&ISSOClient::RefreshOAuth2Token>(IdClientUnavailable, flag);
}

Server IdServicesMgr::GetServer() const
{
    return Forward<&ISSOClient::GetServer>(static_cast<Server>(0));
}

IdErrorCode IdServicesMgr::SetServer(Server server)
{
    return Forward<&ISSOClient::SetServer>(IdClientUnavailable, server);
}

IdErrorCode IdServicesMgr::Logout(int& result, talix_logout_flags flags)
{
    return Forward<&ISSOClient::Logout>(IdClientUnavailable, result, flags);
}

/// By contract AddObserver and RemoveObserver ignore the plugin's result, which the other members return.
IdErrorCode IdServicesMgr::AddObserver(IObserver* observer)
{
    ISSOClient* client = ObtainInterface<ISSOClient>();
    if (!client)
        return IdClientUnavailable;
    client->AddObserver(observer);
    return IdSuccess;
}

IdErrorCode IdServicesMgr::RemoveObserver(IObserver* observer)
{
    ISSOClient* client = ObtainInterface<ISSOClient>();
    if (!client)
        return IdClientUnavailable;
    client->RemoveObserver(observer);
    return IdSuccess;
}

IdErrorCode IdServicesMgr::HasProxyInfo(const char* host, unsigned int port)
{
    return Forward<&ISSOClient::HasProxyInfo>(IdClientUnavailable, host, port);
}

IdErrorCode IdServicesMgr::GetProxyInfo(const char* host, unsigned int port, talix_proxy_info* info)
{
    return Forward<&ISSOClient::GetProxyInfo>(IdClientUnavailable, host, port, info);
}

IdErrorCode IdServicesMgr::SetProxyInfo(const talix_proxy_info* info)
{
    return Forward<&ISSOClient::SetProxyInfo>(IdClientUnavailable, info);
}

IdErrorCode IdServicesMgr::ClearProxyInfo()
{
    return Forward<&ISSOClient::ClearProxyInfo>(IdClientUnavailable);
}

IdErrorCode IdServicesMgr::GetProfileInfo(char* out, int* size)
{
    return Forward<&ISSOClient::GetProfileInfo>(IdClientUnavailable, out, size);
}

TALIXEnvironment IdServicesMgr::GetEnvironment() const
{
    return Forward<&ISSOClient::GetEnvironment>(static_cast<TALIXEnvironment>(0));
}

talix_status_code IdServicesMgr::DispatchEvent()
{
    return Forward<&ISSOClient::DispatchEvent>(IdClientUnavailable);
}

bool IdServicesMgr::HasEvent() const
{
    return Forward<&ISSOClient::HasEvent>(false);
}

/// By contract this overload does not sign in: Login(int&) does.
IdErrorCode IdServicesMgr::Login()
{
    return IdSuccess;
}

IdErrorCode IdServicesMgr::Login(int& result)
{
    return Forward<&ISSOClient::Login>(IdClientUnavailable, result);
}

void IdServicesMgr::SetHostApplicationWindow(std::uint64_t window)
{
    ForwardOnly<&ISSOClient::SetHostApplicationWindow>(window);
}

IdErrorCode IdServicesMgr::ShowAccountSettings(int& result)
{
    return Forward<&ISSOClient::ShowAccountSettings>(IdClientUnavailable, result);
}

bool IdServicesMgr::IsApiAvailable(ApiFeature feature) const
{
    return Forward<&ISSOClient::IsApiAvailable>(false, feature);
}

IdErrorCode IdServicesMgr::GetOAuth2IdToken(wchar_t* buffer, int capacity)
{
    return Forward<&ISSOClient::GetOAuth2IdToken>(IdClientUnavailable, buffer, capacity);
}

IdErrorCode IdServicesMgr::SetLoginMode(talix_login_mode mode)
{
    return Forward<&ISSOClient::SetLoginMode>(IdClientUnavailable, mode);
}

IdErrorCode IdServicesMgr::GetLoginMode(talix_login_mode& mode) const
{
    return Forward<&ISSOClient::GetLoginMode>(IdClientUnavailable, mode);
}

bool IdServicesMgr::QuitAllSSOServerProcesses(std::int64_t milliseconds) const
{
    return Forward<&ISSOServerManager::QuitAllSSOServerProcesses>(false, milliseconds);
}

ProductConfig* IdServicesMgr::GetProductConfigObj()
{
    return &d->productConfig;
}

} // namespace Kestrany::IdentityServices
