#include <gtest/gtest.h>

#include <future>
#include <stdexcept>
#include <thread>

#include "Environment.h"
#include "identity/ResultCodes.h"
#include "load/contract/ISSOClient.h"
#include "load/contract/ISSOClientModule.h"

namespace Kestrany::Agent {

namespace {

using namespace IdentityServices;

/// Records the events, and runs the action of the test during each.
class RecordingObserver final : public IObserver
{
public:
    void OnLoggedIn(const std::int32_t&) override { Record("LoggedIn"); }
    void OnLoggedOut(const std::int32_t&) override { Record("LoggedOut"); }
    void OnAccountCreated(const std::int32_t&) override { Record("AccountCreated"); }
    void OnTokenRefreshed(const std::int32_t&) override { Record("TokenRefreshed"); }
    void OnTokenAvailable(const std::int32_t&) override { Record("TokenAvailable"); }
    void OnServerChanged(const Server& server) override { Record("ServerChanged " + std::to_string(server)); }
    bool OnAboutToLogout() override
    {
        Record("AboutToLogout");
        return consents;
    }
    void OnLoginRestored() override { Record("LoginRestored"); }
    void OnOtherEvent(const IdServicesConsts::IdServicesEvent&) override { Record("Other"); }

    void Record(const std::string& call)
    {
        calls.push_back(call);
        if (onCall)
            onCall();
    }

    std::vector<std::string> calls;
    std::function<void()> onCall;
    bool consents = true;
};

using Calls = std::vector<std::string>;

class PluginObserversTest : public testing::Test
{
protected:
    PluginObserversTest()
    {
        ProductConfig product;
        product.SetOAuth2ClientID("tests");
        client.SetProductConfig(TALIX_SERVER_PRODUCTION, product);
        client.AddObserver(&observer);
    }
    ~PluginObserversTest() override
    {
        int result = 0;
        client.Logout(result, TALIX_LOGOUT_FORCE);
        PluginFactory().GetSSOClientModule()->Uninitialize();
    }

    void LogIn()
    {
        int result = 0;
        ASSERT_EQ(client.Login(result), IdSuccess);
    }
    void LogInSilently()
    {
        LogIn();
        client.DispatchEvent();
        observer.calls.clear();
    }

