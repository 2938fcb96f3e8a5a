'use strict';

const { EventEmitter } = require('node:events');
const { BooleanKey, EventCode, LogoutFlags, StatusCode, meanings } = require('./declarations.js');
const { OrlindexError, useAfterClose } = require('./errors.js');
const { textOf } = require('./library.js');
const { Session } = require('./session.js');

// The library passes at most 4095 and 2047 UTF-16 units, each of at most three bytes in UTF-8, and a zero.
const tokenSize = 4095 * 3 + 1;
const addressSize = 2047 * 3 + 1;
const firstSize = 1024;
const largestSize = 16 * 1024 * 1024;

const eventNames = new Map([
    [EventCode.LOGGED_IN, 'signedIn'],
    [EventCode.LOGGED_OUT, 'signedOut'],
    [EventCode.ACCOUNT_CREATED, 'accountCreated'],
    [EventCode.TOKEN_REFRESHED, 'tokenRefreshed'],
    [EventCode.TOKEN_AVAILABLE, 'tokenAvailable'],
    [EventCode.LOGIN_RESTORED, 'loginRestored'],
]);

/** A text that C can hold. */
function text(value, name) {
    if (value === undefined || value === null)
        return null;
    if (typeof value !== 'string')
        throw new TypeError(`${name} must be a string`);
    if (value.includes('\0'))
        throw new TypeError(`${name} must not contain a null character`);
    return value;
}

/** A record whose texts are buffers, and what stands in them afterwards. */
class TextRecord {
    constructor(fields, size) {
        this.buffers = Object.fromEntries(fields.map(field => [field, Buffer.alloc(size)]));
        this.record = Object.fromEntries(fields.flatMap(field => [[field, this.buffers[field]], [`${field}_size`, size]]));
    }

    texts() {
        return Object.fromEntries(Object.entries(this.buffers).map(([field, buffer]) => [field, textOf(buffer)]));
    }
}

class OrlindexClient extends EventEmitter {
    #session;
    #timer;
    #reported;
    #pumping = false;

    constructor(session, interval) {
        super();
        if (!(session instanceof Session))
            throw new TypeError('use OrlindexClient.open');
        this.#session = session;
        this.#timer = setInterval(() => this.#pump(), interval);
    }

    static async open(options) {
        const clientId = text(options.clientId, 'clientId');
        const scope = text(options.scope, 'scope');
        if (clientId === null || scope === null)
            throw new TypeError('clientId and scope are required');
        const product = { line_name: text(options.productLineName, 'productLineName'),
            release_id: text(options.productReleaseId, 'productReleaseId'),
            build_id: text(options.productBuildId, 'productBuildId') };
        const session = await Session.start(options.library);
        try {
            if (options.window !== undefined)
                await session.check('talix_set_host', options.window);
            if (options.server !== undefined)
                await session.check('talix_set_server', options.server);
            const handle = await session.invoke('talix_create_product_config', clientId, scope);
            if (!handle)
                throw new OrlindexError('talix_create_product_config', StatusCode.IdFailed);
            for (const [part, value] of Object.entries(product))
                await session.invoke(`talix_set_product_${part}`, handle, value);
            await session.check('talix_set_product_config', await session.invoke('talix_get_server'), handle);
            if (options.loginMode !== undefined)
                await session.check('talix_set_login_mode', options.loginMode);
        } catch (error) {
            await session.stop();
            throw error;
        }
        return new OrlindexClient(session, options.dispatchInterval ?? 100);
    }

    // --- Lifetime ---------------------------------------------------------------------------------------------------

    get closed() {
        return this.#session.closed;
    }

    ref() {
        this.#timer.ref();
        return this;
    }

    unref() {
        this.#timer.unref();
        return this;
    }

    async close() {
        clearInterval(this.#timer);
        await this.#session.stop();
    }

    // --- Login ------------------------------------------------------------------------------------------------------

    async signIn({ signal } = {}) {
        await this.#session.signIn(signal);
    }

    async signOut({ force = false } = {}) {
        await this.#session.check('talix_logout', force ? LogoutFlags.FORCE : LogoutFlags.DEFAULT);
    }

    async isSignedIn() {
        return await this.#session.invoke('talix_get_boolean', BooleanKey.LOGGED_IN) !== 0;
    }

    async isLoginValid() {
        return await this.#session.invoke('talix_get_boolean', BooleanKey.LOGIN_VALID) !== 0;
    }

    async isTokenExpired() {
        return await this.#session.invoke('talix_get_boolean', BooleanKey.TOKEN_EXPIRED) !== 0;
    }

    // --- Tokens and user --------------------------------------------------------------------------------------------

    async #text(name, size, ...parameters) {
        const buffer = Buffer.alloc(size);
        await this.#session.check(name, ...parameters, { buffer, size });
        return textOf(buffer);
    }

    accessToken({ wait = false } = {}) {
        return this.#text(wait ? 'talix_get_token_blocking' : 'talix_get_token', tokenSize);
    }

