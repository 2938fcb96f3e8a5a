// A client plugin module that notes every call and answers what a test tells it to. Built several times, see
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

RecordedObject<Logger, void(), void(), void(), void(), void(), void(), void(), void(), void(), void(),
               void(const wchar_t*, int)> // 10
    logger;

RecordedObject<LoggerSource, void(), void*(const wchar_t*)> loggerSource;

RecordedObject<Module,
               void(),               // 0
               void(bool),           // 1 Initialize
               void(),               // 2
               void(),               // 3 Uninitialize
               int(wchar_t*, int),   // 4 GetProductName
               void(const wchar_t*)> // 5 SetProductName
    module;

RecordedObject<Client,
               void(),                                                            // 0
               IdErrorCode(Server, ProductConfig*),                               // 1 GetProductConfig
               IdErrorCode(Server, const ProductConfig*),                         // 2 SetProductConfig
               IdErrorCode(talix_user_info*),                                     // 3 GetUserInfo
               IdErrorCode(const wchar_t*, std::uint16_t, wchar_t*, int),         // 4 GetSessionUri
               bool(),                                                            // 5 IsOAuth2TokenAvailable
               IdErrorCode(wchar_t*, int, bool),                                  // 6 GetOAuth2AccessToken
               bool(),                                                            // 7 IsLoggedIn
               std::uint32_t(),                                                   // 8 GetOAuth2AccessTokenExpiryDate
               bool(),                                                            // 9 IsOAuth2TokenExpired
               std::uint32_t(),                                                   // 10 GetLoginExpiryDate
               bool(),                                                            // 11 IsLoginExpired
               bool(),                                                            // 12 IsLoginValid
               IdErrorCode(bool),                                                 // 13 RefreshOAuth2Token
               Server(),                                                          // 14 GetServer
               IdErrorCode(Server),                                               // 15 SetServer
               IdErrorCode(int*, talix_logout_flags),                             // 16 Logout
               IdErrorCode(IObserver*),                                           // 17 AddObserver
               IdErrorCode(IObserver*),                                           // 18 RemoveObserver
               IdErrorCode(const char*, unsigned int),                            // 19 HasProxyInfo
               IdErrorCode(const char*, unsigned int, talix_proxy_info*),         // 20 GetProxyInfo
               IdErrorCode(const talix_proxy_info*),                              // 21 SetProxyInfo
               IdErrorCode(),                                                     // 22 ClearProxyInfo
               IdErrorCode(char*, int*),                                          // 23 GetProfileInfo
               TALIXEnvironment(),                                                // 24 GetEnvironment
               IdErrorCode(),                                                     // 25 DispatchEvent
               bool(),                                                            // 26 HasEvent
               IdErrorCode(const wchar_t*, const wchar_t*, bool, const wchar_t*), // 27 automated login
               IdErrorCode(int*),                                                 // 28 Login
               void(),                                                            // 29
               void(std::uint64_t),                                               // 30 SetHostApplicationWindow
               IdErrorCode(int*),                                                 // 31 ShowAccountSettings
               IdErrorCode(int, int, int, int, const char*),                      // 32 overriding call configuration
               IdErrorCode(int, int, int, int, int),                              // 33 overriding backoff configuration
               bool(ApiFeature),                                                  // 34 IsApiAvailable
               IdErrorCode(wchar_t*, int),                                        // 35 GetOAuth2IdToken
               IdErrorCode(talix_login_mode),                                     // 36 SetLoginMode
               IdErrorCode(talix_login_mode*)>                                    // 37 GetLoginMode
    client;

