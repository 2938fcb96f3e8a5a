// A real OpenID Connect provider on this machine, for tests and the demo: node provider.mjs [SETTINGS]
//
// SETTINGS is a JSON object; see `defaults`. Prints one line of JSON when it is ready: the two issuers (https://localhost and
// http://127.0.0.1), the address of the control interface, and the folder with the test root. Ends when its standard input is
// closed. Everybody is let in with any password: the user name is the subject.

import { createHash } from 'node:crypto';
import { join } from 'node:path';
import { packages } from '../node/modules.mjs';
import { Certificates } from './certificates.mjs';
import { listen, ready, serveControl, settingsOf, temporaryFolder } from './peer.mjs';
import { Storage } from './storage.mjs';

// The provider warns that its pages are for development. The standard output is for the one line.
console.info = console.warn = console.log = console.error;

const { default: Provider } = await import(packages.resolve('oidc-provider'));
const { exportJWK, generateKeyPair } = await import(packages.resolve('jose'));

const settings = settingsOf(process.argv[2], {
    algorithm: 'RS256', // Of ID tokens.
    clients: ['example-host', 'second-host', 'example-c-host', 'example-cpp-host'],
    pushedRequests: false, // Whether they are required.
    offlineAccess: false, // Whether the scope offline_access is needed for a refresh token.
    redirects: ['http://127.0.0.1/callback', 'http://localhost/callback', 'http://[::1]/callback'],
    lifetimes: {}, // In seconds; replaces some of those below.
    certificates: '', // A folder with localhost.key, localhost.pem and root.pem; empty for new ones.
});

const lifetimes = {
    AccessToken: 3600, IdToken: 3600, RefreshToken: 14 * 24 * 3600, AuthorizationCode: 60, DeviceCode: 600, Grant: 14 * 24 * 3600,
    Session: 14 * 24 * 3600, Interaction: 3600, ...settings.lifetimes,
};

// --- Keys -----------------------------------------------------------------------------------------------------------

const algorithms = ['RS256', 'PS256', 'ES256'];

async function makeKeys() {
    return Promise.all(algorithms.map(async alg => {
        const { privateKey } = await generateKeyPair(alg, { extractable: true });
        const key = await exportJWK(privateKey);
        return { ...key, use: 'sig', alg, kid: createHash('sha256').update(JSON.stringify(key)).digest('hex').slice(0, 16) };
    }));
}

// --- What happened --------------------------------------------------------------------------------------------------

const counts = {}; // Requests by endpoint; those of the token endpoint also by grant type.
const events = {}; // The provider's own, such as grant.revoked.
const secrets = new Set(); // Every value that no file of a client may hold.
const faults = []; // What happens to later requests, see the operation `fault`.

const spent = {}; // Milliseconds from the headers of a request to the end of its reply, the sum of each endpoint.
const repliedAt = {}; // When the last reply of an endpoint was handed to the system, in milliseconds since 1970.

const count = (counters, name) => { counters[name] = (counters[name] ?? 0) + 1; };

const secretNames = ['code', 'code_verifier', 'refresh_token', 'access_token', 'id_token', 'device_code', 'token', 'request_uri'];

function collectSecrets(values) {
    for (const name of secretNames) {
        if (typeof values?.[name] === 'string')
            secrets.add(values[name]);
    }
}

function collectFromAddress(address) {
    if (typeof address === 'string' && URL.canParse(address))
        collectSecrets(Object.fromEntries(new URL(address).searchParams));
}

const endpoints = {
    '/.well-known/openid-configuration': 'discovery', '/jwks': 'keys', '/auth': 'authorization', '/token': 'token',
    '/me': 'userinfo', '/token/revocation': 'revocation', '/session/end': 'endSession', '/device/auth': 'device',
    '/request': 'pushed',
};

const wait = milliseconds => new Promise(resolve => { setTimeout(resolve, milliseconds); });

/// The first fault for this request, which is then used up. `grant`: the grant type of a token request, once it is known.
function takeFault(endpoint, when, grant) {
    const index = faults.findIndex(fault => fault.endpoint === endpoint && fault.when === when &&
        (fault.grant === undefined || fault.grant === grant));
    if (index < 0)
        return undefined;
    const fault = faults[index];
    if (--fault.count === 0)
        faults.splice(index, 1);
    return fault;
}

