// The plugin module's operations: conversion of arguments and results. The session has its own tests.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "Environment.h"
#include "identity/ResultCodes.h"
#include "load/contract/IPluginLogger.h"
#include "load/contract/ISSOClient.h"
#include "load/contract/ISSOClientModule.h"

#include <windows.h>

namespace Kestrany::Agent {

namespace {

using IdentityServices::ProductConfig;

constexpr char NotUtf8[] = "a\xC3(";
constexpr wchar_t NotUtf16[] = {L'a', 0xD800, L'b', 0};

class PluginClientTest : public testing::Test
{
protected:
    PluginClientTest()
    {
        ProductConfig product;
        product.SetOAuth2ClientID("tests");
        client.SetProductConfig(TALIX_SERVER_PRODUCTION, product);
    }
    ~PluginClientTest() override
    {
        int result = 0;
        client.Logout(result, TALIX_LOGOUT_FORCE);
        client.ClearProxyInfo();
        client.SetServer(TALIX_SERVER_PRODUCTION);
    }

    void LogIn()
    {
        int result = -1;
        ASSERT_EQ(client.Login(result), IdSuccess);
        ASSERT_EQ(result, 0);
    }

    IdentityServices::ISSOClient& client = *PluginFactory().GetSSOClient();
};

TEST_F(PluginClientTest, TextsFitABufferOfTheirLengthAndAZero)
{
    LogIn();
    std::wstring buffer(4096, L'?');
    ASSERT_EQ(client.GetOAuth2AccessToken(buffer.data(), 4096, false), IdSuccess);
    const int length = static_cast<int>(std::wstring(buffer.c_str()).size());
    std::wstring exact(static_cast<std::size_t>(length) + 1, L'?');
    EXPECT_EQ(client.GetOAuth2AccessToken(exact.data(), length + 1, false), IdSuccess);
    EXPECT_EQ(std::wstring(exact.c_str()), std::wstring(buffer.c_str()));
    for (const int capacity : {length, 1, 0, -1})
    {
        std::wstring small(exact.size(), L'?');
        EXPECT_EQ(client.GetOAuth2AccessToken(small.data(), capacity, false), IdBufferTooSmall) << capacity;
        EXPECT_EQ(client.GetOAuth2IdToken(small.data(), capacity > 1 ? 2 : capacity), IdBufferTooSmall) << capacity;
        EXPECT_EQ(client.GetSessionUri(L"https://a.example", 0, small.data(), std::min(capacity, 64)), IdBufferTooSmall)
            << capacity;
        EXPECT_EQ(small, std::wstring(exact.size(), L'?')) << capacity;
    }
}

TEST_F(PluginClientTest, NullArgumentsAreRefused)
{
    LogIn();
    int number = 0;
    wchar_t wide[64];
    EXPECT_EQ(client.GetOAuth2AccessToken(nullptr, 4096, false), IdFailed);
    EXPECT_EQ(client.GetOAuth2IdToken(nullptr, 4096), IdFailed);
    EXPECT_EQ(client.GetUserInfo(nullptr), IdFailed);
    EXPECT_EQ(client.GetSessionUri(nullptr, 0, wide, 64), IdFailed);
    EXPECT_EQ(client.GetSessionUri(L"https://a.example", 0, nullptr, 64), IdFailed);
    EXPECT_EQ(client.GetProfileInfo(nullptr, nullptr), IdFailed);
    EXPECT_EQ(client.AddObserver(nullptr), IdFailed);
    EXPECT_EQ(client.RemoveObserver(nullptr), IdFailed);
    EXPECT_EQ(client.HasProxyInfo(nullptr, 0), IdUnknownProxy);
    EXPECT_EQ(client.GetProxyInfo(nullptr, 0, nullptr), IdInvalidProxyRecord);
    EXPECT_EQ(client.SetProxyInfo(nullptr), IdInvalidProxyRecord);
    EXPECT_EQ(client.AutomatedLogin(nullptr, L"simulator", false, nullptr), IdFailed);
    EXPECT_EQ(client.AutomatedLogin(L"sam.example@simulator", nullptr, false, nullptr), IdFailed);
    EXPECT_EQ(client.OverrideCallConfig(1, 1, 0, 0, nullptr), IdInvalidOverride);
    EXPECT_EQ(client.ShowAccountSettings(number), IdSuccess);
}

TEST_F(PluginClientTest, TextsThatAreNotWellFormedAreRefused)
{
    LogIn();
    wchar_t wide[256] = L"untouched";
    EXPECT_EQ(client.GetSessionUri(NotUtf16, 0, wide, 256), IdInvalidText);
    EXPECT_STREQ(wide, L"untouched");
    EXPECT_EQ(client.GetSessionUri(L"https://a.example/\uFFFD", 0, wide, 256), IdInvalidText);
    EXPECT_STREQ(wide, L"untouched");
    EXPECT_EQ(client.AutomatedLogin(NotUtf16, L"simulator", false, nullptr), IdInvalidText);
    EXPECT_EQ(client.HasProxyInfo(NotUtf8, 80), IdInvalidText);
    EXPECT_EQ(client.OverrideCallConfig(1, 1, 0, 0, NotUtf8), IdInvalidText);
    ProductConfig product;
    product.SetOAuth2ClientID("tests");
    product.SetProductBuildId(NotUtf8);
    EXPECT_EQ(client.SetProductConfig(TALIX_SERVER_PRODUCTION, product), IdInvalidText);
}

TEST_F(PluginClientTest, AnAddressWithAReplacementCharacterIsRefused)
{
    LogIn();
    wchar_t wide[256] = L"untouched";
    for (const char* const illFormed : {"https://a.example/\xED\xA0\x80", "https://a.example/\xC3(", "https://a\xFF"})
    {
        wchar_t address[64] = L""; // Converted without flags, as by the library.
        ASSERT_GT(MultiByteToWideChar(CP_UTF8, 0, illFormed, -1, address, 64), 0);
        EXPECT_EQ(client.GetSessionUri(address, 0, wide, 256), IdInvalidText) << illFormed;
        EXPECT_STREQ(wide, L"untouched");
    }
    EXPECT_EQ(client.GetSessionUri(L"https://a.example/\u0416", 0, wide, 256), IdSuccess);
}

TEST_F(PluginClientTest, ProductConfigurationIsReturnedAsItWasSet)
{
    ProductConfig product;
    product.SetOAuth2ClientID("client");
    product.SetOAuth2TokenScope("openid");
    product.SetProductLineName("Zo\xC3\xAB");
    product.SetProductReleaseId("3");
    ASSERT_EQ(client.SetProductConfig(TALIX_SERVER_STAGING, product), IdSuccess);

    ProductConfig read;
    read.SetProductBuildId("kept");
    ASSERT_EQ(client.GetProductConfig(TALIX_SERVER_STAGING, read), IdSuccess);
    char text[64] = "";
    EXPECT_EQ(read.GetOAuth2ClientID(text, 64), 6);
    EXPECT_STREQ(text, "client");
    read.GetOAuth2AccessTokenScope(text, 64);
    EXPECT_STREQ(text, "openid");
    read.GetProductLineName(text, 64);
    EXPECT_STREQ(text, "Zo\xC3\xAB");
    read.GetProductReleaseId(text, 64);
    EXPECT_STREQ(text, "3");
    read.GetProductBuildId(text, 64);
    EXPECT_STREQ(text, "kept");
}

TEST_F(PluginClientTest, AProductTextMayHaveAnyLength)
{
    for (const std::size_t length : {4095u, 4096u, 4097u, 300'000u})
    {
        const std::string scope(length, 's');
        ProductConfig product;
        product.SetOAuth2ClientID("client");
        product.SetOAuth2TokenScope(scope.c_str());
        ASSERT_EQ(client.SetProductConfig(TALIX_SERVER_DEVELOPMENT, product), IdSuccess);
        ProductConfig read;
        ASSERT_EQ(client.GetProductConfig(TALIX_SERVER_DEVELOPMENT, read), IdSuccess);
        std::string buffer(length + 1, '?');
        EXPECT_EQ(read.GetOAuth2AccessTokenScope(buffer.data(), static_cast<int>(buffer.size())),
                  static_cast<int>(length));
        EXPECT_STREQ(buffer.c_str(), scope.c_str());
    }
}

TEST_F(PluginClientTest, AProductWithoutClientIdIsRefused)
{
    EXPECT_EQ(client.SetProductConfig(TALIX_SERVER_PRODUCTION, ProductConfig()), IdInvalidClientId);
}

TEST_F(PluginClientTest, UserAttributesAreWrittenAllOrNone)
{
    LogIn();
    char name[64] = "untouched";
    char email[64] = "untouched";
    talix_user_info info{};
    info.display_name = name;
    info.display_name_size = sizeof name;
    info.email = email;
    info.email_size = 5;
    EXPECT_EQ(client.GetUserInfo(&info), IdBufferTooSmall);
    EXPECT_STREQ(name, "untouched");
    EXPECT_STREQ(email, "untouched");
    info.email_size = 0; // not wanted
    EXPECT_EQ(client.GetUserInfo(&info), IdSuccess);
    EXPECT_STREQ(name, "Sam Example (simulator)");
    EXPECT_STREQ(email, "untouched");
    info.email_size = -1;
    EXPECT_EQ(client.GetUserInfo(&info), IdBufferTooSmall);
}

TEST_F(PluginClientTest, ProfileReportsTheSizeThatItNeeds)
{
    LogIn();
    int needed = 0;
    EXPECT_EQ(client.GetProfileInfo(nullptr, &needed), IdBufferTooSmall);
    ASSERT_GT(needed, 1);
    std::string buffer(static_cast<std::size_t>(needed), '?');
    int size = needed - 1;
    EXPECT_EQ(client.GetProfileInfo(buffer.data(), &size), IdBufferTooSmall);
    EXPECT_EQ(buffer, std::string(buffer.size(), '?'));
    EXPECT_EQ(size, needed);
    EXPECT_EQ(client.GetProfileInfo(buffer.data(), &size), IdSuccess);
    EXPECT_EQ(buffer.find('\0'), buffer.size() - 1);
    EXPECT_EQ(buffer.front(), '{');
}

TEST_F(PluginClientTest, ProxyTextsAreReadWithinTheirCapacity)
{
    char host[] = {'p', 'r', 'o', 'x', 'y', 'X'};
    talix_proxy_info info{};
    info.host = host;
    info.host_size = 5;
    info.port = 3128;
    ASSERT_EQ(client.SetProxyInfo(&info), IdSuccess);
    EXPECT_EQ(client.HasProxyInfo("proxy", 3128), IdSuccess);

    char read[6] = "??";
    talix_proxy_info out{};
    out.host = read;
    out.host_size = 5;
    EXPECT_EQ(client.GetProxyInfo("proxy", 3128, &out), IdBufferTooSmall);
    EXPECT_EQ(out.port, 0);
    EXPECT_STREQ(read, "??");
    out.host_size = 6;
    EXPECT_EQ(client.GetProxyInfo("proxy", 3128, &out), IdSuccess);
    EXPECT_EQ(out.port, 3128);
    EXPECT_STREQ(read, "proxy");
}

TEST_F(PluginClientTest, TheEnvironmentIsThatOfTheServer)
{
    EXPECT_EQ(client.GetEnvironment(), TALIX_ENVIRONMENT_PRODUCTION);
    client.SetServer(TALIX_SERVER_STAGING);
    EXPECT_EQ(client.GetEnvironment(), TALIX_ENVIRONMENT_STAGING);
    client.SetServer(TALIX_SERVER_DEVELOPMENT);
    EXPECT_EQ(client.GetEnvironment(), TALIX_ENVIRONMENT_DEVELOPMENT);
}

TEST_F(PluginClientTest, IdTokenAndLoginModesAreOffered)
{
    using namespace IdentityServices;
    EXPECT_TRUE(client.IsApiAvailable(ApiFeatureIdToken));
    EXPECT_TRUE(client.IsApiAvailable(ApiFeatureLoginMode));
    EXPECT_FALSE(client.IsApiAvailable(static_cast<ApiFeature>(0)));
    EXPECT_FALSE(client.IsApiAvailable(static_cast<ApiFeature>(4)));
    auto mode = TALIX_LOGIN_MODE_DEFAULT;
    EXPECT_EQ(client.SetLoginMode(TALIX_LOGIN_MODE_EMBEDDED), IdSuccess);
    EXPECT_EQ(client.GetLoginMode(mode), IdSuccess);
    EXPECT_EQ(mode, TALIX_LOGIN_MODE_EMBEDDED);
}

TEST(PluginModuleTest, TheDefaultProductNameContainsSimulator)
{
    IdentityServices::ISSOClientModule& module = *PluginFactory().GetSSOClientModule();
    wchar_t name[256] = L"";
    const int length = module.GetProductName(name, 256);
    EXPECT_EQ(std::wstring(name).size(), static_cast<std::size_t>(length));
    EXPECT_NE(std::wstring(name).find(L"simulator"), std::wstring::npos);
    EXPECT_EQ(module.GetProductName(name, length), 0);
    EXPECT_EQ(module.GetProductName(nullptr, 256), 0);

    module.SetProductName(L"Host \x00EB");
    module.SetProductName(nullptr);
    module.SetProductName(L"");
    module.SetProductName(NotUtf16);
    EXPECT_EQ(module.GetProductName(name, 256), 6);
    EXPECT_STREQ(name, L"Host \x00EB");
}

TEST(PluginLoggerTest, EachNameHasOneLogger)
{
    IdentityServices::IPluginLoggerSource& source = *PluginFactory().GetLoggerSource();
    EXPECT_EQ(source.GetLogger(nullptr), nullptr);
    IdentityServices::IPluginLogger* logger = source.GetLogger(L"Tests");
    ASSERT_NE(logger, nullptr);
    EXPECT_EQ(source.GetLogger(L"Tests"), logger);
    EXPECT_NE(source.GetLogger(L"Others"), logger);
    logger->Log(nullptr, TALIXLog::Info);
    logger->Log(NotUtf16, static_cast<TALIXLog::LogLevel>(77));
}

} // namespace

} // namespace Kestrany::Agent
