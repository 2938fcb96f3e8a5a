#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <thread>
#include <vector>

#include "identity/openid/Refresh.h"

namespace Kestrany::Agent::OpenId {

namespace {

using std::chrono::seconds;

const TimePoint Now{seconds(1'700'000'000)};

TEST(RefreshTest, ATokenIsFreshWhileItIsValidForAMinuteMore)
{
    EXPECT_TRUE(IsFresh(Now + seconds(60), Now));
    EXPECT_FALSE(IsFresh(Now + seconds(59), Now));
    EXPECT_FALSE(IsFresh(Now - seconds(1), Now));
}

TEST(RefreshTest, AMissingLifetimeIsAssumed)
{
    EXPECT_EQ(AccessTokenExpiry(Now, seconds(10), true), Now + seconds(10));
    EXPECT_EQ(AccessTokenExpiry(Now, std::nullopt, true), Now + AssumedLifetime);
    EXPECT_EQ(AccessTokenExpiry(Now, std::nullopt, false), Now + AssumedLifetimeWithoutRefresh);
}

TEST(SharedRefreshTest, AllWaitersOfAGrantGetTheOneResult)
{
    SharedRefresh refresh;
    std::vector<IdErrorCode> results;
    const auto waiter = [&](const std::optional<Failure>& failure) {
        results.push_back(failure ? failure->code : IdSuccess);
    };
    EXPECT_TRUE(refresh.Join("one", waiter));
    EXPECT_FALSE(refresh.Join("one", waiter));
    EXPECT_TRUE(refresh.Join("other", waiter)) << "another grant has a refresh of its own";
    refresh.Finish("one", Failure{IdGrantRefused, "", ""});
    EXPECT_EQ(results, (std::vector<IdErrorCode>{IdGrantRefused, IdGrantRefused}));
    refresh.Finish("one", std::nullopt);
    EXPECT_EQ(results.size(), 2u);
    EXPECT_TRUE(refresh.Join("one", waiter)) << "after the end a new refresh is needed";
}

TEST(SharedRefreshTest, AWaiterMayJoinAgain)
{
    SharedRefresh refresh;
    bool isFirst = false;
    refresh.Join("one", [&](const std::optional<Failure>&) { isFirst = refresh.Join("one", [](const auto&) {}); });
    refresh.Finish("one", std::nullopt);
    EXPECT_TRUE(isFirst);
}

TEST(SharedRefreshTest, AThousandRequestsOfEightThreadsAreOneRefresh)
{
    constexpr int threads = 8;
    constexpr int requests = 125;
    SharedRefresh refresh;
    std::atomic<int> begun{0};
    std::atomic<int> joined{0};
    std::atomic<int> answered{0};
    std::promise<void> start;
    const std::shared_future<void> started = start.get_future().share();
    std::vector<std::future<void>> hosts;
    for (int thread = 0; thread < threads; ++thread)
        hosts.push_back(std::async(std::launch::async, [&, started] {
            started.wait();
            for (int request = 0; request < requests; ++request)
            {
                if (refresh.Join("grant", [&](const std::optional<Failure>&) { ++answered; }))
                    ++begun;
                ++joined;
            }
        }));
    start.set_value();
    for (std::future<void>& host : hosts)
        host.get();
    EXPECT_EQ(begun, 1);
    EXPECT_EQ(joined, threads * requests);
    EXPECT_EQ(answered, 0);
    refresh.Finish("grant", std::nullopt);
    EXPECT_EQ(answered, threads * requests);
}

} // namespace

} // namespace Kestrany::Agent::OpenId
