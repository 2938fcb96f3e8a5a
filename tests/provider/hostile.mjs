// A provider that misbehaves, for tests: node hostile.mjs [SETTINGS]
//
// Each case of hostile-cases.mjs has an issuer of its own, BASE/NAME. Nobody types a password: the authorization endpoint
// redirects at once. Prints one line of JSON when it is ready; see provider.mjs. The operations of its control interface:
//   heal     { name }: the case behaves well from now on, so that a test sees that the next sign-in works
//   state    { name }: its requests by endpoint, and what was wrong with them
//   secrets  every token and code so far

import { createHash, randomBytes } from 'node:crypto';
import { join } from 'node:path';
import { Certificates } from './certificates.mjs';
import { cases } from './hostile-cases.mjs';
import { bodyOf, listen, ready, serveControl, settingsOf, temporaryFolder } from './peer.mjs';
import { accessTokenHash, keyKindOf, keyOf, signToken } from './tokens.mjs';

const settings = settingsOf(process.argv[2], { certificates: '' });

const secrets = new Set();
const secret = prefix => {
    const value = `${prefix}-${randomBytes(24).toString('base64url')}`;
    secrets.add(value);
    return value;
};
const seconds = () => Math.floor(Date.now() / 1000);

/// What a client must not send, and must send.
function problemsOf(endpoint, request, parameters) {
    const problems = [];
    if (parameters.has('client_secret') || request.headers.authorization?.startsWith('Basic'))
        problems.push(`${endpoint}: a secret of a public client`);
    if (/[?&](access_token|refresh_token|code_verifier|device_code)=/.test(request.url))
        problems.push(`${endpoint}: a secret in the address`);
    for (const name of new Set(parameters.keys())) {
        if (parameters.getAll(name).length > 1)
            problems.push(`${endpoint}: "${name}" twice`);
    }
    if (endpoint === 'authorization' && !parameters.has('request_uri')) {
        for (const name of ['state', 'nonce', 'code_challenge', 'redirect_uri', 'client_id']) {
            if (!parameters.get(name))
                problems.push(`authorization: no "${name}"`);
        }
        if (parameters.get('code_challenge_method') !== 'S256' || parameters.get('response_type') !== 'code')
            problems.push('authorization: another flow than code with S256');
    }
    return problems;
}

class HostileIssuer {
    constructor(base, entry) {
        this.issuer = `${base}/${entry.name}`;
        this.entry = entry;
        this.codes = new Map();
        this.refreshTokens = new Map();
        this.devices = new Map();
        this.pushed = new Map();
        this.accessTokens = new Set();
        this.reset();
        entry.change?.(this);
    }

    /// Makes the issuer behave well. Its codes and tokens stay.
    reset() {
        this.requests = {};
        this.problems = [];
        this.algorithm = 'RS256';
        this.signingKey = undefined; // The kind of another key than the algorithm's.
        this.saltLength = undefined;
        this.header = { kid: 'key' }; // Further members of the header.
        this.keys = undefined; // A set that replaces the right one.
        this.claims = {}; // Undefined removes a claim.
        this.tokens = {}; // Members of a token reply; undefined removes one.
        this.refreshed = {}; // The same for refreshes only.
        this.refreshedClaims = {};
        this.userClaims = {};
        this.device = {};
        this.redirect = {}; // Parameters of the redirect.
        this.redirectTarget = undefined;
        this.changeIdToken = token => token;
        this.hooks = {}; // By endpoint; a hook that returns true has replied.
        this.date = undefined;
        this.metadata = {
            issuer: this.issuer,
            authorization_endpoint: `${this.issuer}/authorize`,
            token_endpoint: `${this.issuer}/token`,
            jwks_uri: `${this.issuer}/keys`,
            userinfo_endpoint: `${this.issuer}/userinfo`,
            revocation_endpoint: `${this.issuer}/revoke`,
            device_authorization_endpoint: `${this.issuer}/device`,
            pushed_authorization_request_endpoint: `${this.issuer}/pushed`,
            response_types_supported: ['code'],
            subject_types_supported: ['public'],
            id_token_signing_alg_values_supported: ['RS256', 'RS384', 'RS512', 'PS256', 'PS384', 'PS512', 'ES256', 'ES384'],
            code_challenge_methods_supported: ['S256'],
            authorization_response_iss_parameter_supported: true,
            scopes_supported: ['openid', 'profile', 'email'],
        };
    }

    keySet() {
        const { jwk } = keyOf(this.signingKey ?? keyKindOf(this.algorithm));
        return { keys: this.keys ?? [{ ...jwk, kid: 'key', use: 'sig' }] };
    }

