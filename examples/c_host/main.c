/* A complete host in C: signs the user in, uses every part of the flat interface, and signs the user out. */

#include <stdio.h>
#include <string.h>

#include <windows.h>

#include "orlindex/talix.h"

static const char help_text[] =
    "c_host: an example host of Orlindex.dll, in C\n"
    "\n"
    "Usage: c_host [--help]\n"
    "\n"
    "Signs the user in, prints versions, tokens, user, profile, a session address and proxy settings,\n"
    "and signs the user out. Exit code 0 when all of it succeeded, 1 when a step failed, 2 for wrong\n"
    "arguments, 3 when the client plugin module could not be loaded, 4 under the local system account.\n";

static const char plugin_missing_text[] =
    "\n"
    "The library runs, but found no client plugin module that it may load. Look for the first error\n"
    "above, and check in this order:\n"
    "  1. Pellwick.exe is installed: the registry key HKLM\\SOFTWARE\\Kestrany\\Pellwick names its\n"
    "     directory, or Orlindex.config beside this program does (\"searchPaths\").\n"
    "  2. TALIXVersionCompatibility.config lies beside Pellwick.exe and lists a module for this\n"
    "     version of Orlindex.dll.\n"
    "  3. The module is there, and signed by a signer that Orlindex.dll trusts.\n";

static const char local_system_text[] =
    "\n"
    "This process runs under the local system account, where no user can sign in. Start it in the\n"
    "session of the user who is to be signed in; a service does so with the user's own token.\n";

/* Buffer sizes, far larger than any text needs. A text that does not fit gives IdBufferTooSmall. */
#define TEXT_SIZE 256
#define TOKEN_SIZE 16384

static const char* name_of(talix_status_code code)
{
    static const struct
    {
        talix_status_code code;
        const char* name;
    } names[] = {
        {IdSuccess, "IdSuccess"},
        {IdNotInitialized, "IdNotInitialized"},
        {IdFailed, "IdFailed"},
        {IdClientUnavailable, "IdClientUnavailable"},
        {IdInvalidClientId, "IdInvalidClientId"},
        {IdBufferTooSmall, "IdBufferTooSmall"},
        {IdInvalidHostWindow, "IdInvalidHostWindow"},
        {IdNotSupported, "IdNotSupported"},
        {IdRunningAsLocalSystem, "IdRunningAsLocalSystem"},
        {IdInvalidVersionRecord, "IdInvalidVersionRecord"},
        {IdInvalidProxyRecord, "IdInvalidProxyRecord"},
        {IdInvalidProxyHost, "IdInvalidProxyHost"},
        {IdInvalidProxyPort, "IdInvalidProxyPort"},
        {IdInvalidProfileRecord, "IdInvalidProfileRecord"},
        {IdApiUnavailable, "IdApiUnavailable"},
        {IdServerQuitFailed, "IdServerQuitFailed"},
    };
    static char number[32];
    size_t i;

    for (i = 0; i < sizeof names / sizeof names[0]; ++i)
    {
        if (names[i].code == code)
            return names[i].name;
    }
    sprintf(number, "code %ld of the plugin", (long)code);
    return number;
}

static void print(const char* what, const char* value)
{
    printf("%-18s %s\n", what, value);
}

static void print_number(const char* what, long value)
{
    printf("%-18s %ld\n", what, value);
}

/* Whether a step succeeded. */
static int check(const char* step, talix_status_code code)
{
    print(step, name_of(code));
    return code == IdSuccess;
}

static int expect(const char* question, int answer, int expected)
{
    print(question, answer ? "yes" : "no");
    return answer == expected;
}

/* The library calls this from talix_dispatch_events, on the same thread. */
static void TALIX_CALL on_event(int32_t event_code, int32_t status, void* user_value)
{
    static const char* const names[] = {"logged in",       "logged out",      "account created",
                                        "token refreshed", "token available", "login restored"};
    int* const count = (int*)user_value;
    const int known = event_code >= 0 && event_code < (int32_t)(sizeof names / sizeof names[0]);

    ++*count;
    printf("%-18s %s, %s\n", "  event", known ? names[event_code] : "unknown", name_of((talix_status_code)status));
}

static int print_versions(void)
{
    char server[TEXT_SIZE] = "";
    char sdk[TEXT_SIZE] = "";
    talix_versions versions;

    /* Set both buffers: one that is null or too small ends the process. */
    versions.server_version = server;
    versions.server_version_size = sizeof server;
    versions.sdk_version = sdk;
    versions.sdk_version_size = sizeof sdk;
    if (!check("get_versions", talix_get_versions(&versions)))
        return 0;
    print("  server", server[0] ? server : "not registered");
    print("  library", sdk);
    return 1;
}

static int set_product(void)
{
    const talix_product_config config = talix_create_product_config("example-c-host", "openid profile");

    print("create_product", config ? "created" : "not created");
    if (!config)
        return 0;
    talix_set_product_line_name(config, "Examples");
    talix_set_product_release_id(config, "1");
    talix_set_product_build_id(config, "1.0.0");
    return check("set_product_config", talix_set_product_config(talix_get_server(), config));
}

static int log_in(const int* events)
{
    const int before = *events;

    return check("set_login_mode", talix_set_login_mode(TALIX_LOGIN_MODE_DEFAULT)) && check("login", talix_login()) &&
           check("dispatch_events", talix_dispatch_events()) && *events > before &&
           expect("logged in?", talix_get_boolean(TALIX_KEY_LOGGED_IN), 1) &&
           expect("login valid?", talix_get_boolean(TALIX_KEY_LOGIN_VALID), 1) &&
           expect("token expired?", talix_get_boolean(TALIX_KEY_TOKEN_EXPIRED), 0);
}

