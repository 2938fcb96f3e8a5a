#include <gtest/gtest.h>

#include <json/json.h>

#include "session/Json.h"
#include "session/LoginRecord.h"

namespace Kestrany::Simulator {

namespace {

TimePoint At(std::int64_t seconds)
{
    return TimePoint(std::chrono::seconds(seconds));
}

class LoginRecordTest : public testing::Test
{
protected:
    /// The text with one member replaced, or removed by a null.
    std::string With(const char* key, const Json::Value& value) const
    {
        Json::Value object = *ReadJsonObject(text);
        if (value.isNull())
            object.removeMember(key);
        else
            object[key] = value;
        return WriteJson(object);
    }

    const LoginOrigin origin{"Tests.Server", TALIX_SERVER_STAGING};
    const LoginRecord record{"user-1", At(1'800'000'000), {"access", At(1'700'000'100)}, {"id", At(1'700'000'200)}};
    const std::string text = WriteLoginRecord(record, origin);
    std::string problem;
};

TEST_F(LoginRecordTest, ARecordIsReadAsItWasWritten)
{
    const std::optional<LoginRecord> read = ReadLoginRecord(text, origin, problem);
    ASSERT_TRUE(read) << text << problem;
    EXPECT_EQ(read->userId, "user-1");
    EXPECT_EQ(read->expiry, record.expiry);
    EXPECT_EQ(read->accessToken.text, "access");
    EXPECT_EQ(read->accessToken.expiry, record.accessToken.expiry);
    EXPECT_EQ(read->idToken.text, "id");
    EXPECT_EQ(read->idToken.expiry, record.idToken.expiry);
}

TEST_F(LoginRecordTest, ARecordOfAnotherOriginIsRefusedAndNamed)
{
    EXPECT_FALSE(ReadLoginRecord(text, {"Tests.Server", TALIX_SERVER_PRODUCTION}, problem));
    EXPECT_NE(problem.find("Tests.Server at staging"), std::string::npos) << problem;
    problem.clear();
    EXPECT_FALSE(ReadLoginRecord(text, {"Other", TALIX_SERVER_STAGING}, problem));
    EXPECT_NE(problem.find("Tests.Server"), std::string::npos) << problem;
}

TEST_F(LoginRecordTest, EveryMemberIsNeeded)
{
    for (const char* key : {"format", "identity", "server", "userId", "expiry", "accessToken", "idToken"})
    {
        problem.clear();
        EXPECT_FALSE(ReadLoginRecord(With(key, Json::nullValue), origin, problem)) << key;
        EXPECT_FALSE(problem.empty()) << key;
        EXPECT_FALSE(ReadLoginRecord(With(key, true), origin, problem)) << key;
    }
}

TEST_F(LoginRecordTest, TimesOutOfRangeAreRefused)
{
    for (const Json::Value& time : {Json::Value(-1), Json::Value(1.5), Json::Value(Json::Value::maxInt64),
                                    Json::Value(1e300), Json::Value("1800000000")})
        EXPECT_FALSE(ReadLoginRecord(With("expiry", time), origin, problem)) << time.toStyledString();
}

TEST_F(LoginRecordTest, OtherTextsAreNoRecords)
{
    for (const std::string& other :
         {std::string(), std::string("{}"), std::string("login"), text + "x", text.substr(1),
          With("format", "login-state-2"), With("accessToken", *ReadJsonObject(R"({"text":"","expiry":1})"))})
    {
        problem.clear();
        EXPECT_FALSE(ReadLoginRecord(other, origin, problem)) << other;
        EXPECT_EQ(problem, "it holds no login state") << other;
    }
}

} // namespace

} // namespace Kestrany::Simulator
