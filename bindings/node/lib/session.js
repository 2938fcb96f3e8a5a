// The library between start and stop: its process-wide state, and the calls that run in it.

'use strict';

const koffi = require('koffi');
const { BooleanKey, LogoutFlags, StatusCode } = require('./declarations.js');
const { OrlindexError, useAfterClose } = require('./errors.js');
const { eventCallback, load } = require('./library.js');

// The library has one product configuration and one list of callbacks for the process, whatever copy of this package runs.
const openSession = Symbol.for('orlindex.session');

// How long a cancellation waits for the sign-in to end before it asks again: the first request may come before the plugin's
// sign-in has begun to wait.
const cancelAgainMilliseconds = 200;

class Session {
    #functions;
    #calls = new Set();
    #callback;
    #events = [];
    #closing;
    #login;
    #dispatching = Promise.resolve();

    /** Loads the library, and starts it. */
    static async start(path) {
        if (globalThis[openSession])
            throw new Error('another client of this process is open; the library has one state for the process');
        const session = new Session();
        globalThis[openSession] = session;
        try {
            session.#functions = load(path);
            await session.check('talix_init');
        } catch (error) {
            globalThis[openSession] = undefined;
            throw error;
        }
        try {
            // Kept until the library has removed it. It only stores: nothing that it does can throw into the library.
            session.#callback = koffi.register((code, status) => { session.#events.push({ code, status }); }, eventCallback);
            await session.check('talix_add_event_callback', session.#callback, null);
        } catch (error) {
            await session.stop();
            throw error;
        }
        return session;
    }

    /** Calls a function on another thread. */
    #call(name, parameters) {
        const call = new Promise((resolve, reject) => {
            this.#functions[name].async(...parameters, (error, result) => (error ? reject(error) : resolve(result)));
        });
        const settled = () => this.#calls.delete(call);
        this.#calls.add(call);
        call.then(settled, settled);
        return call;
    }

    /** Calls a function, and resolves to its result. */
    async invoke(name, ...parameters) {
        if (this.#closing)
            throw useAfterClose();
        return this.#call(name, parameters);
    }

    /** Calls a function that returns a status code. */
    async check(name, ...parameters) {
        const status = await this.invoke(name, ...parameters);
        if (status !== StatusCode.IdSuccess)
            throw new OrlindexError(name, status);
    }

    get closed() {
        return this.#closing !== undefined;
    }

    /** Ends a running sign-in, waits until the library runs no call, and stops it. */
    stop() {
        this.#closing ??= (async () => {
            if (this.#login) {
                this.#login.abort.abort();
                await this.#login.done;
            }
            while (this.#calls.size > 0)
                await Promise.allSettled(this.#calls);
            await this.#call('talix_remove_event_callback', [this.#callback ?? null]);
            await this.#call('talix_deinit', []);
            if (this.#callback !== undefined)
                koffi.unregister(this.#callback);
            globalThis[openSession] = undefined;
        })();
        return this.#closing;
    }

    /** Signs in. If the signal aborts, ends the sign-in and rejects with the signal's reason. */
    async signIn(signal) {
        if (this.#closing)
            throw useAfterClose();
        if (this.#login)
            throw new Error('another sign-in runs');
        signal?.throwIfAborted();
        const abort = new AbortController();
        const ended = new AbortController();
        const forward = () => abort.abort(signal.reason);
        signal?.addEventListener('abort', forward, { once: true });
        const running = this.#call('talix_login', []);
        const cancelling = new Promise(resolve => {
            abort.signal.addEventListener('abort', () => resolve(this.#cancel(ended.signal)), { once: true });
            ended.signal.addEventListener('abort', () => resolve(), { once: true });
        });
        const done = running.finally(() => ended.abort()).then(() => cancelling, () => cancelling).catch(() => {});
        this.#login = { abort, done };
        let status;
        try {
            status = await running;
            await done;
        } finally {
            this.#login = undefined;
            signal?.removeEventListener('abort', forward);
        }
        if (status !== StatusCode.IdSuccess) {
            abort.signal.throwIfAborted();
            throw new OrlindexError('talix_login', status);
        }
    }

    /** Asks until the sign-in has ended: a logout ends a sign-in that waits for the user. */
    async #cancel(ended) {
        while (!ended.aborted) {
            if (!await this.#call('talix_get_boolean', [BooleanKey.LOGGED_IN]))
                await this.#call('talix_logout', [LogoutFlags.DEFAULT]);
            if (ended.aborted)
                return;
            await new Promise(resolve => {
                const timer = setTimeout(resolve, cancelAgainMilliseconds);
                ended.addEventListener('abort', () => {
                    clearTimeout(timer);
                    resolve();
                }, { once: true });
            });
        }
    }

    /** Resolves to the events that wait. The library does not allow that two threads dispatch. */
    takeEvents() {
        const taking = this.#dispatching.then(async () => {
            await this.check('talix_dispatch_events');
            return this.#events.splice(0);
        });
        this.#dispatching = taking.catch(() => {});
        return taking;
    }
}

module.exports = { Session };
