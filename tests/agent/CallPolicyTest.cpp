#include <gtest/gtest.h>

#include <limits>

#include "plugin/CallPolicy.h"

namespace Kestrany::Agent {

namespace {

using StdUtil::RetrySchedule;

TEST(CallPolicyTest, AnOverrideTakesEffect)
{
    CallPolicy policy;
    EXPECT_EQ(policy.Override(CallSettings{7, 8, 1, 2, "http://calls.example"}), IdSuccess);
    EXPECT_EQ(policy.Calls().interval, 7);
    EXPECT_EQ(policy.Calls().failInterval, 8);
    EXPECT_EQ(policy.Calls().minJitter, 1);
    EXPECT_EQ(policy.Calls().maxJitter, 2);
    EXPECT_EQ(policy.Calls().url, "http://calls.example");
    EXPECT_EQ(policy.Override(BackoffSettings{1, 2, 3, 4, 5}), IdSuccess);
    EXPECT_EQ(policy.Backoff().initialInterval, 1);
    EXPECT_EQ(policy.Backoff().maxInterval, 2);
    EXPECT_EQ(policy.Backoff().multiplier, 3);
    EXPECT_EQ(policy.Backoff().maxRetries, 4);
    EXPECT_EQ(policy.Backoff().jitter, 5);
}

TEST(CallPolicyTest, CallSettingsOutOfRangeChangeNothing)
{
    const std::string url = "https://calls.example";
    CallPolicy policy;
    for (const CallSettings& refused :
         {CallSettings{0, 1, 0, 0, url}, CallSettings{1, 0, 0, 0, url}, CallSettings{1, 1, -1, 0, url},
          CallSettings{1, 1, 2, 1, url}, CallSettings{1, 1, 0, 0, ""}, CallSettings{1, 1, 0, 0, "https://"},
          CallSettings{1, 1, 0, 0, "ftp://calls.example"}})
        EXPECT_EQ(policy.Override(refused), IdInvalidOverride);
    EXPECT_EQ(policy.Calls().interval, CallSettings().interval);
    EXPECT_EQ(policy.Calls().url, CallSettings().url);
}

TEST(CallPolicyTest, BackoffSettingsOutOfRangeChangeNothing)
{
    CallPolicy policy;
    for (const BackoffSettings& refused :
         {BackoffSettings{0, 1, 1, 0, 0}, BackoffSettings{2, 1, 1, 0, 0}, BackoffSettings{1, 1, 0, 0, 0},
          BackoffSettings{1, 1, 1, -1, 0}, BackoffSettings{1, 1, 1, 0, -1}})
        EXPECT_EQ(policy.Override(refused), IdInvalidOverride);
    EXPECT_EQ(policy.Backoff().maxInterval, BackoffSettings().maxInterval);
}

TEST(RetryPolicyTest, AScheduleTakesEffect)
{
    RetryPolicy policy;
    EXPECT_FALSE(policy.Active().steps.empty());
    const std::int64_t large = std::numeric_limits<std::int64_t>::max();
    ASSERT_TRUE(policy.Replace({large, {{0, 1}, {large, large}}}));
    EXPECT_EQ(policy.Active().limit, large);
    ASSERT_EQ(policy.Active().steps.size(), 2u);
    EXPECT_EQ(policy.Active().steps[0].delay, 0);
    EXPECT_EQ(policy.Active().steps[0].tries, 1);
    EXPECT_EQ(policy.Active().steps[1].delay, large);
    EXPECT_EQ(policy.Active().steps[1].tries, large);
    EXPECT_TRUE(policy.Replace({}));
    EXPECT_TRUE(policy.Active().steps.empty());
}

TEST(RetryPolicyTest, AScheduleOutOfRangeChangesNothing)
{
    RetryPolicy policy;
    ASSERT_TRUE(policy.Replace({7, {{8, 9}}}));
    for (const RetrySchedule& refused :
         {RetrySchedule{-1, {}}, RetrySchedule{0, {{-1, 1}}}, RetrySchedule{0, {{1, 0}}},
          RetrySchedule{0, {{1, 1}, {1, -1}}}, RetrySchedule{0, std::vector<StdUtil::RetryStep>(101, {1, 1})}})
        EXPECT_FALSE(policy.Replace(refused));
    EXPECT_EQ(policy.Active().limit, 7);
    ASSERT_EQ(policy.Active().steps.size(), 1u);
    EXPECT_EQ(policy.Active().steps[0].delay, 8);
    EXPECT_TRUE(policy.Replace({0, std::vector<StdUtil::RetryStep>(100, {1, 1})}));
}

} // namespace

} // namespace Kestrany::Agent