static int print_server(void)
{
    const Server server = talix_get_server();
    const TALIXEnvironment environment = talix_get_environment();

    print_number("get_server", server);
    print_number("get_environment", environment);
    return server != TALIX_SERVER_UNAVAILABLE && environment != TALIX_ENVIRONMENT_UNAVAILABLE &&
           environment != TALIX_ENVIRONMENT_NONE;
}

/* Anyone who has the whole token can act as the user: never print or log a whole token. */
static int print_token(const char* step, talix_status_code(TALIX_CALL* get)(talix_buffer*))
{
    char text[TOKEN_SIZE] = "";
    talix_buffer token;

    token.buffer = text;
    token.size = sizeof text;
    if (!check(step, get(&token)))
        return 0;
    printf("%-18s %.24s... (%lu bytes)\n", "  token", text, (unsigned long)strlen(text));
    return text[0] != '\0';
}

static int print_user(void)
{
    char name[TEXT_SIZE] = "";
    char email[TEXT_SIZE] = "";
    talix_user_info info;

    memset(&info, 0, sizeof info); /* Attributes that stay null are not filled. */
    info.display_name = name;
    info.display_name_size = sizeof name;
    info.email = email;
    info.email_size = sizeof email;
    if (!check("get_user_info", talix_get_user_info(&info)))
        return 0;
    printf("%-18s %s <%s>\n", "  user", name, email);
    return 1;
}

static int print_profile(void)
{
    char text[TOKEN_SIZE] = "";
    talix_buffer profile;

    profile.buffer = text;
    profile.size = sizeof text;
    if (!check("get_profile_info", talix_get_profile_info(&profile)))
        return 0;
    print("  profile", text);
    return 1;
}

static int print_session_address(void)
{
    char text[TOKEN_SIZE] = "";
    talix_buffer session;

    session.buffer = text;
    session.size = sizeof text;
    if (!check("get_session_uri", talix_get_session_uri("https://shop.example/account", 0, &session)))
        return 0;
    printf("%-18s %.48s...\n", "  address", text); /* The address signs the user in: do not print it whole. */
    return 1;
}

static int use_proxy(void)
{
    static char proxy_host[] = "proxy.example";
    static char proxy_user[] = "sam";
    static char proxy_password[] = "example";
    char host[TEXT_SIZE] = "";
    char user[TEXT_SIZE] = "";
    talix_proxy_info stored;
    talix_proxy_info found;

    memset(&stored, 0, sizeof stored);
    stored.host = proxy_host;
    stored.host_size = sizeof proxy_host;
    stored.user_name = proxy_user;
    stored.user_name_size = sizeof proxy_user;
    stored.password = proxy_password;
    stored.password_size = sizeof proxy_password;
    stored.port = 3128;
    if (!check("set_proxy_info", talix_set_proxy_info(&stored)) ||
        !check("has_proxy_info", talix_has_proxy_info(proxy_host, 3128)))
        return 0;

    memset(&found, 0, sizeof found);
    found.host = host;
    found.host_size = sizeof host;
    found.user_name = user;
    found.user_name_size = sizeof user;
    if (!check("get_proxy_info", talix_get_proxy_info(&found, proxy_host, 3128)))
        return 0;
    printf("%-18s %s@%s:%ld\n", "  proxy", user, host, (long)found.port);
    return check("clear_proxy_info", talix_clear_proxy_info()) && strcmp(host, proxy_host) == 0 && found.port == 3128;
}

static int log_out(const int* events)
{
    const int before = *events;

    return check("logout", talix_logout(TALIX_LOGOUT_DEFAULT)) && check("dispatch_events", talix_dispatch_events()) &&
           *events > before && expect("logged in?", talix_get_boolean(TALIX_KEY_LOGGED_IN), 0);
}

static int use_library(void)
{
    int events = 0;
    int done;

    if (!set_product() || !check("add_event_callback", talix_add_event_callback(on_event, &events)))
        return 0;
    done = log_in(&events) && print_server() && print_token("get_token", talix_get_token) &&
           print_token("get_id_token", talix_get_id_token) && check("refresh_token", talix_refresh_token()) &&
           check("dispatch_events", talix_dispatch_events()) && print_user() && print_profile() &&
           print_session_address() && use_proxy() && log_out(&events);
    /* The library holds the address of `events` until the callback is removed. */
    return check("remove_callback", talix_remove_event_callback(on_event)) && done;
}

static int explain_failed_start(talix_status_code code)
{
    fflush(stdout);
    if (code == IdClientUnavailable)
    {
        fputs(plugin_missing_text, stderr);
        return 3;
    }
    if (code == IdRunningAsLocalSystem)
    {
        fputs(local_system_text, stderr);
        return 4;
    }
    return 1;
}

int main(int argc, char** argv)
{
    talix_status_code started;
    int done;

    if (argc > 1)
    {
        const int help = argc == 2 && strcmp(argv[1], "--help") == 0;
        fputs(help_text, help ? stdout : stderr);
        return help ? 0 : 2;
    }
    SetConsoleOutputCP(CP_UTF8);

    if (!print_versions())
        return 1;
    started = talix_init();
    if (!check("init", started))
        return explain_failed_start(started);
    done = use_library();
    done = check("deinit", talix_deinit()) && done;
    puts(done ? "All steps succeeded." : "A step failed; its result is above.");
    return done ? 0 : 1;
}
