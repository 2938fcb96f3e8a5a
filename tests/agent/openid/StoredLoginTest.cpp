#include <gtest/gtest.h>

#include "identity/Json.h"
#include "identity/openid/StoredLogin.h"

namespace Kestrany::Agent::OpenId {

namespace {

class StoredLoginTest : public testing::Test
{
protected:
    StoredLoginTest()
    {
        login.clients.push_back(Client("one", "openid \"x\""));
        ClientLogin& first = login.clients.back();
        first.idToken = Secret("id-1");
        first.refreshToken = Secret("re\"fr\\esh-1");
        first.nonce = "nonce-1";
        first.claims["name"] = "Ann \"\xC3\xA4\"";
        first.hasUserInfo = true;
        login.clients.push_back(Client("two", ""));
    }

    static ClientLogin Client(const std::string& clientId, const std::string& scope)
    {
        ClientLogin client;
        client.clientId = clientId;
        client.scope = scope;
        client.accessToken = Secret("access-" + clientId);
        client.accessExpiry = TimePoint(std::chrono::seconds(1'700'000'000));
        client.idExpiry = TimePoint(std::chrono::seconds(1'700'000'001));
        client.subject = "user-" + clientId;
        return client;
    }

    std::string Text() const { return std::string(WriteStoredLogin(login, origin).View()); }

    const StoredLoginOrigin origin{"Tests.Server", TALIX_SERVER_STAGING, "https://login.example.com"};
    StoredLogin login;
    std::string problem;
};

TEST_F(StoredLoginTest, ALoginIsReadAsItWasWritten)
{
    const std::optional<StoredLogin> read = ReadStoredLogin(Secret(Text()), origin, problem);
    ASSERT_TRUE(read) << problem << Text();
    ASSERT_EQ(read->clients.size(), 2u);
    for (std::size_t index = 0; index < 2; ++index)
    {
        const ClientLogin& expected = login.clients[index];
        const ClientLogin& client = read->clients[index];
        EXPECT_EQ(client.clientId, expected.clientId);
        EXPECT_EQ(client.scope, expected.scope);
        EXPECT_EQ(client.nonce, expected.nonce);
        EXPECT_EQ(client.subject, expected.subject);
        EXPECT_EQ(client.claims, expected.claims);
        EXPECT_EQ(client.hasUserInfo, expected.hasUserInfo);
        EXPECT_EQ(client.idExpiry, expected.idExpiry);
        EXPECT_EQ(client.accessToken.View(), expected.accessToken.View());
        EXPECT_EQ(client.accessExpiry, expected.accessExpiry);
        EXPECT_EQ(client.idToken.View(), expected.idToken.View());
        EXPECT_EQ(client.refreshToken.View(), expected.refreshToken.View());
    }
    EXPECT_EQ(WriteStoredLogin(*read, origin).View(), Text());
}

TEST_F(StoredLoginTest, AnotherOriginIsRefused)
{
    for (const StoredLoginOrigin& other :
         {StoredLoginOrigin{"Other", TALIX_SERVER_STAGING, "https://login.example.com"},
          StoredLoginOrigin{"Tests.Server", TALIX_SERVER_PRODUCTION, "https://login.example.com"},
          StoredLoginOrigin{"Tests.Server", TALIX_SERVER_STAGING, "https://other.example.com"}})
    {
        EXPECT_FALSE(ReadStoredLogin(Secret(Text()), other, problem));
        EXPECT_EQ(problem, "it holds the login of Tests.Server at staging, issued by https://login.example.com");
    }
}

TEST_F(StoredLoginTest, AMissingOrWrongMemberIsRefused)
{
    const Json::Value object = *ReadJsonObject(Text());
    for (const std::string& name : object.getMemberNames())
    {
        Json::Value changed = object;
        changed.removeMember(name);
        EXPECT_FALSE(ReadStoredLogin(Secret(WriteJson(changed)), origin, problem)) << name;
        changed[name] = 7;
        EXPECT_FALSE(ReadStoredLogin(Secret(WriteJson(changed)), origin, problem)) << name;
    }
    for (const std::string& name : object["clients"][0].getMemberNames())
    {
        Json::Value changed = object;
        changed["clients"][0].removeMember(name);
        EXPECT_FALSE(ReadStoredLogin(Secret(WriteJson(changed)), origin, problem)) << name;
        changed["clients"][0][name] = Json::Value(Json::arrayValue);
        EXPECT_FALSE(ReadStoredLogin(Secret(WriteJson(changed)), origin, problem)) << name;
    }
    EXPECT_EQ(problem, "it holds no login");
}

TEST_F(StoredLoginTest, ATextThatIsCutOffIsRefused)
{
    const std::string text = Text();
    for (std::size_t size = 0; size < text.size(); ++size)
        EXPECT_FALSE(ReadStoredLogin(Secret(text.substr(0, size)), origin, problem)) << size;
}

} // namespace

} // namespace Kestrany::Agent::OpenId
