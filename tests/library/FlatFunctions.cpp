#include "FlatFunctions.h"

#include "ShownArguments.h"
#include "orlindex/IdServicesMgr.h"
#include "support/PluginControl.h"

namespace OrlindexTest {

using Kestrany::IdentityServices::ApiFeatureIdToken;
using Kestrany::IdentityServices::ApiFeatureLoginMode;
using testing::Matcher;

namespace {

using Arguments = FlatArguments;

void TALIX_CALL IgnoreEvent(std::int32_t, std::int32_t, void*) {}

std::vector<FlatFunction> StartAndProduct()
{
    return {
        {"talix_get_boolean", [](Arguments&) { return talix_get_boolean(TALIX_KEY_INITIALIZED); }, 0, 1},
        {"talix_get_boolean", [](Arguments&) { return talix_get_boolean(TALIX_KEY_LOGGED_IN); }, 0, 0,
         ResultRule::YesOrNo, Client::IsLoggedIn, Exactly(""), 0, 0},
        {"talix_get_boolean", [](Arguments&) { return talix_get_boolean(TALIX_KEY_LOGIN_VALID); }, 0, 0,
         ResultRule::YesOrNo, Client::IsLoginValid, Exactly(""), 0, 0},
        {"talix_get_boolean", [](Arguments&) { return talix_get_boolean(TALIX_KEY_TOKEN_EXPIRED); }, 0, 1,
         ResultRule::YesOrNo, Client::IsOAuth2TokenExpired, Exactly(""), 0, 1},
        {"talix_get_boolean", [](Arguments&) { return talix_get_boolean(0); }, 0, 0},
        {"talix_get_boolean", [](Arguments&) { return talix_get_boolean(5); }, 0, 0},
        {"talix_create_product_config",
         [](Arguments&) { return talix_create_product_config("client", "scope") != nullptr; }, 0, 1},
        {"talix_set_product_line_name",
         [](Arguments& a) {
             talix_set_product_line_name(a.config, "line");
             return 0;
         },
         0, 0},
        {"talix_set_product_release_id",
         [](Arguments& a) {
             talix_set_product_release_id(a.config, "release");
             return 0;
         },
         0, 0},
        {"talix_set_product_build_id",
         [](Arguments& a) {
             talix_set_product_build_id(a.config, "build");
             return 0;
         },
         0, 0},
        {"talix_set_product_config",
         [](Arguments& a) { return talix_set_product_config(static_cast<Server>(-12345), a.config); }, IdNotInitialized,
         IdClientUnavailable, ResultRule::Unmapped, Client::SetProductConfig, Like("-12345, @")},
    };
}

std::vector<FlatFunction> LoginAndTokens()
{
    return {
        {"talix_set_login_mode", [](Arguments&) { return talix_set_login_mode(static_cast<talix_login_mode>(-88)); },
         IdNotInitialized, IdApiUnavailable, ResultRule::Unmapped, Client::SetLoginMode, Exactly("-88"),
         ApiFeatureLoginMode},
        {"talix_login", [](Arguments&) { return talix_login(); }, IdNotInitialized, IdClientUnavailable,
         ResultRule::Mapped, Client::Login, Like("@")},
        {"talix_logout", [](Arguments&) { return talix_logout(static_cast<talix_logout_flags>(77)); }, IdNotInitialized,
         IdClientUnavailable, ResultRule::Mapped, Client::Logout, Like("@, 77")},
        {"talix_get_token", [](Arguments& a) { return talix_get_token(&a.buffer); }, IdNotInitialized,
         IdClientUnavailable, ResultRule::Mapped, Client::GetOAuth2AccessToken, Like("@, 4096, false")},
        {"talix_get_token_blocking", [](Arguments& a) { return talix_get_token_blocking(&a.buffer); }, IdNotInitialized,
         IdClientUnavailable, ResultRule::Mapped, Client::GetOAuth2AccessToken, Like("@, 4096, true")},
        {"talix_get_id_token", [](Arguments& a) { return talix_get_id_token(&a.buffer); }, IdNotInitialized,
         IdApiUnavailable, ResultRule::Mapped, Client::GetOAuth2IdToken, Like("@, 4096"), ApiFeatureIdToken},
        {"talix_refresh_token", [](Arguments&) { return talix_refresh_token(); }, IdNotInitialized, IdClientUnavailable,
         ResultRule::Unmapped, Client::RefreshOAuth2Token, Exactly("false")},
        {"talix_set_server", [](Arguments&) { return talix_set_server(static_cast<Server>(0x7654321)); },
         IdNotInitialized, IdClientUnavailable, ResultRule::Mapped, Client::SetServer, Exactly("124076833")},
        {"talix_get_environment", [](Arguments&) { return talix_get_environment(); }, -1, 0, ResultRule::Unmapped,
         Client::GetEnvironment, Exactly(""), 0, -1},
        {"talix_get_server", [](Arguments&) { return talix_get_server(); }, -1, 0, ResultRule::Unmapped,
         Client::GetServer, Exactly(""), 0, -1},
        {"talix_get_user_info", [](Arguments& a) { return talix_get_user_info(&a.userInfo); }, IdNotInitialized,
         IdFailed, ResultRule::Mapped, Client::GetUserInfo,
         [](const Arguments& a) -> Matcher<std::string> { return Address(&a.userInfo); }},
        {"talix_get_session_uri",
         [](Arguments& a) { return talix_get_session_uri("https://shop.example", 0xFEDC, &a.buffer); },
         IdNotInitialized, IdFailed, ResultRule::Mapped, Client::GetSessionUri,
         Like("\"https://shop.example\", 65244, @, 2048")},
        {"talix_get_profile_info", [](Arguments& a) { return talix_get_profile_info(&a.buffer); }, IdNotInitialized,
         IdClientUnavailable, ResultRule::Unmapped, Client::GetProfileInfo,
         [](const Arguments& a) -> Matcher<std::string> {
             return Address(a.buffer.buffer) + ", " + Address(&a.buffer.size);
         }},
    };
}

std::vector<FlatFunction> HostAndProxy()
{
    return {
        {"talix_set_host", [](Arguments& a) { return talix_set_host(a.window); }, IdNotInitialized, IdSuccess,
         ResultRule::Fixed, Client::SetHostApplicationWindow, Exactly("-81985529216486896")},
        {"talix_set_process_id", [](Arguments&) { return talix_set_process_id(4711); }, IdNotSupported, IdNotSupported},
        {"talix_add_event_callback", [](Arguments& a) { return talix_add_event_callback(&IgnoreEvent, &a); },
         IdNotInitialized, IdSuccess, ResultRule::Fixed, Client::AddObserver, Like("@"), 0, IdFailed,
         [](Arguments&) { talix_remove_event_callback(&IgnoreEvent); }},
        {"talix_remove_event_callback", [](Arguments&) { return talix_remove_event_callback(&IgnoreEvent); },
         IdNotInitialized, IdSuccess, ResultRule::Fixed, Client::RemoveObserver, Like("@"), 0, IdFailed,
         [](Arguments& a) { talix_add_event_callback(&IgnoreEvent, &a); }},
        {"talix_dispatch_events", [](Arguments&) { return talix_dispatch_events(); }, IdNotInitialized,
         IdClientUnavailable, ResultRule::Unmapped, Client::DispatchEvent, Exactly("")},
        {"talix_has_proxy_info", [](Arguments&) { return talix_has_proxy_info("proxy.example", 3128); },
         IdNotInitialized, IdClientUnavailable, ResultRule::Mapped, Client::HasProxyInfo,
         Exactly("\"proxy.example\", 3128")},
        {"talix_get_proxy_info", [](Arguments& a) { return talix_get_proxy_info(&a.proxyInfo, "other.example", 8080); },
         IdNotInitialized, IdClientUnavailable, ResultRule::Mapped, Client::GetProxyInfo,
         [](const Arguments& a) -> Matcher<std::string> {
             return "\"other.example\", 8080, " + Address(&a.proxyInfo);
         }},
        {"talix_set_proxy_info", [](Arguments& a) { return talix_set_proxy_info(&a.proxyInfo); }, IdNotInitialized,
         IdClientUnavailable, ResultRule::Mapped, Client::SetProxyInfo,
         [](const Arguments& a) -> Matcher<std::string> { return Address(&a.proxyInfo); }},
        {"talix_clear_proxy_info", [](Arguments&) { return talix_clear_proxy_info(); }, IdNotInitialized,
         IdClientUnavailable, ResultRule::Mapped, Client::ClearProxyInfo, Exactly("")},
        {"talix_get_versions", [](Arguments&) { return talix_get_versions(nullptr); }, IdSuccess, IdSuccess},
        {"talix_quit_server_process", [](Arguments&) { return talix_quit_server_process(-2147483647); },
         IdNotInitialized, IdServerQuitFailed, ResultRule::Quit, ServerManager::QuitAllSSOServerProcesses,
         Exactly("-2147483647")},
    };
}

} // namespace

FlatArguments::FlatArguments()
{
    buffer.buffer = text;
    buffer.size = sizeof text;
    userInfo.reserved = 0x1122334455667788;
    userInfo.last_name = text;
    userInfo.last_name_size = sizeof text;
    proxyInfo.host = text;
    proxyInfo.host_size = sizeof text;
    proxyInfo.password = otherText;
    proxyInfo.password_size = sizeof otherText;
    proxyInfo.port = 65535;
}

const std::vector<FlatFunction>& FlatFunctions()
{
    static const std::vector<FlatFunction> functions = [] {
        std::vector<FlatFunction> all;
        for (const auto& part : {StartAndProduct(), LoginAndTokens(), HostAndProxy()})
            all.insert(all.end(), part.begin(), part.end());
        return all;
    }();
    return functions;
}

} // namespace OrlindexTest