/// Measures before anything of the provider runs.
function measure(request, response) {
    const endpoint = endpoints[request.url.split('?')[0]];
    const began = performance.now();
    response.once('finish', () => {
        if (endpoint)
            spent[endpoint] = (spent[endpoint] ?? 0) + performance.now() - began;
    });
}

async function watch(context, next) {
    const endpoint = endpoints[context.path];
    const before = takeFault(endpoint, 'before');
    if (before)
        count(events, `fault.${endpoint}.before`);
    if (before?.effect === 'status') {
        context.status = before.status;
        context.set(before.headers ?? {});
        context.body = before.body ?? '';
        count(counts, endpoint);
        return;
    }
    if (before?.effect === 'delay')
        await wait(before.milliseconds);
    if (before?.effect === 'close') {
        context.respond = false;
        context.req.socket.destroy();
        return;
    }
    await next();
    if (!endpoint)
        return;
    count(counts, endpoint);
    const form = context.oidc?.body;
    const grant = endpoint === 'token' ? form?.grant_type : undefined;
    if (grant)
        count(counts, `token:${grant.split(':').at(-1)}`);
    collectSecrets(form);
    if (typeof context.body === 'object' && !Buffer.isBuffer(context.body) && endpoint !== 'discovery')
        collectSecrets(context.body);
    collectFromAddress(context.response.get('Location'));
    context.res.once('finish', () => { repliedAt[endpoint] = Date.now(); });
    const after = takeFault(endpoint, 'after', grant);
    if (!after)
        return;
    count(events, `fault.${endpoint}.after`);
    if (after.effect === 'delay')
        await wait(after.milliseconds);
    if (after.effect === 'lose') {
        context.respond = false;
        context.req.socket.destroy();
    }
}

// --- The provider ---------------------------------------------------------------------------------------------------

const users = new Map(); // Subject -> claims that differ from those below.

const claimsOf = subject => ({
    sub: subject, name: `${subject} Example`, given_name: subject, family_name: 'Example', preferred_username: subject,
    email: `${subject}@example.com`, email_verified: true, ...users.get(subject),
});

const deviceGrant = 'urn:ietf:params:oauth:grant-type:device_code';

function configuration(storage, keys) {
    return {
        adapter: storage.adapter(),
        clients: settings.clients.map(client => ({
            client_id: client,
            client_name: `Client ${client}`,
            application_type: 'native',
            token_endpoint_auth_method: 'none',
            grant_types: ['authorization_code', 'refresh_token', deviceGrant],
            response_types: ['code'],
            redirect_uris: settings.redirects,
            post_logout_redirect_uris: settings.redirects,
            id_token_signed_response_alg: settings.algorithm,
        })),
        jwks: { keys },
        enabledJWA: { idTokenSigningAlgValues: algorithms },
        cookies: { keys: ['keys of the test'] },
        claims: {
            openid: ['sub'], email: ['email', 'email_verified'],
            profile: ['name', 'given_name', 'family_name', 'preferred_username'],
        },
        findAccount: (context, subject) => ({ accountId: subject, claims: () => claimsOf(subject) }),
        features: {
            devInteractions: { enabled: true },
            deviceFlow: { enabled: true },
            revocation: { enabled: true },
            rpInitiatedLogout: { enabled: true },
            pushedAuthorizationRequests: { enabled: true, requirePushedAuthorizationRequests: settings.pushedRequests },
        },
        pkce: { required: () => true },
        rotateRefreshToken: true,
        issueRefreshToken: (context, client, source) => client.grantTypeAllowed('refresh_token') &&
            (!settings.offlineAccess || source.scopes.has('offline_access')),
        ttl: Object.fromEntries(Object.keys(lifetimes).map(model => [model, () => lifetimes[model]])),
    };
}

/// One issuer. Its provider is replaced when keys are rotated.
class Issuer {
    constructor() {
        this.storage = new Storage();
    }

    async start(certificate) {
        const { port } = await listen((request, response) => {
            measure(request, response);
            this.callback(request, response);
        }, certificate);
        this.issuer = certificate ? `https://localhost:${port}` : `http://127.0.0.1:${port}`;
    }

