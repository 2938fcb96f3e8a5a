/*
 * A stand-in for Orlindex.dll on this machine, with the flat interface of the real one: it answers IdSuccess where
 * every argument is the one that Calls.cs gives, and IdFailed where one is not. What it writes is the same text.
 */
#include <string.h>

#include "orlindex/talix.h"

static const char text[] = "J\xC3\xBCrgen \xE4\xB8\xAD\xE6\x96\x87";
static char* const handle = (char*)4711;

static talix_event_callback stored;
static void* stored_value;
static int set_texts;

static talix_status_code answer(int good)
{
    return good ? IdSuccess : IdFailed;
}

static int is_text(const char* given)
{
    return given && strcmp(given, text) == 0;
}

static talix_status_code write_text(char* buffer, int32_t size)
{
    if (!buffer || size < (int32_t)sizeof text)
        return IdBufferTooSmall;
    memcpy(buffer, text, sizeof text);
    return IdSuccess;
}

talix_status_code talix_init(void)
{
    return IdSuccess;
}

talix_status_code talix_deinit(void)
{
    return IdSuccess;
}

talix_bool talix_get_boolean(int32_t key)
{
    return key == TALIX_KEY_LOGGED_IN;
}

talix_product_config talix_create_product_config(const char* client_id, const char* scope)
{
    set_texts = 0;
    /* The host of the page gives its own client ID. */
    return client_id && scope && strncmp(scope, "openid", 6) == 0 ? (talix_product_config)handle : NULL;
}

void talix_set_product_line_name(talix_product_config config, const char* given)
{
    set_texts += (char*)config == handle && is_text(given);
}

void talix_set_product_release_id(talix_product_config config, const char* given)
{
    set_texts += (char*)config == handle && is_text(given);
}

void talix_set_product_build_id(talix_product_config config, const char* given)
{
    set_texts += (char*)config == handle && is_text(given);
}

talix_status_code talix_set_product_config(Server server, talix_product_config config)
{
    return answer(server == TALIX_SERVER_DEVELOPMENT && (char*)config == handle && (set_texts == 0 || set_texts == 3));
}

talix_status_code talix_set_login_mode(talix_login_mode mode)
{
    return answer(mode == TALIX_LOGIN_MODE_BROWSER);
}

talix_status_code talix_login(void)
{
    return IdSuccess;
}

talix_status_code talix_logout(talix_logout_flags flags)
{
    return answer(flags == TALIX_LOGOUT_FORCE);
}

talix_status_code talix_get_token(talix_buffer* token)
{
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
    return answer(server == TALIX_SERVER_UNAVAILABLE);
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
    if (info->reserved || info->user_id || info->user_name || info->first_name || info->last_name)
        return IdFailed;
    return info->email ? write_text(info->email, info->email_size)
                       : write_text(info->display_name, info->display_name_size);
}

talix_status_code talix_get_session_uri(const char* uri, uint16_t flag, talix_buffer* session)
{
    return is_text(uri) && flag == 65535 ? write_text(session->buffer, session->size) : IdFailed;
}

talix_status_code talix_set_host(void* window)
{
    return answer(window == (void*)0x123456789A);
}

talix_status_code talix_set_process_id(int process_id)
{
    return answer(process_id == -5);
}

talix_status_code talix_add_event_callback(talix_event_callback callback, void* user_value)
{
    stored = callback;
    stored_value = user_value;
    return answer(callback != NULL);
}

talix_status_code talix_remove_event_callback(talix_event_callback callback)
{
    const int known = callback && callback == stored;

    stored = NULL;
    return answer(known);
}

talix_status_code talix_dispatch_events(void)
{
    /* Calls.cs gives a value, the host of the page none. */
    if (!stored)
        return IdFailed;
    stored(stored_value ? TALIX_EVENT_LOGIN_RESTORED : TALIX_EVENT_LOGGED_IN, IdSuccess, stored_value);
    return IdSuccess;
}

talix_status_code talix_has_proxy_info(const char* host, int32_t port)
{
    return answer(is_text(host) && port == 3128);
}

talix_status_code talix_get_proxy_info(talix_proxy_info* info, const char* host, int32_t port)
{
    info->port = port;
    return answer(is_text(host) && port == 3128);
}

talix_status_code talix_set_proxy_info(const talix_proxy_info* info)
{
    return answer(is_text(info->host) && info->host_size == (int32_t)sizeof text && info->port == 3128 &&
                  !info->user_name && !info->password && !info->reserved);
}

talix_status_code talix_clear_proxy_info(void)
{
    return IdSuccess;
}

talix_status_code talix_get_profile_info(talix_buffer* profile)
{
    return write_text(profile->buffer, profile->size);
}

talix_status_code talix_get_versions(talix_versions* versions)
{
    return versions->server_version || versions->server_version_size
               ? IdFailed
               : write_text(versions->sdk_version, versions->sdk_version_size);
}

talix_status_code talix_refresh_token(void)
{
    return IdSuccess;
}

talix_status_code talix_quit_server_process(int milliseconds)
{
    return answer(milliseconds == -1000);
}
