#include <gtest/gtest.h>

#include "plugin/ProductSettings.h"

namespace Kestrany::Agent {

namespace {

TEST(ProductJsonTest, EveryTextIsWrittenAndParsed)
{
    const ServerProduct product{TALIX_SERVER_STAGING,
                                {"client", "openid \"q\"", "Zo\xC3\xAB \xF0\x9F\x98\x80", "3", "3.1\n"}};
    const std::string json = ProductToJson(product);
    EXPECT_EQ(json.find('\n'), std::string::npos) << "one line: " << json;
    const std::optional<ServerProduct> read = ProductFromJson(json);
    ASSERT_TRUE(read) << json;
    EXPECT_EQ(read->server, TALIX_SERVER_STAGING);
    EXPECT_TRUE(read->product == product.product);
}

TEST(ProductJsonTest, EmptyTextsAreOmitted)
{
    EXPECT_EQ(ProductToJson({TALIX_SERVER_PRODUCTION, {"a", "", "", "", "b"}}),
              R"({"buildId":"b","clientId":"a","server":"production"})");
    EXPECT_EQ(ProductToJson({TALIX_SERVER_PRODUCTION, {}}), R"({"server":"production"})");
    EXPECT_TRUE(ProductFromJson(R"({"server":"production"})")->product == ProductSettings());
}

TEST(ProductJsonTest, AnUnknownServerHasNoJsonForm)
{
    EXPECT_EQ(ProductToJson({TALIX_SERVER_UNAVAILABLE, {"a", "", "", "", ""}}), "");
    EXPECT_EQ(ProductToJson({static_cast<Server>(3), {"a", "", "", "", ""}}), "");
}

TEST(ProductJsonTest, OtherJsonIsRefused)
{
    for (const char* refused : {"",
                                " ",
                                "{",
                                "null",
                                "[]",
                                "\"production\"",
                                "{}",
                                R"({"clientId":"a"})",
                                R"({"server":"elsewhere"})",
                                R"({"server":1})",
                                R"({"server":null})",
                                R"({"server":""})",
                                R"({"server":"production","clientId":7})",
                                R"({"server":"production","clientId":null})",
                                R"({"server":"production","clientId":["a"]})",
                                R"({"server":"production","clientid":"a"})",
                                R"({"server":"production","buildId":"a\u0000b"})",
                                R"({"server":"production","server":"staging"})",
                                R"({"server":"production"} x)",
                                R"({"server":"production",})",
                                R"({'server':'production'})",
                                R"(/* a */ {"server":"production"})"})
        EXPECT_FALSE(ProductFromJson(refused)) << refused;
}

TEST(ProductJsonTest, DeepNestingIsRefused)
{
    const std::string deep(100'000, '[');
    EXPECT_FALSE(ProductFromJson(R"({"server":)" + deep));
}

} // namespace

} // namespace Kestrany::Agent
