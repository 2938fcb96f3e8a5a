// Event callbacks: how they are registered, and what they receive when the plugin calls the library's observer.

#include <functional>
#include <future>
#include <map>
#include <ostream>
#include <tuple>
#include <utility>

#include "FlatTest.h"
#include "orlindex/IObserver.h"

namespace OrlindexTest {

using Kestrany::IdentityServices::IObserver;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;

namespace {

/// What a callback received.
struct Event
{
    char callback;
    std::int32_t code;
    std::int32_t status;
    void* value;
    DWORD thread;

    bool operator==(const Event& other) const
    {
        return std::tie(callback, code, status, value) ==
               std::tie(other.callback, other.code, other.status, other.value);
    }
};

void PrintTo(const Event& event, std::ostream* stream)
{
    *stream << event.callback << " (" << event.code << ", " << event.status << ", " << event.value << ')';
}

std::vector<Event> events;

/// What a callback does after it recorded its call.
std::map<char, std::function<void()>> actions;

template <char Name>
void TALIX_CALL Record(std::int32_t code, std::int32_t status, void* value)
{
    events.push_back({Name, code, status, value, GetCurrentThreadId()});
    if (const auto action = actions.find(Name); action != actions.end())
        std::function<void()>(action->second)(); // A copy: it may replace itself.
}

const talix_event_callback a = &Record<'a'>;
const talix_event_callback b = &Record<'b'>;
const talix_event_callback c = &Record<'c'>;

Event Received(char callback, std::int32_t code, std::int32_t status, void* value)
{
    return {callback, code, status, value, 0};
}

/// Calls an operation of an observer through its slot, as a plugin of another compiler does.
bool CallObserver(void* observer, const PluginOperation& operation, const void* argument)
{
    using Operation = bool (*)(void*, const void*);
    void** const table = *static_cast<void***>(observer);
    return reinterpret_cast<Operation>(table[operation.slot])(observer, argument);
}

} // namespace

class Events : public FlatTest
{
protected:
    Events()
    {
        events.clear();
        actions.clear();
    }

    void SetUp() override
    {
        FlatTest::SetUp();
        NoteObserver();
    }

    void NoteObserver()
    {
        Plugin().OnCall(Client::AddObserver, [this](const CallArguments& call) { observer = call.Pointer<void>(0); });
    }

    /// Has the plugin call the observer while the host dispatches, and returns what the observer returned.
    bool Dispatch(const PluginOperation& operation, const void* argument)
    {
        bool result = false;
        Plugin().OnCall(Client::DispatchEvent,
                        [&](const CallArguments&) { result = CallObserver(observer, operation, argument); });
        EXPECT_EQ(talix_dispatch_events(), IdSuccess);
        return result;
    }

    void Raise(const PluginOperation& operation, std::int32_t status) { Dispatch(operation, &status); }

    /// Has the plugin deliver several events while the host dispatches once.
    void RaiseInOneDispatch(const std::vector<PluginOperation>& operations)
    {
        static const std::int32_t success = IdSuccess;
        Plugin().OnCall(Client::DispatchEvent, [this, operations](const CallArguments&) {
            for (const PluginOperation& operation : operations)
                CallObserver(observer, operation, &success);
        });
        EXPECT_EQ(talix_dispatch_events(), IdSuccess);
    }

    /// Callbacks and codes of the events that arrived, in order.
    static std::string Arrived()
    {
        std::string arrived;
        for (const Event& event : events)
            arrived += (arrived.empty() ? "" : " ") + (event.callback + std::to_string(event.code));
        return arrived;
    }

    /// Calls of AddObserver and RemoveObserver.
    std::vector<std::string> ObserverCalls()
    {
        std::vector<std::string> calls;
        for (const std::string& call : Plugin().Calls(Client::Interface))
            if (call != Call(Client::DispatchEvent))
                calls.push_back(call);
        return calls;
    }

    std::string Added() const { return Call(Client::AddObserver, Address(observer)); }
    std::string Removed() const { return Call(Client::RemoveObserver, Address(observer)); }

