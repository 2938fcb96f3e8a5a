#include <gtest/gtest.h>

#include "plugin/CallPolicy.h"

namespace Kestrany::Agent {

namespace {

TEST(CallPolicyTest, AnOverrideIsInForceFromThenOn)
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

} // namespace

} // namespace Kestrany::Agent
