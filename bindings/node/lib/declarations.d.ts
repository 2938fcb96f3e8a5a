// The values of the flat interface. Made from talix.h by bindings/generate.py. Do not edit.

/** The version of the library that this package belongs to; it needs this or a later one of the major version. */
export declare const libraryVersion: string;

/** Result of an operation, a signed 32-bit number. The library returns the values named here. The client plugin module may return other values of 1000 and above, which pass through unchanged. */
export declare const StatusCode: {
    /** The call succeeded. */
    readonly IdSuccess: 1000;
    /** The library is not initialized. */
    readonly IdNotInitialized: 2000;
    /** A required argument or the client interface is missing, the plugin returned a value below 1000 or threw, or the system is out of memory. */
    readonly IdFailed: 3004;
    /** The client plugin module or its client interface could not be obtained. */
    readonly IdClientUnavailable: 3005;
    /** A null OAuth2 client ID. */
    readonly IdInvalidClientId: 3006;
    /** The caller's buffer cannot hold the text and its terminating zero. */
    readonly IdBufferTooSmall: 3017;
    /** A null window handle. */
    readonly IdInvalidHostWindow: 3018;
    /** The operation is not supported. */
    readonly IdNotSupported: 3021;
    /** The process runs under the local system account. */
    readonly IdRunningAsLocalSystem: 3025;
    /** A version record in which neither text buffer is usable. */
    readonly IdInvalidVersionRecord: 3041;
    /** A null proxy record. */
    readonly IdInvalidProxyRecord: 3047;
    /** A proxy host that is null, of size 0 or empty. */
    readonly IdInvalidProxyHost: 3050;
    /** A proxy port outside 1..65535 with a non-empty host. */
    readonly IdInvalidProxyPort: 3052;
    /** A null profile record. */
    readonly IdInvalidProfileRecord: 3064;
    /** The plugin does not support the feature, or has no client interface. */
    readonly IdApiUnavailable: 3071;
    /** No server-process interface, or not all server processes quit in time. */
    readonly IdServerQuitFailed: 3080;
};
export type StatusCode = (typeof StatusCode)[keyof typeof StatusCode];

/** Identity server (environment) that the client uses. The client plugin module defines the values; the names here must agree with the plugin in use. */
export declare const Server: {
    /** No server: the library is not initialized, or a name is unknown. */
    readonly UNAVAILABLE: -1;
    /** The service for users. */
    readonly PRODUCTION: 0;
    /** The service for testing releases. */
    readonly STAGING: 1;
    /** The service for development. */
    readonly DEVELOPMENT: 2;
};
export type Server = (typeof Server)[keyof typeof Server];

/** Kind of environment behind the server in use. The plugin defines the values. */
export declare const Environment: {
    /** The library is not initialized. */
    readonly UNAVAILABLE: -1;
    /** The plugin has no client interface. */
    readonly NONE: 0;
    /** A service for users. */
    readonly PRODUCTION: 1;
    /** A service for testing releases. */
    readonly STAGING: 2;
    /** A service for development. */
    readonly DEVELOPMENT: 3;
};
export type Environment = (typeof Environment)[keyof typeof Environment];

/** How a login is carried out. Passed to the plugin unchanged. */
export declare const LoginMode: {
    /** The plugin chooses. */
    readonly DEFAULT: 0;
    /** In a window of the server application. */
    readonly EMBEDDED: 1;
    /** In the user's browser. */
    readonly BROWSER: 2;
};
export type LoginMode = (typeof LoginMode)[keyof typeof LoginMode];

/** How a logout is carried out. Passed to the plugin unchanged. */
export declare const LogoutFlags: {
    /** Observers are asked first and may refuse. */
    readonly DEFAULT: 0;
    /** Observers are not asked. */
    readonly FORCE: 1;
};
export type LogoutFlags = (typeof LogoutFlags)[keyof typeof LogoutFlags];

/** Keys of talix_get_boolean. */
export declare const BooleanKey: {
    /** The library is initialized. */
    readonly INITIALIZED: 1;
    /** A user is signed in. */
    readonly LOGGED_IN: 2;
    /** The login is valid. */
    readonly LOGIN_VALID: 3;
    /** The OAuth2 access token has expired. */
    readonly TOKEN_EXPIRED: 4;
};
export type BooleanKey = (typeof BooleanKey)[keyof typeof BooleanKey];

/** Event codes that callbacks receive. */
export declare const EventCode: {
    /** The user signed in. */
    readonly LOGGED_IN: 0;
    /** The user signed out. */
    readonly LOGGED_OUT: 1;
    /** An account was created during a login. */
    readonly ACCOUNT_CREATED: 2;
    /** The access token was refreshed. */
    readonly TOKEN_REFRESHED: 3;
    /** An access token became available. */
    readonly TOKEN_AVAILABLE: 4;
    /** A login from an earlier run was restored. Always comes with the status IdSuccess. */
    readonly LOGIN_RESTORED: 5;
};
export type EventCode = (typeof EventCode)[keyof typeof EventCode];
