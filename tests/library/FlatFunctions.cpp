#include "FlatFunctions.h"

#include "ShownArguments.h"
#include "support/PluginControl.h"

namespace OrlindexTest {

using testing::Matcher;

namespace {

using Arguments = FlatArguments;

void TALIX_CALL IgnoreEvent(std::int32_t, std::int32_t, void*) {}

std::vector<FlatFunction> StartAndProduct()
{
    return {
        {"talix_get_boolean", [](Arguments&) { return talix_get_boolean(TALIX_KEY_INITIALIZED); }, 0, 1},
        {"talix_get_boolean", [](Arguments&) { return talix_get_boolean(TALIX_KEY_LOGGED_IN); }, 0, 0, Answer::YesOrNo,
         7, Exactly(""), Client, 0, 0},
        {"talix_get_boolean", [](Arguments&) { return talix_get_boolean(TALIX_KEY_LOGIN_VALID); }, 0, 0,
         Answer::YesOrNo, 12, Exactly(""), Client, 0, 0},
        {"talix_get_boolean", [](Arguments&) { return talix_get_boolean(TALIX_KEY_TOKEN_EXPIRED); }, 0, 1,
         Answer::YesOrNo, 9, Exactly(""), Client, 0, 1},
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
         [](Arguments& a) { return talix_set_product_config(static_cast<Server>(-12345), a.config); }, 2000, 3005,
         Answer::Unmapped, 2, Like("-12345, @"), Client},
    };
}

std::vector<FlatFunction> LoginAndTokens()
{
    return {
        {"talix_set_login_mode", [](Arguments&) { return talix_set_login_mode(static_cast<talix_login_mode>(-88)); },
         2000, 3071, Answer::Unmapped, 36, Exactly("-88"), Client, 3},
        {"talix_login", [](Arguments&) { return talix_login(); }, 2000, 3005, Answer::Mapped, 28, Like("@"), Client},
        {"talix_logout", [](Arguments&) { return talix_logout(static_cast<talix_logout_flags>(77)); }, 2000, 3005,
         Answer::Mapped, 16, Like("@, 77"), Client},
        {"talix_get_token", [](Arguments& a) { return talix_get_token(&a.buffer); }, 2000, 3005, Answer::Mapped, 6,
         Like("@, 4096, false"), Client},
        {"talix_get_token_blocking", [](Arguments& a) { return talix_get_token_blocking(&a.buffer); }, 2000, 3005,
         Answer::Mapped, 6, Like("@, 4096, true"), Client},
        {"talix_get_id_token", [](Arguments& a) { return talix_get_id_token(&a.buffer); }, 2000, 3071, Answer::Mapped,
         35, Like("@, 4096"), Client, 2},
        {"talix_refresh_token", [](Arguments&) { return talix_refresh_token(); }, 2000, 3005, Answer::Unmapped, 13,
         Exactly("false"), Client},
        {"talix_set_server", [](Arguments&) { return talix_set_server(static_cast<Server>(0x7654321)); }, 2000, 3005,
         Answer::Mapped, 15, Exactly("124076833"), Client},
        {"talix_get_environment", [](Arguments&) { return talix_get_environment(); }, -1, 0, Answer::Unmapped, 24,
         Exactly(""), Client, 0, -1},
        {"talix_get_server", [](Arguments&) { return talix_get_server(); }, -1, 0, Answer::Unmapped, 14, Exactly(""),
         Client, 0, -1},
        {"talix_get_user_info", [](Arguments& a) { return talix_get_user_info(&a.userInfo); }, 2000, 3004,
         Answer::Mapped, 3, [](const Arguments& a) -> Matcher<std::string> { return Address(&a.userInfo); }, Client},
        {"talix_get_session_uri",
         [](Arguments& a) { return talix_get_session_uri("https://shop.example", 0xFEDC, &a.buffer); }, 2000, 3004,
         Answer::Mapped, 4, Like("\"https://shop.example\", 65244, @, 2048"), Client},
        {"talix_get_profile_info", [](Arguments& a) { return talix_get_profile_info(&a.buffer); }, 2000, 3005,
         Answer::Unmapped, 23,
         [](const Arguments& a) -> Matcher<std::string> {
             return Address(a.buffer.buffer) + ", " + Address(&a.buffer.size);
         },
         Client},
    };
}

std::vector<FlatFunction> HostAndProxy()
{
    return {
        {"talix_set_host", [](Arguments& a) { return talix_set_host(a.window); }, 2000, 1000, Answer::Fixed, 30,
         Exactly("-81985529216486896"), Client},
        {"talix_set_process_id", [](Arguments&) { return talix_set_process_id(4711); }, 3021, 3021},
        {"talix_add_event_callback", [](Arguments& a) { return talix_add_event_callback(&IgnoreEvent, &a); }, 2000,
         1000, Answer::Fixed, 17, Like("@"), Client, 0, 3004,
         [](Arguments&) { talix_remove_event_callback(&IgnoreEvent); }},
        {"talix_remove_event_callback", [](Arguments&) { return talix_remove_event_callback(&IgnoreEvent); }, 2000,
         1000, Answer::Fixed, 18, Like("@"), Client, 0, 3004,
         [](Arguments& a) { talix_add_event_callback(&IgnoreEvent, &a); }},
        {"talix_dispatch_events", [](Arguments&) { return talix_dispatch_events(); }, 2000, 3005, Answer::Unmapped, 25,
         Exactly(""), Client},
        {"talix_has_proxy_info", [](Arguments&) { return talix_has_proxy_info("proxy.example", 3128); }, 2000, 3005,
         Answer::Mapped, 19, Exactly("\"proxy.example\", 3128"), Client},
        {"talix_get_proxy_info", [](Arguments& a) { return talix_get_proxy_info(&a.proxyInfo, "other.example", 8080); },
         2000, 3005, Answer::Mapped, 20,
         [](const Arguments& a) -> Matcher<std::string> { return "\"other.example\", 8080, " + Address(&a.proxyInfo); },
         Client},
        {"talix_set_proxy_info", [](Arguments& a) { return talix_set_proxy_info(&a.proxyInfo); }, 2000, 3005,
         Answer::Mapped, 21, [](const Arguments& a) -> Matcher<std::string> { return Address(&a.proxyInfo); }, Client},
        {"talix_clear_proxy_info", [](Arguments&) { return talix_clear_proxy_info(); }, 2000, 3005, Answer::Mapped, 22,
         Exactly(""), Client},
        {"talix_get_versions", [](Arguments&) { return talix_get_versions(nullptr); }, 1000, 1000},
        {"talix_quit_server_process", [](Arguments&) { return talix_quit_server_process(-2147483647); }, 2000, 3080,
         Answer::Quit, 17, Exactly("-2147483647"), ServerManager},
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
