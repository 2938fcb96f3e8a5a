// The package on this machine against the stand-in, for what the real library does not do at a moment that a test can choose.

import assert from 'node:assert/strict';
import path from 'node:path';
import { afterEach, beforeEach, test } from 'node:test';
import koffi from 'koffi';
import { OrlindexClient } from 'orlindex';

const library = path.join(process.env.ORLINDEX_STANDIN, 'Orlindex.dll');
const loaded = koffi.load(library);
const control = {};
for (const name of ['reset', 'inside', 'starts', 'stopped_while_inside', 'stopped_with_callback'])
    control[name] = loaded.func(`standin_${name}`, 'int', []);
for (const name of ['hold_tokens', 'init_returns', 'login_waits', 'queue_event', 'user_signs_in', 'write_long_texts'])
    control[name] = loaded.func(`standin_${name}`, 'void', ['int']);
const open = () => OrlindexClient.open({ clientId: 'my-client-id', scope: 'openid', library, dispatchInterval: 1 });
const turn = () => new Promise(resolve => setTimeout(resolve, 1));

async function untilInside() {
    while (!control.inside())
        await turn();
}

beforeEach(() => control.reset());
afterEach(() => {
    assert.equal(control.starts(), 0, 'the library was not stopped as often as started');
    assert.equal(control.stopped_while_inside(), 0, 'the library was stopped during a call');
    assert.equal(control.stopped_with_callback(), 0, 'the callback was not removed before the stop');
});

test('close waits for running calls', async () => {
    const client = await open();
    control.hold_tokens(1);
    const token = client.accessToken();
    await untilInside();
    const closing = client.close();
    for (let i = 0; i < 50; ++i)
        await turn(); // A wrong stop would come now.
    assert.equal(control.starts(), 1);
    control.hold_tokens(0);
    await closing;
    assert.equal(await token, 'Jürgen 中文');
});

test('a cancellation that comes too early is repeated', async () => {
    const client = await open();
    for (const lost of [0, 1, 3]) {
        control.login_waits(lost);
        const abort = new AbortController();
        const login = client.signIn({ signal: abort.signal });
        login.catch(() => {});
        await untilInside();
        abort.abort();
        await assert.rejects(login, { name: 'AbortError' });
    }
    await client.close();
});

test('a cancellation does not sign out a user who just signed in', async () => {
    const client = await open();
    control.login_waits(0);
    const abort = new AbortController();
    const login = client.signIn({ signal: abort.signal });
    await untilInside();
    control.user_signs_in(0);
    abort.abort();
    for (let i = 0; i < 50; ++i)
        await turn(); // A wrong request to log out would come now.
    assert.equal(await client.isSignedIn(), true);
    control.user_signs_in(1);
    await login;
    assert.equal(await client.isSignedIn(), true);
    await client.close();
});

test('long texts get larger buffers', async () => {
    const client = await open();
    control.write_long_texts(1000000);
    assert.equal((await client.userInfo()).displayName, 'Jürgen 中文');
    assert.equal(await client.profile(), 'Jürgen 中文');
    assert.equal((await client.proxy()).host, 'Jürgen 中文');
    control.write_long_texts(2000000000);
    for (const call of ['userInfo', 'profile', 'proxy', 'accessToken'])
        await assert.rejects(client[call](), { name: 'OrlindexError', statusName: 'IdBufferTooSmall' });
    await client.close();
});

test('a failed start leaves nothing', async () => {
    control.init_returns(3005);
    await assert.rejects(open(), { status: 3005, message: /orlindex-doctor/ });
    control.reset();
    await assert.rejects(OrlindexClient.open({ clientId: 'my-client-id', scope: 'openid', library, loginMode: 1 }), { status: 3004 });
    await (await open()).close();
});

test('events without a name of their own', async () => {
    const client = await open();
    const event = new Promise(resolve => {
        client.once('event', resolve);
    });
    control.queue_event(99);
    assert.deepEqual(await event, { code: 99, status: 1000 });
    await client.close();
});

test('Node.js closes it at the end of a block', { skip: !Symbol.asyncDispose && 'this Node.js has no such symbol' }, async () => {
    const client = await open();
    await client[Symbol.asyncDispose]();
    assert.equal(client.closed, true);
});