    reply(response, status, value, headers = {}) {
        const body = typeof value === 'string' ? value : JSON.stringify(value);
        response.writeHead(status, {
            'Content-Type': 'application/json', 'Content-Length': Buffer.byteLength(body), 'Cache-Control': 'no-store',
            ...this.date ? { Date: this.date } : {}, ...headers,
        }).end(body);
    }

    refuse(response, error, status = 400) {
        this.reply(response, status, { error, error_description: `refused: ${error}` });
    }

    async handle(request, response, path) {
        const url = new URL(request.url, this.issuer);
        const body = request.method === 'POST' ? await bodyOf(request) : '';
        const parameters = new URLSearchParams(request.method === 'POST' ? body : url.search);
        const endpoint = this.endpointOf(path, parameters);
        if (!endpoint)
            return this.reply(response, 404, { error: 'not_found' });
        this.requests[endpoint] = (this.requests[endpoint] ?? 0) + 1;
        this.problems.push(...problemsOf(endpoint, request, parameters));
        if (this.hooks[endpoint]?.(response, this, { request, parameters }) === true)
            return undefined;
        return this[`on${endpoint[0].toUpperCase()}${endpoint.slice(1)}`](response, parameters, request);
    }

    endpointOf(path, parameters) {
        const grants = {
            authorization_code: 'token', refresh_token: 'refresh', 'urn:ietf:params:oauth:grant-type:device_code': 'poll',
        };
        return {
            '/.well-known/openid-configuration': 'discovery', '/authorize': 'authorization', '/keys': 'keys',
            '/token': grants[parameters.get('grant_type')] ?? 'token', '/userinfo': 'userinfo', '/revoke': 'revocation',
            '/device': 'device', '/pushed': 'pushed', '/verify': 'verification', '/end': 'endSession',
        }[path];
    }

    // --- Endpoints --------------------------------------------------------------------------------------------------

    onDiscovery(response) {
        this.reply(response, 200, this.metadata);
    }

    onKeys(response) {
        this.reply(response, 200, this.keySet());
    }

    onAuthorization(response, query) {
        const parameters = this.pushed.get(query.get('request_uri')) ?? query;
        const code = secret('code');
        this.codes.set(code, {
            nonce: parameters.get('nonce'), challenge: parameters.get('code_challenge'), client: parameters.get('client_id'),
            redirect: parameters.get('redirect_uri'), scope: parameters.get('scope'),
        });
        const target = new URL(this.redirectTarget ?? parameters.get('redirect_uri'));
        const values = { code, state: parameters.get('state'), iss: this.issuer, ...this.redirect };
        for (const [name, value] of Object.entries(values)) {
            if (value !== undefined)
                target.searchParams.set(name, value);
        }
        response.writeHead(302, { Location: target.href, 'Content-Length': '0' }).end();
    }

    onToken(response, form) {
        const grant = this.codes.get(form.get('code'));
        this.codes.delete(form.get('code'));
        const challenge = createHash('sha256').update(form.get('code_verifier') ?? '').digest('base64url');
        if (!grant || grant.challenge !== challenge || grant.redirect !== form.get('redirect_uri') ||
            grant.client !== form.get('client_id'))
            return this.refuse(response, 'invalid_grant');
        secrets.add(form.get('code_verifier'));
        return this.reply(response, 200, { ...this.issue(grant, { nonce: grant.nonce }), ...this.tokens });
    }

    onRefresh(response, form) {
        const grant = this.refreshTokens.get(form.get('refresh_token'));
        if (!grant || grant.client !== form.get('client_id'))
            return this.refuse(response, 'invalid_grant');
        const reply = { ...this.issue(grant, this.refreshedClaims), ...this.tokens, ...this.refreshed };
        if (reply.refresh_token !== undefined)
            this.refreshTokens.delete(form.get('refresh_token'));
        return this.reply(response, 200, reply);
    }

    onPoll(response, form) {
        const grant = this.devices.get(form.get('device_code'));
        if (!grant)
            return this.refuse(response, 'invalid_grant');
        if (!grant.isApproved)
            return this.refuse(response, 'authorization_pending');
        this.devices.delete(form.get('device_code'));
        return this.reply(response, 200, { ...this.issue(grant, {}), ...this.tokens });
    }

    onUserinfo(response, parameters, request) {
        const [scheme, token] = (request.headers.authorization ?? '').split(' ');
        if (scheme !== 'Bearer' || !this.accessTokens.has(token))
            return this.reply(response, 401, { error: 'invalid_token' });
        return this.reply(response, 200, {
            sub: 'user', name: 'Sam Example', given_name: 'Sam', family_name: 'Example', email: 'sam@example.com',
            ...this.userClaims,
        });
    }

