// A client plugin module that records every call and returns what a test sets. Built several times, see
// CMakeLists.txt beside this file.

#include "RecordedObject.h"

#include <cstdlib>

#include "orlindex/IdServicesConsts.h"
#include "orlindex/IdServicesMgr.h"

namespace Kestrany::IdentityServices {
class ISSOClientFactory;
}

#if defined(TEST_PLUGIN_DEPENDENT)
extern "C" __declspec(dllimport) int TestPluginDependency();
#endif

namespace OrlindexTest {

using namespace Kestrany::IdentityServices;

std::string Shown(const char* text)
{
    return text == nullptr ? "null" : '"' + std::string(text) + '"';
}

std::string Shown(const wchar_t* text)
{
    if (text == nullptr)
        return "null";
    std::string narrow = "\"";
    for (; *text != L'\0'; ++text)
    {
        char32_t code = static_cast<char16_t>(*text);
        if (code >= 0xD800 && code < 0xDC00 && text[1] >= 0xDC00 && text[1] < 0xE000)
        {
            code = 0x10000 + ((code - 0xD800) << 10) + (static_cast<char16_t>(text[1]) - 0xDC00);
            ++text;
        }
        const auto tail = [&narrow, code](int shift) { narrow += static_cast<char>(0x80 | ((code >> shift) & 0x3F)); };
        if (code < 0x80)
        {
            narrow += static_cast<char>(code);
        }
        else if (code < 0x800)
        {
            narrow += static_cast<char>(0xC0 | (code >> 6));
            tail(0);
        }
        else if (code < 0x10000)
        {
            narrow += static_cast<char>(0xE0 | (code >> 12));
            tail(6), tail(0);
        }
        else
        {
            narrow += static_cast<char>(0xF0 | (code >> 18));
            tail(12), tail(6), tail(0);
        }
    }
    return narrow + '"';
}

namespace {

using Texts = const char* const*;

// clang-format off: one slot a line, in the order of the virtual table.
RecordedObject<
    Slot<Logger::Reserved0, void()>,
    Slot<Logger::Reserved1, void()>,
    Slot<Logger::Reserved2, void()>,
    Slot<Logger::Reserved3, void()>,
    Slot<Logger::Reserved4, void()>,
    Slot<Logger::Reserved5, void()>,
    Slot<Logger::Reserved6, void()>,
    Slot<Logger::Reserved7, void()>,
    Slot<Logger::Reserved8, void()>,
    Slot<Logger::Reserved9, void()>,
    Slot<Logger::Log, void(const wchar_t*, int)>>
    logger;

RecordedObject<
    Slot<LoggerSource::Reserved0, void()>,
    Slot<LoggerSource::GetLogger, void*(const wchar_t*)>>
    loggerSource;

RecordedObject<
    Slot<Module::Reserved0, void()>,
    Slot<Module::Initialize, void(bool)>,
    Slot<Module::Reserved2, void()>,
    Slot<Module::Uninitialize, void()>,
    Slot<Module::GetProductName, int(wchar_t*, int)>,
    Slot<Module::SetProductName, void(const wchar_t*)>>
    module;

RecordedObject<
    Slot<Client::Reserved0, void()>,
    Slot<Client::GetProductConfig, IdErrorCode(Server, ProductConfig*)>,
    Slot<Client::SetProductConfig, IdErrorCode(Server, const ProductConfig*)>,
    Slot<Client::GetUserInfo, IdErrorCode(talix_user_info*)>,
    Slot<Client::GetSessionUri, IdErrorCode(const wchar_t*, std::uint16_t, wchar_t*, int)>,
    Slot<Client::IsOAuth2TokenAvailable, bool()>,
    Slot<Client::GetOAuth2AccessToken, IdErrorCode(wchar_t*, int, bool)>,
    Slot<Client::IsLoggedIn, bool()>,
    Slot<Client::GetOAuth2AccessTokenExpiryDate, std::uint32_t()>,
    Slot<Client::IsOAuth2TokenExpired, bool()>,
    Slot<Client::GetLoginExpiryDate, std::uint32_t()>,
    Slot<Client::IsLoginExpired, bool()>,
    Slot<Client::IsLoginValid, bool()>,
    Slot<Client::RefreshOAuth2Token, IdErrorCode(bool)>,
    Slot<Client::GetServer, Server()>,
    Slot<Client::SetServer, IdErrorCode(Server)>,
    Slot<Client::Logout, IdErrorCode(int*, talix_logout_flags)>,
    Slot<Client::AddObserver, IdErrorCode(IObserver*)>,
    Slot<Client::RemoveObserver, IdErrorCode(IObserver*)>,
    Slot<Client::HasProxyInfo, IdErrorCode(const char*, unsigned int)>,
    Slot<Client::GetProxyInfo, IdErrorCode(const char*, unsigned int, talix_proxy_info*)>,
    Slot<Client::SetProxyInfo, IdErrorCode(const talix_proxy_info*)>,
    Slot<Client::ClearProxyInfo, IdErrorCode()>,
    Slot<Client::GetProfileInfo, IdErrorCode(char*, int*)>,
    Slot<Client::GetEnvironment, TALIXEnvironment()>,
    Slot<Client::DispatchEvent, IdErrorCode()>,
    Slot<Client::HasEvent, bool()>,
    Slot<Client::AutomatedLogin, IdErrorCode(const wchar_t*, const wchar_t*, bool, const wchar_t*)>,
    Slot<Client::Login, IdErrorCode(int*)>,
    Slot<Client::Reserved29, void()>,
    Slot<Client::SetHostApplicationWindow, void(std::uint64_t)>,
    Slot<Client::ShowAccountSettings, IdErrorCode(int*)>,
    Slot<Client::OverrideCallConfig, IdErrorCode(int, int, int, int, const char*)>,
    Slot<Client::OverrideBackoffConfig, IdErrorCode(int, int, int, int, int)>,
    Slot<Client::IsApiAvailable, bool(ApiFeature)>,
    Slot<Client::GetOAuth2IdToken, IdErrorCode(wchar_t*, int)>,
    Slot<Client::SetLoginMode, IdErrorCode(talix_login_mode)>,
    Slot<Client::GetLoginMode, IdErrorCode(talix_login_mode*)>>
    client;

RecordedObject<
    Slot<Private::Reserved0, void()>,
    Slot<Private::ServerToServerName, const wchar_t*(Server)>,
    Slot<Private::ServerNameToServer, Server(const wchar_t*)>,
    Slot<Private::Encrypt, const wchar_t*(const wchar_t*)>,
    Slot<Private::GetSettingsPath, const wchar_t*()>,
    Slot<Private::Reserved5, void()>,
    Slot<Private::GetActiveOAuth2TokenRefreshRetrySchedule, void(void*)>,
    Slot<Private::SetOAuth2TokenRefreshRetrySchedule, bool(const void*)>,
    Slot<Private::GetLoginStateCacheFileWithFlag, const wchar_t*(const wchar_t*, Server, bool)>,
    Slot<Private::GetLoginStateCacheFile, const wchar_t*(const wchar_t*, Server)>,
    Slot<Private::LoadLoginFromCache, bool(bool)>,
    Slot<Private::RaiseEvent, void(IdServicesConsts::IdServicesEvent, bool)>,
    Slot<Private::ToJsonString, const char*(Server, const ProductConfig*)>,
    Slot<Private::FromJsonString, bool(Server*, ProductConfig*, const char*)>,
    Slot<Private::Equals, bool(const ProductConfig*, const ProductConfig*)>,
    Slot<Private::LockLoginStateFile, void()>,
    Slot<Private::UnlockLoginStateFile, void()>,
    Slot<Private::Ping, bool(void*)>,
    Slot<Private::Reserved18, void()>,
    Slot<Private::ClearEventQueue, void()>,
    Slot<Private::FreezeSSOServerProcess, bool(void*)>,
    Slot<Private::GetKillFrozenServerTimeout, std::int64_t()>,
    Slot<Private::SetKillFrozenServerTimeout, bool(std::int64_t)>,
    Slot<Private::GetSessionState, const char*()>>
    privateClient;

RecordedObject<
    Slot<ServerManager::Reserved0, void()>,
    Slot<ServerManager::Reserved1, void()>,
    Slot<ServerManager::ConfigureServerApp, void(const wchar_t*, const wchar_t*)>,
    Slot<ServerManager::GetSSOServerAppFile, void(wchar_t*, int)>,
    Slot<ServerManager::GetSSOServerAppExeFile, void(wchar_t*, int)>,
    Slot<ServerManager::Reserved5, void()>,
    Slot<ServerManager::SetProcessIdentityName, void(const char*)>,
    Slot<ServerManager::GetSSOServerName, int(char*, int)>,
    Slot<ServerManager::SetServerIdentityName, void(const char*)>,
    Slot<ServerManager::GetSSOEventServerName, int(char*, int)>,
    Slot<ServerManager::StartSSOServerProcessWithArguments, bool(Texts, int, std::int64_t, std::int64_t*)>,
    Slot<ServerManager::StartSSOServerProcess, bool(std::int64_t, std::int64_t*)>,
    Slot<ServerManager::GetSSOServerProcessArguments, bool(char**, int)>,
    Slot<ServerManager::SetSSOServerProcessArguments, void(Texts, int)>,
    Slot<ServerManager::IsSSOServerProcessRunning, bool(std::int64_t*)>,
    Slot<ServerManager::IsSSOServerProcessReady, bool()>,
    Slot<ServerManager::QuitSSOServerProcess, bool(std::int64_t)>,
    Slot<ServerManager::QuitAllSSOServerProcesses, bool(std::int64_t)>,
    Slot<ServerManager::SetSupportBothLocalAndAdmin, void(bool)>>
    serverManager;

RecordedObject<
    Slot<Factory::Reserved0, void()>,
    Slot<Factory::GetLoggerSource, void*()>,
    Slot<Factory::GetSSOClientModule, void*()>,
    Slot<Factory::GetSSOClient, void*()>,
    Slot<Factory::GetSSOClientPrivate, void*()>,
    Slot<Factory::GetSSOServerManager, void*()>>
    factory;
// clang-format on

void ReturnObject(const PluginOperation& operation, void* object)
{
    Recorder::Instance().SetResult(operation, static_cast<std::int64_t>(reinterpret_cast<std::intptr_t>(object)));
}

void ReturnObjects()
{
    ReturnObject(FactoryFunction, &factory);
    ReturnObject(Factory::GetLoggerSource, &loggerSource);
    ReturnObject(Factory::GetSSOClientModule, &module);
    ReturnObject(Factory::GetSSOClient, &client);
    ReturnObject(Factory::GetSSOClientPrivate, &privateClient);
    ReturnObject(Factory::GetSSOServerManager, &serverManager);
    ReturnObject(LoggerSource::GetLogger, &logger);
#if defined(TEST_PLUGIN_DEPENDENT)
    if (TestPluginDependency() != 42)
        std::abort();
#endif
}

const bool returnsObjects = (ReturnObjects(), true);

} // namespace

} // namespace OrlindexTest

extern "C" __declspec(dllexport) const OrlindexTest::TestPluginControl* GetTestPluginControl()
{
    using OrlindexTest::PluginOperation;
    using OrlindexTest::Recorder;
    static const OrlindexTest::TestPluginControl control = {
        []() { return Recorder::Instance().JournalSize(); },
        [](int index) { return Recorder::Instance().JournalEntry(index); },
        []() { Recorder::Instance().ClearJournal(); },
        [](const PluginOperation& operation, std::int64_t result) {
            Recorder::Instance().SetResult(operation, result);
        },
        [](const PluginOperation& operation) { return Recorder::Instance().Result(operation, 0); },
        [](const PluginOperation& operation, OrlindexTest::OperationHook hook, void* context) {
            Recorder::Instance().SetHook(operation, hook, context);
        },
        OrlindexTest::CompilerRules,
    };
    return &control;
}

#if !defined(TEST_PLUGIN_NO_FACTORY)
Kestrany::IdentityServices::ISSOClientFactory* GetSSOClientFactory()
{
    return OrlindexTest::Record<Kestrany::IdentityServices::ISSOClientFactory*>(OrlindexTest::FactoryFunction);
}
#endif
