// The whole life of logins with the signed agent, hosts and the real provider: node life-test.mjs BUILD

import assert from 'node:assert/strict';
import { mkdirSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { prefix, Installation } from './agent.mjs';
import { ScriptedBrowser } from './browser.mjs';
import { temporaryFolder } from './peer.mjs';
import { search } from './secrets.mjs';
import { Peer, runChecks } from './self-test.mjs';
import { runWindows, trustRoot, windowsPath } from './wine.mjs';

const [build] = process.argv.slice(2);
const folder = temporaryFolder();
const provider = await Peer.start('provider.mjs');
const strictProvider = await Peer.start('provider.mjs', { pushedRequests: true });
const forgetRoot = await trustRoot(provider.values.rootForWindows);

const scope = 'openid profile email';
const success = 1000;
const notLoggedIn = 4001;
const grantRefused = 4047;

const installation = await Installation.make(build, folder, { ca: provider.values.root, profile: join(folder, 'profile'), user: 'kim' });
installation.configure({
    production: { issuer: provider.values.issuer },
    staging: { issuer: provider.values.issuer, signIn: 'device' },
    development: { issuer: strictProvider.values.insecureIssuer, allowInsecureLoopback: true, redirectHost: 'localhost' },
});

const hosts = [];
async function startHost(client, server = 0) {
    const host = await installation.startHost();
    hosts.push(host);
    await host.must('product', server, client, scope);
    await host.must('server', server);
    return host;
}
const sleep = milliseconds => new Promise(resolve => { setTimeout(resolve, milliseconds); });
async function until(what, condition) {
    for (const end = Date.now() + 120_000; Date.now() < end; await sleep(20)) {
        const result = await condition();
        if (result)
            return result;
    }
    throw new Error(`in two minutes, there was no ${what}`);
}
const state = () => provider.control('state');
const codeOf = async (host, ...command) => (await host.call(...command)).code;
const claimsOf = token => JSON.parse(Buffer.from(token.split('.')[1], 'base64url'));
const lines = [];
const log = () => { lines.push(...installation.log()); return lines; };
const waitForLine = words => until(`line with "${words}"`, () => log().find(line => line.includes(words)));
const lastVisit = async () => installation.visits.at(-1);

let first; // A host that goes on through all checks.

async function makeSureSignedIn(host) {
    if (await codeOf(host, 'login') !== success)
        throw new Error('no sign-in');
}

/// Signs out, and waits for the provider's logout page: it ends the grants of the browser's session, later ones included.
async function logOut(host) {
    const visits = installation.visits.length;
    assert.equal(await codeOf(host, 'logout'), success);
    await until('logout page', () => installation.visits.length > visits);
    await lastVisit();
}

const checks = {
    async 'the first sign-in makes three requests, and claims come'() {
        first = await startHost('example-host');
        await provider.control('reset', {});
        assert.equal(await codeOf(first, 'login'), success);
        assert.equal((await lastVisit()).passwords, 1);
        const { discovery, keys, token, userinfo } = (await state()).counts;
        assert.deepEqual({ discovery, keys, token, userinfo }, { discovery: 1, keys: 1, token: 1, userinfo: undefined });
        const claims = claimsOf(await first.must('idToken'));
        assert.deepEqual([claims.sub, claims.aud, claims.iss], ['kim', 'example-host', provider.values.issuer]);
        assert.equal(await first.must('user'), 'kim|kim Example|kim@example.com');
        assert.equal(JSON.parse(await first.must('profile')).preferred_username, 'kim');
        assert.match(await first.must('events'), /logged in 1000; token available 1000/);
        assert.match(await first.must('status'), /loggedIn=1 valid=1 tokenExpired=0/);
    },

    async 'a second host of the product is signed in without a browser'() {
        const visits = installation.visits.length;
        const second = await startHost('example-host');
        assert.equal(await codeOf(second, 'login'), success);
        assert.equal(await second.must('token'), await first.must('token'));
        assert.equal(installation.visits.length, visits);
        await second.exit();
    },

    async 'a second client ID needs no password, and one request'() {
        await provider.control('reset', {});
        const other = await startHost('second-host');
        assert.equal(await codeOf(other, 'login'), success);
        assert.equal((await lastVisit()).passwords, 0);
        assert.notEqual(await other.must('token'), await first.must('token'));
        assert.equal(claimsOf(await other.must('idToken')).aud, 'second-host');
        const { discovery, keys, token } = (await state()).counts;
        assert.deepEqual([discovery, keys, token], [undefined, undefined, 1]);
        await other.exit();
    },

    async 'refresh tokens rotate, and no old one is presented'() {
        await provider.control('reset', {});
        const tokens = new Set([await first.must('token')]);
        for (let round = 0; round < 5; ++round) {
            await first.must('refresh');
            tokens.add(await first.must('token'));
        }
        assert.equal(tokens.size, 6);
        const { counts, events } = await state();
        assert.deepEqual([counts['token:refresh_token'], events['grant.revoked']], [5, undefined]);
    },

    async 'keys that rotate between and during sign-ins'() {
        await provider.control('rotateKeys', {});
        await first.must('refresh');
        await logOut(first);
        await provider.control('rotateKeys', {});
        await makeSureSignedIn(first);
        await logOut(first);
        // The token is signed with the key that was replaced after its request had come.
        await provider.control('fault', { endpoint: 'token', effect: 'delay', milliseconds: 1500 });
        const login = codeOf(first, 'login');
        await until('token request', async () => (await state()).events['fault.token.before']);
        await provider.control('rotateKeys', { keep: true });
        assert.equal(await login, success);
    },

    async 'a server that restarts restores the login'() {
        await provider.control('reset', {});
        const before = await first.must('token');
        assert.equal((await installation.quit()).code, 0);
        lines.length = 0;
        assert.equal(await codeOf(first, 'token'), success);
        await waitForLine('Login restored at production for "example-host"');
        await until('refresh', async () => (await state()).counts['token:refresh_token'] === 1);
        await until('new token', async () => (await first.call('token')).text !== before);
        assert.equal((await state()).events['grant.revoked'], undefined);
    },

    async 'a server that is killed restores the login'() {
        process.kill(installation.serverProcess(), 'SIGKILL');
        await until('restored login', async () => await codeOf(first, 'token') === success);
    },

    async 'a grant that is revoked or expired ends the login'() {
        for (const operation of ['revokeGrants', 'expireRefreshTokens']) {
            await makeSureSignedIn(first);
            await first.must('events');
            await provider.control(operation, { client: 'example-host' });
            assert.equal(await codeOf(first, 'refresh'), grantRefused);
            await until('event', async () => (await first.must('events')).includes(`logged out ${grantRefused}`));
            assert.equal(await codeOf(first, 'token'), notLoggedIn);
            await makeSureSignedIn(first);
        }
    },

    async 'a grant that is revoked while no server runs ends the login at the next start'() {
        await makeSureSignedIn(first);
        await installation.quit();
        await provider.control('revokeGrants', { client: 'example-host' });
        await until('end of the login', async () => await codeOf(first, 'token') === notLoggedIn);
    },

    async 'a refresh whose answer gets lost'() {
        await makeSureSignedIn(first);
        await provider.control('reset', {});
        await provider.control('fault', { endpoint: 'token', effect: 'lose', grant: 'refresh_token' });
        // The provider has rotated the token, and the new one was lost: only this signs the user out.
        const code = await codeOf(first, 'refresh');
        assert.equal(code, grantRefused);
        assert.equal(await codeOf(first, 'token'), notLoggedIn);
    },

    async 'a provider that is overloaded for a moment'() {
        await makeSureSignedIn(first);
        await provider.control('fault', { endpoint: 'token', effect: 'status', status: 503, headers: { 'Retry-After': '1' } });
        assert.equal(await codeOf(first, 'refresh'), success);
        await provider.control('fault', { endpoint: 'token', effect: 'close' });
        assert.equal(await codeOf(first, 'refresh'), success);
    },

    async 'another device'() {
        const host = await startHost('example-host', 1);
        lines.length = 0;
        const login = codeOf(host, 'login');
        // Agents of other tests write to the same log.
        const line = await waitForLine(`Sign in at ${provider.values.issuer}/`);
        const [, address, code] = /Sign in at (\S+) with the code (\S+)/.exec(line);
        await new ScriptedBrowser({ ca: provider.values.root, user: 'lee', userCode: code }).open(address);
        assert.equal(await login, success);
        assert.equal(claimsOf(await host.must('idToken')).sub, 'lee');
        await host.must('refresh');
        await host.exit();
    },

    async 'a loopback provider over http that requires pushed requests, with the redirect to localhost'() {
        const host = await startHost('example-host', 2);
        assert.equal(await codeOf(host, 'login'), success);
        const { pushed, token } = (await strictProvider.control('state')).counts;
        assert.deepEqual({ pushed, token }, { pushed: 1, token: 1 });
        await host.exit();
    },

    async 'a login that its user denies, and one that a logout ends'() {
        const host = await startHost('example-c-host');
        installation.browser.behavior = 'deny';
        await provider.control('endSessions', {});
        assert.equal(await codeOf(host, 'login'), 4038);
        installation.browser.behavior = 'neverAnswers';
        const visits = installation.visits.length;
        const waiting = codeOf(host, 'login');
        await until('visit', () => installation.visits.length > visits);
        await host.call('logout');
        assert.equal(await waiting, 4019);
        installation.browser.behavior = 'signIn';
        await makeSureSignedIn(host);
        await host.exit();
    },

    async 'a thousand requests of eight hosts at expiry make one refresh'() {
        await logOut(first);
        await provider.control('setLifetimes', { AccessToken: 30 }); // Less than the margin: the next request refreshes.
        await makeSureSignedIn(first);
        await provider.control('setLifetimes', { AccessToken: 3600 });
        const eight = await Promise.all(Array.from({ length: 8 }, () => startHost('example-host')));
        await provider.control('reset', {});
        const replies = await Promise.all(eight.map(host => host.must('manyTokens', 125, 8)));
        assert.deepEqual(new Set(replies), new Set(['1000=125 tokens=1']));
        const tokens = await Promise.all(eight.map(host => host.must('token')));
        assert.equal(new Set(tokens).size, 1);
        assert.equal((await state()).counts['token:refresh_token'], 1);
        await Promise.all(eight.map(host => host.exit()));
        console.log('count: token requests at expiry = 1000');
    },

    async 'a logout revokes, and opens the logout page'() {
        await makeSureSignedIn(first);
        await provider.control('reset', {});
        const before = (await state()).refreshTokens['example-host'];
        await logOut(first);
        assert.equal(await codeOf(first, 'token'), notLoggedIn);
        await until('revocation', async () => (await state()).refreshTokens['example-host'] === before - 1);
        assert.equal((await state()).counts.revocation, 1);
        assert.ok((await state()).counts.endSession >= 1);
        await makeSureSignedIn(first);
        assert.equal((await lastVisit()).passwords, 1, 'the session at the provider has ended, too');
    },

    async 'a logout succeeds although the provider cannot be reached'() {
        await makeSureSignedIn(first);
        await provider.control('fault', { endpoint: 'revocation', effect: 'close', count: 10 });
        await logOut(first);
        assert.equal(await codeOf(first, 'token'), notLoggedIn);
        await provider.control('reset', {});
    },

    async 'no file, log or registry value holds a secret in clear'() {
        const values = (await Promise.all([provider, strictProvider].map(peer => peer.control('secrets'))))
            .flatMap(secrets => secrets.values);
        assert.ok(values.length > 50, `${values.length} values`);
        const registry = join(folder, 'registry');
        mkdirSync(registry);
        const { code, output } = await runWindows('reg', ['export', 'HKCU\\Software', windowsPath(join(registry, 'user.reg')), '/y']);
        assert.equal(code, 0, output);
        assert.ok(readFileSync(join(registry, 'user.reg')).length > 1000);
        const places = [join(prefix(), 'drive_c/users'), join(prefix(), 'drive_c/ProgramData'), folder];
        // A search that finds nothing at all would prove nothing.
        const planted = join(folder, 'planted');
        writeFileSync(planted, Buffer.from(`x${values[0]}x`, 'utf16le'));
        assert.deepEqual(search(places, values).found, [planted]);
        rmSync(planted);
        const { found, count } = search(places, values);
        assert.deepEqual(found, []);
        console.log(`count: files searched for ${values.length} secrets = ${count}`);
    },
};

let status = 1;
try {
    status = await runChecks(checks);
} finally {
    for (const host of hosts)
        host.kill();
    await installation.quit();
    await forgetRoot();
    await provider.stop();
    await strictProvider.stop();
}
process.exit(status);
