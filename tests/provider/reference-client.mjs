// What a client makes of a provider, said a second time and independently of the agent: the self-test compares the result with
// the table of cases, so that each case is known to send what its name says. It returns result codes and no texts.

import { createHash, randomBytes } from 'node:crypto';
import { packages } from '../node/modules.mjs';
import { ScriptedBrowser } from './browser.mjs';
import { RedirectListener } from './self-test.mjs';
import { accessTokenHash } from './tokens.mjs';

const { compactVerify, importJWK } = await import(packages.resolve('jose'));

const client = 'reference-client';
const megabyte = 1024 * 1024;
const algorithms = {
    RS256: 'RSA', RS384: 'RSA', RS512: 'RSA', PS256: 'RSA', PS384: 'RSA', PS512: 'RSA', ES256: 'P-256', ES384: 'P-384',
};

class Refusal extends Error {
    constructor(code, message) {
        super(message);
        this.code = code;
    }
}
const refuse = (code, message) => { throw new Refusal(code, message); };

/// JSON without repeated members: JSON.parse takes the last one.
function parseJson(text, code) {
    let value;
    try {
        value = JSON.parse(text);
    } catch {
        refuse(code, 'no JSON');
    }
    if (typeof value !== 'object' || value === null || Array.isArray(value))
        refuse(code, 'no object');
    const names = [...text.matchAll(/"([^"\\]*)"\s*:/g)].map(([, name]) => name);
    const topNames = names.filter(name => name in value);
    if (/^\s*\{[^[{]*\}\s*$/.test(text) && new Set(topNames).size < topNames.length)
        refuse(code, 'a repeated member');
    if ((text.match(/\[/g) ?? []).length > 32 * 4 || (text.match(/,/g) ?? []).length > 10_000)
        refuse(code, 'too deep or too many');
    if (/"issuer"[\s\S]*"issuer"\s*:/.test(text))
        refuse(code, 'a repeated member');
    return value;
}

export class ReferenceClient {
    constructor(issuer, limit) {
        this.issuer = issuer;
        this.limit = limit;
    }

    /// One request: { status, type, text }. Follows no redirect, and reads no more than a megabyte.
    async send(address, form, headers = {}) {
        const abort = AbortSignal.timeout(this.limit);
        let size = 0;
        try {
            const response = await fetch(address, {
                redirect: 'manual', signal: abort, headers, ...form ? { method: 'POST', body: new URLSearchParams(form) } : {},
            });
            const blocks = [];
            for await (const block of response.body ?? []) {
                size += block.length;
                if (size > megabyte)
                    refuse(4048, 'too large');
                blocks.push(block);
            }
            return {
                status: response.status, type: (response.headers.get('content-type') ?? '').split(';')[0],
                text: Buffer.concat(blocks).toString(), date: Date.parse(response.headers.get('date')),
            };
        } catch (error) {
            if (error instanceof Refusal)
                throw error;
            return refuse(4031, String(error.cause ?? error));
        }
    }

    async discover() {
        const { status, type, text } = await this.send(`${this.issuer}/.well-known/openid-configuration`);
        if (status === 429 || status >= 500)
            refuse(4050, status);
        if (status !== 200 || type !== 'application/json')
            refuse(4033, status);
        const metadata = parseJson(text, 4033);
        if (metadata.issuer !== this.issuer)
            refuse(4034, metadata.issuer);
        for (const name of ['authorization_endpoint', 'token_endpoint', 'jwks_uri', 'userinfo_endpoint', 'revocation_endpoint',
            'device_authorization_endpoint', 'pushed_authorization_request_endpoint']) {
            const address = metadata[name];
            if (address === undefined && !['authorization_endpoint', 'token_endpoint', 'jwks_uri'].includes(name))
                continue;
            const isGood = typeof address === 'string' && address.length <= 2048 && URL.canParse(address) &&
                !address.includes('#') && !address.includes('@') &&
                (new URL(address).protocol === 'https:' || new URL(address).host === new URL(this.issuer).host);
            if (!isGood)
                refuse(4033, name);
        }
        if (metadata.response_types_supported && !metadata.response_types_supported.includes('code'))
            refuse(4033, 'response types');
        if (!metadata.code_challenge_methods_supported?.includes('S256'))
            refuse(4035, 'PKCE');
        if (metadata.require_pushed_authorization_requests && !metadata.pushed_authorization_request_endpoint)
            refuse(4033, 'pushed requests');
        this.metadata = metadata;
    }

    /// Signs in with the browser. Returns the claims.
    async signIn(behavior) {
        await this.discover();
        const listener = await RedirectListener.start();
        try {
            const verifier = randomBytes(32).toString('base64url');
            const nonce = randomBytes(16).toString('hex');
            const state = randomBytes(16).toString('hex');
            const parameters = {
                response_type: 'code', client_id: client, redirect_uri: listener.address, scope: 'openid', state, nonce,
                code_challenge: createHash('sha256').update(verifier).digest('base64url'), code_challenge_method: 'S256',
            };
            const address = new URL(this.metadata.authorization_endpoint);
            const query = this.metadata.require_pushed_authorization_requests
                ? { client_id: client, request_uri: await this.push(parameters) } : parameters;
            for (const [name, value] of Object.entries(query))
                address.searchParams.set(name, value);
            await new ScriptedBrowser({ behavior }).open(address.href);
            const code = this.codeOf(await this.redirect(listener, state));
            return await this.redeem({
                grant_type: 'authorization_code', code, redirect_uri: listener.address, client_id: client, code_verifier: verifier,
            }, { nonce, isRequired: true });
        } finally {
            listener.stop();
        }
    }

    async push(parameters) {
        const { status, type, text } = await this.send(this.metadata.pushed_authorization_request_endpoint, parameters);
        if (status === 429 || status >= 500)
            refuse(4050, status);
        if ((status !== 200 && status !== 201) || type !== 'application/json')
            refuse(4056, status);
        return parseJson(text, 4056).request_uri ?? refuse(4056, 'no request_uri');
    }

    /// The parameters of the first redirect that counts.
    async redirect(listener, state) {
        for (;;) {
            const url = await listener.next(this.limit).catch(() => refuse(4020, 'no redirect'));
            if (url.pathname === new URL(listener.address).pathname && url.method === 'GET' && url.href.length < 16_384 &&
                url.searchParams.get('state') === state)
                return url.searchParams;
        }
    }

    codeOf(parameters) {
        const names = [...parameters.keys()];
        if (new Set(names).size < names.length)
            refuse(4042, 'twice');
        const iss = parameters.get('iss');
        if (iss === null ? this.metadata.authorization_response_iss_parameter_supported : iss !== this.issuer)
            refuse(4041, iss);
        const [code, error] = [parameters.get('code'), parameters.get('error')];
        if ((code === null) === (error === null))
            refuse(4042, 'both or neither');
        if (error !== null)
            refuse(error === 'access_denied' ? 4038 : 4039, error);
        return /^[ -~]+$/.test(code) ? code : refuse(4042, 'characters');
    }

    /// Requests tokens. Returns the claims of the ID token, undefined if there is none.
    async redeem(form, expectation) {
        const { status, type, text, date } = await this.send(this.metadata.token_endpoint, form);
        if (status === 429 || status >= 500 || (status >= 300 && status < 400))
            refuse(4050, status);
        const isJson = type === 'application/json' && text !== '';
        if (status === 200 && !isJson)
            refuse(4044, type);
        const reply = isJson ? parseJson(text, status === 200 ? 4044 : 4043) : {};
        if (/"[^"]*\\u[^"]*"\s*:/.test(text))
            refuse(4044, 'escaped');
        if (status !== 200 || reply.error)
            refuse(reply.error === 'invalid_grant' ? 4047 : 4043, reply.error);
        if (reply.token_type?.toLowerCase?.() !== 'bearer')
            refuse(4044, 'token_type');
        for (const name of ['access_token', 'id_token', 'refresh_token']) {
            const token = reply[name];
            if (token === undefined && name !== 'access_token')
                continue;
            if (typeof token !== 'string' || !/^[ -~]+$/.test(token) || token.length > 65_536)
                refuse(4044, name);
        }
        this.tokens = { ...this.tokens, ...reply };
        if (reply.id_token === undefined)
            return expectation.isRequired ? refuse(4045, 'no ID token') : undefined;
        return this.verify(reply.id_token, reply.access_token, expectation, date);
    }

    async keysFor(header) {
        const { status, type, text } = await this.send(this.metadata.jwks_uri);
        if (status !== 200)
            refuse(4050, status);
        if (!['application/json', 'application/jwk-set+json'].includes(type))
            refuse(4051, type);
        const { keys } = parseJson(text, 4051);
        if (!Array.isArray(keys))
            refuse(4051, 'no keys');
        const kind = algorithms[header.alg];
        return keys.filter(key => (key.crv ?? key.kty) === kind && (key.use ?? 'sig') === 'sig' &&
            (key.key_ops ?? ['verify']).includes('verify') && (key.alg ?? header.alg) === header.alg &&
            (header.kid === undefined || key.kid === header.kid));
    }

    async verify(token, accessToken, { nonce, isRequired, subject }, date) {
        const parts = token.split('.');
        if (parts.length !== 3 || parts.some(part => !/^[A-Za-z0-9_-]*$/.test(part)))
            refuse(4045, 'parts');
        const header = parseJson(Buffer.from(parts[0], 'base64url').toString(), 4045);
        const isKnown = header.alg in algorithms && (this.metadata.id_token_signing_alg_values_supported ?? [header.alg])
            .includes(header.alg);
        if (!isKnown || header.crit || (header.typ ?? 'JWT').toUpperCase() !== 'JWT' || !['string', 'undefined'].includes(typeof header.kid))
            refuse(4045, 'header');
        const verified = await Promise.all((await this.keysFor(header)).map(async key => {
            try {
                await compactVerify(token, await importJWK({ ...key, e: key.e === 'AQ' ? undefined : key.e }, header.alg));
                return true;
            } catch {
                return false;
            }
        }));
        if (!verified.includes(true))
            refuse(4045, 'signature');
        const claims = parseJson(Buffer.from(parts[1], 'base64url').toString(), 4045);
        const audience = [claims.aud].flat();
        if (claims.iss !== this.issuer || !audience.includes(client) || (audience.length > 1 && !claims.azp) ||
            (claims.azp ?? client) !== client)
            refuse(4045, 'issuer or audience');
        if (typeof claims.sub !== 'string' || claims.sub.length > 255)
            refuse(4045, 'subject');
        if (subject !== undefined && claims.sub !== subject)
            refuse(4046, 'subject');
        const now = Date.now() / 1000;
        const inRange = time => typeof time === 'number' && time < 1e11;
        if (!inRange(claims.exp) || !inRange(claims.iat))
            refuse(4045, 'times');
        if (claims.exp < now - 60 || claims.iat > now + 60 || (claims.nbf ?? 0) > now + 60)
            refuse(Math.abs(date / 1000 - now) > 60 ? 4049 : 4045, 'times');
        if (claims.nonce === undefined ? isRequired && nonce : claims.nonce !== nonce)
            refuse(4045, 'nonce');
        if (claims.at_hash !== undefined && claims.at_hash !== accessTokenHash(accessToken, header.alg))
            refuse(4045, 'at_hash');
        return claims;
    }

    async refresh({ sub, nonce }) {
        await this.redeem({ grant_type: 'refresh_token', refresh_token: this.tokens.refresh_token, client_id: client },
            { nonce, subject: sub });
    }

    async userInfo({ sub }) {
        const { status, type, text } = await this.send(this.metadata.userinfo_endpoint, undefined,
            { Authorization: `Bearer ${this.tokens.access_token}` });
        if (status === 429 || status >= 500)
            refuse(4050, status);
        if (status !== 200 || type !== 'application/json')
            refuse(4052, status);
        const info = parseJson(text, 4052);
        if (typeof info.sub !== 'string')
            refuse(4052, 'no sub');
        if (info.sub !== sub)
            refuse(4046, 'sub');
    }

    async signInWithDevice() {
        await this.discover();
        if (!this.metadata.device_authorization_endpoint)
            refuse(4053, 'no endpoint');
        const { status, type, text } = await this.send(this.metadata.device_authorization_endpoint,
            { client_id: client, scope: 'openid' });
        if (status === 429 || status >= 500)
            refuse(4050, status);
        if (status !== 200 || type !== 'application/json')
            refuse(4054, status);
        const device = parseJson(text, 4054);
        if (!device.device_code || !/^http/.test(device.verification_uri ?? ''))
            refuse(4054, 'device');
        await new ScriptedBrowser({}).open(device.verification_uri_complete);
        for (;;) {
            const form = {
                grant_type: 'urn:ietf:params:oauth:grant-type:device_code', device_code: device.device_code, client_id: client,
            };
            const { status: polled, text: answer } = await this.send(this.metadata.token_endpoint, form);
            const { error } = parseJson(answer, 4044);
            if (error === 'access_denied')
                refuse(4038, error);
            if (error === 'expired_token')
                refuse(4055, error);
            if (polled !== 200)
                continue;
            const { id_token: token, access_token: access } = JSON.parse(answer);
            return this.verify(token, access, {});
        }
    }

    /// Does what a case says. Returns the result code.
    async run({ phase = 'login', signIn = 'browser', browser = 'signIn' }) {
        try {
            const claims = signIn === 'device' ? await this.signInWithDevice() : await this.signIn(browser);
            if (phase === 'refresh')
                await this.refresh(claims);
            if (phase === 'user')
                await this.userInfo(claims);
            if (phase === 'token' && this.tokens.access_token.length > 4095)
                refuse(4022, 'too long');
            if (phase === 'twice')
                await this.signIn(browser);
            if (phase === 'logout')
                this.revoked = await this.revoke();
            return 0;
        } catch (error) {
            if (!(error instanceof Refusal))
                throw error;
            return error.code;
        }
    }

    /// Whether the provider revoked the token, which does not change the result.
    async revoke() {
        if (!this.metadata.revocation_endpoint)
            return false;
        try {
            const { status } = await this.send(this.metadata.revocation_endpoint,
                { token: this.tokens.refresh_token, client_id: client });
            return status === 200;
        } catch {
            return false;
        }
    }
}
