/**
 * @file
 * The flat interface of Orlindex.dll: result codes, enumerations, caller-owned records and functions.
 *
 * Plain C (C89) and C++. All texts are UTF-8 with a terminating zero. All sizes are counts of bytes that include the
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
 * Result of an operation, a signed 32-bit number. The library gives the values named here. The client plugin module
 * may answer further values of 1000 and above; they pass through unchanged.
 */
typedef enum talix_status_code
{
    IdSuccess = 1000,           /**< The call succeeded. */
    IdNotInitialized = 2000,    /**< The library is not initialized. */
    IdFailed = 3004,            /**< A required argument or the client interface is missing, the plugin answered a value
                                   below 1000 or threw, or the system is out of memory. */
    IdClientUnavailable = 3005, /**< The client plugin module or its client interface could not be obtained. */
    IdInvalidClientId = 3006,   /**< A null OAuth2 client ID. */
    IdBufferTooSmall = 3017,    /**< The caller's buffer cannot hold the text and its terminating zero. */
    IdInvalidHostWindow = 3018, /**< A null window handle. */
    IdNotSupported = 3021,      /**< The operation is not supported. */
    IdRunningAsLocalSystem = 3025, /**< The process runs under the local system account. */
    IdInvalidVersionRecord = 3041, /**< A version record in which neither text buffer is usable. */
    IdInvalidProxyRecord = 3047,   /**< A null proxy record. */
    IdInvalidProxyHost = 3050,     /**< A proxy host that is null, of size 0 or empty. */
    IdInvalidProxyPort = 3052,     /**< A proxy port outside 1..65535 with a non-empty host. */
    IdInvalidProfileRecord = 3064, /**< A null profile record. */
    IdApiUnavailable = 3071,       /**< The plugin does not offer the feature, or has no client interface. */
    IdServerQuitFailed = 3080,     /**< No server-process interface, or not all server processes quit in time. */

    /** Bounds that make every signed 32-bit number a value of this type; never results. */
    TALIX_STATUS_CODE_MIN = (-2147483647 - 1),
    TALIX_STATUS_CODE_MAX = 2147483647 /**< See TALIX_STATUS_CODE_MIN. */
} talix_status_code;

/**
 * Identity server (environment) that the client talks to. The client plugin module gives the values their meaning;
 * those named here must agree with the plugin in use.
 */
typedef enum Server
{
    TALIX_SERVER_UNAVAILABLE = -1, /**< No server: the library is not initialized, or a name is unknown. */
    TALIX_SERVER_PRODUCTION = 0,   /**< The service that users work with. */
    TALIX_SERVER_STAGING = 1,      /**< The service that releases are tried with. */
    TALIX_SERVER_DEVELOPMENT = 2,  /**< The service that is developed with. */

    TALIX_SERVER_MIN = (-2147483647 - 1), /**< See TALIX_STATUS_CODE_MIN. */
    TALIX_SERVER_MAX = 2147483647         /**< See TALIX_STATUS_CODE_MIN. */
} Server;

/** Kind of environment behind the current server. The plugin gives the values their meaning. */
typedef enum TALIXEnvironment
{
    TALIX_ENVIRONMENT_UNAVAILABLE = -1, /**< The library is not initialized. */
    TALIX_ENVIRONMENT_NONE = 0,         /**< The plugin has no client interface. */
    TALIX_ENVIRONMENT_PRODUCTION = 1,   /**< A service that users work with. */
    TALIX_ENVIRONMENT_STAGING = 2,      /**< A service that releases are tried with. */
    TALIX_ENVIRONMENT_DEVELOPMENT = 3,  /**< A service that is developed with. */

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

/* Packed to 8 bytes, whatever packing the host has set: hosts and plugins of any build share these records. */
#pragma pack(push, 8)

/**
 * Attributes of the signed-in user, filled by the plugin. Each attribute is a caller-owned buffer and its capacity in
 * bytes; a null pointer or a capacity of 0 means that the attribute is not wanted. The plugin leaves a buffer that is
 * too small untouched and answers IdBufferTooSmall.
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
    char* display_name;        /**< Name to show to people. */
    int32_t display_name_size; /**< Capacity of display_name in bytes. */
} talix_user_info;

