/*
 * A stand-in for Orlindex.dll with the flat interface of the real one. It also builds for this machine, so that a
 * binding whose Windows runtime cannot be had runs against it. The functions standin_* say what it does and what was
 * done to it.
 *
 * STANDIN_VERSION: the version that it reports. STANDIN_WITHOUT_LOGIN: leaves out talix_login, as an older version
 * would.
 */
#include <stdatomic.h>
#include <string.h>

#ifdef _WIN32
#include <windows.h>
#define ORLINDEX_BUILDING_LIBRARY
#define STANDIN_API __declspec(dllexport)
#else
#include <time.h>
#define STANDIN_API
#endif

#include "orlindex/talix.h"

#ifndef STANDIN_VERSION
#define STANDIN_VERSION "1.11.13.3"
#endif

static const char name[] = "J\xC3\xBCrgen \xE4\xB8\xAD\xE6\x96\x87";

static atomic_int starts;
static atomic_int logged_in;
static atomic_int login_waits;
static atomic_int cancellations;
static atomic_int inside; /* calls that wait */
static atomic_int dispatching;
static atomic_int stopped_while_inside;
static atomic_int stopped_with_callback;
static atomic_int held;
static int login_result = IdSuccess;
static int init_result = IdSuccess;
static int long_texts;
static talix_event_callback callback;
static void* callback_value;
static int events[64];
static int waiting_events;
static char product[256];

/* Control, for tests. */

STANDIN_API void standin_reset(void)
{
    login_result = init_result = IdSuccess;
    logged_in = login_waits = cancellations = stopped_while_inside = stopped_with_callback = 0;
    held = long_texts = waiting_events = 0;
    product[0] = '\0';
}

STANDIN_API void standin_login_returns(int code)
{
    login_result = code;
}

STANDIN_API void standin_init_returns(int code)
{
    init_result = code;
}

/* The first cancellations are lost: they come before the login waits. */
STANDIN_API void standin_login_waits(int lost_cancellations)
{
    login_waits = 1;
    cancellations = -lost_cancellations;
}

/* The user signs in while the login still waits, or has just ended to wait. */
STANDIN_API void standin_user_signs_in(int login_ends)
{
    logged_in = 1;
    if (login_ends)
        login_waits = 0;
}

/* While held, a token does not come back. */
STANDIN_API void standin_hold_tokens(int hold)
{
    held = hold;
}

STANDIN_API void standin_queue_event(int event_code)
{
    events[waiting_events++] = event_code;
}

STANDIN_API void standin_write_long_texts(int size)
{
    long_texts = size;
}

STANDIN_API int standin_starts(void)
{
    return starts;
}

STANDIN_API int standin_inside(void)
{
    return inside;
}

STANDIN_API int standin_stopped_while_inside(void)
{
    return stopped_while_inside;
}

STANDIN_API int standin_stopped_with_callback(void)
{
    return stopped_with_callback;
}

STANDIN_API const char* standin_product(void)
{
    return product;
}

/* The flat interface. */

static void rest(void)
{
#ifdef _WIN32
    Sleep(1);
#else
    const struct timespec millisecond = {0, 1000000};

    nanosleep(&millisecond, NULL);
#endif
}

static talix_status_code when(int good)
{
    return !starts ? IdNotInitialized : good ? IdSuccess : IdFailed;
}

static talix_status_code write_text(char* buffer, int32_t size)
{
    if (!starts)
        return IdNotInitialized;
    if (!buffer || size < (int32_t)sizeof name || size < long_texts)
        return IdBufferTooSmall;
    memcpy(buffer, name, sizeof name);
    return IdSuccess;
}

static void remember(const char* text)
{
    strncat(product, text ? text : "(none)", sizeof product - strlen(product) - 1);
    strncat(product, ";", sizeof product - strlen(product) - 1);
}

talix_status_code talix_init(void)
{
    if (init_result == IdSuccess)
        ++starts;
    return (talix_status_code)init_result;
}

talix_status_code talix_deinit(void)
{
    if (inside || dispatching)
        stopped_while_inside = 1;
    if (callback)
        stopped_with_callback = 1;
    --starts;
    callback = NULL;
    return IdSuccess;
}

talix_bool talix_get_boolean(int32_t key)
{
    return starts && (key == TALIX_KEY_INITIALIZED || (logged_in && key != TALIX_KEY_TOKEN_EXPIRED));
}

talix_product_config talix_create_product_config(const char* client_id, const char* scope)
{
    remember(client_id);
    remember(scope);
    return starts ? (talix_product_config)product : NULL;
}

void talix_set_product_line_name(talix_product_config config, const char* text)
{
    (void)config;
    remember(text);
}

void talix_set_product_release_id(talix_product_config config, const char* text)
{
    (void)config;
    remember(text);
}

void talix_set_product_build_id(talix_product_config config, const char* text)
{
    (void)config;
    remember(text);
}

