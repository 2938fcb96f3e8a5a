// Every member of the private and server-process classes calls its own operation of the plugin, and only that one.

#include <cstring>
#include <future>
#include <set>
#include <stdexcept>
#include <type_traits>
#include <utility>

#include "PrivateTest.h"
#include "orlindex/SSOServerManager.h"

namespace OrlindexTest {

using namespace Kestrany::IdentityServices;
using Kestrany::StdUtil::RetrySchedule;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;
using testing::StartsWith;

using PrivateSlots = PrivateTest;

TEST(PrivateTable, ItHoldsEveryOperationThatTheSurfaceForwardsTo)
{
    std::set<std::string> operations;
    for (const PrivateMember& member : PrivateMembers())
        operations.insert(FullName(member.operation));
    std::set<std::string> expected;
    for (const PluginOperation& operation : {Private::ServerToServerName,
                                             Private::ServerNameToServer,
                                             Private::Encrypt,
                                             Private::GetSettingsPath,
                                             Private::GetActiveOAuth2TokenRefreshRetrySchedule,
                                             Private::SetOAuth2TokenRefreshRetrySchedule,
                                             Private::GetLoginStateCacheFileWithFlag,
                                             Private::GetLoginStateCacheFile,
                                             Private::LoadLoginFromCache,
                                             Private::RaiseEvent,
                                             Private::ToJsonString,
                                             Private::FromJsonString,
                                             Private::Equals,
                                             Private::LockLoginStateFile,
                                             Private::UnlockLoginStateFile,
                                             Private::Ping,
                                             Private::ClearEventQueue,
                                             Private::FreezeSSOServerProcess,
                                             Private::GetKillFrozenServerTimeout,
                                             Private::SetKillFrozenServerTimeout,
                                             Private::GetSessionState,
                                             ServerManager::GetSSOServerAppFile,
                                             ServerManager::GetSSOServerAppExeFile,
                                             ServerManager::GetSSOServerName,
                                             ServerManager::GetSSOEventServerName,
                                             ServerManager::StartSSOServerProcessWithArguments,
                                             ServerManager::StartSSOServerProcess,
                                             ServerManager::GetSSOServerProcessArguments,
                                             ServerManager::SetSSOServerProcessArguments,
                                             ServerManager::IsSSOServerProcessRunning,
                                             ServerManager::IsSSOServerProcessReady,
                                             ServerManager::QuitSSOServerProcess,
                                             ServerManager::QuitAllSSOServerProcesses,
                                             Module::GetProductName,
                                             Module::SetProductName})
        expected.insert(FullName(operation));
    EXPECT_EQ(operations, expected);
}

TEST_F(PrivateSlots, EveryMemberReachesItsSlotWithItsArgumentsInOrder)
{
    for (const PrivateMember& member : PrivateMembers())
    {
        SCOPED_TRACE(member.name);
        PrivateArguments arguments;
        Plugin().ClearJournal();
        member.call(arguments);
        const auto calls = Plugin().Calls();
        ASSERT_THAT(calls, SizeIs(1));
        const std::string shown = ArgumentsOf(calls.front());
        EXPECT_EQ(calls.front(), Call(member.operation, shown));
        EXPECT_THAT(shown, member.arguments(arguments));
    }
    EXPECT_THAT(Plugin().Log(), IsEmpty());
}

TEST_F(PrivateSlots, EveryMemberPassesThePluginsResultOn)
{
    for (const PrivateMember& member : PrivateMembers())
    {
        SCOPED_TRACE(member.name);
        for (const PassedOn& passedOn : member.results)
        {
            Plugin().Return(member.operation, passedOn.fromPlugin);
            PrivateArguments arguments;
            EXPECT_EQ(member.call(arguments), passedOn.result);
        }
    }
}

TEST_F(PrivateSlots, WhatThePluginLeavesAloneStaysAsItWas)
{
    const std::string before = PrivateArguments().Outputs();
    for (const PrivateMember& member : PrivateMembers())
    {
        SCOPED_TRACE(member.name);
        PrivateArguments arguments;
        member.call(arguments);
        EXPECT_EQ(arguments.Outputs(), before);
    }
}

TEST_F(PrivateSlots, TheFirstRequestLoadsThePluginAndNeedsNoInitialize)
{
    EXPECT_FALSE(IdServicesMgr::IsInitialized());
    EXPECT_EQ(IdServicesMgr::GetInstance(), nullptr);
    EXPECT_THAT(Plugin().Calls(), IsEmpty());
    Plugin().Return(Private::LoadLoginFromCache, 1);
    EXPECT_TRUE(SSOClientPrivate::LoadLoginFromCache(true));
    EXPECT_THAT(Plugin().Calls(), ElementsAre(Call(Private::LoadLoginFromCache, "true")));
}

// Retry schedules

TEST_F(PrivateSlots, TheActiveRetryScheduleIsWhatThePluginFillsIn)
{
    Plugin().OnCall(Private::GetActiveOAuth2TokenRefreshRetrySchedule, [](const CallArguments& call) {
        auto& schedule = *call.Pointer<RetrySchedule>(0);
        EXPECT_EQ(Shown(schedule), "0:") << "it comes to the plugin empty";
        schedule.limit = -0x123456789A;
        schedule.steps = {{1, 2}, {0x123456789B, -4}, {0, 0}};
    });
    EXPECT_EQ(Shown(SSOClientPrivate::GetActiveOAuth2TokenRefreshRetrySchedule()),
              "-78187493530: 1x2 78187493531x-4 0x0");
}

TEST_F(PrivateSlots, ARetryScheduleReachesThePluginWithEveryStep)
{
    std::string seen;
    Plugin().OnCall(Private::SetOAuth2TokenRefreshRetrySchedule,
                    [&seen](const CallArguments& call) { seen = Shown(*call.Pointer<const RetrySchedule>(0)); });
    SSOClientPrivate::SetOAuth2TokenRefreshRetrySchedule({-1, {{5, 6}, {-7, 0x123456789A}}});
    EXPECT_EQ(seen, "-1: 5x6 -7x78187493530");
    SSOClientPrivate::SetOAuth2TokenRefreshRetrySchedule({});
    EXPECT_EQ(seen, "0:");
}

// What a schedule is in memory is a contract with plugins of other builds: a leading value of 8 bytes, then the entries
// of 16 bytes each.
static_assert(sizeof(Kestrany::StdUtil::RetryStep) == 16);
static_assert(offsetof(RetrySchedule, limit) == 0 && offsetof(RetrySchedule, steps) == 8);
static_assert(sizeof(RetrySchedule) == 8 + sizeof(std::vector<Kestrany::StdUtil::RetryStep>));

// Ping

TEST_F(PrivateSlots, PingWithoutMapAndPingWithMapReachTheSamePluginSlot)
{
    std::map<std::string, std::string> message;
    SSOClientPrivate::Ping();
    SSOClientPrivate::Ping(message);
    const auto calls = Plugin().Calls();
    ASSERT_THAT(calls, SizeIs(2));
    EXPECT_THAT(calls[0], StartsWith(FullName(Private::Ping) + "(@"));
    EXPECT_EQ(calls[1], Call(Private::Ping, Address(&message)));
}

TEST_F(PrivateSlots, PingHandsOverWhatThePluginPutIntoTheMap)
{
    Plugin().Return(Private::Ping, 1);
    Plugin().OnCall(Private::Ping, [](const CallArguments& call) {
        auto& message = *call.Pointer<std::map<std::string, std::string>>(0);
        EXPECT_EQ(message.count("old"), 1U);
        message["version"] = "a text that is too long to be kept inside the string object";
        message["old"] = "new";
    });
    std::map<std::string, std::string> message{{"old", "old"}};
    EXPECT_TRUE(SSOClientPrivate::Ping(message));
    EXPECT_THAT(message, ElementsAre(Pair("old", "new"),
                                     Pair("version", "a text that is too long to be kept inside the string object")));
}

TEST_F(PrivateSlots, PingWithoutMapGivesThePluginAnEmptyMapAndDiscardsWhatItPutsThere)
{
    Plugin().Return(Private::Ping, 1);
    int sizes = 0;
    Plugin().OnCall(Private::Ping, [&sizes](const CallArguments& call) {
        auto& message = *call.Pointer<std::map<std::string, std::string>>(0);
        sizes += static_cast<int>(message.size());
        message["key"] = "a text that is too long to be kept inside the string object";
    });
    EXPECT_TRUE(SSOClientPrivate::Ping());
    EXPECT_TRUE(SSOClientPrivate::Ping());
    EXPECT_EQ(sizes, 0);
}

// The product's name

TEST_F(PrivateSlots, TheProductNameHas256CharactersWheneverThePluginReportsAName)
{
    // The number that the plugin reports says no more than that there is a name.
    Plugin().OnCall(Module::GetProductName,
                    [](const CallArguments& call) { std::wcscpy(call.Pointer<wchar_t>(0), L"Product \x4E2D"); });
    for (const int reported : {1, 9, 256, 100000})
    {
        Plugin().Return(Module::GetProductName, reported);
        const std::wstring name = SSOClientPrivate::GetProductName();
        EXPECT_EQ(name.size(), 256U);
        EXPECT_STREQ(name.c_str(), L"Product \x4E2D");
    }
}

TEST_F(PrivateSlots, TheProductNameIsNotCutAtItsTerminatingZero)
{
    Plugin().Return(Module::GetProductName, 1);
    Plugin().OnCall(Module::GetProductName, [](const CallArguments& call) {
        auto* const buffer = call.Pointer<wchar_t>(0);
        std::wmemset(buffer, L'x', 256);
        buffer[1] = L'\0';
        buffer[255] = L'z';
    });
    EXPECT_EQ(SSOClientPrivate::GetProductName(), L"x" + std::wstring(1, L'\0') + std::wstring(253, L'x') + L"z");
}

TEST_F(PrivateSlots, TheProductNameIsEmptyWhenThePluginReportsNone)
{
    Plugin().OnCall(Module::GetProductName,
                    [](const CallArguments& call) { std::wcscpy(call.Pointer<wchar_t>(0), L"Product"); });
    for (const int reported : {0, -1, -256})
    {
        Plugin().Return(Module::GetProductName, reported);
        EXPECT_EQ(SSOClientPrivate::GetProductName(), L"");
    }
}

// Other outputs

TEST_F(PrivateSlots, WhatThePluginWritesArrivesInTheCallersArguments)
{
    const auto writeText = [](const char* text) {
        return [text](const CallArguments& call) { std::strcpy(call.Pointer<char>(0), text); };
    };
    const auto writeWideText = [](const wchar_t* text) {
        return [text](const CallArguments& call) { std::wcscpy(call.Pointer<wchar_t>(0), text); };
    };
    const auto writeProcessId = [](std::size_t index, std::int64_t processId) {
        return [index, processId](const CallArguments& call) { *call.Pointer<std::int64_t>(index) = processId; };
    };
    Plugin().OnCall(Private::FromJsonString, [](const CallArguments& call) {
        *call.Pointer<Server>(0) = TALIX_SERVER_STAGING;
        call.Pointer<ProductConfig>(1)->SetOAuth2ClientID("read");
    });
    Plugin().OnCall(ServerManager::GetSSOServerAppFile, writeWideText(L"Pellwick.exe"));
    Plugin().OnCall(ServerManager::GetSSOServerAppExeFile, writeWideText(L"C:\\Pellwick.exe"));
    Plugin().OnCall(ServerManager::GetSSOServerName, writeText("server"));
    Plugin().OnCall(ServerManager::GetSSOEventServerName, writeText("events"));
    Plugin().OnCall(ServerManager::StartSSOServerProcessWithArguments, writeProcessId(3, 0x123456789A));
    Plugin().OnCall(ServerManager::StartSSOServerProcess, writeProcessId(1, -2));
    Plugin().OnCall(ServerManager::GetSSOServerProcessArguments, [](const CallArguments& call) {
        std::strcpy(call.Pointer<char*>(0)[0], "--one");
        std::strcpy(call.Pointer<char*>(0)[1], "--two");
    });
    Plugin().OnCall(ServerManager::IsSSOServerProcessRunning, writeProcessId(0, 3));

    PrivateArguments arguments;
    SSOClientPrivate::FromJsonString(&arguments.server, &arguments.config, "{}");
    EXPECT_EQ(arguments.server, TALIX_SERVER_STAGING);
    char clientId[8] = {};
    arguments.config.GetOAuth2ClientID(clientId, sizeof clientId);
    EXPECT_STREQ(clientId, "read");
    SSOServerManager::GetSSOServerAppFile(arguments.wideText, 32);
    EXPECT_STREQ(arguments.wideText, L"Pellwick.exe");
    SSOServerManager::GetSSOServerAppExeFile(arguments.wideText, 32);
    EXPECT_STREQ(arguments.wideText, L"C:\\Pellwick.exe");
    SSOClientPrivate::GetSSOServerName(arguments.text, 32);
    EXPECT_STREQ(arguments.text, "server");
    SSOClientPrivate::GetSSOEventServerName(arguments.text, 32);
    EXPECT_STREQ(arguments.text, "events");
    SSOClientPrivate::StartSSOServerProcess(arguments.texts, 2, std::chrono::milliseconds(0), arguments.processId);
    EXPECT_EQ(arguments.processId, 0x123456789A);
    SSOServerManager::StartSSOServerProcess(std::chrono::milliseconds(0), arguments.processId);
    EXPECT_EQ(arguments.processId, -2);
    SSOClientPrivate::GetSSOServerProcessArguments(arguments.buffers, 2);
    EXPECT_STREQ(arguments.text, "--one");
    EXPECT_STREQ(arguments.otherText, "--two");
    SSOServerManager::IsSSOServerProcessRunning(arguments.processId);
    EXPECT_EQ(arguments.processId, 3);
}

TEST_F(PrivateSlots, ThePluginSeesEveryProcessArgument)
{
    std::vector<std::string> seen;
    const auto read = [&seen](const CallArguments& call) {
        for (std::size_t i = 0; i < call.Number(1); ++i)
            seen.emplace_back(call.Pointer<const char*>(0)[i]);
    };
    Plugin().OnCall(ServerManager::StartSSOServerProcessWithArguments, read);
    Plugin().OnCall(ServerManager::SetSSOServerProcessArguments, read);
    const char* texts[] = {"--a b", "", "\xC3\xBC"};
    std::int64_t processId = 0;
    SSOClientPrivate::StartSSOServerProcess(texts, 3, std::chrono::milliseconds(1), processId);
    EXPECT_THAT(seen, ElementsAre("--a b", "", "\xC3\xBC"));
    SSOClientPrivate::SetSSOServerProcessArguments(texts, 2);
    EXPECT_THAT(seen, ElementsAre("--a b", "", "\xC3\xBC", "--a b", ""));
}

TEST_F(PrivateSlots, ThePluginCanCallTheFreezeCallback)
{
    static std::string asked;
    const FreezeCallback callback = [](const char* request, int requestSize, char* answer, int answerSize,
                                       void* context) {
        asked = request + std::to_string(requestSize) + '/' + std::to_string(answerSize);
        answer[0] = 'y';
        return *static_cast<int*>(context);
    };
    char answer[4] = "no";
    int result = 0;
    Plugin().OnCall(Private::FreezeSSOServerProcess, [&](const CallArguments& call) {
        int context = 4714;
        result = reinterpret_cast<FreezeCallback>(call.Number(0))("request", 8, answer, 4, &context);
    });
    SSOClientPrivate::FreezeSSOServerProcess(callback);
    EXPECT_EQ(result, 4714);
    EXPECT_EQ(asked, "request8/4");
    EXPECT_STREQ(answer, "yo");
}

// Errors, threads and locks

TEST_F(PrivateSlots, AnExceptionOfThePluginPassesToTheCaller)
{
    for (const PrivateMember& member : PrivateMembers())
    {
        SCOPED_TRACE(member.name);
        Plugin().OnCall(member.operation, [](const CallArguments&) { throw std::length_error("of the plugin"); });
        PrivateArguments arguments;
        EXPECT_THROW(member.call(arguments), std::length_error);
    }
}

TEST_F(PrivateSlots, ThePluginRunsOnTheCallersThreadWithNoLockHeld)
{
    // Another thread asks for every interface while this one is inside the plugin.
    DWORD thread = 0;
    const auto askFromElsewhere = [&thread](const CallArguments&) {
        thread = GetCurrentThreadId();
        std::async(std::launch::async, []() {
            SSOClientPrivate::ClearEventQueue();
            SSOServerManager::IsSSOServerProcessReady();
            SSOClientPrivate::SetProductName(L"");
            return SSOClientPrivate::GetModuleDirPath(L"Orlindex.dll");
        }).get();
    };
    Plugin().OnCall(Private::Ping, askFromElsewhere);
    Plugin().OnCall(ServerManager::QuitSSOServerProcess, askFromElsewhere);
    Plugin().OnCall(Module::GetProductName, askFromElsewhere);
    const auto calls = {+[]() { SSOClientPrivate::Ping(); },
                        +[]() { SSOServerManager::QuitSSOServerProcess(std::chrono::milliseconds(60000)); },
                        +[]() { SSOClientPrivate::GetProductName(); }};
    for (const auto call : calls)
    {
        thread = 0;
        call();
        EXPECT_EQ(thread, GetCurrentThreadId());
    }
}

// Both classes hold nothing.
static_assert(std::is_empty_v<SSOClientPrivate> && std::is_empty_v<SSOServerManager>);

template <typename Class>
void ExpectAssignmentDoesNothing()
{
    Class target;
    Class source;
    EXPECT_EQ(&(target = source), &target);
    EXPECT_EQ(&(target = std::move(source)), &target);
}

TEST_F(PrivateSlots, AssignmentDoesNothing)
{
    ExpectAssignmentDoesNothing<SSOClientPrivate>();
    ExpectAssignmentDoesNothing<SSOServerManager>();
    EXPECT_THAT(Plugin().Calls(), IsEmpty());
}

} // namespace OrlindexTest
