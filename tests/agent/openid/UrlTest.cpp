#include <gtest/gtest.h>

#include "identity/openid/Url.h"

namespace Kestrany::Agent::OpenId {

namespace {

TEST(UrlTest, AnAddressIsTakenApart)
{
    const std::optional<Url> url = ParseUrl("HTTPS://login.example.com:8443/realms/main?a=b");
    ASSERT_TRUE(url);
    EXPECT_TRUE(url->isHttps);
    EXPECT_EQ(url->host, "login.example.com");
    EXPECT_EQ(url->port, 8443);
    EXPECT_EQ(url->path, "/realms/main");
    EXPECT_EQ(url->query, "a=b");
    EXPECT_EQ(ParseUrl("https://a")->port, 443);
    EXPECT_EQ(ParseUrl("https://a")->query, std::nullopt);
    EXPECT_EQ(ParseUrl("http://a")->port, 80);
    EXPECT_EQ(ParseUrl("http://[::1]:8080/")->host, "[::1]");
    EXPECT_EQ(ParseUrl("http://[::1]:8080/")->port, 8080);
}

TEST(UrlTest, EverythingElseIsRefused)
{
    for (const char* const text : {"",
                                   "https://",
                                   "https:///path",
                                   "ftp://a",
                                   "javascript:alert(1)",
                                   "//a",
                                   "a",
                                   "https://user@a/",
                                   "https://user:password@a/",
                                   "https://a/#fragment",
                                   "https://a#fragment",
                                   "https://a/ b",
                                   "https://a b/",
                                   "https://a/\"",
                                   "https://a/\\b",
                                   "https://a/<",
                                   "https://a:0/",
                                   "https://a:65536/",
                                   "https://a:/",
                                   "https://a:-1/",
                                   "https://a:80x/",
                                   "https://a%2Eb/",
                                   "https://[::1",
                                   "https://[]/",
                                   "https://[g]/",
                                   "https://.a/",
                                   "https://a/\x7F",
                                   "https://a/\xC3\xA4",
                                   "https://a?b#c"})
        EXPECT_FALSE(ParseUrl(text)) << text;
    EXPECT_FALSE(ParseUrl(std::string_view("https://a/\0", 11)));
    EXPECT_FALSE(ParseUrl("https://a/" + std::string(2048, 'a')));
}

TEST(UrlTest, HttpIsTrustedOnThisMachineOnlyAndOnlyIfAllowed)
{
    const auto isTrusted = [](const char* text, bool allow) { return IsTrustworthy(*ParseUrl(text), allow); };
    EXPECT_TRUE(isTrusted("https://login.example.com/", false));
    for (const char* const local : {"http://127.0.0.1/", "http://[::1]/", "http://localhost:80/", "http://LocalHost/"})
    {
        EXPECT_TRUE(isTrusted(local, true)) << local;
        EXPECT_FALSE(isTrusted(local, false)) << local;
    }
    for (const char* const other : {"http://login.example.com/", "http://127.0.0.1.example.com/", "http://127.0.0.2/",
                                    "http://localhost.example.com/", "http://[::2]/"})
        EXPECT_FALSE(isTrusted(other, true)) << other;
}

TEST(UrlTest, HttpEndpointsNeedAnHttpIssuerOnThisMachine)
{
    EXPECT_TRUE(AllowsInsecureEndpoints("http://localhost:3000", true));
    EXPECT_FALSE(AllowsInsecureEndpoints("http://localhost:3000", false));
    EXPECT_FALSE(AllowsInsecureEndpoints("https://localhost:3000", true));
    EXPECT_FALSE(AllowsInsecureEndpoints("https://login.example.com", true));
    EXPECT_FALSE(AllowsInsecureEndpoints("http://login.example.com", true));
    EXPECT_FALSE(AllowsInsecureEndpoints("localhost", true));
}

TEST(UrlTest, FormsAreEncodedAndDecoded)
{
    Secret form;
    AppendParameter(form, "a b", "c&d=e+f%\xC3\xA4");
    AppendParameter(form, "g", "");
    EXPECT_EQ(form.View(), "a%20b=c%26d%3De%2Bf%25%C3%A4&g=");
    const auto parsed = ParseForm(form.View());
    ASSERT_TRUE(parsed);
    EXPECT_EQ(*parsed, (std::vector<Parameter>{{"a b", "c&d=e+f%\xC3\xA4"}, {"g", ""}}));
    EXPECT_EQ(ParseForm("a+b=c%2b&&d")->at(0), Parameter("a b", "c+"));
    EXPECT_EQ(ParseForm("a+b=c%2b&&d")->at(1), Parameter("d", ""));
    EXPECT_TRUE(ParseForm("")->empty());
}

TEST(UrlTest, AMalformedFormIsRefused)
{
    for (const char* const text : {"a=%", "a=%4", "a=%4g", "a=%FF", "%zz=a", "a=%C3"})
        EXPECT_FALSE(ParseForm(text)) << text;
    std::string many;
    for (int index = 0; index < 65; ++index)
        many += "a=b&";
    EXPECT_FALSE(ParseForm(many));
}

TEST(UrlTest, ParametersFollowTheQueryThatIsThere)
{
    const Secret form("c=d");
    EXPECT_EQ(WithQuery("https://a/", form).View(), "https://a/?c=d");
    EXPECT_EQ(WithQuery("https://a/?", form).View(), "https://a/?c=d");
    EXPECT_EQ(WithQuery("https://a/?x=y", form).View(), "https://a/?x=y&c=d");
}

} // namespace

} // namespace Kestrany::Agent::OpenId