talix_status_code talix_set_product_config(Server server, talix_product_config config)
{
    return when(server == TALIX_SERVER_DEVELOPMENT && (char*)config == product);
}

talix_status_code talix_set_login_mode(talix_login_mode mode)
{
    return when(mode == TALIX_LOGIN_MODE_BROWSER);
}

#ifndef STANDIN_WITHOUT_LOGIN
talix_status_code talix_login(void)
{
    if (!starts)
        return IdNotInitialized;
    ++inside;
    while (login_waits && cancellations <= 0)
        rest();
    --inside;
    if (login_waits)
        return (talix_status_code)4019;
    if (login_result == IdSuccess)
    {
        logged_in = 1;
        standin_queue_event(TALIX_EVENT_LOGGED_IN);
    }
    return (talix_status_code)login_result;
}
#endif

talix_status_code talix_logout(talix_logout_flags flags)
{
    if (!starts)
        return IdNotInitialized;
    if (!logged_in)
    {
        ++cancellations;
        return (talix_status_code)4001;
    }
    logged_in = 0;
    standin_queue_event(TALIX_EVENT_LOGGED_OUT);
    return when(flags == TALIX_LOGOUT_DEFAULT || flags == TALIX_LOGOUT_FORCE);
}

talix_status_code talix_get_token(talix_buffer* token)
{
    ++inside;
    while (held)
        rest();
    --inside;
    return write_text(token->buffer, token->size);
}

talix_status_code talix_get_token_blocking(talix_buffer* token)
{
    return write_text(token->buffer, token->size);
}

talix_status_code talix_get_id_token(talix_buffer* token)
{
    return write_text(token->buffer, token->size);
}

talix_status_code talix_set_server(Server server)
{
    return when(server == TALIX_SERVER_DEVELOPMENT);
}

TALIXEnvironment talix_get_environment(void)
{
    return TALIX_ENVIRONMENT_UNAVAILABLE;
}

Server talix_get_server(void)
{
    return TALIX_SERVER_DEVELOPMENT;
}

talix_status_code talix_get_user_info(talix_user_info* info)
{
    const talix_status_code code = write_text(info->display_name, info->display_name_size);

    return code == IdSuccess ? write_text(info->email, info->email_size) : code;
}

talix_status_code talix_get_session_uri(const char* uri, uint16_t flag, talix_buffer* out)
{
    return strcmp(uri, name) == 0 && flag == 65535 ? write_text(out->buffer, out->size) : IdFailed;
}

talix_status_code talix_set_host(void* window)
{
    return when(window == (void*)0x123456789A);
}

talix_status_code talix_set_process_id(int process_id)
{
    (void)process_id;
    return IdNotSupported;
}

talix_status_code talix_add_event_callback(talix_event_callback added, void* user_value)
{
    callback = added;
    callback_value = user_value;
    return when(1);
}

talix_status_code talix_remove_event_callback(talix_event_callback removed)
{
    if (callback == removed)
        callback = NULL;
    return when(1);
}

talix_status_code talix_dispatch_events(void)
{
    int i;
    const int count = waiting_events;

    waiting_events = 0;
    ++dispatching;
    for (i = 0; i < count && callback; ++i)
        callback(events[i], IdSuccess, callback_value);
    --dispatching;
    return when(1);
}

talix_status_code talix_has_proxy_info(const char* host, int32_t port)
{
    if (host && *host && port == 0)
        return IdInvalidProxyPort;
    return host && strcmp(host, name) == 0 && port == 3128 ? when(1) : (talix_status_code)4009;
}

talix_status_code talix_get_proxy_info(talix_proxy_info* info, const char* host, int32_t port)
{
    const talix_status_code code = write_text(info->host, info->host_size);

    info->port = port;
    return host && code == IdSuccess ? write_text(info->user_name, info->user_name_size) : code;
}

talix_status_code talix_set_proxy_info(const talix_proxy_info* info)
{
    return when(strcmp(info->host, name) == 0 && info->host_size == (int32_t)sizeof name && info->port == 3128 &&
                strcmp(info->user_name, "user") == 0 && info->user_name_size == 5 && *info->password == '\0' &&
                !info->reserved);
}

talix_status_code talix_clear_proxy_info(void)
{
    return when(1);
}

talix_status_code talix_get_profile_info(talix_buffer* profile)
{
    const talix_status_code code = write_text(profile->buffer, profile->size);

    profile->size = code == IdSuccess ? (int32_t)sizeof name : long_texts;
    return code;
}

talix_status_code talix_get_versions(talix_versions* versions)
{
    if (versions->server_version_size < 16 || versions->sdk_version_size < 16)
        return IdFailed;
    strcpy(versions->server_version, "1.10.0");
    strcpy(versions->sdk_version, STANDIN_VERSION);
    return IdSuccess;
}

talix_status_code talix_refresh_token(void)
{
    return when(1);
}

talix_status_code talix_quit_server_process(int milliseconds)
{
    return milliseconds >= 0 ? when(1) : IdServerQuitFailed;
}