/** Settings of one proxy server. Capacities in bytes. */
typedef struct talix_proxy_info
{
    char* host;             /**< Name or address; the key of the record. */
    int32_t host_size;      /**< Capacity of host in bytes. */
    char* user_name;        /**< Name that the proxy asks for; UTF-8. */
    int32_t user_name_size; /**< Capacity of user_name in bytes. */
    char* password;         /**< Password that the proxy asks for; UTF-8. */
    int32_t password_size;  /**< Capacity of password in bytes. */
    int32_t reserved;       /**< Keeps port at byte 48 of the record; not read. */
    int32_t port;           /**< 1..65535. */
} talix_proxy_info;

/** A text that the library writes. */
typedef struct talix_buffer
{
    char* buffer; /**< Receives UTF-8 text with its terminating zero. */
    int32_t size; /**< Capacity of buffer in bytes. */
} talix_buffer;

/** Version texts that the library writes. */
typedef struct talix_versions
{
    char* server_version;        /**< Receives the installed server application's version; empty when none is found. */
    int32_t server_version_size; /**< Capacity of server_version in bytes. */
    char* sdk_version;           /**< Receives the library's own version. */
    int32_t sdk_version_size;    /**< Capacity of sdk_version in bytes. */
} talix_versions;

#pragma pack(pop)

/** 0 or 1. One byte, whatever the language of the host. */
typedef unsigned char talix_bool;

/** What talix_get_boolean is asked. */
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
        5 /**< A login of an earlier run was restored. Always comes with the status IdSuccess. */
} talix_event_code;

/**
 * A product configuration that the library owns; never freed by the host. There is one handle a process, and every
 * talix_init and every talix_deinit empties it, also one that only counts: the talix_set_product_ functions for texts
 * ignore it then, and talix_set_product_config must not be given it before talix_create_product_config has filled it
 * again. A host that starts with talix_init also stops with talix_deinit: handles and callbacks do not follow
 * IdServicesMgr::Uninitialize.
 */
typedef struct talix_product_config_slot* talix_product_config;

/**
 * Receives identity events, on the thread that calls talix_dispatch_events. event_code: a talix_event_code; status: a
 * talix_status_code; user_value: the one given with the callback. A callback must not throw. It should not add or
 * remove callbacks, nor call talix_init or talix_deinit; where it does, a callback that was removed is not called any
 * more, one that was added is called from the next event on, and talix_deinit ends the delivery.
 */
typedef void(TALIX_CALL* talix_event_callback)(int32_t event_code, int32_t status, void* user_value);

/**
 * @name Functions
 *
 * What holds for all of them:
 *
 * - "Client" is the plugin's client interface (ISSOClient), obtained afresh on each call; the slot is the place of the
 *   operation that a function forwards to.
 * - Checks are made in the order in which the results are listed; the first that fails decides.
 * - A function that is said to map answers IdFailed where the plugin answers a value below 1000; the others pass the
 *   plugin's value on as it is. A plugin that throws counts as IdFailed.
 * - A text is copied only if the caller's size is greater than its length in bytes; else the result is IdBufferTooSmall
 *   and the buffer stays untouched. The size that would do is not reported. A negative size counts as very large.
 * - The functions take no lock of their own and run the plugin on the caller's thread. Product configuration and event
 *   callbacks are process-wide state without protection: use those functions, and talix_init and talix_deinit, which
 *   change it too, from one thread at a time.
 * @{
 */

/**
 * Starts the library, or counts one more user of it: locates, verifies and loads the client plugin module. Empties the
 * product configuration handle with every call but one that the account refuses. Not from several threads at once.
 * IdSuccess; IdRunningAsLocalSystem under the local system account, with nothing started; IdClientUnavailable when the
 * plugin could not be obtained; IdFailed when the system is out of resources, when the plugin throws, or in a callback
 * that the plugin calls while it stops.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_init(void);

/**
 * Counts one user less, and stops the library with the last one. Forgets all event callbacks and empties the product
 * configuration handle with every call, also one that only counts or finds nothing started. Not from several threads at
 * once. Always IdSuccess, but IdFailed when the plugin throws while it ends its work, or in a callback that the plugin
 * calls while it starts or stops.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_deinit(void);

/**
 * Answers a question, see talix_boolean_key; 0 for any other key, and for keys 2 to 4 while the library is not
 * initialized. Without client: 0, but 1 for TALIX_KEY_TOKEN_EXPIRED. Slots 7, 12 and 9.
 */