    void* observer = nullptr; ///< As the plugin received it last.
    int first = 0;            ///< User values.
    int second = 0;
};

// Delivery.

TEST_F(Events, EventsOfLoginsAndTokensReachTheCallbackWithTheirCodeAndStatus)
{
    const std::pair<PluginOperation, std::int32_t> codes[] = {
        {Observer::OnLoggedIn, TALIX_EVENT_LOGGED_IN},
        {Observer::OnLoggedOut, TALIX_EVENT_LOGGED_OUT},
        {Observer::OnAccountCreated, TALIX_EVENT_ACCOUNT_CREATED},
        {Observer::OnTokenRefreshed, TALIX_EVENT_TOKEN_REFRESHED},
        {Observer::OnTokenAvailable, TALIX_EVENT_TOKEN_AVAILABLE},
    };
    ASSERT_EQ(talix_add_event_callback(a, &first), IdSuccess);
    for (const auto& [operation, code] : codes)
    {
        for (const std::int32_t status : {int{IdSuccess}, 3030, 999, 0, -1})
        {
            events.clear();
            Raise(operation, status);
            EXPECT_THAT(events, ElementsAre(Received('a', code, status, &first)));
        }
    }
}

TEST_F(Events, OnLoginRestoredReachesEveryCallbackWithSuccess)
{
    talix_add_event_callback(a, &first);
    talix_add_event_callback(b, &second);
    Dispatch(Observer::OnLoginRestored, nullptr);
    EXPECT_THAT(events, UnorderedElementsAre(Received('a', TALIX_EVENT_LOGIN_RESTORED, IdSuccess, &first),
                                             Received('b', TALIX_EVENT_LOGIN_RESTORED, IdSuccess, &second)));
}

TEST_F(Events, OnServerChangedAndOnOtherEventReachNoCallbackAndDoNotReadTheirArgument)
{
    talix_add_event_callback(a, &first);
    Dispatch(Observer::OnServerChanged, nullptr);
    Dispatch(Observer::OnOtherEvent, nullptr);
    EXPECT_THAT(events, IsEmpty());
}

TEST_F(Events, OnAboutToLogoutReturnsTrueWithoutAskingAnyCallback)
{
    talix_add_event_callback(a, &first);
    EXPECT_TRUE(Dispatch(Observer::OnAboutToLogout, nullptr));
    EXPECT_THAT(events, IsEmpty());
}

TEST_F(Events, TheOrderOfTheObserversOperationsIsThatOfItsClass)
{
    talix_add_event_callback(a, &first);
    auto& object = *static_cast<IObserver*>(observer);
    const std::int32_t status = 4711;
    object.OnLoggedIn(status);
    object.OnLoggedOut(status);
    object.OnAccountCreated(status);
    object.OnTokenRefreshed(status);
    object.OnTokenAvailable(status);
    object.OnServerChanged(TALIX_SERVER_STAGING);
    EXPECT_TRUE(object.OnAboutToLogout());
    object.OnLoginRestored();
    std::vector<std::int32_t> codes;
    for (const Event& event : events)
        codes.push_back(event.code);
    EXPECT_THAT(codes,
                ElementsAre(TALIX_EVENT_LOGGED_IN, TALIX_EVENT_LOGGED_OUT, TALIX_EVENT_ACCOUNT_CREATED,
                            TALIX_EVENT_TOKEN_REFRESHED, TALIX_EVENT_TOKEN_AVAILABLE, TALIX_EVENT_LOGIN_RESTORED));
}

TEST_F(Events, OnAboutToLogoutReturnsTrueWithoutCallbacksToo)
{
    talix_add_event_callback(nullptr, nullptr);
    EXPECT_TRUE(Dispatch(Observer::OnAboutToLogout, nullptr));
    talix_add_event_callback(a, &first);
    talix_remove_event_callback(a);
    EXPECT_TRUE(Dispatch(Observer::OnAboutToLogout, nullptr))
        << "the plugin may still be asking while the observer is removed";
}

TEST_F(Events, EveryCallbackIsCalledOnceWithItsOwnValue)
{
    talix_add_event_callback(a, &first);
    talix_add_event_callback(b, nullptr);
    Raise(Observer::OnLoggedOut, IdSuccess);
    EXPECT_THAT(events, UnorderedElementsAre(Received('a', TALIX_EVENT_LOGGED_OUT, IdSuccess, &first),
                                             Received('b', TALIX_EVENT_LOGGED_OUT, IdSuccess, nullptr)));
}

TEST_F(Events, TheStatusIsReadOnceBeforeTheFirstCallback)
{
    static std::int32_t status;
    status = 1234;
    const talix_event_callback overwriting = [](std::int32_t code, std::int32_t received, void* value) {
        Record<'a'>(code, received, value);
        status = 0;
    };
    const talix_event_callback too = [](std::int32_t code, std::int32_t received, void* value) {
        Record<'b'>(code, received, value);
        status = 0;
    };
    talix_add_event_callback(overwriting, nullptr);
    talix_add_event_callback(too, nullptr);
    Dispatch(Observer::OnLoggedIn, &status);
    EXPECT_THAT(events, UnorderedElementsAre(Received('a', TALIX_EVENT_LOGGED_IN, 1234, nullptr),
                                             Received('b', TALIX_EVENT_LOGGED_IN, 1234, nullptr)));
}

TEST_F(Events, CallbacksRunOnTheThreadThatDispatches)
{
    talix_add_event_callback(a, &first);
    const DWORD other = std::async(std::launch::async, [this] {
                            Raise(Observer::OnLoggedIn, IdSuccess);
                            return GetCurrentThreadId();
                        }).get();
    ASSERT_THAT(events, SizeIs(1));
    EXPECT_EQ(events.front().thread, other);
    EXPECT_NE(other, GetCurrentThreadId());
}

TEST_F(Events, DispatchReturnsWhatThePluginReturns)
{
    Plugin().Return(Client::DispatchEvent, 999);
    EXPECT_EQ(talix_dispatch_events(), 999) << "unmapped";
}

// Registration.

TEST_F(Events, AddingTheSameFunctionTwiceLeavesOneEntryWithTheSecondValue)
{
    EXPECT_EQ(talix_add_event_callback(a, &first), IdSuccess);
    EXPECT_EQ(talix_add_event_callback(a, &second), IdSuccess);
    Raise(Observer::OnLoggedIn, IdSuccess);
    EXPECT_THAT(events, ElementsAre(Received('a', TALIX_EVENT_LOGGED_IN, IdSuccess, &second)));
    EXPECT_EQ(talix_remove_event_callback(a), IdSuccess);
    EXPECT_THAT(ObserverCalls(), ElementsAre(Added(), Removed())) << "one entry, so one removal empties";
}

TEST_F(Events, ANullCallbackRegistersTheAdapterAndStoresNothing)
{
    EXPECT_EQ(talix_add_event_callback(nullptr, &first), IdSuccess);
    EXPECT_THAT(ObserverCalls(), ElementsAre(Added()));
    Raise(Observer::OnLoggedIn, IdSuccess);
    EXPECT_THAT(events, IsEmpty());
}

TEST_F(Events, RemovingTheLastCallbackRemovesTheAdapterAndAddingOneAgainReaddsIt)
{
    talix_add_event_callback(a, &first);
    talix_add_event_callback(b, &second);
    EXPECT_EQ(talix_remove_event_callback(a), IdSuccess);
    EXPECT_THAT(ObserverCalls(), ElementsAre(Added()));
    EXPECT_EQ(talix_remove_event_callback(b), IdSuccess);
    EXPECT_THAT(ObserverCalls(), ElementsAre(Added(), Removed()));
    const void* const before = observer;
    EXPECT_EQ(talix_add_event_callback(a, &first), IdSuccess);
    EXPECT_EQ(observer, before) << "there is one adapter";
    EXPECT_THAT(ObserverCalls(), ElementsAre(Added(), Removed(), Added()));
    Raise(Observer::OnLoggedIn, IdSuccess);
    EXPECT_THAT(events, ElementsAre(Received('a', TALIX_EVENT_LOGGED_IN, IdSuccess, &first)));
}

TEST_F(Events, ARemovedCallbackIsNotCalledAnyMore)
{
    talix_add_event_callback(a, &first);
    talix_add_event_callback(b, &second);
    talix_remove_event_callback(a);
    Raise(Observer::OnLoggedIn, IdSuccess);
    EXPECT_THAT(events, ElementsAre(Received('b', TALIX_EVENT_LOGGED_IN, IdSuccess, &second)));
}

TEST_F(Events, ANullOrUnknownCallbackRemovesNothing)
{
    talix_add_event_callback(a, &first);
    EXPECT_EQ(talix_remove_event_callback(nullptr), IdSuccess);
    EXPECT_EQ(talix_remove_event_callback(b), IdSuccess);
    EXPECT_THAT(ObserverCalls(), ElementsAre(Added()));
    Raise(Observer::OnLoggedIn, IdSuccess);
    EXPECT_THAT(events, SizeIs(1));
}

TEST_F(Events, RemovingAnUnknownCallbackFromAnEmptyRegistryRemovesTheAdapter)
{
    talix_add_event_callback(nullptr, nullptr);
    EXPECT_EQ(talix_remove_event_callback(b), IdSuccess);
    EXPECT_THAT(ObserverCalls(), ElementsAre(Added(), Removed()));
}

TEST_F(Events, RemovingWithoutTheAdapterAddedDoesNotReachThePlugin)
{
    EXPECT_EQ(talix_remove_event_callback(a), IdSuccess);
    EXPECT_THAT(ObserverCalls(), IsEmpty());
}

TEST_F(Events, ThePluginsResultsOfAddAndRemoveAreNotReported)
{
    Plugin().Return(Client::AddObserver, 999);
    Plugin().Return(Client::RemoveObserver, 3030);
    EXPECT_EQ(talix_add_event_callback(a, &first), IdSuccess);
    EXPECT_EQ(talix_add_event_callback(b, &first), IdSuccess);
    EXPECT_THAT(ObserverCalls(), SizeIs(1)) << "it counts as added";
    EXPECT_EQ(talix_remove_event_callback(a), IdSuccess);
    EXPECT_EQ(talix_remove_event_callback(b), IdSuccess);
}

TEST_F(Events, APluginThatThrowsWhileTheAdapterIsAddedIsAskedAgain)
{
    Plugin().OnCall(Client::AddObserver, [](const CallArguments&) { throw 1; });
    EXPECT_EQ(talix_add_event_callback(a, &first), IdFailed);
    NoteObserver();
    EXPECT_EQ(talix_add_event_callback(a, &first), IdSuccess);
    Raise(Observer::OnLoggedIn, IdSuccess);
    EXPECT_THAT(events, SizeIs(1));
}

// Changes by a callback that is called.

TEST_F(Events, ACallbackThatRemovesItselfIsNotCalledAnyMore)
{
    talix_add_event_callback(a, nullptr);
    talix_add_event_callback(b, nullptr);
    talix_add_event_callback(c, nullptr);
    actions['b'] = [] { EXPECT_EQ(talix_remove_event_callback(b), IdSuccess); };
    RaiseInOneDispatch({Observer::OnLoggedIn, Observer::OnLoggedOut});
    EXPECT_EQ(Arrived(), "a0 b0 c0 a1 c1");
}

TEST_F(Events, TheOnlyCallbackMayRemoveItself)
{
    talix_add_event_callback(a, nullptr);
    actions['a'] = [] { EXPECT_EQ(talix_remove_event_callback(a), IdSuccess); };
    RaiseInOneDispatch({Observer::OnLoggedIn, Observer::OnLoggedOut});
    EXPECT_EQ(Arrived(), "a0");
    EXPECT_THAT(ObserverCalls(), ElementsAre(Added(), Removed()));
}

TEST_F(Events, WhatACallbackAddsIsCalledFromTheNextEventOn)
{
    talix_add_event_callback(a, nullptr);
    actions['a'] = [] {
        EXPECT_EQ(talix_add_event_callback(b, nullptr), IdSuccess);
        EXPECT_EQ(talix_add_event_callback(c, nullptr), IdSuccess);
    };
    RaiseInOneDispatch({Observer::OnLoggedIn, Observer::OnLoggedOut});
    EXPECT_EQ(Arrived(), "a0 a1 b1 c1");
}

TEST_F(Events, ACallbackThatRemovesAllAndAddsItselfAgainIsCalledFromTheNextEventOn)
{
    talix_add_event_callback(a, nullptr);
    talix_add_event_callback(b, nullptr);
    actions['a'] = [] {
        talix_remove_event_callback(a);
        talix_remove_event_callback(b);
        EXPECT_EQ(talix_add_event_callback(a, nullptr), IdSuccess);
    };
    RaiseInOneDispatch({Observer::OnLoggedIn, Observer::OnLoggedOut});
    EXPECT_EQ(Arrived(), "a0 a1");
    EXPECT_THAT(ObserverCalls(), ElementsAre(Added(), Removed(), Added(), Removed(), Added()));
}

TEST_F(Events, ADeinitByACallbackEndsTheDelivery)
{
    talix_add_event_callback(a, nullptr);
    talix_add_event_callback(b, nullptr);
    actions['a'] = [] { EXPECT_EQ(talix_deinit(), IdSuccess); };
    RaiseInOneDispatch({Observer::OnLoggedIn, Observer::OnLoggedOut});
    EXPECT_EQ(Arrived(), "a0");
    EXPECT_EQ(talix_get_boolean(TALIX_KEY_INITIALIZED), 0);
    EXPECT_EQ(talix_dispatch_events(), IdNotInitialized);
    EXPECT_THAT(Plugin().Calls(Module::Interface), ElementsAre(Call(Module::Uninitialize)));
}

TEST_F(Events, ADeinitByACallbackThatOnlyCountsEndsTheDeliveryToo)
{
    ASSERT_EQ(talix_init(), IdSuccess);
    talix_add_event_callback(a, nullptr);
    talix_add_event_callback(b, nullptr);
    actions['a'] = [] { EXPECT_EQ(talix_deinit(), IdSuccess); };
    RaiseInOneDispatch({Observer::OnLoggedIn, Observer::OnLoggedOut});
    EXPECT_EQ(Arrived(), "a0");
    EXPECT_EQ(talix_get_boolean(TALIX_KEY_INITIALIZED), 1);
}

TEST_F(Events, ACallbackMayStopStartAndAddCallbacksAgain)
{
    talix_add_event_callback(a, nullptr);
    talix_add_event_callback(b, nullptr);
    actions['a'] = [this] {
        actions.clear();
        EXPECT_EQ(talix_deinit(), IdSuccess);
        EXPECT_EQ(talix_init(), IdSuccess);
        EXPECT_EQ(talix_add_event_callback(b, &second), IdSuccess);
        EXPECT_EQ(talix_add_event_callback(c, nullptr), IdSuccess);
        EXPECT_EQ(talix_add_event_callback(a, nullptr), IdSuccess);
    };
    RaiseInOneDispatch({Observer::OnLoggedIn, Observer::OnLoggedOut});
    EXPECT_EQ(Arrived(), "a0 b1 c1 a1");
    EXPECT_EQ(events.at(1).value, &second);
    EXPECT_EQ(talix_deinit(), IdSuccess);
}

TEST_F(Events, ACallbackMayDispatchFurtherEvents)
{
    talix_add_event_callback(a, nullptr);
    talix_add_event_callback(b, nullptr);
    actions['a'] = [this] {
        actions.clear();
        talix_remove_event_callback(b);
        talix_add_event_callback(c, nullptr);
        RaiseInOneDispatch({Observer::OnLoggedOut});
        EXPECT_EQ(Arrived(), "a0 a1 c1");
    };
    RaiseInOneDispatch({Observer::OnLoggedIn});
    EXPECT_EQ(Arrived(), "a0 a1 c1") << "what was removed is not called, and what was added not for the event before";
    RaiseInOneDispatch({Observer::OnAccountCreated});
    EXPECT_EQ(Arrived(), "a0 a1 c1 a2 c2");
}

TEST_F(Events, ADeinitByACallbackThatADispatchInsideAnotherCallsEndsBoth)
{
    talix_add_event_callback(a, nullptr);
    talix_add_event_callback(b, nullptr);
    actions['a'] = [this] {
        actions['a'] = [] { EXPECT_EQ(talix_deinit(), IdSuccess); };
        RaiseInOneDispatch({Observer::OnLoggedOut});
    };
    RaiseInOneDispatch({Observer::OnLoggedIn, Observer::OnAccountCreated});
    EXPECT_EQ(Arrived(), "a0 a1");
}

TEST_F(Events, ADeinitByACallbackThatThePluginCallsWhileItStopsFailsAndDoesNotHang)
{
    talix_add_event_callback(a, nullptr);
    talix_add_event_callback(b, nullptr);
    const std::int32_t status = IdSuccess;
    Plugin().OnCall(Module::Uninitialize, [&](const CallArguments&) {
        CallObserver(observer, Observer::OnLoggedOut, &status);
        CallObserver(observer, Observer::OnLoggedOut, &status);
    });
    actions['a'] = [] {
        EXPECT_EQ(talix_deinit(), IdFailed) << "the stop is under way";
        EXPECT_EQ(talix_init(), IdFailed);
    };
    EXPECT_EQ(talix_deinit(), IdSuccess);
    EXPECT_EQ(Arrived(), "a1");
    EXPECT_EQ(talix_get_boolean(TALIX_KEY_INITIALIZED), 0);
    Plugin().OnCall(Module::Uninitialize, [](const CallArguments&) {});
    EXPECT_EQ(talix_init(), IdSuccess) << "neither count nor lock was left behind";
    EXPECT_EQ(talix_deinit(), IdSuccess);
    EXPECT_EQ(talix_get_boolean(TALIX_KEY_INITIALIZED), 0);
}

// Without client, and around init and deinit.

class EventsWithoutClient : public FlatWithoutClient
{
};

TEST_F(EventsWithoutClient, AddCountsAsRegisteredAndAddSkipsTheInitCheckWhileItIs)
{
    EXPECT_EQ(talix_add_event_callback(a, nullptr), IdSuccess);
    ASSERT_EQ(IdServicesMgr::Uninitialize(), IdSuccess); // Unlike talix_deinit it leaves the callbacks alone.
    EXPECT_EQ(talix_add_event_callback(b, nullptr), IdSuccess);
    EXPECT_EQ(talix_remove_event_callback(b), IdNotInitialized);
}

TEST_F(EventsWithoutClient, RemovingTheLastCallbackCountsAsRemoved)
{
    talix_add_event_callback(a, nullptr);
    EXPECT_EQ(talix_remove_event_callback(a), IdSuccess);
    ASSERT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    EXPECT_EQ(talix_add_event_callback(a, nullptr), IdNotInitialized);
}

TEST_F(Events, AddSkipsTheInitCheckWhileTheAdapterIsRegistered)
{
    talix_add_event_callback(a, &first);
    ASSERT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    ASSERT_EQ(talix_get_boolean(TALIX_KEY_INITIALIZED), 0);
    EXPECT_EQ(talix_add_event_callback(b, &second), IdSuccess);
    EXPECT_THAT(ObserverCalls(), ElementsAre(Added()));
}

TEST_F(Events, ADeinitThatOnlyCountsForgetsTheCallbacksWithoutRemovingTheAdapter)
{
    ASSERT_EQ(talix_init(), IdSuccess);
    talix_add_event_callback(a, &first);
    ASSERT_EQ(talix_deinit(), IdSuccess);
    EXPECT_THAT(ObserverCalls(), ElementsAre(Added()));
    Raise(Observer::OnLoggedIn, IdSuccess); // The plugin still knows the adapter.
    EXPECT_THAT(events, IsEmpty());
    EXPECT_EQ(talix_add_event_callback(b, &second), IdSuccess);
    EXPECT_THAT(ObserverCalls(), ElementsAre(Added(), Added())) << "the adapter counts as not added";
    Raise(Observer::OnLoggedIn, IdSuccess);
    EXPECT_THAT(events, ElementsAre(Received('b', TALIX_EVENT_LOGGED_IN, IdSuccess, &second)));
}

TEST_F(Events, TheLastDeinitForgetsTheCallbacksWithoutRemovingTheAdapter)
{
    talix_add_event_callback(a, &first);
    const void* const before = observer;
    ASSERT_EQ(talix_deinit(), IdSuccess);
    EXPECT_THAT(ObserverCalls(), ElementsAre(Added()));
    EXPECT_EQ(talix_add_event_callback(a, &first), IdNotInitialized);
    ASSERT_EQ(talix_init(), IdSuccess);
    Plugin().ClearJournal();
    EXPECT_EQ(talix_add_event_callback(b, &second), IdSuccess);
    EXPECT_THAT(ObserverCalls(), ElementsAre(Added()));
    EXPECT_EQ(observer, before) << "there is one adapter a process";
    Raise(Observer::OnTokenRefreshed, IdSuccess);
    EXPECT_THAT(events, ElementsAre(Received('b', TALIX_EVENT_TOKEN_REFRESHED, IdSuccess, &second)));
}

TEST_F(Events, ADeinitWithNothingStartedForgetsTheCallbacksToo)
{
    talix_add_event_callback(a, &first);
    ASSERT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    EXPECT_EQ(talix_deinit(), IdSuccess);
    EXPECT_EQ(talix_add_event_callback(b, &second), IdNotInitialized) << "the adapter counts as not added";
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    Raise(Observer::OnLoggedIn, IdSuccess); // The plugin still knows the adapter.
    EXPECT_THAT(events, IsEmpty());
}

TEST_F(Events, RemovingWhileNotInitializedRemovesNothing)
{
    talix_add_event_callback(a, &first);
    ASSERT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    EXPECT_EQ(talix_remove_event_callback(a), IdNotInitialized);
    ASSERT_EQ(IdServicesMgr::Initialize(), IdSuccess);
    Raise(Observer::OnLoggedIn, IdSuccess);
    EXPECT_THAT(events, ElementsAre(Received('a', TALIX_EVENT_LOGGED_IN, IdSuccess, &first)));
}

TEST_F(Events, EventsThatThePluginRaisesWhileItStopsStillReachTheCallbacks)
{
    talix_add_event_callback(a, &first);
    const std::int32_t status = IdSuccess;
    Plugin().OnCall(Module::Uninitialize,
                    [&](const CallArguments&) { CallObserver(observer, Observer::OnLoggedOut, &status); });
    ASSERT_EQ(talix_deinit(), IdSuccess);
    EXPECT_THAT(events, ElementsAre(Received('a', TALIX_EVENT_LOGGED_OUT, IdSuccess, &first)));
}

TEST_F(Events, ADeinitInWhichThePluginThrowsForgetsTheCallbacks)
{
    talix_add_event_callback(a, &first);
    Plugin().OnCall(Module::Uninitialize, [](const CallArguments&) { throw 1; });
    ASSERT_EQ(talix_deinit(), IdFailed);
    Plugin().OnCall(Module::Uninitialize, [](const CallArguments&) {});
    EXPECT_EQ(talix_add_event_callback(b, &second), IdNotInitialized);
    ASSERT_EQ(talix_init(), IdSuccess);
    EXPECT_EQ(talix_add_event_callback(b, &second), IdSuccess);
    Raise(Observer::OnLoggedIn, IdSuccess);
    EXPECT_THAT(events, ElementsAre(Received('b', TALIX_EVENT_LOGGED_IN, IdSuccess, &second)));
}

} // namespace OrlindexTest
