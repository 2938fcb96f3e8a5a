/*
 * The flat interface's header alone, in C and in C++: every function must have the type that is written here, so that
 * what a host was built against stays true.
 */
#include "orlindex/talix.h"

#define CHECK(name, result, arguments) result(TALIX_CALL* check_##name) arguments = name

CHECK(talix_init, talix_status_code, (void));
CHECK(talix_deinit, talix_status_code, (void));
CHECK(talix_get_boolean, unsigned char, (int32_t));
CHECK(talix_create_product_config, talix_product_config, (const char*, const char*));
CHECK(talix_set_product_line_name, void, (talix_product_config, const char*));
CHECK(talix_set_product_release_id, void, (talix_product_config, const char*));
CHECK(talix_set_product_build_id, void, (talix_product_config, const char*));
CHECK(talix_set_product_config, talix_status_code, (Server, talix_product_config));
CHECK(talix_set_login_mode, talix_status_code, (talix_login_mode));
CHECK(talix_login, talix_status_code, (void));
CHECK(talix_logout, talix_status_code, (talix_logout_flags));
CHECK(talix_get_token, talix_status_code, (talix_buffer*));
CHECK(talix_get_token_blocking, talix_status_code, (talix_buffer*));
CHECK(talix_get_id_token, talix_status_code, (talix_buffer*));
CHECK(talix_set_server, talix_status_code, (Server));
CHECK(talix_get_environment, TALIXEnvironment, (void));
CHECK(talix_get_server, Server, (void));
CHECK(talix_get_user_info, talix_status_code, (talix_user_info*));
CHECK(talix_get_session_uri, talix_status_code, (const char*, uint16_t, talix_buffer*));
CHECK(talix_set_host, talix_status_code, (void*));
CHECK(talix_set_process_id, talix_status_code, (int));
CHECK(talix_add_event_callback, talix_status_code, (talix_event_callback, void*));
CHECK(talix_remove_event_callback, talix_status_code, (talix_event_callback));
CHECK(talix_dispatch_events, talix_status_code, (void));
CHECK(talix_has_proxy_info, talix_status_code, (const char*, int32_t));
CHECK(talix_get_proxy_info, talix_status_code, (talix_proxy_info*, const char*, int32_t));
CHECK(talix_set_proxy_info, talix_status_code, (const talix_proxy_info*));
CHECK(talix_clear_proxy_info, talix_status_code, (void));
CHECK(talix_get_profile_info, talix_status_code, (talix_buffer*));
CHECK(talix_get_versions, talix_status_code, (talix_versions*));
CHECK(talix_refresh_token, talix_status_code, (void));
CHECK(talix_quit_server_process, talix_status_code, (int));
