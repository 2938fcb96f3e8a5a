#include <gtest/gtest.h>

#include <json/json.h>

#include "identity/LoginService.h"
#include "identity/simulated/Scenario.h"

namespace Kestrany::Agent {

namespace {

Json::Value Parse(const std::string& text)
{
    Json::Value value;
    std::string errors;
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    EXPECT_TRUE(reader->parse(text.data(), text.data() + text.size(), &value, &errors)) << errors;
    return value;
}

TEST(AccountTest, TheProfileHoldsEveryAttributeButTheSecret)
{
    Account account = Simulated::DefaultAccounts().front();
    account.displayName = "Zo\xC3\xAB \"Z\" \\ \n";
    const std::string text = ProfileJson(account);
    const Json::Value profile = Parse(text);
    EXPECT_EQ(profile["userId"].asString(), account.userId);
    EXPECT_EQ(profile["userName"].asString(), account.userName);
    EXPECT_EQ(profile["firstName"].asString(), "Sam");
    EXPECT_EQ(profile["lastName"].asString(), "Example");
    EXPECT_EQ(profile["email"].asString(), account.email);
    EXPECT_EQ(profile["displayName"].asString(), account.displayName);
    EXPECT_EQ(profile.size(), 6u);
    EXPECT_NE(text.find("Zo\xC3\xAB"), std::string::npos) << "stays UTF-8: " << text;
}

TEST(AccountTest, TheDefaultUserIsKnownForASimulatedOne)
{
    const Account sam = Simulated::DefaultAccounts().front();
    EXPECT_NE(sam.userName.find("simulator"), std::string::npos);
    EXPECT_NE(sam.displayName.find("simulator"), std::string::npos);
}

TEST(ServerNamesTest, OnlyKnownServersHaveNames)
{
    EXPECT_EQ(ServerName(TALIX_SERVER_PRODUCTION), "production");
    EXPECT_EQ(ServerName(TALIX_SERVER_STAGING), "staging");
    EXPECT_EQ(ServerName(TALIX_SERVER_DEVELOPMENT), "development");
    EXPECT_EQ(ServerName(TALIX_SERVER_UNAVAILABLE), "");
    EXPECT_EQ(ServerName(static_cast<Server>(3)), "");
}

TEST(ServerNamesTest, NamesAreCaseSensitive)
{
    for (const Server server : Servers)
        EXPECT_EQ(ServerOfName(ServerName(server)), server);
    for (const char* other : {"", "Production", "production ", "prod", "0"})
        EXPECT_EQ(ServerOfName(other), TALIX_SERVER_UNAVAILABLE) << other;
}

TEST(WebAddressTest, WebAddressesNameAHostOverHttp)
{
    EXPECT_TRUE(IsWebAddress("https://a"));
    EXPECT_TRUE(IsWebAddress("http://a/b"));
    for (const char* other : {"", "https://", "https:///a", "http:/a", "HTTPS//a", "javascript:alert(1)", "ahttps://b"})
        EXPECT_FALSE(IsWebAddress(other)) << other;
}

} // namespace

} // namespace Kestrany::Agent
