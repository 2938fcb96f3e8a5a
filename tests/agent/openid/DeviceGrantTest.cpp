#include <gtest/gtest.h>

#include "TestProvider.h"
#include "identity/openid/DeviceGrant.h"

namespace Kestrany::Agent::OpenId {

namespace {

using std::chrono::seconds;

constexpr char Url[] = "https://login.example.com/device";

Json::Value Reply()
{
    Json::Value reply(Json::objectValue);
    reply["device_code"] = "device-1";
    reply["user_code"] = "ABCD-EFGH";
    reply["verification_uri"] = "https://login.example.com/enter";
    reply["expires_in"] = 600;
    return reply;
}

Json::Value With(const char* name, const Json::Value& value)
{
    Json::Value reply = Reply();
    reply[name] = value;
    return reply;
}

TEST(DeviceGrantTest, AReplyIsParsed)
{
    Json::Value reply = Reply();
    reply["verification_uri_complete"] = "https://login.example.com/enter?code=ABCD-EFGH";
    reply["interval"] = 7;
    const Outcome<DeviceAuthorization> outcome = ParseDeviceReply(JsonReply(reply), Url, false);
    ASSERT_EQ(FailureOf(outcome), nullptr) << LogLine(*FailureOf(outcome));
    const DeviceAuthorization& device = ResultOf(outcome);
    EXPECT_EQ(device.deviceCode.View(), "device-1");
    EXPECT_EQ(device.userCode, "ABCD-EFGH");
    EXPECT_EQ(device.verificationUri, "https://login.example.com/enter");
    EXPECT_EQ(device.completeUri, "https://login.example.com/enter?code=ABCD-EFGH");
    EXPECT_EQ(device.lifetime, seconds(600));
    EXPECT_EQ(device.interval, seconds(7));
}

TEST(DeviceGrantTest, OptionalMembersHaveTheirDefaults)
{
    const Outcome<DeviceAuthorization> outcome = ParseDeviceReply(JsonReply(Reply()), Url, false);
    EXPECT_EQ(ResultOf(outcome).interval, seconds(5));
    EXPECT_TRUE(ResultOf(outcome).completeUri.empty());
    Json::Value old = Reply();
    old.removeMember("verification_uri");
    old["verification_url"] = "https://login.example.com/old";
    EXPECT_EQ(ResultOf(ParseDeviceReply(JsonReply(old), Url, false)).verificationUri, "https://login.example.com/old");
    EXPECT_EQ(ResultOf(ParseDeviceReply(JsonReply(With("interval", 0)), Url, false)).interval, seconds(1));
}

TEST(DeviceGrantTest, AMemberThatIsNotUsableIsNamed)
{
    struct Case
    {
        const char* name;
        Json::Value value;
    };
    for (const Case& each : std::vector<Case>{{"device_code", Json::nullValue},
                                              {"device_code", 7},
                                              {"device_code", std::string(70'000, 'a')},
                                              {"user_code", Json::nullValue},
                                              {"user_code", std::string(65, 'A')},
                                              {"user_code", "A\nB"},
                                              {"user_code", "\xE2\x80\xAE"},
                                              {"verification_uri", "http://login.example.com/"},
                                              {"verification_uri", "javascript:alert(1)"},
                                              {"verification_uri_complete", "file:///c:/a.exe"},
                                              {"expires_in", Json::nullValue},
                                              {"expires_in", 0},
                                              {"expires_in", -1},
                                              {"interval", 121},
                                              {"interval", "soon"}})
    {
        const Outcome<DeviceAuthorization> outcome =
            ParseDeviceReply(JsonReply(With(each.name, each.value)), Url, false);
        ASSERT_NE(FailureOf(outcome), nullptr) << each.name;
        EXPECT_EQ(FailureOf(outcome)->code, IdDeviceReplyMalformed);
        EXPECT_NE(FailureOf(outcome)->came.find(std::string("\"") + each.name + "\""), std::string::npos)
            << FailureOf(outcome)->came;
    }
}

TEST(DeviceGrantTest, AnotherReplyHasItsCode)
{
    const auto code = [](HttpReply reply) {
        const Outcome<DeviceAuthorization> outcome = ParseDeviceReply(std::move(reply), Url, false);
        return FailureOf(outcome)->code;
    };
    EXPECT_EQ(code(TextReply(R"({"error":"invalid_client"})", "application/json", 401)), IdTokenEndpointError);
    EXPECT_EQ(code(TextReply("<html>", "text/html")), IdDeviceReplyMalformed);
    EXPECT_EQ(code(TextReply("", "", 500)), IdProviderFailed);
    EXPECT_EQ(code(ProblemReply(HttpProblem::TlsRefused)), IdTlsRefused);
}

class DevicePollingTest : public testing::Test
{
protected:
    std::optional<IdErrorCode> Continue(const char* error, std::int64_t now)
    {
        const std::optional<Failure> failure = polling.Continue(ProviderError{error, ""}, Url, now);
        return failure ? std::optional<IdErrorCode>(failure->code) : std::nullopt;
    }

    DevicePolling polling{seconds(5), seconds(600), 1000};
};

TEST_F(DevicePollingTest, PollsHaveTheProvidersInterval)
{
    EXPECT_EQ(polling.NextPoll(), 6000);
    EXPECT_EQ(Continue("authorization_pending", 7000), std::nullopt);
    EXPECT_EQ(polling.NextPoll(), 12'000);
}

TEST_F(DevicePollingTest, SlowDownAddsFiveSecondsForGood)
{
    EXPECT_EQ(Continue("slow_down", 10'000), std::nullopt);
    EXPECT_EQ(polling.NextPoll(), 20'000);
    EXPECT_EQ(Continue("authorization_pending", 20'000), std::nullopt);
    EXPECT_EQ(polling.NextPoll(), 30'000);
}

TEST_F(DevicePollingTest, AFailedConnectionDoublesTheIntervalUpToItsLimit)
{
    std::int64_t now = 1000;
    for (const std::int64_t interval : {10, 20, 40, 80, 120, 120})
    {
        EXPECT_EQ(polling.Continue(Failure{IdProviderUnreachable, "", ""}, Url, now), std::nullopt);
        EXPECT_EQ(polling.NextPoll() - now, interval * 1000);
        now += 1000;
    }
}

TEST_F(DevicePollingTest, OtherResultsEndThePolling)
{
    EXPECT_EQ(Continue("access_denied", 7000), IdSignInDenied);
    EXPECT_EQ(Continue("expired_token", 7000), IdDeviceCodeExpired);
    EXPECT_EQ(Continue("invalid_grant", 7000), IdGrantRefused);
    EXPECT_EQ(Continue("invalid_client", 7000), IdTokenEndpointError);
    const std::optional<Failure> failure = polling.Continue(Failure{IdTlsRefused, "", ""}, Url, 7000);
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->code, IdTlsRefused);
}

TEST_F(DevicePollingTest, PollingEndsWhenTheCodeExpires)
{
    EXPECT_EQ(Continue("authorization_pending", 595'000), std::nullopt);
    EXPECT_EQ(polling.NextPoll(), 600'000);
    EXPECT_EQ(Continue("authorization_pending", 600'000), IdDeviceCodeExpired);
}

} // namespace

} // namespace Kestrany::Agent::OpenId
