// Product configuration through the flat interface.

#include "FlatTest.h"
#include "orlindex/ProductConfig.h"
#include "support/Child.h"
#include "support/PlatformImports.h"

namespace OrlindexTest {

using Kestrany::IdentityServices::ProductConfig;
using testing::ElementsAre;

namespace {

/// Client ID, scope, line name, release and build.
std::vector<std::string> Texts(const ProductConfig& config)
{
    std::vector<std::string> texts;
    for (const auto getter :
         {&ProductConfig::GetOAuth2ClientID, &ProductConfig::GetOAuth2AccessTokenScope,
          &ProductConfig::GetProductLineName, &ProductConfig::GetProductReleaseId, &ProductConfig::GetProductBuildId})
    {
        char text[64] = "";
        (config.*getter)(text, sizeof text);
        texts.push_back(text);
    }
    return texts;
}

} // namespace

class FlatProduct : public FlatTest
{
protected:
    std::vector<std::string> SeenByPlugin(talix_product_config config)
    {
        std::vector<std::string> seen;
        Plugin().OnCall(Client::SetProductConfig,
                        [&seen](const CallArguments& call) { seen = Texts(*call.Pointer<const ProductConfig>(1)); });
        EXPECT_EQ(talix_set_product_config(TALIX_SERVER_STAGING, config), IdSuccess);
        return seen;
    }

    /// The address of a configuration and its texts.
    static const ProductConfig* const& Held(talix_product_config config)
    {
        return *reinterpret_cast<const ProductConfig* const*>(config);
    }

