/**
 * @file
 * The flat interface of Orlindex.dll: result codes, enumerations, caller-owned records and functions.
 *
 * Plain C (C89) and C++. All texts are UTF-8 with a terminating zero. All sizes are in bytes and include the
 * terminating zero. Records and buffers belong to the caller; the library keeps no pointer into them after a call.
 */
#ifndef ORLINDEX_TALIX_H
#define ORLINDEX_TALIX_H

#include <stdint.h>

#include "Export.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Result of an operation, a signed 32-bit number. The library returns the values named here. The client plugin module
 * may return other values of 1000 and above, which pass through unchanged.
 */
typedef enum talix_status_code
{
    IdSuccess = 1000,        /**< The call succeeded. */
    IdNotInitialized = 2000, /**< The library is not initialized. */
    IdFailed = 3004, /**< A required argument or the client interface is missing, the plugin returned a value below 1000
                        or threw, or the system is out of memory. */
    IdClientUnavailable = 3005,    /**< The client plugin module or its client interface could not be obtained. */
    IdInvalidClientId = 3006,      /**< A null OAuth2 client ID. */
    IdBufferTooSmall = 3017,       /**< The caller's buffer cannot hold the text and its terminating zero. */
    IdInvalidHostWindow = 3018,    /**< A null window handle. */
    IdNotSupported = 3021,         /**< The operation is not supported. */
    IdRunningAsLocalSystem = 3025, /**< The process runs under the local system account. */
    IdInvalidVersionRecord = 3041, /**< A version record in which neither text buffer is usable. */
    IdInvalidProxyRecord = 3047,   /**< A null proxy record. */
    IdInvalidProxyHost = 3050,     /**< A proxy host that is null, of size 0 or empty. */
    IdInvalidProxyPort = 3052,     /**< A proxy port outside 1..65535 with a non-empty host. */
    IdInvalidProfileRecord = 3064, /**< A null profile record. */
    IdApiUnavailable = 3071,       /**< The plugin does not support the feature, or has no client interface. */
    IdServerQuitFailed = 3080,     /**< No server-process interface, or not all server processes quit in time. */

    /** Bounds that make every signed 32-bit number a valid value of this type. No function returns them. */
    TALIX_STATUS_CODE_MIN = (-2147483647 - 1),
    TALIX_STATUS_CODE_MAX = 2147483647 /**< See TALIX_STATUS_CODE_MIN. */
} talix_status_code;

/**
 * Identity server (environment) that the client uses. The client plugin module defines the values; the names here must
 * agree with the plugin in use.
 */
typedef enum Server
{
    TALIX_SERVER_UNAVAILABLE = -1, /**< No server: the library is not initialized, or a name is unknown. */
    TALIX_SERVER_PRODUCTION = 0,   /**< The service for users. */
    TALIX_SERVER_STAGING = 1,      /**< The service for testing releases. */
    TALIX_SERVER_DEVELOPMENT = 2,  /**< The service for development. */

    TALIX_SERVER_MIN = (-2147483647 - 1), /**< See TALIX_STATUS_CODE_MIN. */
    TALIX_SERVER_MAX = 2147483647         /**< See TALIX_STATUS_CODE_MIN. */
} Server;

/** Kind of environment behind the server in use. The plugin defines the values. */
typedef enum TALIXEnvironment
{
    TALIX_ENVIRONMENT_UNAVAILABLE = -1, /**< The library is not initialized. */
    TALIX_ENVIRONMENT_NONE = 0,         /**< The plugin has no client interface. */
    TALIX_ENVIRONMENT_PRODUCTION = 1,   /**< A service for users. */
    TALIX_ENVIRONMENT_STAGING = 2,      /**< A service for testing releases. */
    TALIX_ENVIRONMENT_DEVELOPMENT = 3,  /**< A service for development. */

    TALIX_ENVIRONMENT_MIN = (-2147483647 - 1), /**< See TALIX_STATUS_CODE_MIN. */
    TALIX_ENVIRONMENT_MAX = 2147483647         /**< See TALIX_STATUS_CODE_MIN. */
} TALIXEnvironment;

