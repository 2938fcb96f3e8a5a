#include <gtest/gtest.h>

#include <json/json.h>

#include "identity/Json.h"
#include "identity/simulated/LoginRecord.h"

namespace Kestrany::Agent::Simulated {

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

    Json::Value WithoutTokenText() const
    {
        Json::Value clients = (*ReadJsonObject(text))["clients"];
        clients[0]["accessToken"]["text"] = "";
        return clients;
    }

    const LoginOrigin origin{"Tests.Server", TALIX_SERVER_STAGING};
    const LoginRecord record{"user-1",
                             At(1'800'000'000),
                             {{"one", "openid", {"access", At(1'700'000'100)}, {"id", At(1'700'000'200)}},
                              {"two", "", {"access-2", At(1'700'000'300)}, {"id-2", At(1'700'000'400)}}}};
    const std::string text = WriteLoginRecord(record, origin);
    std::string problem;
};

TEST_F(LoginRecordTest, ARecordIsReadAsItWasWritten)
{
    const std::optional<LoginRecord> read = ReadLoginRecord(text, origin, problem);
    ASSERT_TRUE(read) << text << problem;
    EXPECT_EQ(read->userId, "user-1");
    EXPECT_EQ(read->expiry, record.expiry);
    ASSERT_EQ(read->clients.size(), 2u);
    for (std::size_t index = 0; index < 2; ++index)
    {
        const ClientTokens& expected = record.clients[index];
        const ClientTokens& tokens = read->clients[index];
        EXPECT_EQ(tokens.clientId, expected.clientId);
        EXPECT_EQ(tokens.scope, expected.scope);
        EXPECT_EQ(tokens.access.text, expected.access.text);
        EXPECT_EQ(tokens.access.expiry, expected.access.expiry);
        EXPECT_EQ(tokens.id.text, expected.id.text);
        EXPECT_EQ(tokens.id.expiry, expected.id.expiry);
    }
}

TEST_F(LoginRecordTest, ARecordOfAnotherOriginIsRefusedAndNamed)
{
    EXPECT_FALSE(ReadLoginRecord(text, {"Tests.Server", TALIX_SERVER_PRODUCTION}, problem));
    EXPECT_NE(problem.find("Tests.Server at staging"), std::string::npos) << problem;
    problem.clear();
    EXPECT_FALSE(ReadLoginRecord(text, {"Other", TALIX_SERVER_STAGING}, problem));
    EXPECT_NE(problem.find("Tests.Server"), std::string::npos) << problem;
}

TEST_F(LoginRecordTest, EveryMemberIsRequired)
{
    for (const char* key : {"format", "identity", "server", "userId", "expiry", "clients"})
    {
        problem.clear();
        EXPECT_FALSE(ReadLoginRecord(With(key, Json::nullValue), origin, problem)) << key;
        EXPECT_FALSE(problem.empty()) << key;
        EXPECT_FALSE(ReadLoginRecord(With(key, true), origin, problem)) << key;
    }
}

TEST_F(LoginRecordTest, EveryMemberOfAClientIsRequired)
{
    for (const char* key : {"clientId", "scope", "accessToken", "idToken"})
    {
        Json::Value clients = (*ReadJsonObject(text))["clients"];
        clients[1].removeMember(key);
        EXPECT_FALSE(ReadLoginRecord(With("clients", clients), origin, problem)) << key;
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
    for (const std::string& other : {std::string(), std::string("{}"), std::string("login"), text + "x", text.substr(1),
                                     With("format", "login-state-1"), With("clients", WithoutTokenText())})
    {
        problem.clear();
        EXPECT_FALSE(ReadLoginRecord(other, origin, problem)) << other;
        EXPECT_EQ(problem, "it holds no login state") << other;
    }
}

} // namespace

} // namespace Kestrany::Agent::Simulated
