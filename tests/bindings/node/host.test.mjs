// The package with the real library, plugin module and agent: sign-in, events, tokens, errors, lifetime.

import assert from 'node:assert/strict';
import { after, before, test } from 'node:test';
import { EventCode, LogoutFlags, OrlindexClient, OrlindexError, Server, StatusCode, libraryVersion } from 'orlindex';

let client;
const heard = [];

const open = options => OrlindexClient.open({ clientId: 'my-client-id', scope: 'openid profile', ...options });

/** The event loop's next turns, until the condition holds. The test runner ends a test that waits for ever. */
async function until(condition) {
    while (!condition())
        await new Promise(resolve => setTimeout(resolve, 1));
}

const claimsOf = token => JSON.parse(Buffer.from(token.split('.')[1], 'base64url').toString());

before(async () => {
    client = await open({ productLineName: 'Jürgen 中文', productReleaseId: '1', productBuildId: '2', dispatchInterval: 10 });
    for (const name of ['signedIn', 'signedOut', 'tokenRefreshed', 'tokenAvailable'])
        client.on(name, status => heard.push([name, status]));
});

after(async () => {
    await client.quitServerProcess(60000);
    await client.close();
});

test('nobody is signed in at first', async () => {
    assert.equal(await client.isSignedIn(), false);
    await assert.rejects(client.accessToken(), { name: 'OrlindexError', operation: 'talix_get_token', status: 4001, statusName: '' });
    await assert.rejects(client.signOut(), OrlindexError);
});

test('signs in, and the event comes by itself', async () => {
    heard.length = 0;
    await client.signIn();
    assert.equal(await client.isSignedIn(), true);
    assert.equal(await client.isLoginValid(), true);
    assert.equal(await client.isTokenExpired(), false);
    await until(() => heard.length >= 2);
    assert.deepEqual(heard, [['signedIn', StatusCode.IdSuccess], ['tokenAvailable', StatusCode.IdSuccess]]);
});

test('tokens', async () => {
    const access = claimsOf(await client.accessToken());
    assert.equal(access.client_id, 'my-client-id');
    assert.equal(claimsOf(await client.accessToken({ wait: true })).scope, 'openid profile');
    assert.equal(claimsOf(await client.idToken()).name, 'Sam Example (simulator)');
    heard.length = 0;
    await client.refreshToken();
    await until(() => heard.some(([name]) => name === 'tokenRefreshed'));
    assert.notEqual(claimsOf(await client.accessToken()).jti, access.jti);
});

test('the user', async () => {
    assert.deepEqual(await client.userInfo(), {
        userId: 'simulator-0001', userName: 'sam.example@simulator', firstName: 'Sam', lastName: 'Example',
        email: 'sam.example@simulator.invalid', displayName: 'Sam Example (simulator)',
    });
    assert.equal(JSON.parse(await client.profile()).company, 'Example Works');
    assert.match(await client.sessionUri('https://example.invalid/ü'), /^https:\/\//);
    await assert.rejects(client.sessionUri('no address'), { status: 4011 });
});

test('server, environment and versions', async () => {
    assert.equal(await client.getServer(), Server.PRODUCTION);
    assert.equal(await client.getEnvironment(), 1);
    assert.equal((await client.versions()).library, libraryVersion);
    await assert.rejects(client.setServer(77), { name: 'OrlindexError' });
    await client.setWindow(1n);
});

test('proxies', async () => {
    assert.equal(await client.hasProxy('proxy.example', 3128), false);
    const proxy = { host: 'proxy.example', port: 3128, userName: 'Jürgen', password: '中文' };
    await client.setProxy(proxy);
    assert.equal(await client.hasProxy('proxy.example', 3128), true);
    assert.deepEqual(await client.proxy('proxy.example', 3128), proxy);
    await client.clearProxies();
    assert.equal(await client.hasProxy('proxy.example', 3128), false);
    await assert.rejects(client.hasProxy('proxy.example', 0), { statusName: 'IdInvalidProxyPort' });
    await assert.rejects(client.setProxy({ host: '', port: 1 }), { statusName: 'IdInvalidProxyHost' });
});

test('wrong arguments are refused', async () => {
    await assert.rejects(client.sessionUri('one\0two'), TypeError);
    await assert.rejects(client.sessionUri(7), TypeError);
    await assert.rejects(OrlindexClient.open({ clientId: 'my-client-id' }), TypeError);
    await assert.rejects(open(), /another client of this process is open/);
});

test('many calls at the same time', async () => {
    const names = await Promise.all(Array.from({ length: 100 }, async () => (await client.userInfo()).userName));
    assert.deepEqual(new Set(names), new Set(['sam.example@simulator']));
});

test('garbage collection during a callback', async () => {
    const collected = [];
    const listener = ({ code }) => {
        globalThis.gc();
        collected.push(code);
    };
    client.on('event', listener);
    // Also while the library is inside the callback of the client, which stores the event.
    const push = Array.prototype.push;
    let inside = 0;
    Array.prototype.push = function (...items) {
        if (items[0]?.code === EventCode.TOKEN_REFRESHED) {
            globalThis.gc();
            ++inside;
        }
        return push.apply(this, items);
    };
    try {
        for (let i = 0; i < 20; ++i)
            await client.refreshToken();
        await until(() => collected.filter(code => code === EventCode.TOKEN_REFRESHED).length >= 20);
    } finally {
        Array.prototype.push = push;
    }
    assert.ok(inside >= 20, `${inside} collections inside the callback`);
    client.off('event', listener);
});

test('a listener that throws is an uncaught exception, and later events still come', async () => {
    const thrown = new Promise(resolve => {
        process.setUncaughtExceptionCaptureCallback(resolve);
    });
    client.once('tokenRefreshed', () => {
        throw new Error('from a listener');
    });
    await client.refreshToken();
    assert.equal((await thrown).message, 'from a listener');
    process.setUncaughtExceptionCaptureCallback(null);
    heard.length = 0;
    await client.refreshToken();
    await until(() => heard.some(([name]) => name === 'tokenRefreshed'));
});

test('a thousand rounds do not grow', async () => {
    const rounds = async count => {
        for (let i = 0; i < count; ++i) {
            await client.signIn();
            await client.accessToken();
            await client.userInfo();
            await client.dispatchEvents();
            await client.signOut({ force: i % 2 === LogoutFlags.FORCE });
        }
        await client.dispatchEvents();
        await new Promise(setImmediate);
        // After the first collection, a thread of the runtime frees the unused buffers. Until then memoryUsage() counts them. The
        // second collection waits for that thread.
        globalThis.gc();
        globalThis.gc();
    };
    await rounds(300); // until the heaps have their size
    const first = process.memoryUsage();
    await rounds(1000);
    const last = process.memoryUsage();
    for (const [kind, most] of [['heapUsed', 1], ['external', 1], ['rss', 16]]) {
        const grown = last[kind] - first[kind];
        assert.ok(grown < most * 1024 * 1024, `${kind}: from ${first[kind]} to ${last[kind]}`);
    }
    console.log('count: rounds of the Node.js client = 1300');
});

test('use after close, and a new start', async () => {
    await client.signIn();
    await client.close();
    await client.close();
    assert.equal(client.closed, true);
    for (const call of ['signIn', 'accessToken', 'userInfo', 'isSignedIn', 'dispatchEvents', 'versions'])
        await assert.rejects(client[call](), { code: 'ERR_USE_AFTER_CLOSE' });
    for (let i = 0; i < 5; ++i) {
        client = await open();
        assert.equal(await client.isSignedIn(), true);
        if (i < 4)
            await client.close();
    }
});