/** How a login is carried out. Passed to the plugin unchanged. */
typedef enum talix_login_mode
{
    TALIX_LOGIN_MODE_DEFAULT = 0,  /**< The plugin chooses. */
    TALIX_LOGIN_MODE_EMBEDDED = 1, /**< In a window of the server application. */
    TALIX_LOGIN_MODE_BROWSER = 2,  /**< In the user's browser. */

    TALIX_LOGIN_MODE_MIN = (-2147483647 - 1), /**< See TALIX_STATUS_CODE_MIN. */
    TALIX_LOGIN_MODE_MAX = 2147483647         /**< See TALIX_STATUS_CODE_MIN. */
} talix_login_mode;

/** How a logout is carried out. Passed to the plugin unchanged. */
typedef enum talix_logout_flags
{
    TALIX_LOGOUT_DEFAULT = 0, /**< Observers are asked first and may refuse. */
    TALIX_LOGOUT_FORCE = 1,   /**< Observers are not asked. */

    TALIX_LOGOUT_FLAGS_MIN = (-2147483647 - 1), /**< See TALIX_STATUS_CODE_MIN. */
    TALIX_LOGOUT_FLAGS_MAX = 2147483647         /**< See TALIX_STATUS_CODE_MIN. */
} talix_logout_flags;

/* Packed to 8 bytes, whatever the host's compiler options say: hosts and plugins of any build share these records. */
#pragma pack(push, 8)

/**
 * Attributes of the signed-in user, filled by the plugin. Each attribute is a caller-owned buffer and its capacity in
 * bytes; a null pointer or a capacity of 0 means that the attribute is not wanted. If a buffer is too small, the plugin
 * leaves it unchanged and returns IdBufferTooSmall.
 */
typedef struct talix_user_info
{
    int64_t reserved;          /**< Not read by the library. */
    char* user_id;             /**< Identifier of the user. */
    int32_t user_id_size;      /**< Capacity of user_id in bytes. */
    char* user_name;           /**< Name that the user signs in with. */
    int32_t user_name_size;    /**< Capacity of user_name in bytes. */
    char* first_name;          /**< Given name. */
    int32_t first_name_size;   /**< Capacity of first_name in bytes. */
    char* last_name;           /**< Family name. */
    int32_t last_name_size;    /**< Capacity of last_name in bytes. */
    char* email;               /**< E-mail address. */
    int32_t email_size;        /**< Capacity of email in bytes. */
    char* display_name;        /**< Name to display. */
    int32_t display_name_size; /**< Capacity of display_name in bytes. */
} talix_user_info;

/** Settings of one proxy server. Capacities in bytes. */
typedef struct talix_proxy_info
{
    char* host;             /**< Name or address; the key of the record. */
    int32_t host_size;      /**< Capacity of host in bytes. */
    char* user_name;        /**< User name for the proxy; UTF-8. */
    int32_t user_name_size; /**< Capacity of user_name in bytes. */
    char* password;         /**< Password for the proxy; UTF-8. */
    int32_t password_size;  /**< Capacity of password in bytes. */
    int32_t reserved;       /**< Keeps port at byte 48 of the record; not read. */
    int32_t port;           /**< 1..65535. */
} talix_proxy_info;

/** A buffer that the library writes a text into. */
typedef struct talix_buffer
{
    char* buffer; /**< Receives UTF-8 text with its terminating zero. */
    int32_t size; /**< Capacity of buffer in bytes. */
} talix_buffer;

/** Buffers that the library writes version texts into. */
typedef struct talix_versions
{
    char* server_version;        /**< Receives the installed server application's version; empty if none is found. */
    int32_t server_version_size; /**< Capacity of server_version in bytes. */
    char* sdk_version;           /**< Receives the library's own version. */
    int32_t sdk_version_size;    /**< Capacity of sdk_version in bytes. */
} talix_versions;

#pragma pack(pop)

/** 0 or 1. One byte in C and in C++. */
typedef unsigned char talix_bool;