    ISSOClient& client = *PluginFactory().GetSSOClient();
    RecordingObserver observer;
};

TEST_F(PluginObserversTest, EventsWaitUntilTheHostDispatches)
{
    LogIn();
    EXPECT_EQ(observer.calls, Calls{});
    EXPECT_TRUE(client.HasEvent());
    EXPECT_EQ(client.DispatchEvent(), IdSuccess);
    EXPECT_EQ(observer.calls, (Calls{"LoggedIn", "TokenAvailable"}));
    EXPECT_FALSE(client.HasEvent());
}

TEST_F(PluginObserversTest, ObserversAreCalledOnTheDispatchingThread)
{
    LogIn();
    std::thread::id caller;
    observer.onCall = [&] { caller = std::this_thread::get_id(); };
    std::thread::id dispatcher;
    std::thread([&] {
        dispatcher = std::this_thread::get_id();
        client.DispatchEvent();
    }).join();
    EXPECT_EQ(caller, dispatcher);
}

TEST_F(PluginObserversTest, AnObserverAddedTwiceIsCalledOnce)
{
    client.AddObserver(&observer);
    LogIn();
    client.DispatchEvent();
    EXPECT_EQ(observer.calls.size(), 2u);
}

TEST_F(PluginObserversTest, ARemovedObserverIsNotCalled)
{
    client.RemoveObserver(&observer);
    LogIn();
    client.DispatchEvent();
    EXPECT_EQ(observer.calls, Calls{});
}

TEST_F(PluginObserversTest, AnObserverMayRemoveTheNextOne)
{
    RecordingObserver next;
    client.AddObserver(&next);
    observer.onCall = [&] { client.RemoveObserver(&next); };
    LogIn();
    client.DispatchEvent();
    EXPECT_EQ(observer.calls.size(), 2u);
    EXPECT_EQ(next.calls, Calls{});
}

TEST_F(PluginObserversTest, AnEventCausedByAnObserverWaitsForTheNextDispatch)
{
    LogInSilently();
    client.RefreshOAuth2Token(false);
    observer.onCall = [&] { client.RefreshOAuth2Token(false); };
    EXPECT_EQ(client.DispatchEvent(), IdSuccess);
    EXPECT_EQ(observer.calls.size(), 1u);
    EXPECT_TRUE(client.HasEvent());
}

TEST_F(PluginObserversTest, AnExceptionOfOneObserverDoesNotReachTheHostOrTheNextOne)
{
    RecordingObserver next;
    client.AddObserver(&next);
    observer.onCall = [] { throw std::runtime_error("an observer's own failure"); };
    LogIn();
    EXPECT_EQ(client.DispatchEvent(), IdSuccess);
    EXPECT_EQ(next.calls, (Calls{"LoggedIn", "TokenAvailable"}));
    client.RemoveObserver(&next);
}

TEST_F(PluginObserversTest, RemovalWaitsForACallOnAnotherThread)
{
    LogIn();
    std::promise<void> inside;
    std::promise<void> release;
    std::atomic<bool> returned{false};
    observer.onCall = [&, entered = false]() mutable {
        if (std::exchange(entered, true))
            return;
        inside.set_value();
        release.get_future().wait();
        returned = true;
    };
    std::thread dispatcher([&] { client.DispatchEvent(); });
    inside.get_future().wait();
    auto removal = std::async(std::launch::async, [&] {
        client.RemoveObserver(&observer);
        return returned.load();
    });
    EXPECT_EQ(removal.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    release.set_value();
    EXPECT_TRUE(removal.get()) << "removed during a call to it";
    dispatcher.join();
}

TEST_F(PluginObserversTest, AnObserverMayRefuseALogout)
{
    LogInSilently();
    observer.consents = false;
    int result = -1;
    EXPECT_EQ(client.Logout(result, TALIX_LOGOUT_DEFAULT), IdLogoutRefused);
    EXPECT_EQ(result, 1);
    EXPECT_EQ(observer.calls, Calls{"AboutToLogout"});
    EXPECT_TRUE(client.IsLoggedIn());
}

TEST_F(PluginObserversTest, AForcedLogoutDoesNotAskObservers)
{
    LogInSilently();
    observer.consents = false;
    int result = -1;
    EXPECT_EQ(client.Logout(result, TALIX_LOGOUT_FORCE), IdSuccess);
    EXPECT_EQ(result, 0);
    EXPECT_FALSE(client.IsLoggedIn());
    client.DispatchEvent();
    EXPECT_EQ(observer.calls, Calls{"LoggedOut"});
}

TEST_F(PluginObserversTest, UninitializeRemovesObserversAndEvents)
{
    LogIn();
    PluginFactory().GetSSOClientModule()->Uninitialize();
    EXPECT_FALSE(client.HasEvent());
    client.RefreshOAuth2Token(false);
    client.DispatchEvent();
    EXPECT_EQ(observer.calls, Calls{});
}

TEST_F(PluginObserversTest, ALoginOutlivesUninitializeAndIsRestored)
{
    LogIn();
    ISSOClientModule& module = *PluginFactory().GetSSOClientModule();
    module.Uninitialize();
    module.Initialize(false);
    client.AddObserver(&observer);
    client.DispatchEvent();
    EXPECT_EQ(observer.calls, Calls{"LoginRestored"});
    EXPECT_TRUE(client.IsLoginValid());
}

TEST_F(PluginObserversTest, AChangeOfServerNamesTheServer)
{
    client.SetServer(TALIX_SERVER_STAGING);
    client.SetServer(TALIX_SERVER_PRODUCTION);
    client.DispatchEvent();
    EXPECT_EQ(observer.calls, (Calls{"ServerChanged 1", "ServerChanged 0"}));
}

} // namespace

} // namespace Kestrany::Agent