    static std::vector<std::string> Stored() { return Texts(*IdServicesMgr::GetInstance()->GetProductConfigObj()); }
};

TEST_F(FlatProduct, ThePluginSeesWhatTheHostSet)
{
    const talix_product_config config = talix_create_product_config("client", "openid");
    ASSERT_NE(config, nullptr);
    talix_set_product_line_name(config, "line");
    talix_set_product_release_id(config, "release");
    talix_set_product_build_id(config, "build");
    EXPECT_THAT(SeenByPlugin(config), ElementsAre("client", "openid", "line", "release", "build"));
}

TEST_F(FlatProduct, TextsArriveByteForByte)
{
    const std::string texts[] = {"\xF0\x9F\x98\x80 client", "\xC3\xBC scope", "\xE2\x82\xAC", "\xFF\xC0\x80 ill-formed",
                                 "\xED\xA0\xBD lone surrogate"};
    const talix_product_config config = talix_create_product_config(texts[0].c_str(), texts[1].c_str());
    talix_set_product_line_name(config, texts[2].c_str());
    talix_set_product_release_id(config, texts[3].c_str());
    talix_set_product_build_id(config, texts[4].c_str());
    EXPECT_THAT(SeenByPlugin(config), testing::ElementsAreArray(texts));
}

TEST_F(FlatProduct, ThereIsOneConfigurationAndOneHandle)
{
    const talix_product_config config = talix_create_product_config("first", "scope");
    EXPECT_EQ(talix_create_product_config("second", nullptr), config);
    EXPECT_THAT(Stored(), ElementsAre("second", "scope", "", "", ""));
}

TEST_F(FlatProduct, ANullTextLeavesTheOldValue)
{
    const talix_product_config config = talix_create_product_config("client", "scope");
    talix_set_product_line_name(config, "line");
    EXPECT_EQ(talix_create_product_config(nullptr, nullptr), config);
    talix_set_product_line_name(config, nullptr);
    EXPECT_THAT(Stored(), ElementsAre("client", "scope", "line", "", ""));
}

TEST_F(FlatProduct, ANullHandleChangesNothing)
{
    talix_create_product_config("client", "scope");
    talix_set_product_line_name(nullptr, "line");
    talix_set_product_release_id(nullptr, "release");
    talix_set_product_build_id(nullptr, "build");
    EXPECT_THAT(Stored(), ElementsAre("client", "scope", "", "", ""));
}

TEST_F(FlatProduct, TheConfigurationIsReadThroughTheHandleBeforeTheClientIsAskedFor)
{
    const talix_product_config config = talix_create_product_config("client", "scope");
    const ProductConfig* const held = Held(config);
    const void* seen = nullptr;
    Plugin().OnCall(Client::SetProductConfig,
                    [&seen](const CallArguments& call) { seen = call.Pointer<const ProductConfig>(1); });
    int asked = 0;
    {
        // A call that gets the client takes the process lock.
        using Double = EnterCriticalSectionDouble;
        const Double asking([&](LPCRITICAL_SECTION section) {
            ++asked;
            *reinterpret_cast<const ProductConfig**>(config) = nullptr;
            Double::Original(section);
        });
        EXPECT_EQ(talix_set_product_config(TALIX_SERVER_STAGING, config), IdSuccess);
    }
    EXPECT_GT(asked, 0);
    EXPECT_EQ(seen, held);
}

TEST_F(FlatProduct, EveryInitEmptiesTheHandle)
{
    const talix_product_config config = talix_create_product_config("client", "scope");
    ASSERT_EQ(talix_init(), IdSuccess);
    talix_set_product_line_name(config, "line");
    EXPECT_THAT(Stored(), ElementsAre("client", "scope", "", "", "")) << "the configuration itself stays";
    EXPECT_EQ(talix_create_product_config(nullptr, nullptr), config);
    talix_set_product_line_name(config, "line");
    EXPECT_THAT(Stored(), ElementsAre("client", "scope", "line", "", ""));
}

TEST_F(FlatProduct, EveryDeinitEmptiesTheHandle)
{
    ASSERT_EQ(talix_init(), IdSuccess);
    const talix_product_config config = talix_create_product_config("client", "scope");
    ASSERT_EQ(talix_deinit(), IdSuccess);
    ASSERT_EQ(talix_get_boolean(TALIX_KEY_INITIALIZED), 1);
    talix_set_product_line_name(config, "line");
    EXPECT_THAT(Stored(), ElementsAre("client", "scope", "", "", ""));
}

TEST_F(FlatProduct, AfterTheLastDeinitTheHandleIsEmptyAndTheConfigurationIsNewAfterANewInit)
{
    const talix_product_config config = talix_create_product_config("client", "scope");
    ASSERT_EQ(talix_deinit(), IdSuccess);
    talix_set_product_line_name(config, "line");
    ASSERT_EQ(talix_init(), IdSuccess);
    EXPECT_EQ(talix_create_product_config(nullptr, nullptr), config);
    EXPECT_THAT(Stored(), ElementsAre("", "", "", "", ""));
}

TEST_F(FlatProduct, AnInitThatFindsNoPluginEmptiesTheHandleToo)
{
    const ProductConfig* const& held = Held(talix_create_product_config("client", "scope"));
    ASSERT_EQ(IdServicesMgr::Uninitialize(), IdSuccess); // Unlike talix_deinit it leaves the handle alone.
    ASSERT_NE(held, nullptr);
    installation.WriteCompatibilityFile("{}");
    EXPECT_EQ(talix_init(), IdClientUnavailable);
    EXPECT_EQ(held, nullptr);
}

TEST_F(FlatProduct, AnInitInWhichThePluginThrowsEmptiesTheHandleToo)
{
    const ProductConfig* const& held = Held(talix_create_product_config("client", "scope"));
    ASSERT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    Plugin().OnCall(Module::Initialize, [](const CallArguments&) { throw 1; });
    EXPECT_EQ(talix_init(), IdFailed);
    EXPECT_EQ(held, nullptr);
}

TEST_F(FlatProduct, ADeinitWithNothingStartedEmptiesTheHandleToo)
{
    const ProductConfig* const& held = Held(talix_create_product_config("client", "scope"));
    ASSERT_EQ(IdServicesMgr::Uninitialize(), IdSuccess);
    EXPECT_EQ(talix_deinit(), IdSuccess);
    EXPECT_EQ(held, nullptr);
}

TEST_F(FlatProduct, ADeinitInWhichThePluginThrowsEmptiesTheHandleToo)
{
    const ProductConfig* const& held = Held(talix_create_product_config("client", "scope"));
    ASSERT_EQ(held, IdServicesMgr::GetInstance()->GetProductConfigObj());
    Plugin().OnCall(Module::Uninitialize, [](const CallArguments&) { throw 1; });
    EXPECT_EQ(talix_deinit(), IdFailed);
    EXPECT_EQ(held, nullptr);
}

class FlatProductFault : public HostTest
{
};

TEST_F(FlatProductFault, ANullHandleIsTheCallersFaultWithoutClientToo)
{
    ExpectProcessEnds(static_cast<DWORD>(STATUS_ACCESS_VIOLATION), [this] {
        InstallPlugin();
        Plugin().Return(Factory::GetSSOClient, 0);
        talix_init();
        talix_set_product_config(TALIX_SERVER_STAGING, nullptr);
    });
}

} // namespace OrlindexTest