/** Keys of talix_get_boolean. */
typedef enum talix_boolean_key
{
    TALIX_KEY_INITIALIZED = 1,  /**< The library is initialized. */
    TALIX_KEY_LOGGED_IN = 2,    /**< A user is signed in. */
    TALIX_KEY_LOGIN_VALID = 3,  /**< The login is valid. */
    TALIX_KEY_TOKEN_EXPIRED = 4 /**< The OAuth2 access token has expired. */
} talix_boolean_key;

/** Event codes that callbacks receive. */
typedef enum talix_event_code
{
    TALIX_EVENT_LOGGED_IN = 0,       /**< The user signed in. */
    TALIX_EVENT_LOGGED_OUT = 1,      /**< The user signed out. */
    TALIX_EVENT_ACCOUNT_CREATED = 2, /**< An account was created during a login. */
    TALIX_EVENT_TOKEN_REFRESHED = 3, /**< The access token was refreshed. */
    TALIX_EVENT_TOKEN_AVAILABLE = 4, /**< An access token became available. */
    TALIX_EVENT_LOGIN_RESTORED =
        5 /**< A login from an earlier run was restored. Always comes with the status IdSuccess. */
} talix_event_code;

/**
 * Handle to the product configuration. The library owns it; the host never frees it. There is one handle per process.
 * Every talix_init and every talix_deinit empties it, even if the call only changes the start count. The
 * talix_set_product_ functions for texts ignore an empty handle. talix_set_product_config must not receive one: call
 * talix_create_product_config first, which fills it again. A host that starts with talix_init must stop with
 * talix_deinit: IdServicesMgr::Uninitialize neither empties the handle nor removes callbacks.
 */
typedef struct talix_product_config_slot* talix_product_config;

/**
 * Receives identity events, on the thread that calls talix_dispatch_events. event_code: a talix_event_code; status: a
 * talix_status_code; user_value: the value that was registered with the callback. A callback must not throw. It should
 * not add or remove callbacks, nor call talix_init or talix_deinit. If it does, a removed callback is no longer called,
 * an added one is called from the next event on, and talix_deinit ends the delivery.
 */
typedef void(TALIX_CALL* talix_event_callback)(int32_t event_code, int32_t status, void* user_value);

/**
 * @name Functions
 *
 * These rules hold for all functions:
 *
 * - "Client" is the plugin's client interface (ISSOClient); each call obtains it again. "Slot" is the index of the
 *   plugin operation that a function forwards to.
 * - The checks run in the order in which the results are listed; the first check that fails decides.
 * - "Normalized" means that a plugin's result below 1000 becomes IdFailed. The other functions return the plugin's
 *   result unchanged. If the plugin throws, the result code is IdFailed.
 * - A text is copied only if the caller's size is greater than its length in bytes. Otherwise the result is
 *   IdBufferTooSmall and the buffer is unchanged. The required size is not reported. A negative size counts as very
 *   large.
 * - The functions run the plugin on the caller's thread and do not serialize calls. Product configuration and event
 *   callbacks are process-wide state without synchronization: call their functions, and talix_init and talix_deinit,
 *   which also change that state, from one thread at a time.
 * @{
 */

/**
 * Starts the library: locates, verifies and loads the client plugin module. If the library is already started, only
 * increments the start count. Empties the product configuration handle, except under the local system account. Do not
 * call it from several threads at once. IdSuccess; IdRunningAsLocalSystem under the local system account, with nothing
 * started; IdClientUnavailable if the plugin could not be obtained; IdFailed if the system is out of resources, if the
 * plugin throws, or if called inside a callback that the plugin makes while it stops.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_init(void);

/**
 * Decrements the start count, and stops the library when the count reaches 0. Every call removes all event callbacks
 * and empties the product configuration handle, even if the library stays started or was never started. Do not call it
 * from several threads at once. Always IdSuccess, except IdFailed if the plugin throws while it stops, or if called
 * inside a callback that the plugin makes while it starts or stops.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_deinit(void);

/**
 * Returns the state that key names, see talix_boolean_key. 0 for any other key, and for keys 2 to 4 while the library
 * is not initialized. Without client, and if the plugin throws: 0, but 1 for TALIX_KEY_TOKEN_EXPIRED. Slots 7, 12 and
 * 9.
 */
