#include <gtest/gtest.h>

#include <json/json.h>

#include "identity/simulated/Scenario.h"

namespace Kestrany::Agent::Simulated {

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
    Account account = DefaultAccounts().front();
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
    const Account sam = DefaultAccounts().front();
    EXPECT_NE(sam.userName.find("simulator"), std::string::npos);
    EXPECT_NE(sam.displayName.find("simulator"), std::string::npos);
}

} // namespace

} // namespace Kestrany::Agent::Simulated
