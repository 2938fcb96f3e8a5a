#include <gtest/gtest.h>

#include <limits>

#include "plugin/CallPolicy.h"

namespace Kestrany::Agent {

namespace {

using StdUtil::RetrySchedule;

TEST(RetryPolicyTest, AScheduleIsInForceFromThenOn)
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
