#include <gtest/gtest.h>

#include <set>

#include "identity/openid/Failure.h"

namespace Kestrany::Agent::OpenId {

namespace {

TEST(FailureTest, EachCodeIsInTheTableOnceWithWhatToDo)
{
    std::set<std::string> summaries;
    int last = 0;
    for (const FailureKind& kind : FailureKinds())
    {
        EXPECT_GT(static_cast<int>(kind.code), last);
        last = static_cast<int>(kind.code);
        EXPECT_TRUE(summaries.insert(kind.summary).second) << kind.summary;
        const std::string remedy = kind.remedy;
        ASSERT_FALSE(remedy.empty());
        EXPECT_EQ(remedy.back(), '.') << remedy;
        EXPECT_NE(std::string(kind.summary).back(), '.') << kind.summary;
    }
    // From the first code to the last none is left out.
    for (int code = 4030; code <= last; ++code)
        EXPECT_NE(LogLine({static_cast<IdErrorCode>(code), "", ""}).find("Sign-in failed"), 0u) << code;
    EXPECT_EQ(last, static_cast<int>(IdLoginModeNotOffered));
}

TEST(FailureTest, ALogLineSaysWhatWasExpectedWhatCameAndWhatToDo)
{
    EXPECT_EQ(LogLine({IdTlsRefused, "a reply", "another"}),
              "The provider's TLS certificate was refused (4032): expected a reply; came another. Check that the "
              "certificate is valid for this host name, has not expired, and that Windows trusts its root.");
    EXPECT_EQ(LogLine({IdSignInDenied, "", "an error"}).find("The sign-in was denied (4038): came an error. Sign in"),
              0u);
    EXPECT_EQ(LogLine({static_cast<IdErrorCode>(9999), "a", "b"}), "Sign-in failed (9999): expected a; came b.");
}

TEST(FailureTest, ATextFromOutsideStaysOnOneLineAndShort)
{
    EXPECT_EQ(Shown("plain"), "\"plain\"");
    EXPECT_EQ(Shown("a\r\nb\x1B[1m\xC3\xA4"), "\"a??b?[1m??\"");
    EXPECT_EQ(Shown(std::string(1000, 'a')), '"' + std::string(200, 'a') + "\"...");
    EXPECT_EQ(ShownWithout("code abc abc", {"abc", ""}), "\"code * *\"");
    EXPECT_EQ(ShownWithout("**", {"*"}), "\"**\"") << "ends also if the replacement holds the secret";
}

} // namespace

} // namespace Kestrany::Agent::OpenId
