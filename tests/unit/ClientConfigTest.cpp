// The object "ssoServer" of a client config file.

#include <gtest/gtest.h>
#include <string>

#include "locate/ClientConfig.h"

namespace OrlindexTest {

using Kestrany::IdentityServices::ClientConfigValues;
using Kestrany::IdentityServices::ParseClientConfig;

namespace {

/// Parses a valid file.
ClientConfigValues ParseValues(const std::string& json)
{
    const auto values = ParseClientConfig(json).values;
    EXPECT_TRUE(values) << json;
    return values.value_or(ClientConfigValues());
}

ClientConfigValues ParseServer(const std::string& members)
{
    return ParseValues(R"({"ssoServer": {)" + members + "}}");
}

void ExpectNothing(const ClientConfigValues& values, const std::string& json)
{
    EXPECT_EQ(values.bundleId, "") << json;
    EXPECT_EQ(values.versionCompatibilityConfigFilePath, "") << json;
    EXPECT_EQ(values.searchPaths, "") << json;
    EXPECT_FALSE(values.supportBothLocalAndAdmin) << json;
}

} // namespace

TEST(ParseClientConfig, EveryKeyIsRead)
{
    const ClientConfigValues values = ParseServer(R"("bundleId": "com.kestrany.\u4e2d",
        "VersionCompatibilityConfigfilePath": "C:\\compatibility", "searchPaths": "%ExePath%;C:\\other",
        "supportBothLocalAndAdmin": true)");
    EXPECT_EQ(values.bundleId, "com.kestrany.\xE4\xB8\xAD");
    EXPECT_EQ(values.versionCompatibilityConfigFilePath, "C:\\compatibility");
    EXPECT_EQ(values.searchPaths, "%ExePath%;C:\\other");
    EXPECT_TRUE(values.supportBothLocalAndAdmin);
}

TEST(ParseClientConfig, EachKeyStandsAlone)
{
    EXPECT_EQ(ParseServer(R"("bundleId": "b")").bundleId, "b");
    EXPECT_EQ(ParseServer(R"("VersionCompatibilityConfigfilePath": "p")").versionCompatibilityConfigFilePath, "p");
    EXPECT_EQ(ParseServer(R"("searchPaths": "s")").searchPaths, "s");
    EXPECT_TRUE(ParseServer(R"("supportBothLocalAndAdmin": true)").supportBothLocalAndAdmin);
    EXPECT_FALSE(ParseServer(R"("supportBothLocalAndAdmin": false)").supportBothLocalAndAdmin);
}

TEST(ParseClientConfig, MissingKeysReadAsEmpty)
{
    ExpectNothing(ParseServer(""), "{}");
    ExpectNothing(ParseServer(R"("unknown": "text")"), "unknown");
}

TEST(ParseClientConfig, KeysAreCaseSensitive)
{
    ExpectNothing(ParseServer(R"("BundleId": "b", "VersionCompatibilityConfigFilePath": "p", "SearchPaths": "s",
                                "SupportBothLocalAndAdmin": true)"),
                  "other case");
    ExpectNothing(ParseValues(R"({"SsoServer": {"bundleId": "b"}})"), "other case of the object");
}

TEST(ParseClientConfig, OnlyTheServerObjectIsRead)
{
    ExpectNothing(ParseValues(R"({"bundleId": "b", "searchPaths": "s", "other": {"bundleId": "b"}})"), "elsewhere");
}

TEST(ParseClientConfig, AKeyOfAWrongTypeReadsAsMissing)
{
    for (const std::string value :
         {"null", "1", "1.5", "true", "[]", "{}", R"(["text"])", R"({"a": "b"})", "1e300", "1e999", "-1e-999"})
        ExpectNothing(ParseServer(R"("bundleId": )" + value + R"(, "VersionCompatibilityConfigfilePath": )" + value +
                                  R"(, "searchPaths": )" + value),
                      value);
    for (const std::string value : {"null", "1", "1.5", R"("true")", "[]", "[true]", "{}", "1e999"})
        EXPECT_FALSE(ParseServer(R"("supportBothLocalAndAdmin": )" + value).supportBothLocalAndAdmin) << value;
}

TEST(ParseClientConfig, AKeyOfAWrongTypeDoesNotAffectTheOthers)
{
    const ClientConfigValues values =
        ParseServer(R"("bundleId": [], "searchPaths": "s", "supportBothLocalAndAdmin": true)");
    EXPECT_EQ(values.searchPaths, "s");
    EXPECT_TRUE(values.supportBothLocalAndAdmin);
}

TEST(ParseClientConfig, ANumberTooLargeDoesNotAffectTheOthers)
{
    for (const std::string number : {"1e999", "-1e999", "1e-999"})
    {
        const ClientConfigValues values =
            ParseValues(R"({"timeout": )" + number + R"(, "ssoServer": {"bundleId": )" + number +
                        R"(, "searchPaths": "s", "supportBothLocalAndAdmin": true}})");
        EXPECT_EQ(values.bundleId, "") << number;
        EXPECT_EQ(values.searchPaths, "s") << number;
        EXPECT_TRUE(values.supportBothLocalAndAdmin) << number;
    }
}

TEST(ParseClientConfig, ANumberTooLargeIsAKeyOfAWrongType)
{
    const auto config = ParseClientConfig(R"({"ssoServer": 1e999})");
    ASSERT_TRUE(config.values);
    EXPECT_TRUE(config.keys.at(0).present);
    EXPECT_FALSE(config.keys.at(0).rightType);
}

TEST(ParseClientConfig, AServerThatIsNoObjectCountsAsMissing)
{
    for (const std::string value : {"null", "1", "1e999", R"("text")", "true", "[]", R"([{"bundleId": "b"}])"})
        ExpectNothing(ParseValues(R"({"ssoServer": )" + value + "}"), value);
}

TEST(ParseClientConfig, ARootThatIsNoObjectCountsAsEmpty)
{
    for (const std::string json :
         {"[]", "null", "1", "1e999", R"("ssoServer")", R"([{"ssoServer": {"bundleId": "b"}}])"})
        ExpectNothing(ParseValues(json), json);
}

TEST(ParseClientConfig, AByteOrderMarkAndCommentsAreAccepted)
{
    EXPECT_EQ(
        ParseValues("\xEF\xBB\xBF// for the test machines\n{\"ssoServer\": /* here */ {\"bundleId\": \"b\"}}").bundleId,
        "b");
}

TEST(ParseClientConfig, WhatIsNoJsonIsRefused)
{
    const std::string invalid[] = {"",
                                   "{",
                                   "ssoServer",
                                   R"({"ssoServer": })",
                                   std::string("MZ\x90\0\x03\0", 6),
                                   std::string(1100, '[') + std::string(1100, ']')};
    for (const std::string& json : invalid)
        EXPECT_FALSE(ParseClientConfig(json).values) << json.substr(0, 40);
}

} // namespace OrlindexTest
