// The flat interface of Orlindex.dll. Made from talix.h by bindings/generate.py. Do not edit.

'use strict';

exports.libraryFile = 'Orlindex.dll';
exports.libraryVersion = '1.11.13.3';

/** Result of an operation, a signed 32-bit number. The library returns the values named here. The client plugin module may return other values of 1000 and above, which pass through unchanged. */
exports.StatusCode = Object.freeze({
    /** The call succeeded. */
    IdSuccess: 1000,
    /** The library is not initialized. */
    IdNotInitialized: 2000,
    /** A required argument or the client interface is missing, the plugin returned a value below 1000 or threw, or the system is out of memory. */
    IdFailed: 3004,
    /** The client plugin module or its client interface could not be obtained. */
    IdClientUnavailable: 3005,
    /** A null OAuth2 client ID. */
    IdInvalidClientId: 3006,
    /** The caller's buffer cannot hold the text and its terminating zero. */
    IdBufferTooSmall: 3017,
    /** A null window handle. */
    IdInvalidHostWindow: 3018,
    /** The operation is not supported. */
    IdNotSupported: 3021,
    /** The process runs under the local system account. */
    IdRunningAsLocalSystem: 3025,
    /** A version record in which neither text buffer is usable. */
    IdInvalidVersionRecord: 3041,
    /** A null proxy record. */
    IdInvalidProxyRecord: 3047,
    /** A proxy host that is null, of size 0 or empty. */
    IdInvalidProxyHost: 3050,
    /** A proxy port outside 1..65535 with a non-empty host. */
    IdInvalidProxyPort: 3052,
    /** A null profile record. */
    IdInvalidProfileRecord: 3064,
    /** The plugin does not support the feature, or has no client interface. */
    IdApiUnavailable: 3071,
    /** No server-process interface, or not all server processes quit in time. */
    IdServerQuitFailed: 3080,
});

/** Identity server (environment) that the client uses. The client plugin module defines the values; the names here must agree with the plugin in use. */
exports.Server = Object.freeze({
    /** No server: the library is not initialized, or a name is unknown. */
    UNAVAILABLE: -1,
    /** The service for users. */
    PRODUCTION: 0,
    /** The service for testing releases. */
    STAGING: 1,
    /** The service for development. */
    DEVELOPMENT: 2,
});

/** Kind of environment behind the server in use. The plugin defines the values. */
exports.Environment = Object.freeze({
    /** The library is not initialized. */
    UNAVAILABLE: -1,
    /** The plugin has no client interface. */
    NONE: 0,
    /** A service for users. */
    PRODUCTION: 1,
    /** A service for testing releases. */
    STAGING: 2,
    /** A service for development. */
    DEVELOPMENT: 3,
});

/** How a login is carried out. Passed to the plugin unchanged. */
exports.LoginMode = Object.freeze({
    /** The plugin chooses. */
    DEFAULT: 0,
    /** In a window of the server application. */
    EMBEDDED: 1,
    /** In the user's browser. */
    BROWSER: 2,
});

/** How a logout is carried out. Passed to the plugin unchanged. */
exports.LogoutFlags = Object.freeze({
    /** Observers are asked first and may refuse. */
    DEFAULT: 0,
    /** Observers are not asked. */
    FORCE: 1,
});

/** Keys of talix_get_boolean. */
exports.BooleanKey = Object.freeze({
    /** The library is initialized. */
    INITIALIZED: 1,
    /** A user is signed in. */
    LOGGED_IN: 2,
    /** The login is valid. */
    LOGIN_VALID: 3,
    /** The OAuth2 access token has expired. */
    TOKEN_EXPIRED: 4,
});

/** Event codes that callbacks receive. */
exports.EventCode = Object.freeze({
    /** The user signed in. */
    LOGGED_IN: 0,
    /** The user signed out. */
    LOGGED_OUT: 1,
    /** An account was created during a login. */
    ACCOUNT_CREATED: 2,
    /** The access token was refreshed. */
    TOKEN_REFRESHED: 3,
    /** An access token became available. */
    TOKEN_AVAILABLE: 4,
    /** A login from an earlier run was restored. Always comes with the status IdSuccess. */
    LOGIN_RESTORED: 5,
});