ORLINDEX_API talix_bool TALIX_CALL talix_get_boolean(int32_t key);

/**
 * Stores an OAuth2 client ID and the token scope in the library's product configuration, and returns the handle to it;
 * null if the library is not initialized, or if the system is out of memory. There is one such configuration; a null
 * text keeps the value that an earlier call set.
 */
ORLINDEX_API talix_product_config TALIX_CALL talix_create_product_config(const char* client_id, const char* scope);

/**
 * Sets the name of the product line (UTF-8) in the product configuration. Does nothing if the text is null, or if the
 * handle is null or empty. Does not call the plugin: talix_set_product_config passes all texts to it.
 */
ORLINDEX_API void TALIX_CALL talix_set_product_line_name(talix_product_config handle, const char* text);
/** Sets the identifier of the product's release. See talix_set_product_line_name. */
ORLINDEX_API void TALIX_CALL talix_set_product_release_id(talix_product_config handle, const char* text);
/** Sets the identifier of the product's build. See talix_set_product_line_name. */
ORLINDEX_API void TALIX_CALL talix_set_product_build_id(talix_product_config handle, const char* text);

/**
 * Passes the product configuration to the plugin (slot 2). IdNotInitialized; IdClientUnavailable without client; else
 * the plugin's result. The handle must come from talix_create_product_config after the last talix_init or talix_deinit.
 * The library does not check it: the behavior is undefined for a null handle, and for an empty one if there is a
 * client.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_set_product_config(Server server, talix_product_config handle);

/**
 * Sets the login mode (slot 36). IdNotInitialized; IdApiUnavailable without client, or if the plugin does not support
 * login modes; else the plugin's result.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_set_login_mode(talix_login_mode mode);

/**
 * Signs the user in (slot 28). IdNotInitialized; IdClientUnavailable without client; else the plugin's result,
 * normalized.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_login(void);

/**
 * Signs the user out (slot 16). IdNotInitialized; IdClientUnavailable without client; else the plugin's result,
 * normalized.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_logout(talix_logout_flags flags);

/**
 * Writes the OAuth2 access token (slot 6), at most 4095 UTF-16 units. IdFailed for a null record; IdNotInitialized;
 * IdClientUnavailable without client; the plugin's result, normalized; IdBufferTooSmall. If the plugin fails or there
 * is no client, the buffer receives what the plugin wrote, usually an empty text, provided that it fits. A null buffer
 * with a sufficient size is an invalid argument of the runtime's bounded copy, which ends the process unless the host
 * installed an invalid-parameter handler.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_get_token(talix_buffer* token);

/**
 * As talix_get_token, including the rule for a null buffer, but the plugin may wait for a token that is being obtained
 * (slot 6).
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_get_token_blocking(talix_buffer* token);

/**
 * Writes the OAuth2 ID token (slot 35), at most 4095 UTF-16 units. IdFailed for a null record; IdNotInitialized;
 * IdApiUnavailable without client, or if the plugin does not support ID tokens; then as talix_get_token, including the
 * rule for a null buffer.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_get_id_token(talix_buffer* token);

/**
 * Sets the identity server (slot 15). IdNotInitialized; IdClientUnavailable without client; else the plugin's result,
 * normalized.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_set_server(Server server);

/**
 * The environment behind the server in use (slot 24). -1 if the library is not initialized or the plugin throws; 0
 * without client.
 */
ORLINDEX_API TALIXEnvironment TALIX_CALL talix_get_environment(void);

/**
 * The identity server in use (slot 14). -1 if the library is not initialized or the plugin throws; 0 without client.
 */
ORLINDEX_API Server TALIX_CALL talix_get_server(void);