ORLINDEX_API talix_bool TALIX_CALL talix_get_boolean(int32_t key);

/**
 * Fills the library's product configuration with an OAuth2 client ID and the scope that tokens are asked for, and
 * answers the handle to it; null while the library is not initialized. There is one such configuration; a null text
 * leaves what an earlier call set.
 */
ORLINDEX_API talix_product_config TALIX_CALL talix_create_product_config(const char* client_id, const char* scope);

/**
 * Sets the name of the product line (UTF-8) in the product configuration. Nothing happens for a null text, or a handle
 * that is null or empty. Forwards to no operation of the plugin: talix_set_product_config hands all texts over.
 */
ORLINDEX_API void TALIX_CALL talix_set_product_line_name(talix_product_config handle, const char* text);
/** Sets the identifier of the product's release, as talix_set_product_line_name does its text. */
ORLINDEX_API void TALIX_CALL talix_set_product_release_id(talix_product_config handle, const char* text);
/** Sets the identifier of the product's build, as talix_set_product_line_name does its text. */
ORLINDEX_API void TALIX_CALL talix_set_product_build_id(talix_product_config handle, const char* text);

/**
 * Tells the plugin which product asks (slot 2). IdNotInitialized; IdClientUnavailable without client; else the plugin's
 * result. The handle must come from talix_create_product_config after the last talix_init or talix_deinit: a null or
 * empty one is not caught, a null one not even without client.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_set_product_config(Server server, talix_product_config handle);

/**
 * Chooses how logins are carried out (slot 36). IdNotInitialized; IdApiUnavailable without client, or where the plugin
 * does not offer login modes; else the plugin's result.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_set_login_mode(talix_login_mode mode);

/** Signs the user in (slot 28). IdNotInitialized; IdClientUnavailable without client; else the plugin's result, mapped.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_login(void);

/** Signs the user out (slot 16). IdNotInitialized; IdClientUnavailable without client; else the plugin's result,
 * mapped.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_logout(talix_logout_flags flags);

/**
 * Writes the OAuth2 access token (slot 6), at most 4095 UTF-16 units. IdFailed for a null record; IdNotInitialized;
 * IdClientUnavailable without client; the plugin's result, mapped; IdBufferTooSmall. On a failure of the plugin or
 * without client the buffer receives what the plugin wrote, as a rule an empty text, if it has room for it. A null
 * buffer with a size that would do is an invalid argument of the runtime's bounded copy, which ends the process unless
 * the host installed an invalid-parameter handler.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_get_token(talix_buffer* token);

/** As talix_get_token, a null buffer too, but the plugin may wait for a token that is on its way. */
ORLINDEX_API talix_status_code TALIX_CALL talix_get_token_blocking(talix_buffer* token);

/**
 * Writes the OAuth2 ID token (slot 35), at most 4095 UTF-16 units. IdFailed for a null record; IdNotInitialized;
 * IdApiUnavailable without client, or where the plugin does not offer ID tokens; then as talix_get_token, a null buffer
 * too.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_get_id_token(talix_buffer* token);

/** Chooses the identity server (slot 15). IdNotInitialized; IdClientUnavailable; else the plugin's result, mapped. */
ORLINDEX_API talix_status_code TALIX_CALL talix_set_server(Server server);

/** The environment behind the server in use (slot 24). -1 while not initialized; 0 without client. */
ORLINDEX_API TALIXEnvironment TALIX_CALL talix_get_environment(void);

/** The identity server in use (slot 14). -1 while not initialized; 0 without client. */
ORLINDEX_API Server TALIX_CALL talix_get_server(void);