    onRevocation(response, form) {
        this.refreshTokens.delete(form.get('token'));
        this.reply(response, 200, '');
    }

    onDevice(response, form) {
        const code = secret('device');
        const userCode = randomBytes(4).toString('hex').toUpperCase();
        this.devices.set(code, { client: form.get('client_id'), scope: form.get('scope'), userCode });
        this.reply(response, 200, {
            device_code: code, user_code: userCode, verification_uri: `${this.issuer}/verify`,
            verification_uri_complete: `${this.issuer}/verify?user_code=${userCode}`, expires_in: 300, interval: 1,
            ...this.device,
        });
    }

    onPushed(response, form) {
        const address = `urn:ietf:params:oauth:request_uri:${secret('pushed')}`;
        this.pushed.set(address, form);
        this.reply(response, 201, { request_uri: address, expires_in: 60 });
    }

    onVerification(response, query) {
        for (const grant of this.devices.values())
            grant.isApproved ||= grant.userCode === query.get('user_code');
        response.writeHead(200, { 'Content-Type': 'text/html' }).end('<p>Continue on your device.</p>');
    }

    onEndSession(response) {
        response.writeHead(200, { 'Content-Type': 'text/html' }).end('<p>You are signed out.</p>');
    }

    // --- Tokens -----------------------------------------------------------------------------------------------------

    issue(grant, claims) {
        const access = this.tokens.access_token ?? secret('access');
        const refresh = secret('refresh');
        this.accessTokens.add(access);
        this.refreshTokens.set(refresh, grant);
        const now = seconds();
        const all = {
            iss: this.issuer, sub: 'user', aud: grant.client, exp: now + 3600, iat: now, at_hash:
                accessTokenHash(access, this.algorithm), ...claims, ...this.claims,
        };
        const { privateKey } = keyOf(this.signingKey ?? keyKindOf(this.algorithm));
        const header = { alg: this.algorithm, ...this.header };
        const token = this.changeIdToken(signToken(header, all, this.algorithm, privateKey, this.saltLength), all);
        secrets.add(token);
        return {
            access_token: access, token_type: 'Bearer', expires_in: 3600, refresh_token: refresh, id_token: token,
            scope: grant.scope,
        };
    }
}

// --- The peer -------------------------------------------------------------------------------------------------------

const certificates = new Certificates(settings.certificates || temporaryFolder());
if (!settings.certificates) {
    certificates.makeRoot('root');
    certificates.make('localhost', 'root', 'localhost');
}

const issuers = new Map(); // By base and name.

function issuerOf(base, name) {
    const key = `${base}/${name}`;
    if (!issuers.has(key)) {
        const entry = cases.find(each => each.name === name);
        if (!entry)
            return undefined;
        issuers.set(key, new HostileIssuer(base, entry));
    }
    return issuers.get(key);
}

function handlerFor(baseOf) {
    return (request, response) => {
        response.on('error', () => {});
        request.on('error', () => {});
        const [, name, path] = /^\/([A-Za-z0-9]+)(\/[^?]*)/.exec(request.url) ?? [];
        const issuer = issuerOf(baseOf(), name);
        if (!issuer)
            return response.writeHead(404, { 'Content-Length': '0' }).end();
        return issuer.handle(request, response, path).catch(error => {
            console.error(error);
            response.destroy();
        });
    };
}

let secureBase;
let plainBase;
secureBase = `https://localhost:${(await listen(handlerFor(() => secureBase), certificates.load('localhost'))).port}`;
plainBase = `http://127.0.0.1:${(await listen(handlerFor(() => plainBase))).port}`;

const both = name => [secureBase, plainBase].map(base => issuerOf(base, name)).filter(issuer => issuer !== undefined);

function named(name) {
    const found = both(name);
    if (found.length === 0)
        throw new Error(`no such case: ${name}`);
    return found;
}

const control = await serveControl({
    heal: ({ name }) => named(name).forEach(issuer => issuer.reset()),
    state: ({ name }) => {
        const [secure, plain] = named(name);
        const used = Object.keys(secure.requests).length > 0 ? secure : plain;
        return { requests: used.requests, problems: used.problems };
    },
    secrets: () => ({ values: [...secrets] }),
});

ready({
    issuer: secureBase, insecureIssuer: plainBase, control, certificates: certificates.folder,
    root: join(certificates.folder, 'root.pem'), rootForWindows: join(certificates.folder, 'root.der'),
});