    use(keys) {
        const provider = new Provider(this.issuer, configuration(this.storage, keys));
        provider.use(watch);
        for (const name of ['grant.revoked', 'grant.success', 'grant.error', 'server_error', 'refresh_token.consumed',
            'authorization_code.consumed', 'interaction.started', 'authorization.success'])
            provider.on(name, () => count(events, name));
        provider.on('server_error', (context, error) => console.error(error));
        this.callback = provider.callback();
    }
}

const certificates = new Certificates(settings.certificates || temporaryFolder());
if (!settings.certificates) {
    certificates.makeRoot('root');
    certificates.make('localhost', 'root', 'localhost');
}
const secure = new Issuer();
const plain = new Issuer();
const issuers = [secure, plain];
await secure.start(certificates.load('localhost'));
await plain.start();
let keys = await makeKeys();
issuers.forEach(issuer => issuer.use(keys));

// --- Control --------------------------------------------------------------------------------------------------------

const removeEverywhere = matches => issuers.reduce((sum, { storage }) => sum + storage.removeWhere(matches), 0);

const clear = counters => { for (const name of Object.keys(counters)) delete counters[name]; };

const address = await serveControl({
    /// Counts of requests and events, the time that requests took, when replies were sent, and the refresh tokens that still work, by client.
    state: () => {
        const refreshTokens = {};
        for (const { storage } of issuers) {
            for (const { clientId, consumed } of storage.all('RefreshToken')) {
                if (!consumed)
                    count(refreshTokens, clientId);
            }
        }
        return { counts, events, refreshTokens, lifetimes, spent, repliedAt };
    },
    reset: () => { clear(counts); clear(events); clear(spent); clear(repliedAt); faults.length = 0; },
    /// { keep: true } leaves the old keys in the set, behind the new ones.
    rotateKeys: async ({ keep = false }) => {
        keys = [...await makeKeys(), ...keep ? keys : []];
        issuers.forEach(issuer => issuer.use(keys));
        return { kids: keys.map(({ kid }) => kid) };
    },
    /// Seconds by model; for what is issued from now on.
    setLifetimes: values => {
        const unknown = Object.keys(values).find(name => !(name in lifetimes));
        if (unknown)
            throw new Error(`unknown lifetime: ${unknown}`);
        Object.assign(lifetimes, values);
    },
    /// Ends grants: those of one client, or all.
    revokeGrants: ({ client }) => ({
        removed: removeEverywhere((payload, key) => /^(Grant|RefreshToken|AccessToken):/.test(key) &&
            (client === undefined || payload.clientId === client)),
    }),
    /// Lets refresh tokens expire: those of one client, or all.
    expireRefreshTokens: ({ client }) => ({
        removed: removeEverywhere((payload, key) => key.startsWith('RefreshToken:') &&
            (client === undefined || payload.clientId === client)),
    }),
    /// Ends the sessions of browsers, so that the next sign-in needs a password.
    endSessions: () => ({ removed: removeEverywhere((payload, key) => key.startsWith('Session:')) }),
    setUser: ({ sub, ...claims }) => { users.set(sub, claims); },
    /// Changes what happens to the next requests of an endpoint: { endpoint, effect, count: 1 }. Before the provider sees the
    /// request: effect 'close'; 'delay' with `milliseconds`; 'status' with `status`, `headers`, `body`. After it carried the
    /// request out: 'lose' closes the connection instead of the reply; 'delay' with when: 'after'. `grant`: only for token
    /// requests of this grant type, after.
    fault: fault => {
        faults.push({ count: 1, when: fault.effect === 'lose' ? 'after' : 'before', ...fault });
    },
    /// Every token, code, verifier and device code so far, for a search by value.
    secrets: () => ({ values: [...secrets] }),
    stop: () => { setTimeout(() => process.exit(0)); },
});

ready({
    issuer: secure.issuer, insecureIssuer: plain.issuer, control: address, certificates: certificates.folder,
    root: join(certificates.folder, 'root.pem'), rootForWindows: join(certificates.folder, 'root.der'),
});
