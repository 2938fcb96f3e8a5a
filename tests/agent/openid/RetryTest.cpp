#include <gtest/gtest.h>

#include <limits>

#include "TestProvider.h"
#include "identity/openid/HttpHeaders.h"
#include "identity/openid/Retry.h"

namespace Kestrany::Agent::OpenId {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

const TimePoint Now{seconds(784'111'777)}; // Sun, 06 Nov 1994 08:49:37 GMT

TEST(HttpHeadersTest, ATimeIsParsed)
{
    EXPECT_EQ(ParseHttpDate("Sun, 06 Nov 1994 08:49:37 GMT"), Now);
    EXPECT_EQ(ParseHttpDate("Thu, 01 Jan 1970 00:00:00 GMT"), TimePoint());
    EXPECT_EQ(ParseHttpDate("Thu, 29 Feb 2024 12:00:00 GMT"), TimePoint(seconds(1'709'208'000)));
    EXPECT_EQ(ParseHttpDate("Fri, 01 Mar 2024 00:00:00 GMT"), TimePoint(seconds(1'709'251'200)));
    EXPECT_EQ(ParseHttpDate("Tue, 14 Nov 2023 22:13:20 GMT"), TimePoint(seconds(1'700'000'000)));
}

TEST(HttpHeadersTest, AnotherFormIsNoTime)
{
    for (const char* const text :
         {"", "Sunday, 06-Nov-94 08:49:37 GMT", "Sun Nov  6 08:49:37 1994", "Sun, 06 Nov 1994 08:49:37 UTC",
          "Sun, 32 Nov 1994 08:49:37 GMT", "Sun, 00 Nov 1994 08:49:37 GMT", "Sun, 06 Nav 1994 08:49:37 GMT",
          "Sun, 06 Nov 1994 24:49:37 GMT", "Sun, 06 Nov 1994 08:60:37 GMT", "Sun, 06 Nov 1994 08:49:61 GMT",
          "Sun, 06 Nov 1969 08:49:37 GMT", "Sun, 06 Nov 9999 08:49:37 GMT", "Sun, -6 Nov 1994 08:49:37 GMT",
          "Sun, 06 Nov 1994 08:49:37 GMT "})
        EXPECT_FALSE(ParseHttpDate(text)) << text;
}

TEST(HttpHeadersTest, RetryAfterIsSecondsOrATime)
{
    EXPECT_EQ(ParseRetryAfter("120", Now), seconds(120));
    EXPECT_EQ(ParseRetryAfter("0", Now), seconds(0));
    EXPECT_EQ(ParseRetryAfter("Sun, 06 Nov 1994 08:50:07 GMT", Now), seconds(30));
    EXPECT_EQ(ParseRetryAfter("Sun, 06 Nov 1994 08:00:00 GMT", Now), seconds(0)) << "in the past";
    EXPECT_EQ(ParseRetryAfter("999999999999", Now), seconds(366 * 24 * 3600));
    for (const char* const text : {"", "-1", "1.5", "soon", "99999999999999999999"})
        EXPECT_FALSE(ParseRetryAfter(text, Now)) << text;
}

TEST(HttpHeadersTest, AMediaTypeHasNoParameters)
{
    EXPECT_EQ(MediaType("Application/JSON ; charset=utf-8"), "application/json");
    EXPECT_EQ(MediaType(" text/html\t"), "text/html");
    EXPECT_EQ(MediaType(""), "");
    EXPECT_EQ(MediaType("; charset"), "");
}

HttpReply WithStatus(int status)
{
    return TextReply("", "", status);
}

TEST(RetryTest, OnlyWhatMayPassIsTriedAgain)
{
    for (const int status : {429, 500, 502, 503, 504})
        EXPECT_TRUE(IsWorthARetry(WithStatus(status), Repetition::Harmless)) << status;
    for (const int status : {200, 201, 302, 400, 401, 403, 404, 600})
        EXPECT_FALSE(IsWorthARetry(WithStatus(status), Repetition::Harmless)) << status;
    for (const HttpProblem problem :
         {HttpProblem::NameNotResolved, HttpProblem::NotConnected, HttpProblem::TimedOut, HttpProblem::ConnectionLost})
        EXPECT_TRUE(IsWorthARetry(ProblemReply(problem), Repetition::Harmless));
    for (const HttpProblem problem : {HttpProblem::TlsRefused, HttpProblem::ReplyTooLarge, HttpProblem::Failed})
        EXPECT_FALSE(IsWorthARetry(ProblemReply(problem), Repetition::Harmless));
}

TEST(RetryTest, WhatCanBeUsedOnceIsTriedAgainOnlyIfItWasNotUsed)
{
    EXPECT_TRUE(IsWorthARetry(WithStatus(429), Repetition::SingleUse));
    EXPECT_TRUE(IsWorthARetry(WithStatus(503), Repetition::SingleUse));
    EXPECT_TRUE(IsWorthARetry(ProblemReply(HttpProblem::NotConnected), Repetition::SingleUse));
    EXPECT_FALSE(IsWorthARetry(WithStatus(500), Repetition::SingleUse));
    EXPECT_FALSE(IsWorthARetry(ProblemReply(HttpProblem::TimedOut), Repetition::SingleUse));
    EXPECT_FALSE(IsWorthARetry(ProblemReply(HttpProblem::ConnectionLost), Repetition::SingleUse));
}

std::optional<milliseconds> Delay(const Backoff& backoff, int retry, const std::string& retryAfter = {},
                                  std::uint32_t random = 0)
{
    HttpReply reply = WithStatus(503);
    reply.retryAfter = retryAfter;
    return RetryDelay(backoff, retry, reply, Repetition::Harmless, Now, [=](void* bytes, std::size_t size) {
        ASSERT_EQ(size, sizeof random);
        std::copy_n(reinterpret_cast<const char*>(&random), size, static_cast<char*>(bytes));
    });
}

TEST(RetryTest, WaitsGrowUpToTheirLimit)
{
    const Backoff backoff{seconds(1), seconds(10), 3, 5, seconds(0)};
    EXPECT_EQ(Delay(backoff, 0), seconds(1));
    EXPECT_EQ(Delay(backoff, 1), seconds(3));
    EXPECT_EQ(Delay(backoff, 2), seconds(9));
    EXPECT_EQ(Delay(backoff, 3), seconds(10));
    EXPECT_EQ(Delay(backoff, 4), seconds(10));
    EXPECT_EQ(Delay(backoff, 5), std::nullopt);
    const int most = (std::numeric_limits<int>::max)();
    EXPECT_EQ(Delay({seconds(most), seconds(most), most, most, seconds(0)}, 40), seconds(most));
    EXPECT_EQ(Delay({seconds(1), seconds(most), most, most, seconds(0)}, 40), seconds(most));
}

TEST(RetryTest, JitterIsAdded)
{
    const Backoff backoff{seconds(1), seconds(10), 1, 5, seconds(2)};
    EXPECT_EQ(Delay(backoff, 0, "", 0), milliseconds(1000));
    EXPECT_EQ(Delay(backoff, 0, "", 2000), milliseconds(3000));
    EXPECT_EQ(Delay(backoff, 0, "", 2001), milliseconds(1000));
}

TEST(RetryTest, TheProvidersWaitCountsIfItIsLonger)
{
    const Backoff backoff{seconds(5), seconds(10), 1, 5, seconds(0)};
    EXPECT_EQ(Delay(backoff, 0, "30"), seconds(30));
    EXPECT_EQ(Delay(backoff, 0, "1"), seconds(5));
    EXPECT_EQ(Delay(backoff, 0, "nonsense"), seconds(5));
    EXPECT_EQ(Delay(backoff, 0, "301"), std::nullopt) << "such a wait is not begun";
}

TEST(RetryTest, ACancelledWaitEndsTheRetries)
{
    TestProvider provider;
    provider.hooks["/a"] = [](const HttpRequest&) { return WithStatus(503); };
    RetryingHttp::Parts parts{provider, provider.Parts().clock, provider.Parts().ticks, provider.Parts().random,
                              [](milliseconds) { return false; }};
    HttpRequest request;
    request.url = "https://login.example.com/a";
    request.limit = seconds(10);
    EXPECT_EQ(RetryingHttp(parts, {}).Send(std::move(request), Repetition::Harmless, 1'000'000).status, 503);
    EXPECT_EQ(provider.requested.size(), 1u);
}

} // namespace

} // namespace Kestrany::Agent::OpenId
