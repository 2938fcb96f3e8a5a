/// <reference types="node" />

import { EventEmitter } from 'node:events';
import { BooleanKey, Environment, EventCode, LoginMode, LogoutFlags, Server, StatusCode, libraryVersion } from './declarations';

export { BooleanKey, Environment, EventCode, LoginMode, LogoutFlags, Server, StatusCode, libraryVersion };

export interface OpenOptions {
    /** OAuth2 client ID of the product. */
    clientId: string;
    /** Scope of its tokens. */
    scope: string;
    /** Identity server; default: the one in use. The plugin may know values without a name here. */
    server?: Server | number;
    loginMode?: LoginMode | number;
    productLineName?: string;
    productReleaseId?: string;
    productBuildId?: string;
    /** Handle (HWND) of the window that owns the plugin's dialogs. */
    window?: bigint | number;
    /** Milliseconds between two deliveries of events; default: 100. */
    dispatchInterval?: number;
    /** Path of Orlindex.dll; default: in the folder of the main script, or else in that of the executable. */
    library?: string;
}

/** Attributes of the signed-in user. Empty if the plugin does not know them. */
export interface UserInfo {
    userId: string;
    userName: string;
    firstName: string;
    lastName: string;
    email: string;
    displayName: string;
}

/** Settings of one proxy server. */
export interface Proxy {
    host: string;
    port: number;
    userName?: string;
    password?: string;
}

export interface Versions {
    /** Of the installed server application; empty if none is found. */
    server: string;
    /** Of the library. */
    library: string;
}

/** The listeners' arguments. status is a StatusCode, or another code of the plugin. */
export interface OrlindexEvents {
    signedIn: [status: number];
    signedOut: [status: number];
    accountCreated: [status: number];
    tokenRefreshed: [status: number];
    tokenAvailable: [status: number];
    loginRestored: [status: number];
    /** Every event, also one without a name of its own. code is an EventCode. */
    event: [event: { code: number; status: number }];
}

/**
 * The library, started for one product. One client can be open in a process.
 *
 * The calls run on other threads and do not block the event loop. A promise is rejected with an OrlindexError if the library
 * returns another code than IdSuccess, and with an Error of the code ERR_USE_AFTER_CLOSE after close(). A listener that throws is
 * an uncaught exception, as with every EventEmitter that emits by itself.
 */
export class OrlindexClient extends EventEmitter {
    private constructor();

    /** Loads the library and starts it. OrlindexLibraryError if the library cannot be used. */
    static open(options: OpenOptions): Promise<OrlindexClient>;

    readonly closed: boolean;
    /** An open client keeps the program alive, because it emits events. After unref() it does not, as with a socket. */
    ref(): this;
    unref(): this;
    /** Ends a running sign-in, waits for running calls, and stops the library. The login itself stays. */
    close(): Promise<void>;

    /** Signs the user in. If the signal aborts, the sign-in ends, and the promise is rejected with the signal's reason. */
    signIn(options?: { signal?: AbortSignal }): Promise<void>;
    /** Signs the user out. force: observers are not asked and cannot refuse. */
    signOut(options?: { force?: boolean }): Promise<void>;
    isSignedIn(): Promise<boolean>;
    isLoginValid(): Promise<boolean>;
    isTokenExpired(): Promise<boolean>;

    /** The OAuth2 access token. wait: for a token that is being obtained. */
    accessToken(options?: { wait?: boolean }): Promise<string>;
    /** The OAuth2 ID token. */
    idToken(): Promise<string>;
    /** Requests a new access token. */
    refreshToken(): Promise<void>;
    /** An address that opens uri in the user's session. The plugin defines the meaning of flag (16 bits). */
    sessionUri(uri: string, flag?: number): Promise<string>;
    userInfo(): Promise<UserInfo>;
    /** The user's profile, as the plugin words it. */
    profile(): Promise<string>;

    getServer(): Promise<number>;
    setServer(server: Server | number): Promise<void>;
    getEnvironment(): Promise<number>;
    /** Sets the window (HWND) that owns the plugin's dialogs. */
    setWindow(window: bigint | number): Promise<void>;
    versions(): Promise<Versions>;
    /** Asks all server processes to quit, and waits at most this time for them. */
    quitServerProcess(milliseconds: number): Promise<void>;

    /** Whether the plugin has settings for a proxy: false for a code that only the plugin knows. */
    hasProxy(host?: string | null, port?: number): Promise<boolean>;
    proxy(host?: string | null, port?: number): Promise<Proxy>;
    setProxy(proxy: Proxy): Promise<void>;
    clearProxies(): Promise<void>;

    /** Emits the events that wait now, instead of at the next interval. */
    dispatchEvents(): Promise<void>;

    on<E extends keyof OrlindexEvents>(event: E, listener: (...args: OrlindexEvents[E]) => void): this;
    once<E extends keyof OrlindexEvents>(event: E, listener: (...args: OrlindexEvents[E]) => void): this;
    off<E extends keyof OrlindexEvents>(event: E, listener: (...args: OrlindexEvents[E]) => void): this;
}

/** A function of the library returned another code than IdSuccess. */
export class OrlindexError extends Error {
    constructor(operation: string, status: number);
    readonly code: 'ERR_ORLINDEX_STATUS';
    /** The function, such as talix_login. */
    readonly operation: string;
    /** The status code. */
    readonly status: number;
    /** Its name; empty for a code of the client plugin module. */
    readonly statusName: string;
    readonly meaning: string;
}

/** Orlindex.dll could not be loaded, or is not the library that this package needs. */
export class OrlindexLibraryError extends Error {
    constructor(path: string, reason: string, remedy: string, options?: { cause?: unknown });
    readonly code: 'ERR_ORLINDEX_LIBRARY';
    /** The file that was tried. */
    readonly path: string;
    /** Why it cannot be used. */
    readonly reason: string;
    /** What to do. */
    readonly remedy: string;
}
