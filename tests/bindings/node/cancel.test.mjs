// Sign-ins that wait for the user: the event loop runs meanwhile, and they can be ended.

import assert from 'node:assert/strict';
import { test } from 'node:test';
import { OrlindexClient } from 'orlindex';

const open = () => OrlindexClient.open({ clientId: 'my-client-id', scope: 'openid profile' });
const turns = async count => {
    for (let i = 0; i < count; ++i)
        await new Promise(resolve => setTimeout(resolve, 1));
};

test('the event loop runs during a sign-in, and other calls too', async () => {
    const client = await open();
    const abort = new AbortController();
    let ended = false;
    const login = client.signIn({ signal: abort.signal }).finally(() => { ended = true; });
    login.catch(() => {});
    await turns(50);
    assert.equal(await client.isSignedIn(), false);
    await assert.rejects(client.signIn(), /another sign-in runs/);
    assert.equal(ended, false);
    abort.abort();
    await assert.rejects(login, { name: 'AbortError' });
    await client.close();
});

test('an abort ends the sign-in, at any moment', async () => {
    const client = await open();
    await assert.rejects(client.signIn({ signal: AbortSignal.abort(new Error('before')) }), /before/);
    const reason = new Error('the user went away');
    for (const moment of [0, 1, 5]) {
        const abort = new AbortController();
        const login = client.signIn({ signal: abort.signal });
        login.catch(() => {});
        await turns(moment);
        abort.abort(reason);
        await assert.rejects(login, error => error === reason);
    }
    await assert.rejects(client.signIn({ signal: AbortSignal.timeout(50) }), { name: 'TimeoutError' });
    await client.close();
});

test('close ends a sign-in', async () => {
    const client = await open();
    const login = client.signIn();
    login.catch(() => {});
    await turns(5);
    await client.close();
    await assert.rejects(login, { name: 'AbortError' });
});

test('the server process quits', async () => {
    const client = await open();
    await client.quitServerProcess(60000);
    await client.close();
});
