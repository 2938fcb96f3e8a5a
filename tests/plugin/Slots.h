#ifndef ORLINDEX_PLUGIN_SLOTS_H
#define ORLINDEX_PLUGIN_SLOTS_H

#include <string>

namespace OrlindexTest {

/// An operation of the plugin contract: its interface, its place in the virtual table, its name.
struct PluginOperation
{
    const char* interfaceName;
    int slot;
    const char* name;
};

/// "ISSOClient::Login"
inline std::string FullName(const PluginOperation& operation)
{
    const std::string interfaceName = operation.interfaceName;
    return interfaceName.empty() ? operation.name : interfaceName + "::" + operation.name;
}

// The one table that fixes names to slots. boundary.slots compares it with the virtual tables that compilers lay out,
// and the tests of the documentation read it. They take each line as a text: an interface, a slot and a name in braces.

// clang-format off: one slot a line.

namespace Factory {
inline constexpr char Interface[] = "ISSOClientFactory";
inline constexpr PluginOperation Reserved0{"ISSOClientFactory", 0, "Reserved0"};
inline constexpr PluginOperation GetLoggerSource{"ISSOClientFactory", 1, "GetLoggerSource"};
inline constexpr PluginOperation GetSSOClientModule{"ISSOClientFactory", 2, "GetSSOClientModule"};
inline constexpr PluginOperation GetSSOClient{"ISSOClientFactory", 3, "GetSSOClient"};
inline constexpr PluginOperation GetSSOClientPrivate{"ISSOClientFactory", 4, "GetSSOClientPrivate"};
inline constexpr PluginOperation GetSSOServerManager{"ISSOClientFactory", 5, "GetSSOServerManager"};
} // namespace Factory

namespace LoggerSource {
inline constexpr char Interface[] = "IPluginLoggerSource";
inline constexpr PluginOperation Reserved0{"IPluginLoggerSource", 0, "Reserved0"};
inline constexpr PluginOperation GetLogger{"IPluginLoggerSource", 1, "GetLogger"};
} // namespace LoggerSource

namespace Logger {
inline constexpr char Interface[] = "IPluginLogger";
inline constexpr PluginOperation Reserved0{"IPluginLogger", 0, "Reserved0"};
inline constexpr PluginOperation Reserved1{"IPluginLogger", 1, "Reserved1"};
inline constexpr PluginOperation Reserved2{"IPluginLogger", 2, "Reserved2"};
inline constexpr PluginOperation Reserved3{"IPluginLogger", 3, "Reserved3"};
inline constexpr PluginOperation Reserved4{"IPluginLogger", 4, "Reserved4"};
inline constexpr PluginOperation Reserved5{"IPluginLogger", 5, "Reserved5"};
inline constexpr PluginOperation Reserved6{"IPluginLogger", 6, "Reserved6"};
inline constexpr PluginOperation Reserved7{"IPluginLogger", 7, "Reserved7"};
inline constexpr PluginOperation Reserved8{"IPluginLogger", 8, "Reserved8"};
inline constexpr PluginOperation Reserved9{"IPluginLogger", 9, "Reserved9"};
inline constexpr PluginOperation Log{"IPluginLogger", 10, "Log"};
} // namespace Logger

namespace Module {
inline constexpr char Interface[] = "ISSOClientModule";
inline constexpr PluginOperation Reserved0{"ISSOClientModule", 0, "Reserved0"};
inline constexpr PluginOperation Initialize{"ISSOClientModule", 1, "Initialize"};
inline constexpr PluginOperation Reserved2{"ISSOClientModule", 2, "Reserved2"};
inline constexpr PluginOperation Uninitialize{"ISSOClientModule", 3, "Uninitialize"};
inline constexpr PluginOperation GetProductName{"ISSOClientModule", 4, "GetProductName"};
inline constexpr PluginOperation SetProductName{"ISSOClientModule", 5, "SetProductName"};
} // namespace Module

namespace Client {
inline constexpr char Interface[] = "ISSOClient";
inline constexpr PluginOperation Reserved0{"ISSOClient", 0, "Reserved0"};
inline constexpr PluginOperation GetProductConfig{"ISSOClient", 1, "GetProductConfig"};
inline constexpr PluginOperation SetProductConfig{"ISSOClient", 2, "SetProductConfig"};
inline constexpr PluginOperation GetUserInfo{"ISSOClient", 3, "GetUserInfo"};
inline constexpr PluginOperation GetSessionUri{"ISSOClient", 4, "GetSessionUri"};
inline constexpr PluginOperation IsOAuth2TokenAvailable{"ISSOClient", 5, "IsOAuth2TokenAvailable"};
inline constexpr PluginOperation GetOAuth2AccessToken{"ISSOClient", 6, "GetOAuth2AccessToken"};
inline constexpr PluginOperation IsLoggedIn{"ISSOClient", 7, "IsLoggedIn"};
inline constexpr PluginOperation GetOAuth2AccessTokenExpiryDate{"ISSOClient", 8, "GetOAuth2AccessTokenExpiryDate"};
inline constexpr PluginOperation IsOAuth2TokenExpired{"ISSOClient", 9, "IsOAuth2TokenExpired"};
inline constexpr PluginOperation GetLoginExpiryDate{"ISSOClient", 10, "GetLoginExpiryDate"};
inline constexpr PluginOperation IsLoginExpired{"ISSOClient", 11, "IsLoginExpired"};
inline constexpr PluginOperation IsLoginValid{"ISSOClient", 12, "IsLoginValid"};
inline constexpr PluginOperation RefreshOAuth2Token{"ISSOClient", 13, "RefreshOAuth2Token"};
inline constexpr PluginOperation GetServer{"ISSOClient", 14, "GetServer"};
inline constexpr PluginOperation SetServer{"ISSOClient", 15, "SetServer"};
inline constexpr PluginOperation Logout{"ISSOClient", 16, "Logout"};
inline constexpr PluginOperation AddObserver{"ISSOClient", 17, "AddObserver"};
inline constexpr PluginOperation RemoveObserver{"ISSOClient", 18, "RemoveObserver"};
inline constexpr PluginOperation HasProxyInfo{"ISSOClient", 19, "HasProxyInfo"};
inline constexpr PluginOperation GetProxyInfo{"ISSOClient", 20, "GetProxyInfo"};
inline constexpr PluginOperation SetProxyInfo{"ISSOClient", 21, "SetProxyInfo"};
inline constexpr PluginOperation ClearProxyInfo{"ISSOClient", 22, "ClearProxyInfo"};
inline constexpr PluginOperation GetProfileInfo{"ISSOClient", 23, "GetProfileInfo"};
inline constexpr PluginOperation GetEnvironment{"ISSOClient", 24, "GetEnvironment"};
inline constexpr PluginOperation DispatchEvent{"ISSOClient", 25, "DispatchEvent"};
inline constexpr PluginOperation HasEvent{"ISSOClient", 26, "HasEvent"};
inline constexpr PluginOperation AutomatedLogin{"ISSOClient", 27, "AutomatedLogin"};
inline constexpr PluginOperation Login{"ISSOClient", 28, "Login"};
inline constexpr PluginOperation Reserved29{"ISSOClient", 29, "Reserved29"};
inline constexpr PluginOperation SetHostApplicationWindow{"ISSOClient", 30, "SetHostApplicationWindow"};
inline constexpr PluginOperation ShowAccountSettings{"ISSOClient", 31, "ShowAccountSettings"};
inline constexpr PluginOperation OverrideCallConfig{"ISSOClient", 32, "OverrideCallConfig"};
inline constexpr PluginOperation OverrideBackoffConfig{"ISSOClient", 33, "OverrideBackoffConfig"};
inline constexpr PluginOperation IsApiAvailable{"ISSOClient", 34, "IsApiAvailable"};
inline constexpr PluginOperation GetOAuth2IdToken{"ISSOClient", 35, "GetOAuth2IdToken"};
inline constexpr PluginOperation SetLoginMode{"ISSOClient", 36, "SetLoginMode"};
inline constexpr PluginOperation GetLoginMode{"ISSOClient", 37, "GetLoginMode"};
} // namespace Client

namespace Private {
inline constexpr char Interface[] = "ISSOClientPrivate";
inline constexpr PluginOperation Reserved0{"ISSOClientPrivate", 0, "Reserved0"};
inline constexpr PluginOperation ServerToServerName{"ISSOClientPrivate", 1, "ServerToServerName"};
inline constexpr PluginOperation ServerNameToServer{"ISSOClientPrivate", 2, "ServerNameToServer"};
inline constexpr PluginOperation Encrypt{"ISSOClientPrivate", 3, "Encrypt"};
inline constexpr PluginOperation GetSettingsPath{"ISSOClientPrivate", 4, "GetSettingsPath"};
inline constexpr PluginOperation Reserved5{"ISSOClientPrivate", 5, "Reserved5"};
inline constexpr PluginOperation GetActiveOAuth2TokenRefreshRetrySchedule{"ISSOClientPrivate", 6, "GetActiveOAuth2TokenRefreshRetrySchedule"};
inline constexpr PluginOperation SetOAuth2TokenRefreshRetrySchedule{"ISSOClientPrivate", 7, "SetOAuth2TokenRefreshRetrySchedule"};
inline constexpr PluginOperation GetLoginStateCacheFileWithFlag{"ISSOClientPrivate", 8, "GetLoginStateCacheFileWithFlag"};
inline constexpr PluginOperation GetLoginStateCacheFile{"ISSOClientPrivate", 9, "GetLoginStateCacheFile"};
inline constexpr PluginOperation LoadLoginFromCache{"ISSOClientPrivate", 10, "LoadLoginFromCache"};
inline constexpr PluginOperation RaiseEvent{"ISSOClientPrivate", 11, "RaiseEvent"};
inline constexpr PluginOperation ToJsonString{"ISSOClientPrivate", 12, "ToJsonString"};
inline constexpr PluginOperation FromJsonString{"ISSOClientPrivate", 13, "FromJsonString"};
inline constexpr PluginOperation Equals{"ISSOClientPrivate", 14, "Equals"};
inline constexpr PluginOperation LockLoginStateFile{"ISSOClientPrivate", 15, "LockLoginStateFile"};
inline constexpr PluginOperation UnlockLoginStateFile{"ISSOClientPrivate", 16, "UnlockLoginStateFile"};
inline constexpr PluginOperation Ping{"ISSOClientPrivate", 17, "Ping"};
inline constexpr PluginOperation Reserved18{"ISSOClientPrivate", 18, "Reserved18"};
inline constexpr PluginOperation ClearEventQueue{"ISSOClientPrivate", 19, "ClearEventQueue"};
inline constexpr PluginOperation FreezeSSOServerProcess{"ISSOClientPrivate", 20, "FreezeSSOServerProcess"};
inline constexpr PluginOperation GetKillFrozenServerTimeout{"ISSOClientPrivate", 21, "GetKillFrozenServerTimeout"};
inline constexpr PluginOperation SetKillFrozenServerTimeout{"ISSOClientPrivate", 22, "SetKillFrozenServerTimeout"};
inline constexpr PluginOperation GetSessionState{"ISSOClientPrivate", 23, "GetSessionState"};
} // namespace Private

namespace ServerManager {
inline constexpr char Interface[] = "ISSOServerManager";
inline constexpr PluginOperation Reserved0{"ISSOServerManager", 0, "Reserved0"};
inline constexpr PluginOperation Reserved1{"ISSOServerManager", 1, "Reserved1"};
inline constexpr PluginOperation ConfigureServerApp{"ISSOServerManager", 2, "ConfigureServerApp"};
inline constexpr PluginOperation GetSSOServerAppFile{"ISSOServerManager", 3, "GetSSOServerAppFile"};
inline constexpr PluginOperation GetSSOServerAppExeFile{"ISSOServerManager", 4, "GetSSOServerAppExeFile"};
inline constexpr PluginOperation Reserved5{"ISSOServerManager", 5, "Reserved5"};
inline constexpr PluginOperation SetProcessIdentityName{"ISSOServerManager", 6, "SetProcessIdentityName"};
inline constexpr PluginOperation GetSSOServerName{"ISSOServerManager", 7, "GetSSOServerName"};
inline constexpr PluginOperation SetServerIdentityName{"ISSOServerManager", 8, "SetServerIdentityName"};
inline constexpr PluginOperation GetSSOEventServerName{"ISSOServerManager", 9, "GetSSOEventServerName"};
inline constexpr PluginOperation StartSSOServerProcessWithArguments{"ISSOServerManager", 10, "StartSSOServerProcessWithArguments"};
inline constexpr PluginOperation StartSSOServerProcess{"ISSOServerManager", 11, "StartSSOServerProcess"};
inline constexpr PluginOperation GetSSOServerProcessArguments{"ISSOServerManager", 12, "GetSSOServerProcessArguments"};
inline constexpr PluginOperation SetSSOServerProcessArguments{"ISSOServerManager", 13, "SetSSOServerProcessArguments"};
inline constexpr PluginOperation IsSSOServerProcessRunning{"ISSOServerManager", 14, "IsSSOServerProcessRunning"};
inline constexpr PluginOperation IsSSOServerProcessReady{"ISSOServerManager", 15, "IsSSOServerProcessReady"};
inline constexpr PluginOperation QuitSSOServerProcess{"ISSOServerManager", 16, "QuitSSOServerProcess"};
inline constexpr PluginOperation QuitAllSSOServerProcesses{"ISSOServerManager", 17, "QuitAllSSOServerProcesses"};
inline constexpr PluginOperation SetSupportBothLocalAndAdmin{"ISSOServerManager", 18, "SetSupportBothLocalAndAdmin"};
} // namespace ServerManager

namespace Observer {
inline constexpr char Interface[] = "IObserver";
inline constexpr PluginOperation OnLoggedIn{"IObserver", 0, "OnLoggedIn"};
inline constexpr PluginOperation OnLoggedOut{"IObserver", 1, "OnLoggedOut"};
inline constexpr PluginOperation OnAccountCreated{"IObserver", 2, "OnAccountCreated"};
inline constexpr PluginOperation OnTokenRefreshed{"IObserver", 3, "OnTokenRefreshed"};
inline constexpr PluginOperation OnTokenAvailable{"IObserver", 4, "OnTokenAvailable"};
inline constexpr PluginOperation OnServerChanged{"IObserver", 5, "OnServerChanged"};
inline constexpr PluginOperation OnAboutToLogout{"IObserver", 6, "OnAboutToLogout"};
inline constexpr PluginOperation OnLoginRestored{"IObserver", 7, "OnLoginRestored"};
inline constexpr PluginOperation OnOtherEvent{"IObserver", 8, "OnOtherEvent"};
inline constexpr PluginOperation Destructor{"IObserver", 9, "~IObserver"};
} // namespace Observer

// Classes of the library with a virtual destructor: their slots hold under the rules of Microsoft's compiler alone.

namespace Config {
inline constexpr PluginOperation Destructor{"BaseConfig", 0, "~BaseConfig"};
inline constexpr PluginOperation FromJson{"BaseConfig", 1, "FromJson"};
inline constexpr PluginOperation ToJson{"BaseConfig", 2, "ToJson"};
inline constexpr PluginOperation GetJsonVersion{"BaseConfig", 3, "GetJsonVersion"};
} // namespace Config

namespace Product {
inline constexpr PluginOperation Destructor{"ProductConfig", 0, "~ProductConfig"};
} // namespace Product

// clang-format on

/// The plugin's exported function, which is in no interface.
inline constexpr PluginOperation FactoryFunction{"", 0, "GetSSOClientFactory"};

} // namespace OrlindexTest

#endif