/**
 * Fills the record with the attributes of the signed-in user (slot 3). IdFailed for a null record, or one in which no
 * attribute has both a buffer and a capacity; IdNotInitialized; IdFailed without client; else the plugin's result,
 * normalized.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_get_user_info(talix_user_info* info);

/**
 * Writes an address that opens uri in the user's session (slot 4), at most 2047 UTF-16 units. The plugin defines the
 * meaning of flag. IdFailed for a null uri or record, a null buffer or a size of 0; IdNotInitialized; IdFailed without
 * client; the plugin's result, normalized; IdBufferTooSmall. The buffer is unchanged unless the result is IdSuccess.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_get_session_uri(const char* uri, uint16_t flag, talix_buffer* out);

/**
 * Sets the host's top-level window (an HWND), which owns the plugin's dialogs (slot 30). IdInvalidHostWindow for a null
 * window; IdNotInitialized; else IdSuccess, even without client.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_set_host(void* window);

/** Not supported: always IdNotSupported. */
ORLINDEX_API talix_status_code TALIX_CALL talix_set_process_id(int process_id);

/**
 * Registers a callback for identity events. A callback is stored once: adding it again replaces its user value. The
 * first call also makes the plugin report events (slot 17); a null callback does only that. IdNotInitialized, unless
 * events are already reported; IdSuccess; IdFailed if the system is out of memory.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_add_event_callback(talix_event_callback callback, void* user_value);

/**
 * Removes a callback; a null or unknown one is ignored. If no callback is left, the plugin stops reporting events (slot
 * 18). IdNotInitialized; else IdSuccess.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_remove_event_callback(talix_event_callback callback);

/**
 * Delivers queued events to the callbacks, on this thread (slot 25). IdNotInitialized; IdClientUnavailable without
 * client; else the plugin's result.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_dispatch_events(void);

/**
 * Checks whether the plugin has settings for a proxy (slot 19). IdNotInitialized; IdInvalidProxyPort for a non-empty
 * host with a port outside 1..65535; IdClientUnavailable without client; else the plugin's result, normalized.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_has_proxy_info(const char* host, int32_t port);

/**
 * Fills the record with the settings of a proxy (slot 20). IdInvalidProxyRecord for a null record; IdInvalidProxyPort
 * for a non-empty host with a port outside 1..65535; IdNotInitialized; IdClientUnavailable without client; else the
 * plugin's result, normalized.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_get_proxy_info(talix_proxy_info* info, const char* host, int32_t port);

/**
 * Stores the settings of a proxy (slot 21). IdInvalidProxyRecord for a null record; IdInvalidProxyHost for a host that
 * is null, of size 0 or empty; IdInvalidProxyPort for a port outside 1..65535; IdNotInitialized; IdClientUnavailable
 * without client; else the plugin's result, normalized.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_set_proxy_info(const talix_proxy_info* info);

/**
 * Deletes all proxy settings (slot 22). IdNotInitialized; IdClientUnavailable without client; else the plugin's result,
 * normalized.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_clear_proxy_info(void);

/**
 * Writes the user's profile (slot 23). The plugin writes directly into the record's buffer, and sets size to what it
 * needed or wrote, in bytes. IdInvalidProfileRecord for a null record; IdNotInitialized; IdClientUnavailable without
 * client; else the plugin's result.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_get_profile_info(talix_buffer* profile);

/**
 * Writes the version of the installed server application, from the registry, and the library's own version. Needs no
 * initialization. IdSuccess for a null record, with nothing written; IdInvalidVersionRecord if neither text has both a
 * buffer and a size; IdFailed if the system is out of memory; else IdSuccess. If one buffer is usable, both texts are
 * written: the other buffer, if it is null or too small, is an invalid argument of the runtime's bounded copy, which
 * ends the process unless the host installed an invalid-parameter handler.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_get_versions(talix_versions* versions);

/**
 * Requests a new access token (slot 13). IdNotInitialized; IdClientUnavailable without client; else the plugin's
 * result.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_refresh_token(void);

/**
 * Asks all server processes to quit, and waits at most the given number of milliseconds (ISSOServerManager slot 17).
 * IdNotInitialized; IdServerQuitFailed without a server-process interface, or if not all of them quit in time; else
 * IdSuccess.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_quit_server_process(int milliseconds);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