/** The meaning of each status code. */
exports.meanings = new Map([
    [1000, 'The call succeeded.'],
    [2000, 'The library is not initialized.'],
    [3004, 'A required argument or the client interface is missing, the plugin returned a value below 1000 or threw, or the system is out of memory.'],
    [3005, 'The client plugin module or its client interface could not be obtained.'],
    [3006, 'A null OAuth2 client ID.'],
    [3017, 'The caller\'s buffer cannot hold the text and its terminating zero.'],
    [3018, 'A null window handle.'],
    [3021, 'The operation is not supported.'],
    [3025, 'The process runs under the local system account.'],
    [3041, 'A version record in which neither text buffer is usable.'],
    [3047, 'A null proxy record.'],
    [3050, 'A proxy host that is null, of size 0 or empty.'],
    [3052, 'A proxy port outside 1..65535 with a non-empty host.'],
    [3064, 'A null profile record.'],
    [3071, 'The plugin does not support the feature, or has no client interface.'],
    [3080, 'No server-process interface, or not all server processes quit in time.'],
]);

/** The fields of each record, with their types, in their order. */
exports.records = {
    talix_user_info: { reserved: 'int64_t', user_id: 'void*', user_id_size: 'int32_t', user_name: 'void*', user_name_size: 'int32_t', first_name: 'void*', first_name_size: 'int32_t', last_name: 'void*', last_name_size: 'int32_t', email: 'void*', email_size: 'int32_t', display_name: 'void*', display_name_size: 'int32_t' },
    talix_proxy_info: { host: 'void*', host_size: 'int32_t', user_name: 'void*', user_name_size: 'int32_t', password: 'void*', password_size: 'int32_t', reserved: 'int32_t', port: 'int32_t' },
    talix_buffer: { buffer: 'void*', size: 'int32_t' },
    talix_versions: { server_version: 'void*', server_version_size: 'int32_t', sdk_version: 'void*', sdk_version_size: 'int32_t' },
};

/** The type of the result and those of the arguments. */
exports.callbacks = {
    talix_event_callback: ['void', ['int32_t', 'int32_t', 'void*']],
};
exports.functions = {
    talix_init: ['int32_t', []],
    talix_deinit: ['int32_t', []],
    talix_get_boolean: ['uint8_t', ['int32_t']],
    talix_create_product_config: ['void*', ['str', 'str']],
    talix_set_product_line_name: ['void', ['void*', 'str']],
    talix_set_product_release_id: ['void', ['void*', 'str']],
    talix_set_product_build_id: ['void', ['void*', 'str']],
    talix_set_product_config: ['int32_t', ['int32_t', 'void*']],
    talix_set_login_mode: ['int32_t', ['int32_t']],
    talix_login: ['int32_t', []],
    talix_logout: ['int32_t', ['int32_t']],
    talix_get_token: ['int32_t', ['talix_buffer*']],
    talix_get_token_blocking: ['int32_t', ['talix_buffer*']],
    talix_get_id_token: ['int32_t', ['talix_buffer*']],
    talix_set_server: ['int32_t', ['int32_t']],
    talix_get_environment: ['int32_t', []],
    talix_get_server: ['int32_t', []],
    talix_get_user_info: ['int32_t', ['talix_user_info*']],
    talix_get_session_uri: ['int32_t', ['str', 'uint16_t', 'talix_buffer*']],
    talix_set_host: ['int32_t', ['void*']],
    talix_set_process_id: ['int32_t', ['int']],
    talix_add_event_callback: ['int32_t', ['talix_event_callback*', 'void*']],
    talix_remove_event_callback: ['int32_t', ['talix_event_callback*']],
    talix_dispatch_events: ['int32_t', []],
    talix_has_proxy_info: ['int32_t', ['str', 'int32_t']],
    talix_get_proxy_info: ['int32_t', ['talix_proxy_info*', 'str', 'int32_t']],
    talix_set_proxy_info: ['int32_t', ['talix_proxy_info*']],
    talix_clear_proxy_info: ['int32_t', []],
    talix_get_profile_info: ['int32_t', ['talix_buffer*']],
    talix_get_versions: ['int32_t', ['talix_versions*']],
    talix_refresh_token: ['int32_t', []],
    talix_quit_server_process: ['int32_t', ['int']],
};
