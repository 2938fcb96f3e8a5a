/*
 * The records and values of the flat interface, in C and in C++: each line fails to compile when a place, a size or a
 * value is another. Hosts and plugins of other builds share them, whatever packing of records they have set.
 */
#include <stddef.h>

/* HOST_PACKING: the packing that a host has set when it includes the header. */
#if HOST_PACKING == 1
#pragma pack(push, 1)
#elif HOST_PACKING == 2
#pragma pack(push, 2)
#elif HOST_PACKING == 4
#pragma pack(push, 4)
#endif

#include "orlindex/talix.h"

#define CHECK(name, condition) typedef char check_##name[(condition) ? 1 : -1]

#ifdef HOST_PACKING
typedef struct host_record
{
    char first;
    int64_t second;
} host_record;
CHECK(host_packing_is_as_before, offsetof(host_record, second) == HOST_PACKING);
#pragma pack(pop)
#endif

/* A value of 64-bit hosts and one of 32-bit hosts. */
#define BITS(wide, narrow) (sizeof(void*) == 8 ? (wide) : (narrow))
#define CHECK_PLACE(record, field, wide, narrow) CHECK(record##_##field, offsetof(record, field) == BITS(wide, narrow))
#define CHECK_SIZE(record, wide, narrow) CHECK(record, sizeof(record) == BITS(wide, narrow))
#define CHECK_TEXT(record, field, wide, narrow) \
    CHECK_PLACE(record, field, wide, narrow);   \
    CHECK_PLACE(record, field##_size, (wide) + 8, (narrow) + 4)
#define CHECK_ENUMERATION(type)            \
    CHECK(type##_size, sizeof(type) == 4); \
    CHECK(type##_is_signed, (type) - 1 < (type)0)
#define CHECK_VALUE(name, value) CHECK(name, (name) == (value))

CHECK_ENUMERATION(talix_status_code);
CHECK_ENUMERATION(Server);
CHECK_ENUMERATION(TALIXEnvironment);
CHECK_ENUMERATION(talix_login_mode);
CHECK_ENUMERATION(talix_logout_flags);
CHECK(talix_bool, sizeof(talix_bool) == 1);
CHECK_SIZE(talix_product_config, 8, 4);
CHECK_SIZE(talix_event_callback, 8, 4);

CHECK_PLACE(talix_buffer, buffer, 0, 0);
CHECK_PLACE(talix_buffer, size, 8, 4);
CHECK_SIZE(talix_buffer, 16, 8);

CHECK_TEXT(talix_versions, server_version, 0, 0);
CHECK_TEXT(talix_versions, sdk_version, 16, 8);
CHECK_SIZE(talix_versions, 32, 16);

CHECK_PLACE(talix_user_info, reserved, 0, 0);
CHECK_TEXT(talix_user_info, user_id, 8, 8);
CHECK_TEXT(talix_user_info, user_name, 24, 16);
CHECK_TEXT(talix_user_info, first_name, 40, 24);
CHECK_TEXT(talix_user_info, last_name, 56, 32);
CHECK_TEXT(talix_user_info, email, 72, 40);
CHECK_TEXT(talix_user_info, display_name, 88, 48);
CHECK_SIZE(talix_user_info, 104, 56);

CHECK_TEXT(talix_proxy_info, host, 0, 0);
CHECK_TEXT(talix_proxy_info, user_name, 16, 8);
CHECK_TEXT(talix_proxy_info, password, 32, 16);
CHECK_PLACE(talix_proxy_info, reserved, 44, 24);
CHECK_PLACE(talix_proxy_info, port, 48, 28);
CHECK_SIZE(talix_proxy_info, 56, 32);

CHECK_VALUE(IdSuccess, 1000);
CHECK_VALUE(IdNotInitialized, 2000);
CHECK_VALUE(IdFailed, 3004);
CHECK_VALUE(IdClientUnavailable, 3005);
CHECK_VALUE(IdInvalidClientId, 3006);
CHECK_VALUE(IdBufferTooSmall, 3017);
CHECK_VALUE(IdInvalidHostWindow, 3018);
CHECK_VALUE(IdNotSupported, 3021);
CHECK_VALUE(IdRunningAsLocalSystem, 3025);
CHECK_VALUE(IdInvalidVersionRecord, 3041);
CHECK_VALUE(IdInvalidProxyRecord, 3047);
CHECK_VALUE(IdInvalidProxyHost, 3050);
CHECK_VALUE(IdInvalidProxyPort, 3052);
CHECK_VALUE(IdInvalidProfileRecord, 3064);
CHECK_VALUE(IdApiUnavailable, 3071);
CHECK_VALUE(IdServerQuitFailed, 3080);

CHECK_VALUE(TALIX_SERVER_UNAVAILABLE, -1);
CHECK_VALUE(TALIX_ENVIRONMENT_UNAVAILABLE, -1);
CHECK_VALUE(TALIX_ENVIRONMENT_NONE, 0);

CHECK_VALUE(TALIX_KEY_INITIALIZED, 1);
CHECK_VALUE(TALIX_KEY_LOGGED_IN, 2);
CHECK_VALUE(TALIX_KEY_LOGIN_VALID, 3);
CHECK_VALUE(TALIX_KEY_TOKEN_EXPIRED, 4);

CHECK_VALUE(TALIX_EVENT_LOGGED_IN, 0);
CHECK_VALUE(TALIX_EVENT_LOGGED_OUT, 1);
CHECK_VALUE(TALIX_EVENT_ACCOUNT_CREATED, 2);
CHECK_VALUE(TALIX_EVENT_TOKEN_REFRESHED, 3);
CHECK_VALUE(TALIX_EVENT_TOKEN_AVAILABLE, 4);
CHECK_VALUE(TALIX_EVENT_LOGIN_RESTORED, 5);