RecordedObject<Private,
               void(),                                           // 0
               const wchar_t*(Server),                           // 1 ServerToServerName
               Server(const wchar_t*),                           // 2 ServerNameToServer
               const wchar_t*(const wchar_t*),                   // 3 Encrypt
               const wchar_t*(),                                 // 4 GetSettingsPath
               void(),                                           // 5
               void(void*),                                      // 6 GetActiveOAuth2TokenRefreshRetrySchedule
               bool(const void*),                                // 7 SetOAuth2TokenRefreshRetrySchedule
               const wchar_t*(const wchar_t*, Server, bool),     // 8 GetLoginStateCacheFile with flag
               const wchar_t*(const wchar_t*, Server),           // 9 GetLoginStateCacheFile
               bool(bool),                                       // 10 LoadLoginFromCache
               void(IdServicesConsts::IdServicesEvent, bool),    // 11 RaiseEvent
               const char*(Server, const ProductConfig*),        // 12 ToJsonString
               bool(Server*, ProductConfig*, const char*),       // 13 FromJsonString
               bool(const ProductConfig*, const ProductConfig*), // 14 Equals
               void(),                                           // 15 LockLoginStateFile
               void(),                                           // 16 UnlockLoginStateFile
               bool(void*),                                      // 17 Ping
               void(),                                           // 18
               void(),                                           // 19 ClearEventQueue
               bool(void*),                                      // 20 FreezeSSOServerProcess
               std::int64_t(),                                   // 21 GetKillFrozenServerTimeout
               bool(std::int64_t),                               // 22 SetKillFrozenServerTimeout
               const char*()>                                    // 23 GetSessionState
    privateClient;

RecordedObject<ServerManager,
               void(),                                        // 0
               void(),                                        // 1
               void(const wchar_t*, const wchar_t*),          // 2 configure the server application
               void(wchar_t*, int),                           // 3 GetSSOServerAppFile
               void(wchar_t*, int),                           // 4 GetSSOServerAppExeFile
               void(),                                        // 5
               void(const char*),                             // 6 process identity name
               int(char*, int),                               // 7 GetSSOServerName
               void(const char*),                             // 8 server identity name
               int(char*, int),                               // 9 GetSSOEventServerName
               bool(Texts, int, std::int64_t, std::int64_t*), // 10 StartSSOServerProcess with arguments
               bool(std::int64_t, std::int64_t*),             // 11 StartSSOServerProcess
               bool(char**, int),                             // 12 GetSSOServerProcessArguments
               void(Texts, int),                              // 13 SetSSOServerProcessArguments
               bool(std::int64_t*),                           // 14 IsSSOServerProcessRunning
               bool(),                                        // 15 IsSSOServerProcessReady
               bool(std::int64_t),                            // 16 QuitSSOServerProcess
               bool(std::int64_t),                            // 17 QuitAllSSOServerProcesses
               void(bool)>                                    // 18 support both local and admin
    serverManager;

RecordedObject<Factory, void(), void*(), void*(), void*(), void*(), void*()> factory;

void AnswerObject(const char* interfaceName, int slot, void* object)
{
    Recorder::Instance().SetResult(interfaceName, slot,
                                   static_cast<std::int64_t>(reinterpret_cast<std::intptr_t>(object)));
}

void AnswerObjects()
{
    AnswerObject(FactoryFunction, 0, &factory);
    AnswerObject(Factory, 1, &loggerSource);
    AnswerObject(Factory, 2, &module);
    AnswerObject(Factory, 3, &client);
    AnswerObject(Factory, 4, &privateClient);
    AnswerObject(Factory, 5, &serverManager);
    AnswerObject(LoggerSource, 1, &logger);
#if defined(TEST_PLUGIN_DEPENDENT)
    if (TestPluginDependency() != 42)
        std::abort();
#endif
}

const bool answersObjects = (AnswerObjects(), true);

} // namespace

} // namespace OrlindexTest

extern "C" __declspec(dllexport) const OrlindexTest::TestPluginControl* GetTestPluginControl()
{
    using OrlindexTest::Recorder;
    static const OrlindexTest::TestPluginControl control = {
        []() { return Recorder::Instance().JournalSize(); },
        [](int index) { return Recorder::Instance().JournalEntry(index); },
        []() { Recorder::Instance().ClearJournal(); },
        [](const char* interfaceName, int slot, std::int64_t result) {
            Recorder::Instance().SetResult(interfaceName, slot, result);
        },
        [](const char* interfaceName, int slot) { return Recorder::Instance().Result(interfaceName, slot, 0); },
        [](const char* interfaceName, int slot, OrlindexTest::OperationHook hook, void* context) {
            Recorder::Instance().SetHook(interfaceName, slot, hook, context);
        },
    };
    return &control;
}

#if !defined(TEST_PLUGIN_NO_FACTORY)
#if defined(_MSC_VER)
__declspec(dllexport)
#endif
Kestrany::IdentityServices::ISSOClientFactory*
GetSSOClientFactory()
{
    return OrlindexTest::Record<Kestrany::IdentityServices::ISSOClientFactory*>(OrlindexTest::FactoryFunction, 0);
}
#endif
