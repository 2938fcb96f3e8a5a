// The real provider and the scripted browser do what the other tests rely on: node provider-self-test.mjs
//
// An OpenID Connect client that others wrote signs in with them.

import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { request } from 'node:https';
import { join } from 'node:path';
import { packages } from '../node/modules.mjs';
import { ScriptedBrowser } from './browser.mjs';
import { temporaryFolder } from './peer.mjs';
import { Peer, RedirectListener, runChecks } from './self-test.mjs';

const client = await import(packages.resolve('openid-client'));

const folder = temporaryFolder();
const peer = await Peer.start('provider.mjs');
const { insecureIssuer } = peer.values;
const listener = await RedirectListener.start();

const discover = (clientId, issuer = insecureIssuer) => client.discovery(new URL(issuer), clientId, undefined, client.None(),
    { execute: [client.allowInsecureRequests] });

let profiles = 0;
const newProfile = () => join(folder, `profile-${++profiles}`);

/// Signs in. `browser`: settings of the browser. Returns the tokens, and what the browser did.
async function signIn(configuration, browser = {}, parameters = {}) {
    const verifier = client.randomPKCECodeVerifier();
    const state = client.randomState();
    const nonce = client.randomNonce();
    const address = client.buildAuthorizationUrl(configuration, {
        redirect_uri: listener.address, scope: 'openid profile email', state, nonce, code_challenge_method: 'S256',
        code_challenge: await client.calculatePKCECodeChallenge(verifier), ...parameters,
    });
    const result = await new ScriptedBrowser({ profile: newProfile(), ...browser }).open(address.href);
    const redeem = url => client.authorizationCodeGrant(configuration, url,
        { pkceCodeVerifier: verifier, expectedState: state, expectedNonce: nonce });
    return { result, redeem };
}

async function tokensOf(configuration, browser) {
    const { redeem } = await signIn(configuration, browser);
    return redeem(await listener.next());
}

const counts = async () => (await peer.control('state')).counts;
const events = async () => (await peer.control('state')).events;
const refusal = pattern => error => pattern.test(`${error.error} ${error.code} ${error.message} ${error.cause?.message}`);