    idToken() {
        return this.#text('talix_get_id_token', tokenSize);
    }

    async refreshToken() {
        await this.#session.check('talix_refresh_token');
    }

    async sessionUri(uri, flag = 0) {
        return this.#text('talix_get_session_uri', addressSize, text(uri, 'uri'), flag);
    }

    /** Calls with larger and larger buffers. call: gets the size, and resolves to [status, result, needed size]. */
    async #grow(name, call) {
        for (let size = firstSize;;) {
            const [status, result, needed] = await call(size);
            if (status === StatusCode.IdSuccess)
                return result();
            size = Math.max(size * 2, needed ?? 0);
            if (status !== StatusCode.IdBufferTooSmall || size > largestSize)
                throw new OrlindexError(name, status);
        }
    }

    userInfo() {
        return this.#grow('talix_get_user_info', async size => {
            const fields = ['user_id', 'user_name', 'first_name', 'last_name', 'email', 'display_name'];
            const texts = new TextRecord(fields, size);
            const status = await this.#session.invoke('talix_get_user_info', { reserved: 0, ...texts.record });
            return [status, () => {
                const found = texts.texts();
                return { userId: found.user_id, userName: found.user_name, firstName: found.first_name,
                    lastName: found.last_name, email: found.email, displayName: found.display_name };
            }];
        });
    }

    profile() {
        return this.#grow('talix_get_profile_info', async size => {
            const buffer = Buffer.alloc(size);
            const record = { buffer, size };
            const status = await this.#session.invoke('talix_get_profile_info', record);
            // The plugin sets the size to what it needs.
            return [status, () => textOf(buffer), record.size + 1];
        });
    }

    // --- Environment ------------------------------------------------------------------------------------------------

    getServer() {
        return this.#session.invoke('talix_get_server');
    }

    async setServer(server) {
        await this.#session.check('talix_set_server', server);
    }

    getEnvironment() {
        return this.#session.invoke('talix_get_environment');
    }

    async setWindow(window) {
        await this.#session.check('talix_set_host', window);
    }

    async versions() {
        const texts = new TextRecord(['server_version', 'sdk_version'], firstSize);
        await this.#session.check('talix_get_versions', texts.record);
        const found = texts.texts();
        return { server: found.server_version, library: found.sdk_version };
    }

    async quitServerProcess(milliseconds) {
        await this.#session.check('talix_quit_server_process', milliseconds);
    }

    // --- Proxies ----------------------------------------------------------------------------------------------------

    async hasProxy(host = null, port = 0) {
        const status = await this.#session.invoke('talix_has_proxy_info', text(host, 'host'), port);
        // A code that only the plugin knows means that there are no settings.
        if (status !== StatusCode.IdSuccess && meanings.has(status))
            throw new OrlindexError('talix_has_proxy_info', status);
        return status === StatusCode.IdSuccess;
    }

    async proxy(host = null, port = 0) {
        return this.#grow('talix_get_proxy_info', async size => {
            const texts = new TextRecord(['host', 'user_name', 'password'], size);
            const record = { ...texts.record, reserved: 0, port: 0 };
            const status = await this.#session.invoke('talix_get_proxy_info', record, text(host, 'host'), port);
            return [status, () => {
                const found = texts.texts();
                return { host: found.host, port: record.port, userName: found.user_name, password: found.password };
            }];
        });
    }

    async setProxy({ host, port, userName = '', password = '' }) {
        const record = { reserved: 0, port };
        for (const [field, value] of [['host', host], ['user_name', userName], ['password', password]]) {
            record[field] = Buffer.from(`${text(value, field)}\0`, 'utf8');
            record[`${field}_size`] = record[field].length;
        }
        const buffers = [record.host, record.user_name, record.password];
        await this.#session.check('talix_set_proxy_info', record);
        // The library reads the buffers during the call: they are used here so that they live as long.
        buffers.length = 0;
    }

    async clearProxies() {
        await this.#session.check('talix_clear_proxy_info');
    }

    // --- Events -----------------------------------------------------------------------------------------------------

    async dispatchEvents() {
        for (const { code, status } of await this.#session.takeEvents()) {
            // Each by itself: a listener that throws is an uncaught exception, and the other events follow all the same.
            setImmediate(() => {
                this.emit('event', { code, status });
                if (eventNames.has(code))
                    this.emit(eventNames.get(code), status);
            });
        }
    }

    async #pump() {
        // A slow plugin must not get a queue of dispatches.
        if (this.closed || this.#pumping)
            return;
        this.#pumping = true;
        try {
            await this.dispatchEvents();
            this.#reported = undefined;
        } catch (error) {
            // Once, not ten times in each second. Closing meanwhile is no error.
            if (error.status !== this.#reported && error.code !== useAfterClose().code)
                process.emitWarning(error);
            this.#reported = error.status;
        } finally {
            this.#pumping = false;
        }
    }
}

if (Symbol.asyncDispose)
    OrlindexClient.prototype[Symbol.asyncDispose] = OrlindexClient.prototype.close;

module.exports = { OrlindexClient };
