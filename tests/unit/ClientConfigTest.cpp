// The object "ssoServer" of a client config file.

#include <gtest/gtest.h>
#include <string>

#include "locate/ClientConfig.h"

namespace OrlindexTest {

using Kestrany::IdentityServices::ClientConfigValues;
using Kestrany::IdentityServices::ParseClientConfig;

namespace {

/// Parses a valid document.
ClientConfigValues ReadDocument(const std::string& json)
{
    const auto values = ParseClientConfig(json).values;
    EXPECT_TRUE(values) << json;
    return values.value_or(ClientConfigValues());
}

ClientConfigValues ReadServer(const std::string& members)
{
    return ReadDocument(R"({"ssoServer": {)" + members + "}}");
}

void ExpectNothing(const ClientConfigValues& values, const std::string& document)
{
    EXPECT_EQ(values.bundleId, "") << document;
    EXPECT_EQ(values.versionCompatibilityConfigFilePath, "") << document;
    EXPECT_EQ(values.searchPaths, "") << document;
    EXPECT_FALSE(values.supportBothLocalAndAdmin) << document;
}

} // namespace

TEST(ClientConfigDocument, EveryKeyIsRead)
{
    const ClientConfigValues values = ReadServer(R"("bundleId": "com.kestrany.\u4e2d",
        "VersionCompatibilityConfigfilePath": "C:\\compatibility", "searchPaths": "%ExePath%;C:\\other",
        "supportBothLocalAndAdmin": true)");
    EXPECT_EQ(values.bundleId, "com.kestrany.\xE4\xB8\xAD");
    EXPECT_EQ(values.versionCompatibilityConfigFilePath, "C:\\compatibility");
    EXPECT_EQ(values.searchPaths, "%ExePath%;C:\\other");
    EXPECT_TRUE(values.supportBothLocalAndAdmin);
}

TEST(ClientConfigDocument, EachKeyStandsAlone)
{
    EXPECT_EQ(ReadServer(R"("bundleId": "b")").bundleId, "b");
    EXPECT_EQ(ReadServer(R"("VersionCompatibilityConfigfilePath": "p")").versionCompatibilityConfigFilePath, "p");
    EXPECT_EQ(ReadServer(R"("searchPaths": "s")").searchPaths, "s");
    EXPECT_TRUE(ReadServer(R"("supportBothLocalAndAdmin": true)").supportBothLocalAndAdmin);
    EXPECT_FALSE(ReadServer(R"("supportBothLocalAndAdmin": false)").supportBothLocalAndAdmin);
}

TEST(ClientConfigDocument, MissingKeysReadAsEmpty)
{
    ExpectNothing(ReadServer(""), "{}");
    ExpectNothing(ReadServer(R"("unknown": "text")"), "unknown");
}

TEST(ClientConfigDocument, KeysAreCaseSensitive)
{
    ExpectNothing(ReadServer(R"("BundleId": "b", "VersionCompatibilityConfigFilePath": "p", "SearchPaths": "s",
                                "SupportBothLocalAndAdmin": true)"),
                  "other case");
    ExpectNothing(ReadDocument(R"({"SsoServer": {"bundleId": "b"}})"), "other case of the object");
}

TEST(ClientConfigDocument, OnlyTheServerObjectIsRead)
{
    ExpectNothing(ReadDocument(R"({"bundleId": "b", "searchPaths": "s", "other": {"bundleId": "b"}})"), "elsewhere");
}

TEST(ClientConfigDocument, AKeyOfAWrongTypeReadsAsMissing)
{
    for (const std::string value :
         {"null", "1", "1.5", "true", "[]", "{}", R"(["text"])", R"({"a": "b"})", "1e300", "1e999", "-1e-999"})
        ExpectNothing(ReadServer(R"("bundleId": )" + value + R"(, "VersionCompatibilityConfigfilePath": )" + value +
                                 R"(, "searchPaths": )" + value),
                      value);
    for (const std::string value : {"null", "1", "1.5", R"("true")", "[]", "[true]", "{}", "1e999"})
        EXPECT_FALSE(ReadServer(R"("supportBothLocalAndAdmin": )" + value).supportBothLocalAndAdmin) << value;
}

TEST(ClientConfigDocument, AKeyOfAWrongTypeDoesNotAffectTheOthers)
{
    const ClientConfigValues values =
        ReadServer(R"("bundleId": [], "searchPaths": "s", "supportBothLocalAndAdmin": true)");
    EXPECT_EQ(values.searchPaths, "s");
    EXPECT_TRUE(values.supportBothLocalAndAdmin);
}

TEST(ClientConfigDocument, ANumberTooLargeDoesNotAffectTheOthers)
{
    for (const std::string number : {"1e999", "-1e999", "1e-999"})
    {
        const ClientConfigValues values =
            ReadDocument(R"({"timeout": )" + number + R"(, "ssoServer": {"bundleId": )" + number +
                         R"(, "searchPaths": "s", "supportBothLocalAndAdmin": true}})");
        EXPECT_EQ(values.bundleId, "") << number;
        EXPECT_EQ(values.searchPaths, "s") << number;
        EXPECT_TRUE(values.supportBothLocalAndAdmin) << number;
    }
}

TEST(ClientConfigDocument, ANumberTooLargeIsAKeyOfAWrongType)
{
    const auto config = ParseClientConfig(R"({"ssoServer": 1e999})");
    ASSERT_TRUE(config.values);
    EXPECT_TRUE(config.keys.at(0).present);
    EXPECT_FALSE(config.keys.at(0).rightType);
}

TEST(ClientConfigDocument, AServerThatIsNoObjectCountsAsMissing)
{
    for (const std::string value : {"null", "1", "1e999", R"("text")", "true", "[]", R"([{"bundleId": "b"}])"})
        ExpectNothing(ReadDocument(R"({"ssoServer": )" + value + "}"), value);
}

TEST(ClientConfigDocument, ADocumentThatIsNoObjectCountsAsEmpty)
{
    for (const std::string document :
         {"[]", "null", "1", "1e999", R"("ssoServer")", R"([{"ssoServer": {"bundleId": "b"}}])"})
        ExpectNothing(ReadDocument(document), document);
}

TEST(ClientConfigDocument, AByteOrderMarkAndCommentsAreAccepted)
{
    EXPECT_EQ(ReadDocument("\xEF\xBB\xBF// for the test machines\n{\"ssoServer\": /* here */ {\"bundleId\": \"b\"}}")
                  .bundleId,
              "b");
}

TEST(ClientConfigDocument, WhatIsNoJsonIsRefused)
{
    const std::string documents[] = {"",
                                     "{",
                                     "ssoServer",
                                     R"({"ssoServer": })",
                                     std::string("MZ\x90\0\x03\0", 6),
                                     std::string(1100, '[') + std::string(1100, ']')};
    for (const std::string& document : documents)
        EXPECT_FALSE(ParseClientConfig(document).values) << document.substr(0, 40);
}

} // namespace OrlindexTest