/**
 * Fills the record with the attributes of the signed-in user (slot 3). IdFailed for a null record, or one in which no
 * attribute has both a buffer and a capacity; IdNotInitialized; IdFailed without client; else the plugin's result,
 * mapped.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_get_user_info(talix_user_info* info);

/**
 * Writes an address that opens uri in the user's session (slot 4), at most 2047 UTF-16 units. The plugin gives the flag
 * its meaning. IdFailed for a null uri or record, a null buffer or a size of 0; IdNotInitialized; IdFailed without
 * client; the plugin's result, mapped, with the buffer untouched unless it is IdSuccess; IdBufferTooSmall.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_get_session_uri(const char* uri, uint16_t flag, talix_buffer* out);

/**
 * Names the host's top-level window (an HWND), which the plugin's dialogs belong to (slot 30). IdInvalidHostWindow for
 * a null one; IdNotInitialized; else IdSuccess, also without client.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_set_host(void* window);

/** Not supported: always IdNotSupported. */
ORLINDEX_API talix_status_code TALIX_CALL talix_set_process_id(int process_id);

/**
 * Registers a callback for identity events. A callback is stored once: adding it again replaces its user value. The
 * first call also has the plugin report events (slot 17); with a null callback that is all that happens.
 * IdNotInitialized, unless events are reported already; IdSuccess; IdFailed when the system is out of memory.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_add_event_callback(talix_event_callback callback, void* user_value);

/**
 * Removes a callback; a null or unknown one removes nothing. With the last one the plugin stops reporting events (slot
 * 18). IdNotInitialized; IdSuccess.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_remove_event_callback(talix_event_callback callback);

/**
 * Delivers waiting events to the callbacks, on this thread (slot 25). IdNotInitialized; IdClientUnavailable without
 * client; else the plugin's result.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_dispatch_events(void);

/**
 * Whether the plugin holds settings for a proxy (slot 19). IdNotInitialized; IdInvalidProxyPort for a non-empty host
 * with a port outside 1..65535; IdClientUnavailable without client; else the plugin's result, mapped.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_has_proxy_info(const char* host, int32_t port);

/**
 * Fills the record with the settings of a proxy (slot 20). IdInvalidProxyRecord for a null record; IdInvalidProxyPort
 * for a non-empty host with a port outside 1..65535; IdNotInitialized; IdClientUnavailable without client; else the
 * plugin's result, mapped.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_get_proxy_info(talix_proxy_info* info, const char* host, int32_t port);

/**
 * Stores the settings of a proxy (slot 21). IdInvalidProxyRecord for a null record; IdInvalidProxyHost for a host that
 * is null, of size 0 or empty; IdInvalidProxyPort for a port outside 1..65535; IdNotInitialized; IdClientUnavailable
 * without client; else the plugin's result, mapped.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_set_proxy_info(const talix_proxy_info* info);

/** Forgets all proxy settings (slot 22). IdNotInitialized; IdClientUnavailable; else the plugin's result, mapped. */
ORLINDEX_API talix_status_code TALIX_CALL talix_clear_proxy_info(void);

/**
 * Writes the user's profile (slot 23). The plugin writes into the record's buffer itself and leaves in size what it
 * needed or wrote, in bytes. IdInvalidProfileRecord for a null record; IdNotInitialized; IdClientUnavailable without
 * client; else the plugin's result.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_get_profile_info(talix_buffer* profile);

/**
 * Writes the version of the installed server application, as the registry names it, and the library's own. Needs no
 * initialization. IdSuccess for a null record, with nothing written; IdInvalidVersionRecord where neither text has both
 * a buffer and a size; IdFailed when the system is out of memory; else IdSuccess. Both texts are written once one of
 * them is usable: a null or too small buffer is then an invalid argument of the runtime's bounded copy, which ends the
 * process unless the host installed an invalid-parameter handler.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_get_versions(talix_versions* versions);

/** Asks for a new access token (slot 13). IdNotInitialized; IdClientUnavailable without client; else the plugin's
 * result. */
ORLINDEX_API talix_status_code TALIX_CALL talix_refresh_token(void);

/**
 * Asks all server processes to quit and waits at most so many milliseconds (ISSOServerManager slot 17).
 * IdNotInitialized; IdServerQuitFailed without a server-process interface, or where not all did; else IdSuccess.
 */
ORLINDEX_API talix_status_code TALIX_CALL talix_quit_server_process(int milliseconds);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
