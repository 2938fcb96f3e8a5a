#ifndef ORLINDEX_CONTRACT_ISSOCLIENT_H
#define ORLINDEX_CONTRACT_ISSOCLIENT_H

#include <cstdint>

#include "orlindex/IObserver.h"
#include "orlindex/IdErrorCode.h"
#include "orlindex/ProductConfig.h"
#include "orlindex/Types.h"

namespace Kestrany::IdentityServices {

/// The plugin's public operations; IdServicesMgr describes what each does. An object belongs to the plugin.
///
/// No destructor and no overloaded operation is virtual, and every result is a number or nothing: only so is the place
/// of each operation in the virtual table, and the way of calling it, the same for every compiler.
class ISSOClient
{
public:
    virtual void Reserved0() = 0;
    virtual IdErrorCode GetProductConfig(Server server, ProductConfig& config) = 0;
    virtual IdErrorCode SetProductConfig(Server server, const ProductConfig& config) = 0;
    virtual IdErrorCode GetUserInfo(talix_user_info* info) = 0;
    virtual IdErrorCode GetSessionUri(const wchar_t* uri, std::uint16_t flag, wchar_t* buffer, int capacity) = 0;
    virtual bool IsOAuth2TokenAvailable() = 0;
    virtual IdErrorCode GetOAuth2AccessToken(wchar_t* buffer, int capacity, bool wait) = 0;
    virtual bool IsLoggedIn() = 0;
    virtual std::uint32_t GetOAuth2AccessTokenExpiryDate() = 0;
    virtual bool IsOAuth2TokenExpired() = 0;
    virtual std::uint32_t GetLoginExpiryDate() = 0;
    virtual bool IsLoginExpired() = 0;
    virtual bool IsLoginValid() = 0;
    virtual IdErrorCode RefreshOAuth2Token(bool flag) = 0;
    virtual Server GetServer() = 0;
    virtual IdErrorCode SetServer(Server server) = 0;
    virtual IdErrorCode Logout(int& result, talix_logout_flags flags) = 0;
    virtual IdErrorCode AddObserver(IObserver* observer) = 0;
    virtual IdErrorCode RemoveObserver(IObserver* observer) = 0;
    virtual IdErrorCode HasProxyInfo(const char* host, unsigned int port) = 0;
    virtual IdErrorCode GetProxyInfo(const char* host, unsigned int port, talix_proxy_info* info) = 0;
    virtual IdErrorCode SetProxyInfo(const talix_proxy_info* info) = 0;
    virtual IdErrorCode ClearProxyInfo() = 0;
    virtual IdErrorCode GetProfileInfo(char* out, int* size) = 0;
    virtual TALIXEnvironment GetEnvironment() = 0;
    virtual talix_status_code DispatchEvent() = 0;
    virtual bool HasEvent() = 0;
    /// Slot 27. Login without a person; the meaning of the arguments is the plugin's.
    virtual IdErrorCode AutomatedLogin(const wchar_t* user, const wchar_t* secret, bool flag,
                                       const wchar_t* context) = 0;
    virtual IdErrorCode Login(int& result) = 0;
    virtual void Reserved29() = 0;
    virtual void SetHostApplicationWindow(std::uint64_t window) = 0;
    virtual IdErrorCode ShowAccountSettings(int& result) = 0;
    /// Slot 32. How the plugin calls its identity service from now on.
    virtual IdErrorCode OverrideCallConfig(int interval, int failInterval, int minJitter, int maxJitter,
                                           const char* url) = 0;
    /// Slot 33. How the plugin backs off after failures from now on.
    virtual IdErrorCode OverrideBackoffConfig(int initialInterval, int maxInterval, int multiplier, int maxRetries,
                                              int jitter) = 0;
    virtual bool IsApiAvailable(ApiFeature feature) = 0;
    virtual IdErrorCode GetOAuth2IdToken(wchar_t* buffer, int capacity) = 0;
    virtual IdErrorCode SetLoginMode(talix_login_mode mode) = 0;
    virtual IdErrorCode GetLoginMode(talix_login_mode& mode) = 0;

protected:
    ~ISSOClient() = default;
};

} // namespace Kestrany::IdentityServices

#endif
