#include "PrivateMembers.h"

#include <chrono>
#include <limits>
#include <type_traits>

#include "ShownArguments.h"
#include "orlindex/IdServicesMgr.h"
#include "orlindex/SSOClientPrivate.h"
#include "orlindex/SSOServerManager.h"
#include "support/PluginControl.h"
#include "support/Text.h"

namespace OrlindexTest {

using namespace Kestrany::IdentityServices;
using testing::Eq;

namespace {

using Arguments = PrivateArguments;
using Duration = std::chrono::milliseconds;
using Seconds = std::chrono::seconds;

constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t smallest = std::numeric_limits<std::int64_t>::min();

constexpr wchar_t wide[] = L"C:\\\x00FC\x4E2D";
constexpr char utf8[] = "C:\\\xC3\xBC\xE4\xB8\xAD";

template <typename Text>
std::int64_t Pointer(const Text* text)
{
    return static_cast<std::int64_t>(reinterpret_cast<std::intptr_t>(text));
}

const std::vector<PassedOn> wideTexts{{Pointer(wide), utf8}, {Pointer(L""), ""}, {Pointer(L"a"), "a"}, {0, ""}};
const std::vector<PassedOn> narrowTexts{{Pointer(utf8), utf8}, {Pointer(""), ""}, {Pointer("\xFF"), "\xFF"}, {0, ""}};
const std::vector<PassedOn> booleans{{1, "true"}, {0, "false"}};
const std::vector<PassedOn> lengths{{9, "9"}, {0, "0"}, {-1, "-1"}};
const std::vector<PassedOn> servers{{7, "7"}, {0, "0"}, {-1, "-1"}, {0x12345678, "305419896"}};
const std::vector<PassedOn> seconds{
    {90, "90"}, {0, "0"}, {-1, "-1"}, {largest, std::to_string(largest)}, {smallest, std::to_string(smallest)}};
const std::vector<PassedOn> nothing;

template <typename Result>
std::string ShownResult(const Result& result)
{
    if constexpr (std::is_same_v<Result, bool>)
        return result ? "true" : "false";
    else if constexpr (std::is_same_v<Result, std::wstring>)
        return ToUtf8(result);
    else if constexpr (std::is_same_v<Result, std::string>)
        return result;
    else if constexpr (std::is_same_v<Result, Seconds>)
        return std::to_string(result.count());
    else if constexpr (std::is_same_v<Result, Kestrany::StdUtil::RetrySchedule>)
        return Shown(result);
    else
        return std::to_string(static_cast<std::int64_t>(result));
}

/// The call, with its result as a text.
template <typename Call>
auto Calling(Call call)
{
    return [call](Arguments& arguments) -> std::string {
        if constexpr (std::is_void_v<decltype(call(arguments))>)
            return call(arguments), std::string();
        else
            return ShownResult(call(arguments));
    };
}

const auto None = Exactly("");

int Freeze(const char*, int, char*, int, void*)
{
    return 0;
}

std::string Text(const ProductConfig& config)
{
    char text[32] = {};
    config.GetProductLineName(text, sizeof text);
    return text;
}

void Append(std::vector<PrivateMember>& members, std::vector<PrivateMember> more)
{
    members.insert(members.end(), more.begin(), more.end());
}

std::vector<PrivateMember> OfPrivateInterface()
{
    return {
        {"ServerToServerName", Private::ServerToServerName,
         Calling([](Arguments& a) { return SSOClientPrivate::ServerToServerName(a.server); }), Exactly("4711"),
         wideTexts, ""},
        {"ServerNameToServer", Private::ServerNameToServer,
         Calling([](Arguments&) { return SSOClientPrivate::ServerNameToServer(wide); }),
         Exactly('"' + std::string(utf8) + '"'), servers, "-1"},
        {"ServerNameToServer of no name", Private::ServerNameToServer,
         Calling([](Arguments&) { return SSOClientPrivate::ServerNameToServer({}); }), Exactly("\"\""), servers, "-1"},
        {"Encrypt", Private::Encrypt, Calling([](Arguments&) { return SSOClientPrivate::Encrypt(wide); }),
         Exactly('"' + std::string(utf8) + '"'), wideTexts, ""},
        {"Encrypt up to the first zero", Private::Encrypt,
         Calling([](Arguments&) { return SSOClientPrivate::Encrypt({L"a\0b", 3}); }), Exactly("\"a\""), wideTexts, ""},
        {"GetSettingsPath", Private::GetSettingsPath,
         Calling([](Arguments&) { return SSOClientPrivate::GetSettingsPath(); }), None, wideTexts, ""},
        {"GetActiveOAuth2TokenRefreshRetrySchedule", Private::GetActiveOAuth2TokenRefreshRetrySchedule,
         Calling([](Arguments&) { return SSOClientPrivate::GetActiveOAuth2TokenRefreshRetrySchedule(); }), Like("@"),
         nothing, "0:"},
        {"SetOAuth2TokenRefreshRetrySchedule", Private::SetOAuth2TokenRefreshRetrySchedule,
         Calling([](Arguments& a) { return SSOClientPrivate::SetOAuth2TokenRefreshRetrySchedule(a.schedule); }),
         [](const Arguments& a) { return Eq(Address(&a.schedule)); }, booleans, "false"},
        {"GetLoginStateCacheFile with flag", Private::GetLoginStateCacheFileWithFlag,
         Calling([](Arguments& a) { return SSOClientPrivate::GetLoginStateCacheFile(L"one", a.server, true); }),
         Exactly("\"one\", 4711, true"), wideTexts, ""},
        {"GetLoginStateCacheFile with cleared flag", Private::GetLoginStateCacheFileWithFlag, Calling([](Arguments&) {
             return SSOClientPrivate::GetLoginStateCacheFile(L"", static_cast<Server>(-2), false);
         }),
         Exactly("\"\", -2, false"), wideTexts, ""},
        {"GetLoginStateCacheFile", Private::GetLoginStateCacheFile,
         Calling([](Arguments& a) { return SSOClientPrivate::GetLoginStateCacheFile(L"two", a.server); }),
         Exactly("\"two\", 4711"), wideTexts, ""},
        {"LoadLoginFromCache", Private::LoadLoginFromCache,
         Calling([](Arguments&) { return SSOClientPrivate::LoadLoginFromCache(true); }), Exactly("true"), booleans,
         "false"},
        {"LoadLoginFromCache with cleared flag", Private::LoadLoginFromCache,
         Calling([](Arguments&) { return SSOClientPrivate::LoadLoginFromCache(false); }), Exactly("false"), booleans,
         "false"},
        {"RaiseEvent", Private::RaiseEvent,
         Calling([](Arguments&) { return SSOClientPrivate::RaiseEvent(IdServicesConsts::ServerChanged, true); }),
         Exactly("7, true"), nothing, ""},
        {"RaiseEvent of no name", Private::RaiseEvent, Calling([](Arguments&) {
             return SSOClientPrivate::RaiseEvent(static_cast<IdServicesConsts::IdServicesEvent>(-9), false);
         }),
         Exactly("-9, false"), nothing, ""},
        {"ToJsonString", Private::ToJsonString,
         Calling([](Arguments& a) { return SSOClientPrivate::ToJsonString(a.server, &a.config); }),
         [](const Arguments& a) { return Eq("4711, " + Address(&a.config)); }, narrowTexts, ""},
        {"ToJsonString of nothing", Private::ToJsonString,
         Calling([](Arguments& a) { return SSOClientPrivate::ToJsonString(a.server, nullptr); }), Exactly("4711, @0"),
         narrowTexts, ""},
        {"FromJsonString", Private::FromJsonString,
         Calling([](Arguments& a) { return SSOClientPrivate::FromJsonString(&a.server, &a.config, utf8); }),
         [](const Arguments& a) { return Eq(Address(&a.server) + ", " + Address(&a.config) + ", \"" + utf8 + '"'); },
         booleans, "false"},
        {"FromJsonString to nowhere", Private::FromJsonString,
         Calling([](Arguments&) { return SSOClientPrivate::FromJsonString(nullptr, nullptr, {}); }),
         Exactly("@0, @0, \"\""), booleans, "false"},
        {"Equals", Private::Equals,
         Calling([](Arguments& a) { return SSOClientPrivate::Equals(a.config, a.otherConfig); }),
         [](const Arguments& a) { return Eq(Address(&a.config) + ", " + Address(&a.otherConfig)); }, booleans, "false"},
        {"LockLoginStateFile", Private::LockLoginStateFile,
         Calling([](Arguments&) { return SSOClientPrivate::LockLoginStateFile(); }), None, nothing, ""},
        {"UnlockLoginStateFile", Private::UnlockLoginStateFile,
         Calling([](Arguments&) { return SSOClientPrivate::UnlockLoginStateFile(); }), None, nothing, ""},
        {"Ping with map", Private::Ping, Calling([](Arguments& a) { return SSOClientPrivate::Ping(a.message); }),
         [](const Arguments& a) { return Eq(Address(&a.message)); }, booleans, "false"},
        {"Ping", Private::Ping, Calling([](Arguments&) { return SSOClientPrivate::Ping(); }), Like("@"), booleans,
         "false"},
        {"ClearEventQueue", Private::ClearEventQueue,
         Calling([](Arguments&) { return SSOClientPrivate::ClearEventQueue(); }), None, nothing, ""},
        {"FreezeSSOServerProcess", Private::FreezeSSOServerProcess,
         Calling([](Arguments&) { return SSOClientPrivate::FreezeSSOServerProcess(&Freeze); }),
         Exactly(Address(reinterpret_cast<const void*>(&Freeze))), booleans, "false"},
        {"FreezeSSOServerProcess without callback", Private::FreezeSSOServerProcess,
         Calling([](Arguments&) { return SSOClientPrivate::FreezeSSOServerProcess(nullptr); }), Exactly("@0"), booleans,
         "false"},
        {"GetKillFrozenServerTimeout", Private::GetKillFrozenServerTimeout,
         Calling([](Arguments&) { return SSOClientPrivate::GetKillFrozenServerTimeout(); }), None, seconds, "0"},
        {"SetKillFrozenServerTimeout", Private::SetKillFrozenServerTimeout,
         Calling([](Arguments&) { return SSOClientPrivate::SetKillFrozenServerTimeout(Seconds(0x123456789A)); }),
         Exactly("78187493530"), booleans, "false"},
        {"SetKillFrozenServerTimeout to zero", Private::SetKillFrozenServerTimeout,
         Calling([](Arguments&) { return SSOClientPrivate::SetKillFrozenServerTimeout(Seconds(0)); }), Exactly("0"),
         booleans, "false"},
        {"SetKillFrozenServerTimeout to a negative count", Private::SetKillFrozenServerTimeout,
         Calling([](Arguments&) { return SSOClientPrivate::SetKillFrozenServerTimeout(Seconds(-3)); }), Exactly("-3"),
         booleans, "false"},
        {"GetSessionState", Private::GetSessionState,
         Calling([](Arguments&) { return SSOClientPrivate::GetSessionState(); }), None, narrowTexts, ""},
    };
}

/// Through SSOClientPrivate.
std::vector<PrivateMember> OfServerManagerInterface()
{
    return {
        {"GetSSOServerName", ServerManager::GetSSOServerName,
         Calling([](Arguments& a) { return SSOClientPrivate::GetSSOServerName(a.text, 31); }),
         [](const Arguments& a) { return Eq(Address(a.text) + ", 31"); }, lengths, "0"},
        {"GetSSOServerName to nowhere", ServerManager::GetSSOServerName,
         Calling([](Arguments&) { return SSOClientPrivate::GetSSOServerName(nullptr, -1); }), Exactly("@0, -1"),
         lengths, "0"},
        {"GetSSOEventServerName", ServerManager::GetSSOEventServerName,
         Calling([](Arguments& a) { return SSOClientPrivate::GetSSOEventServerName(a.text, 30); }),
         [](const Arguments& a) { return Eq(Address(a.text) + ", 30"); }, lengths, "0"},
        {"StartSSOServerProcess with arguments", ServerManager::StartSSOServerProcessWithArguments,
         Calling([](Arguments& a) {
             return SSOClientPrivate::StartSSOServerProcess(a.texts, 2, Duration(0x123456789B), a.processId);
         }),
         [](const Arguments& a) { return Eq(Address(a.texts) + ", 2, 78187493531, " + Address(&a.processId)); },
         booleans, "false"},
        {"StartSSOServerProcess with no arguments and no time", ServerManager::StartSSOServerProcessWithArguments,
         Calling([](Arguments& a) {
             return SSOClientPrivate::StartSSOServerProcess(nullptr, 0, Duration(0), a.processId);
         }),
         [](const Arguments& a) { return Eq("@0, 0, 0, " + Address(&a.processId)); }, booleans, "false"},
        {"StartSSOServerProcess with arguments and a negative time", ServerManager::StartSSOServerProcessWithArguments,
         Calling([](Arguments& a) {
             return SSOClientPrivate::StartSSOServerProcess(a.texts, -2, Duration(-1), a.processId);
         }),
         [](const Arguments& a) { return Eq(Address(a.texts) + ", -2, -1, " + Address(&a.processId)); }, booleans,
         "false"},
        {"GetSSOServerProcessArguments", ServerManager::GetSSOServerProcessArguments,
         Calling([](Arguments& a) { return SSOClientPrivate::GetSSOServerProcessArguments(a.buffers, 2); }),
         [](const Arguments& a) { return Eq(Address(a.buffers) + ", 2"); }, booleans, "false"},
        {"SetSSOServerProcessArguments", ServerManager::SetSSOServerProcessArguments,
         Calling([](Arguments& a) { return SSOClientPrivate::SetSSOServerProcessArguments(a.texts, 2); }),
         [](const Arguments& a) { return Eq(Address(a.texts) + ", 2"); }, nothing, ""},
        {"SetSSOServerProcessArguments to none", ServerManager::SetSSOServerProcessArguments,
         Calling([](Arguments&) { return SSOClientPrivate::SetSSOServerProcessArguments(nullptr, 0); }),
         Exactly("@0, 0"), nothing, ""},
    };
}

std::vector<PrivateMember> OfModuleInterface()
{
    return {
        {"GetProductName",
         Module::GetProductName,
         Calling([](Arguments&) { return SSOClientPrivate::GetProductName(); }),
         Like("@, 256"),
         {{0, ""}, {-1, ""}},
         ""},
        {"SetProductName", Module::SetProductName,
         Calling([](Arguments&) { return SSOClientPrivate::SetProductName(wide); }),
         Exactly('"' + std::string(utf8) + '"'), nothing, ""},
        {"SetProductName up to the first zero", Module::SetProductName,
         Calling([](Arguments&) { return SSOClientPrivate::SetProductName({L"a\0b", 3}); }), Exactly("\"a\""), nothing,
         ""},
    };
}

/// One member with a large, a zero and a negative time.
template <typename Call>
std::vector<PrivateMember> WithTimes(
    const std::string& name, const PluginOperation& operation, Call call,
    std::function<std::string(const Arguments&)> rest = [](const Arguments&) { return std::string(); })
{
    std::vector<PrivateMember> members;
    for (const std::int64_t count : {std::int64_t{0x123456789C}, std::int64_t{0}, std::int64_t{-1}, largest, smallest})
        members.push_back({name + " within " + std::to_string(count), operation,
                           Calling([call, count](Arguments& a) { return call(a, count); }),
                           [count, rest](const Arguments& a) { return Eq(std::to_string(count) + rest(a)); }, booleans,
                           "false"});
    return members;
}

std::vector<PrivateMember> OfServerManagerClass()
{
    std::vector<PrivateMember> members{
        {"GetSSOServerAppFile", ServerManager::GetSSOServerAppFile,
         Calling([](Arguments& a) { return SSOServerManager::GetSSOServerAppFile(a.wideText, 32); }),
         [](const Arguments& a) { return Eq(Address(a.wideText) + ", 32"); }, nothing, ""},
        {"GetSSOServerAppExeFile", ServerManager::GetSSOServerAppExeFile,
         Calling([](Arguments& a) { return SSOServerManager::GetSSOServerAppExeFile(a.wideText, -31); }),
         [](const Arguments& a) { return Eq(Address(a.wideText) + ", -31"); }, nothing, ""},
        {"IsSSOServerProcessRunning with process ID", ServerManager::IsSSOServerProcessRunning,
         Calling([](Arguments& a) { return SSOServerManager::IsSSOServerProcessRunning(a.processId); }),
         [](const Arguments& a) { return Eq(Address(&a.processId)); }, booleans, "false"},
        {"IsSSOServerProcessRunning", ServerManager::IsSSOServerProcessRunning,
         Calling([](Arguments&) { return SSOServerManager::IsSSOServerProcessRunning(); }), Like("@"), booleans,
         "false"},
        {"IsSSOServerProcessReady", ServerManager::IsSSOServerProcessReady,
         Calling([](Arguments&) { return SSOServerManager::IsSSOServerProcessReady(); }), None, booleans, "false"},
    };
    Append(members, WithTimes(
                        "StartSSOServerProcess", ServerManager::StartSSOServerProcess,
                        [](Arguments& a, std::int64_t count) {
                            return SSOServerManager::StartSSOServerProcess(Duration(count), a.processId);
                        },
                        [](const Arguments& a) { return ", " + Address(&a.processId); }));
    Append(members,
           WithTimes("QuitSSOServerProcess", ServerManager::QuitSSOServerProcess, [](Arguments&, std::int64_t count) {
               return SSOServerManager::QuitSSOServerProcess(Duration(count));
           }));
    Append(members, WithTimes("QuitAllSSOServerProcesses", ServerManager::QuitAllSSOServerProcesses,
                              [](Arguments&, std::int64_t count) {
                                  return SSOServerManager::QuitAllSSOServerProcesses(Duration(count));
                              }));
    Append(members, WithTimes("IdServicesMgr::QuitAllSSOServerProcesses", ServerManager::QuitAllSSOServerProcesses,
                              [](Arguments&, std::int64_t count) {
                                  return ManagerWithoutState().QuitAllSSOServerProcesses(count);
                              }));
    return members;
}

} // namespace

PrivateArguments::PrivateArguments()
{
    config.SetProductLineName("untouched line");
    otherConfig.SetProductLineName("untouched other line");
}

std::string PrivateArguments::Outputs() const
{
    std::string outputs = ShownResult(server) + ' ' + Text(config) + ' ' + Text(otherConfig) + ' ' + Shown(schedule) +
                          ' ' + std::to_string(processId) + ' ' + std::string(text, sizeof text) +
                          std::string(otherText, sizeof otherText) + ToUtf8({wideText, 32});
    for (const auto& [key, value] : message)
        outputs += key + '=' + value + ';';
    return outputs;
}

std::vector<PrivateMember> PrivateMembers()
{
    std::vector<PrivateMember> members = OfPrivateInterface();
    Append(members, OfServerManagerInterface());
    Append(members, OfModuleInterface());
    Append(members, OfServerManagerClass());
    return members;
}

std::string Shown(const Kestrany::StdUtil::RetrySchedule& schedule)
{
    std::string shown = std::to_string(schedule.limit) + ':';
    for (const Kestrany::StdUtil::RetryStep& step : schedule.steps)
        shown += ' ' + std::to_string(step.delay) + 'x' + std::to_string(step.tries);
    return shown;
}

IdServicesMgr& ManagerWithoutState()
{
    static void* storage = nullptr;
    return reinterpret_cast<IdServicesMgr&>(storage);
}

} // namespace OrlindexTest