const checks = {
    async 'a sign-in needs a password, a second one in the same profile does not'() {
        await peer.control('reset', {});
        const profile = newProfile();
        const configuration = await discover('example-host');
        const first = await signIn(configuration, { profile, user: 'kim' });
        assert.equal(first.result.passwords, 1);
        assert.match(first.result.text, /You are signed in/);
        const tokens = await first.redeem(await listener.next());
        assert.equal(tokens.claims().sub, 'kim');
        assert.ok(tokens.refresh_token);
        const second = await signIn(await discover('second-host'), { profile });
        assert.equal(second.result.passwords, 0);
        assert.equal((await second.redeem(await listener.next())).claims().sub, 'kim');
        const { discovery, keys, 'token:authorization_code': redeemed } = await counts();
        assert.deepEqual([discovery, keys, redeemed], [2, undefined, 2], 'requests are counted by endpoint');
    },

    async 'the user denies'() {
        const { result, redeem } = await signIn(await discover('example-host'), { behavior: 'deny' });
        assert.equal(result.passwords, 0);
        await assert.rejects(redeem(await listener.next()), refusal(/access_denied/));
    },

    async 'the user never answers'() {
        const { result } = await signIn(await discover('example-host'), { behavior: 'neverAnswers' });
        assert.equal(result.redirected, undefined);
        assert.equal(listener.requests.length, 0);
    },

    async 'the browser changes the redirect as it is told'() {
        const configuration = await discover('example-host');
        for (const [behavior, pattern] of [['wrongState', /state/], ['wrongIssuer', /iss/], ['otherCode', /invalid_grant/],
            ['noState', /state/], ['noIssuer', /iss/], ['noCode', /code/]]) {
            const { redeem } = await signIn(configuration, { behavior });
            await assert.rejects(redeem(await listener.next()), refusal(pattern), behavior);
        }
        await signIn(configuration, { behavior: 'repeatedParameter' });
        assert.equal((await listener.next()).searchParams.getAll('code').length, 2);
        await signIn(configuration, { behavior: 'otherPathThenReal' });
        assert.deepEqual([(await listener.next()).pathname, (await listener.next()).pathname], ['/other', '/callback']);
        const { result } = await signIn(configuration, { behavior: 'nonsenseThenReal' });
        assert.match(result.text, /You are signed in/);
        await listener.next();
    },

    async 'refresh tokens rotate, and an old one ends the grant'() {
        const configuration = await discover('example-host');
        const first = await tokensOf(configuration);
        const second = await client.refreshTokenGrant(configuration, first.refresh_token);
        assert.notEqual(second.refresh_token, first.refresh_token);
        await peer.control('reset', {});
        await assert.rejects(client.refreshTokenGrant(configuration, first.refresh_token), refusal(/invalid_grant/));
        assert.equal((await events())['grant.revoked'], 1);
        await assert.rejects(client.refreshTokenGrant(configuration, second.refresh_token), refusal(/invalid_grant/));
    },

    async 'a replayed code ends the grant'() {
        const configuration = await discover('example-host');
        const { redeem } = await signIn(configuration);
        const url = await listener.next();
        const tokens = await redeem(url);
        await assert.rejects(redeem(url), refusal(/invalid_grant/));
        await assert.rejects(client.refreshTokenGrant(configuration, tokens.refresh_token), refusal(/invalid_grant/));
    },

    async 'grants end by the control interface'() {
        for (const operation of ['revokeGrants', 'expireRefreshTokens']) {
            const configuration = await discover('second-host');
            const tokens = await tokensOf(configuration);
            assert.ok((await peer.control(operation, { client: 'second-host' })).removed > 0);
            await assert.rejects(client.refreshTokenGrant(configuration, tokens.refresh_token), refusal(/invalid_grant/));
        }
    },

    async 'keys rotate, and grants go on'() {
        const configuration = await discover('example-host');
        const first = await tokensOf(configuration);
        const kids = async () => (await (await fetch(`${insecureIssuer}/jwks`)).json()).keys.map(({ kid }) => kid);
        const before = await kids();
        await peer.control('rotateKeys', { keep: true });
        assert.deepEqual((await kids()).slice(3), before);
        await peer.control('rotateKeys', {});
        const after = await kids();
        assert.equal(after.length, 3);
        assert.ok(after.every(kid => !before.includes(kid)));
        const second = await client.refreshTokenGrant(configuration, first.refresh_token);
        const header = JSON.parse(Buffer.from(second.id_token.split('.')[0], 'base64url'));
        assert.ok(after.includes(header.kid));
    },

    async 'token lives can be set'() {
        await peer.control('setLifetimes', { AccessToken: 7 });
        assert.equal((await tokensOf(await discover('example-host'))).expires_in, 7);
        await peer.control('setLifetimes', { AccessToken: 3600 });
        await assert.rejects(peer.control('setLifetimes', { NoModel: 1 }), /unknown lifetime/);
    },

    async 'tokens are revoked'() {
        const configuration = await discover('example-host');
        const tokens = await tokensOf(configuration);
        await client.tokenRevocation(configuration, tokens.refresh_token);
        await assert.rejects(client.refreshTokenGrant(configuration, tokens.refresh_token), refusal(/invalid_grant/));
    },

    async 'a device signs in'() {
        const configuration = await discover('example-host');
        const device = await client.initiateDeviceAuthorization(configuration, { scope: 'openid profile' });
        const result = await new ScriptedBrowser({ profile: newProfile(), user: 'lee', userCode: device.user_code })
            .open(device.verification_uri);
        assert.match(result.text, /Success|signed in|continue/i);
        const tokens = await client.pollDeviceAuthorizationGrant(configuration, { ...device, interval: 1 });
        assert.equal(tokens.claims().sub, 'lee');
    },

    async 'the logout page ends the session and returns'() {
        const profile = newProfile();
        const configuration = await discover('example-host');
        const tokens = await tokensOf(configuration, { profile });
        const end = client.buildEndSessionUrl(configuration, {
            id_token_hint: tokens.id_token, post_logout_redirect_uri: listener.address, state: 'after-logout',
        });
        const result = await new ScriptedBrowser({ profile }).open(end.href);
        assert.match(result.text, /You are signed in/, 'the page of the listener');
        assert.equal((await listener.next()).searchParams.get('state'), 'after-logout');
        assert.equal((await signIn(configuration, { profile })).result.passwords, 1);
        await listener.next();
    },

    async 'faults happen as often as they were ordered'() {
        const configuration = await discover('example-host');
        const first = await tokensOf(configuration);
        await peer.control('fault', { endpoint: 'token', effect: 'status', status: 429, headers: { 'Retry-After': '7' } });
        const response = await fetch(`${insecureIssuer}/token`, { method: 'POST' });
        assert.deepEqual([response.status, response.headers.get('Retry-After')], [429, '7']);
        // The provider carries the refresh out, and its reply gets lost: this is how rotation signs users out.
        await peer.control('fault', { endpoint: 'token', effect: 'lose', grant: 'refresh_token' });
        await assert.rejects(client.refreshTokenGrant(configuration, first.refresh_token));
        await assert.rejects(client.refreshTokenGrant(configuration, first.refresh_token), refusal(/invalid_grant/));
    },

    async 'every secret is known'() {
        const configuration = await discover('example-host');
        const { redeem } = await signIn(configuration);
        const url = await listener.next();
        const tokens = await redeem(url);
        const { values } = await peer.control('secrets');
        for (const value of [url.searchParams.get('code'), tokens.access_token, tokens.refresh_token, tokens.id_token])
            assert.ok(values.includes(value));
    },

    async 'the https issuer has the certificate of the test root'() {
        const get = ca => new Promise((resolve, reject) => {
            request(`${peer.values.issuer}/.well-known/openid-configuration`, { ca }, response => {
                response.setEncoding('utf8').on('data', text => resolve(JSON.parse(text)));
            }).on('error', reject).end();
        });
        const { issuer, token_endpoint: token } = await get(readFileSync(peer.values.root));
        assert.equal(issuer, peer.values.issuer);
        assert.ok(token.startsWith('https://localhost:'));
        await assert.rejects(get(undefined), /unable to verify|self.signed/);
    },

    async 'pushed requests can be required'() {
        const other = await Peer.start('provider.mjs', { pushedRequests: true, algorithm: 'ES256' });
        const configuration = await discover('example-host', other.values.insecureIssuer);
        const refused = await signIn(configuration);
        assert.equal(refused.result.redirected, true);
        await assert.rejects(refused.redeem(await listener.next()), refusal(/invalid_request/));
        const verifier = client.randomPKCECodeVerifier();
        const state = client.randomState();
        const address = await client.buildAuthorizationUrlWithPAR(configuration, {
            redirect_uri: listener.address, scope: 'openid', state, code_challenge_method: 'S256',
            code_challenge: await client.calculatePKCECodeChallenge(verifier),
        });
        await new ScriptedBrowser({}).open(address.href);
        const tokens = await client.authorizationCodeGrant(configuration, await listener.next(),
            { pkceCodeVerifier: verifier, expectedState: state });
        assert.equal(JSON.parse(Buffer.from(tokens.id_token.split('.')[0], 'base64url')).alg, 'ES256');
        assert.equal(await other.stop(), 0);
    },

    async 'the provider ends when its caller does'() {
        assert.equal(await peer.stop(), 0);
        await assert.rejects(fetch(insecureIssuer));
    },
};

const status = await runChecks(checks);
listener.stop();
process.exit(status);
