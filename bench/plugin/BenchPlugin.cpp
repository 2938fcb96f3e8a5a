// A client plugin module whose operations do almost nothing, so that the benchmarks measure the path to them.

#include <algorithm>
#include <cstddef>
#include <string>

#include "load/contract/IPluginLogger.h"
#include "load/contract/ISSOClient.h"
#include "load/contract/ISSOClientFactory.h"
#include "load/contract/ISSOClientModule.h"

namespace Kestrany::IdentityServices {
namespace {

class Client final : public ISSOClient
{
public:
    void Reserved0() override {}
    IdErrorCode GetProductConfig(Server, ProductConfig&) override { return IdSuccess; }
    IdErrorCode SetProductConfig(Server, const ProductConfig&) override { return IdSuccess; }
    IdErrorCode GetUserInfo(talix_user_info*) override { return IdSuccess; }
    IdErrorCode GetSessionUri(const wchar_t*, std::uint16_t, wchar_t*, int) override { return IdSuccess; }
    bool IsOAuth2TokenAvailable() override { return true; }
    IdErrorCode GetOAuth2AccessToken(wchar_t* buffer, int capacity, bool) override
    {
        const std::size_t length = std::min(token_.size(), static_cast<std::size_t>(capacity) - 1);
        token_.copy(buffer, length);
        buffer[length] = L'\0';
        return IdSuccess;
    }
    bool IsLoggedIn() override { return true; }
    std::uint32_t GetOAuth2AccessTokenExpiryDate() override { return 0; }
    bool IsOAuth2TokenExpired() override { return false; }
    std::uint32_t GetLoginExpiryDate() override { return 0; }
    bool IsLoginExpired() override { return false; }
    bool IsLoginValid() override { return true; }
    IdErrorCode RefreshOAuth2Token(bool) override { return IdSuccess; }
    Server GetServer() override { return TALIX_SERVER_PRODUCTION; }
    IdErrorCode SetServer(Server) override { return IdSuccess; }
    IdErrorCode Logout(int&, talix_logout_flags) override { return IdSuccess; }
    IdErrorCode AddObserver(IObserver* observer) override
    {
        observer_ = observer;
        return IdSuccess;
    }
    IdErrorCode RemoveObserver(IObserver*) override
    {
        observer_ = nullptr;
        return IdSuccess;
    }
    IdErrorCode HasProxyInfo(const char*, unsigned int) override { return IdSuccess; }
    IdErrorCode GetProxyInfo(const char*, unsigned int, talix_proxy_info*) override { return IdSuccess; }
    IdErrorCode SetProxyInfo(const talix_proxy_info*) override { return IdSuccess; }
    IdErrorCode ClearProxyInfo() override { return IdSuccess; }
    IdErrorCode GetProfileInfo(char*, int*) override { return IdSuccess; }
    TALIXEnvironment GetEnvironment() override { return TALIX_ENVIRONMENT_NONE; }
    talix_status_code DispatchEvent() override
    {
        const std::int32_t status = IdSuccess;
        if (observer_)
            observer_->OnTokenRefreshed(status);
        return IdSuccess;
    }
    bool HasEvent() override { return observer_ != nullptr; }
    IdErrorCode AutomatedLogin(const wchar_t*, const wchar_t*, bool, const wchar_t*) override { return IdSuccess; }
    IdErrorCode Login(int&) override { return IdSuccess; }
    void Reserved29() override {}
    /// Uses the window handle as the length of the tokens from now on.
    void SetHostApplicationWindow(std::uint64_t window) override
    {
        token_.assign(static_cast<std::size_t>(window), L'a');
    }
    IdErrorCode ShowAccountSettings(int&) override { return IdSuccess; }
    IdErrorCode OverrideCallConfig(int, int, int, int, const char*) override { return IdSuccess; }
    IdErrorCode OverrideBackoffConfig(int, int, int, int, int) override { return IdSuccess; }
    bool IsApiAvailable(ApiFeature) override { return true; }
    IdErrorCode GetOAuth2IdToken(wchar_t*, int) override { return IdSuccess; }
    IdErrorCode SetLoginMode(talix_login_mode) override { return IdSuccess; }
    IdErrorCode GetLoginMode(talix_login_mode&) override { return IdSuccess; }

private:
    IObserver* observer_ = nullptr;
    std::wstring token_;
};

class Module final : public ISSOClientModule
{
public:
    void Reserved0() override {}
    void Initialize(bool) override {}
    void Reserved2() override {}
    void Uninitialize() override {}
    int GetProductName(wchar_t*, int) override { return 0; }
    void SetProductName(const wchar_t*) override {}
};

/// Discards the messages, so that the library neither stores nor prints them.
class Logger final : public IPluginLogger
{
public:
    void Reserved0() override {}
    void Reserved1() override {}
    void Reserved2() override {}
    void Reserved3() override {}
    void Reserved4() override {}
    void Reserved5() override {}
    void Reserved6() override {}
    void Reserved7() override {}
    void Reserved8() override {}
    void Reserved9() override {}
    void Log(const wchar_t*, TALIXLog::LogLevel) override {}
};

class LoggerSource final : public IPluginLoggerSource
{
public:
    void Reserved0() override {}
    IPluginLogger* GetLogger(const wchar_t*) override { return &logger_; }

private:
    Logger logger_;
};

class Factory final : public ISSOClientFactory
{
public:
    void Reserved0() override {}
    IPluginLoggerSource* GetLoggerSource() override { return &loggerSource_; }
    ISSOClientModule* GetSSOClientModule() override { return &module_; }
    ISSOClient* GetSSOClient() override { return &client_; }
    ISSOClientPrivate* GetSSOClientPrivate() override { return nullptr; }
    ISSOServerManager* GetSSOServerManager() override { return nullptr; }

private:
    LoggerSource loggerSource_;
    Module module_;
    Client client_;
};

/// Created while the module is loaded: the plugin's own work does not count as part of a call.
Factory theFactory;

} // namespace
} // namespace Kestrany::IdentityServices

Kestrany::IdentityServices::ISSOClientFactory* GetSSOClientFactory()
{
    return &Kestrany::IdentityServices::theFactory;
}
