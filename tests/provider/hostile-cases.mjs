// The cases of the provider that misbehaves, as a table. Each has
//   name      the last part of its issuer's address
//   code      the agent's result code, 0 for success
//   log       words that one line of the agent's log holds, all of them
//   phase     what is done: 'login' (the default), or after a login 'refresh', 'user', 'logout', 'token'; 'twice' is a login, a
//             logout and a login
//   signIn    'browser' (the default) or 'device'
//   browser   what the browser does, see browser.mjs
//   slow      the case lasts until a limit
//   standard  what asks for it
//   ofTest    the relying-party test of the OpenID Foundation that it corresponds to
//   topic     set below: what the case is about, for docs/openid.md
//   change    makes the issuer of hostile.mjs misbehave

import { base64url, headerOf, keyOf, signToken, withAlteredSignature } from './tokens.mjs';

const core = section => `OpenID Connect Core 1.0, ${section}`;
const discovery = 'OpenID Connect Discovery 1.0, 4.3';
const practice = section => `RFC 8725, ${section}`;
const security = section => `RFC 9700, ${section}`;
const field = 'seen in the field';

const success = 0;
const textTooLong = 4022;
const timedOut = 4020;
const unreachable = 4031;
const discoveryMalformed = 4033;
const otherIssuer = 4034;
const pkceNotOffered = 4035;
const denied = 4038;
const failedAtProvider = 4039;
const redirectOfOtherIssuer = 4041;
const redirectMalformed = 4042;
const tokenEndpointError = 4043;
const tokenReplyMalformed = 4044;
const idTokenRefused = 4045;
const subjectDiffers = 4046;
const grantRefused = 4047;
const replyTooLarge = 4048;
const clockOff = 4049;
const providerFailed = 4050;
const keysMalformed = 4051;
const userInfoMalformed = 4052;
const deviceNotOffered = 4053;
const deviceReplyMalformed = 4054;
const deviceCodeExpired = 4055;
const pushedRefused = 4056;

const now = () => Math.floor(Date.now() / 1000);
const claims = values => issuer => { Object.assign(issuer.claims, values); };
const later = makeValues => issuer => { // Values that depend on the time of the request.
    issuer.changeIdToken = (token, all) => {
        const { privateKey } = keyOf('rsa');
        return signToken(headerOf(token), { ...all, ...makeValues() }, 'RS256', privateKey);
    };
};
const metadata = values => issuer => { Object.assign(issuer.metadata, values); };
const header = values => issuer => { Object.assign(issuer.header, values); };
const tokens = values => issuer => { Object.assign(issuer.tokens, values); };
const signedBy = algorithm => issuer => { issuer.algorithm = algorithm; };
const changed = change => issuer => { issuer.changeIdToken = change; };
const replyOf = (endpoint, status, value, headers) => issuer => {
    issuer.hooks[endpoint] = response => { issuer.reply(response, status, value, headers); return true; };
};

// --- Signatures -----------------------------------------------------------------------------------------------------

const offered = ['RS256', 'RS384', 'RS512', 'PS256', 'PS384', 'PS512', 'ES256', 'ES384'];
const signatureCases = [
    ...offered.map(algorithm => ({
        name: `SignatureBy${algorithm}`, code: success, change: signedBy(algorithm), standard: core('3.1.3.7'),
        ofTest: { RS256: 'oidcc-client-test-idtoken-sig-rs256', ES256: 'oidcc-client-test-idtoken-sig-es256' }[algorithm],
    })),
    ...offered.map(algorithm => ({
        name: `BadSignatureBy${algorithm}`, code: idTokenRefused, log: ['a signature that does not match'],
        standard: core('3.1.3.7'),
        ofTest: {
            RS256: 'oidcc-client-test-invalid-sig-rs256', ES256: 'oidcc-client-test-invalid-sig-es256',
        }[algorithm],
        change: issuer => {
            issuer.algorithm = algorithm;
            issuer.changeIdToken = withAlteredSignature;
        },
    })),
    {
        name: 'AlgorithmNone', code: idTokenRefused, log: ['"alg" "none"'], standard: practice('2.1'),
        ofTest: 'oidcc-client-test-idtoken-sig-none',
        change: changed((token, all) => `${base64url({ alg: 'none' })}.${base64url(all)}.`),
    },
    {
        name: 'AlgorithmNoneInOtherLetters', code: idTokenRefused, log: ['"alg" "nOnE"'], standard: practice('2.1'),
        change: changed((token, all) => `${base64url({ alg: 'nOnE' })}.${base64url(all)}.`),
    },
    {
        name: 'AlgorithmHS256WithThePublicKey', code: idTokenRefused, log: ['"alg" "HS256"'], standard: practice('2.1'),
        change: changed((token, all) => signToken({ alg: 'HS256', kid: 'key' }, all, 'HS256', JSON.stringify(keyOf('rsa').jwk))),
    },
    {
        name: 'AlgorithmES512', code: idTokenRefused, log: ['"alg" "ES512"'], standard: practice('3.1'),
        change: signedBy('ES512'),
    },
    {
        name: 'AlgorithmEdDSA', code: idTokenRefused, log: ['"alg" "EdDSA"'], standard: practice('3.1'),
        change: signedBy('EdDSA'),
    },
    {
        name: 'AlgorithmMissing', code: idTokenRefused, log: ['"alg" missing'], standard: practice('3.1'),
        change: header({ alg: undefined }),
    },
    {
        name: 'AlgorithmThatIsNotListed', code: idTokenRefused, log: ['"alg" "RS512"'], standard: practice('3.1'),
        change: issuer => {
            issuer.algorithm = 'RS512';
            issuer.metadata.id_token_signing_alg_values_supported = ['RS256'];
        },
    },
    {
        name: 'SaltOfAnotherLength', code: idTokenRefused, log: ['a signature that does not match'], standard: 'RFC 7518, 3.5',
        change: issuer => {
            issuer.algorithm = 'PS256';
            issuer.saltLength = 20;
        },
    },
    {
        name: 'SignatureEmpty', code: idTokenRefused, log: ['a signature that does not match'], standard: practice('3.3'),
        change: changed(token => token.slice(0, token.lastIndexOf('.') + 1)),
    },
    {
        name: 'SignatureOfZeros', code: idTokenRefused, log: ['a signature that does not match'], standard: practice('3.3'),
        change: issuer => {
            issuer.algorithm = 'ES256';
            issuer.changeIdToken = token => token.slice(0, token.lastIndexOf('.') + 1) + base64url(Buffer.alloc(64));
        },
    },
    {
        name: 'PayloadOfAnotherToken', code: idTokenRefused, log: ['a signature that does not match'], standard: practice('3.3'),
        change: changed((token, all) => token.split('.').with(1, base64url({ ...all, sub: 'admin' })).join('.')),
    },
    {
        name: 'CriticalExtension', code: idTokenRefused, log: ['"crit" in its header'], standard: 'RFC 7515, 4.1.11',
        change: header({ crit: ['exp'], exp: 1 }),
    },
    {
        name: 'TypeOfAccessTokens', code: idTokenRefused, log: ['"typ" "at+jwt"'], standard: practice('3.11'),
        change: header({ typ: 'at+jwt' }),
    },
    { name: 'TypeInLowerCase', code: success, standard: practice('3.11'), change: header({ typ: 'jwt' }) },
    {
        name: 'KeyInTheHeader', code: idTokenRefused, log: ['a signature that does not match'], standard: practice('3.10'),
        change: changed((token, all) => signToken({ alg: 'RS256', kid: 'key', jwk: keyOf('otherRsa').jwk }, all, 'RS256',
            keyOf('otherRsa').privateKey)),
    },
    {
        name: 'AddressOfKeysInTheHeader', code: idTokenRefused, log: ['a signature that does not match'], standard: practice('3.10'),
        change: issuer => {
            issuer.changeIdToken = (token, all) => signToken({ alg: 'RS256', kid: 'key', jku: `${issuer.issuer}/verify` }, all,
                'RS256', keyOf('otherRsa').privateKey);
        },
    },
    {
        name: 'EncryptedToken', code: idTokenRefused, log: ['encrypted tokens are not supported'], standard: core('10.2'),
        change: changed(() => 'eyJhbGciOiJSU0EtT0FFUCIsImVuYyI6IkExMjhHQ00ifQ.a.b.c.d'),
    },
    {
        name: 'TwoParts', code: idTokenRefused, log: ['another number of parts'], standard: practice('3.4'),
        change: changed(token => token.slice(0, token.lastIndexOf('.'))),
    },
    {
        name: 'NoBase64url', code: idTokenRefused, log: ['another character or a wrong length'], standard: 'RFC 7515, 2',
        change: changed(token => `${token}=`),
    },
    {
        name: 'HeaderThatIsNoJson', code: idTokenRefused, log: ['header is JSON'], standard: practice('3.4'),
        change: changed(token => ['AAAA', ...token.split('.').slice(1)].join('.')),
    },
    {
        name: 'HeaderWithRepeatedMember', code: idTokenRefused, log: ['a text that is not JSON'], standard: practice('2.4'),
        change: changed(token => [base64url('{"alg":"none","alg":"RS256"}'), ...token.split('.').slice(1)].join('.')),
    },
    {
        name: 'IdTokenTooLong', code: tokenReplyMalformed, log: ['no usable "id_token"'], standard: practice('3.4'),
        change: changed(token => token + 'A'.repeat(70_000)),
    },
    {
        name: 'IdTokenMissing', code: idTokenRefused, log: ['expected an ID token; came none'], standard: core('3.1.3.3'),
        change: tokens({ id_token: undefined }),
    },
];

// --- Keys -----------------------------------------------------------------------------------------------------------

const jwk = (kind, members) => ({ ...keyOf(kind).jwk, ...members });
const keySet = makeKeys => issuer => { issuer.keys = makeKeys(); };
const notInSet = ['a key that is not in the set, or is of another type'];
const keyCases = [
    {
        name: 'KeyIdAbsentWithOneKey', code: success, standard: core('10.1'),
        ofTest: 'oidcc-client-test-kid-absent-single-jwks', change: issuer => {
            issuer.header = {};
            issuer.keys = [jwk('rsa')];
        },
    },
    {
        name: 'KeyIdAbsentWithSeveralKeys', code: success, standard: core('10.1'),
        ofTest: 'oidcc-client-test-kid-absent-multiple-jwks', change: issuer => {
            issuer.header = {};
            issuer.keys = [jwk('p256', { kid: 'a' }), jwk('otherRsa', { kid: 'b' }), jwk('rsa', { kid: 'c' })];
        },
    },
    {
        name: 'KeyIdAbsentAndNoKeyFits', code: idTokenRefused, log: ['a signature that does not match'], standard: core('10.1'),
        change: issuer => {
            issuer.header = {};
            issuer.keys = [jwk('p256'), jwk('otherRsa')];
        },
    },
    { name: 'KeyIdUnknown', code: idTokenRefused, log: notInSet, standard: core('10.1'), change: header({ kid: 'other' }) },
    {
        name: 'KeyIdThatIsNoText', code: idTokenRefused, log: ['"kid" is a short text'], standard: practice('3.10'),
        change: header({ kid: 1 }),
    },
    {
        name: 'KeyOfWrongType', code: idTokenRefused, log: notInSet, standard: practice('3.1'),
        change: keySet(() => [jwk('p256', { kid: 'key' })]),
    },
    {
        name: 'KeyOfOtherCurve', code: idTokenRefused, log: notInSet, standard: practice('3.1'),
        change: issuer => {
            issuer.algorithm = 'ES256';
            issuer.keys = [jwk('p384', { kid: 'key' })];
        },
    },
    {
        name: 'KeyForEncryption', code: idTokenRefused, log: notInSet, standard: 'RFC 7517, 4.2',
        change: keySet(() => [jwk('rsa', { kid: 'key', use: 'enc' })]),
    },
    {
        name: 'KeyForOtherOperations', code: idTokenRefused, log: notInSet, standard: 'RFC 7517, 4.3',
        change: keySet(() => [jwk('rsa', { kid: 'key', key_ops: ['encrypt'] })]),
    },
    {
        name: 'KeyForAnotherAlgorithm', code: idTokenRefused, log: notInSet, standard: 'RFC 7517, 4.4',
        change: keySet(() => [jwk('rsa', { kid: 'key', alg: 'PS256' })]),
    },
    {
        name: 'RsaKeyOf1024Bits', code: idTokenRefused, log: notInSet, standard: 'RFC 7518, 3.3',
        change: issuer => { issuer.signingKey = 'weakRsa'; },
    },
    {
        name: 'RsaExponentOne', code: idTokenRefused, log: notInSet, standard: practice('3.4'),
        change: keySet(() => [jwk('rsa', { kid: 'key', e: 'AQ' })]),
    },
    {
        name: 'PointThatIsNotOnTheCurve', code: idTokenRefused, log: ['a signature that does not match'], standard: practice('3.4'),
        change: issuer => {
            issuer.algorithm = 'ES256';
            issuer.keys = [jwk('p256', { kid: 'key', y: base64url(Buffer.alloc(32, 1)) })];
        },
    },
    {
        name: 'UnknownKeysBesideTheRightOne', code: success, standard: 'RFC 7517, 5',
        change: keySet(() => [{ kty: 'OKP', crv: 'Ed25519', x: 'AAAA' }, 7, { kty: 'future' }, jwk('rsa', { kid: 'key' })]),
    },
    {
        name: 'SeveralKeysWithOneKeyId', code: success, standard: 'RFC 7517, 4.5',
        change: keySet(() => [jwk('otherRsa', { kid: 'key' }), jwk('rsa', { kid: 'key' })]),
    },
    {
        name: 'KeysRotatedBeforeTheToken', code: success, standard: core('10.1.1'), phase: 'twice',
        ofTest: 'oidcc-client-test-signing-key-rotation',
        // The second sign-in comes with a new key and a new name for it.
        change: issuer => {
            let tokensMade = 0;
            issuer.hooks.token = () => {
                if (++tokensMade > 1) {
                    issuer.signingKey = 'otherRsa';
                    issuer.header = { kid: 'new' };
                    issuer.keys = [jwk('otherRsa', { kid: 'new' })];
                }
            };
        },
    },
    {
        name: 'KeysRotatedWithTheSameName', code: success, standard: core('10.1.1'), phase: 'twice',
        ofTest: 'oidcc-client-test-signing-key-rotation-just-before-signing',
        change: issuer => {
            let tokensMade = 0;
            issuer.hooks.token = () => { issuer.signingKey = ++tokensMade > 1 ? 'otherRsa' : undefined; };
        },
    },
    { name: 'KeySetEmpty', code: idTokenRefused, log: notInSet, standard: core('10.1'), change: keySet(() => []) },
    {
        name: 'KeySetWithoutKeys', code: keysMalformed, log: ['JSON without a list of keys'], standard: 'RFC 7517, 5',
        change: replyOf('keys', 200, {}),
    },
    {
        name: 'KeySetNestedTooDeeply', code: keysMalformed, log: ['nested too deeply'], standard: practice('3.4'),
        change: replyOf('keys', 200, `{"keys":${'['.repeat(1000)}${']'.repeat(1000)}}`),
    },
    {
        name: 'KeySetWithTooManyValues', code: keysMalformed, log: ['too many values'], standard: practice('3.4'),
        change: replyOf('keys', 200, { keys: Array(20_000).fill(0) }),
    },
    {
        name: 'KeySetOfTheStandardsMediaType', code: success, standard: 'RFC 7517, 8.5',
        change: issuer => {
            issuer.hooks.keys = response => {
                issuer.reply(response, 200, issuer.keySet(), { 'Content-Type': 'application/jwk-set+json' });
                return true;
            };
        },
    },
];

// --- Claims ---------------------------------------------------------------------------------------------------------

const claimCases = [
    {
        name: 'NonceOfAnotherSignIn', code: idTokenRefused, log: ['the nonce of the request', 'another one'],
        standard: core('3.1.3.7'), ofTest: 'oidcc-client-test-nonce-invalid', change: claims({ nonce: 'other' }),
    },
    {
        name: 'NonceMissing', code: idTokenRefused, log: ['no "nonce"'], standard: core('3.1.3.7'),
        change: claims({ nonce: undefined }),
    },
    {
        name: 'IssuerOfAnotherProvider', code: idTokenRefused, log: ['"iss" "https://other.example.com"'],
        standard: core('3.1.3.7'), ofTest: 'oidcc-client-test-invalid-iss', change: claims({ iss: 'https://other.example.com' }),
    },
    {
        name: 'IssuerWithASlashMore', code: idTokenRefused, log: ['an ID token of the issuer'], standard: core('3.1.3.7'),
        change: issuer => { issuer.claims.iss = `${issuer.issuer}/`; },
    },
    {
        name: 'IssuerMissing', code: idTokenRefused, log: ['no "iss"'], standard: core('2'), change: claims({ iss: undefined }),
    },
    {
        name: 'AudienceOfAnotherClient', code: idTokenRefused, log: ['"aud" "other"'], standard: core('3.1.3.7'),
        ofTest: 'oidcc-client-test-invalid-aud', change: claims({ aud: 'other' }),
    },
    {
        name: 'AudienceOfOtherClients', code: idTokenRefused, log: ['"aud" of 2 other clients'], standard: core('3.1.3.7'),
        change: claims({ aud: ['a', 'b'] }),
    },
    {
        name: 'AudienceMissing', code: idTokenRefused, log: ['no "aud"'], standard: core('2'),
        ofTest: 'oidcc-client-test-missing-aud', change: claims({ aud: undefined }),
    },
    {
        name: 'SeveralAudiencesWithoutAuthorizedParty', code: idTokenRefused, log: ['expected "azp"'], standard: core('3.1.3.7'),
        change: changed((token, all) => signToken(headerOf(token), { ...all, aud: [all.aud, 'other'] }, 'RS256',
            keyOf('rsa').privateKey)),
    },
    {
        name: 'SeveralAudiencesWithAuthorizedParty', code: success, standard: core('3.1.3.7'),
        change: changed((token, all) => signToken(headerOf(token), { ...all, aud: [all.aud, 'other'], azp: all.aud }, 'RS256',
            keyOf('rsa').privateKey)),
    },
    {
        name: 'AuthorizedPartyIsAnotherClient', code: idTokenRefused, log: ['"azp" "other"'], standard: core('3.1.3.7'),
        change: claims({ azp: 'other' }),
    },
    {
        name: 'SubjectMissing', code: idTokenRefused, log: ['no "sub"'], standard: core('2'),
        ofTest: 'oidcc-client-test-missing-sub', change: claims({ sub: undefined }),
    },
    {
        name: 'SubjectTooLong', code: idTokenRefused, log: ['"sub" of 1 to 255 bytes'], standard: core('2'),
        change: claims({ sub: 'a'.repeat(256) }),
    },
    {
        name: 'Expired', code: idTokenRefused, log: ['"exp"', 'seconds ago'], standard: core('3.1.3.7'),
        change: later(() => ({ exp: now() - 300, iat: now() - 600 })),
    },
    {
        name: 'ExpiryMissing', code: idTokenRefused, log: ['no "exp"'], standard: core('2'), change: claims({ exp: undefined }),
    },
    {
        name: 'ExpiryAsAText', code: idTokenRefused, log: ['"exp" as a number of seconds'], standard: core('2'),
        change: later(() => ({ exp: String(now() + 600) })),
    },
    {
        name: 'ExpiryBeyondEveryNumber', code: idTokenRefused, log: ['"exp" as a number of seconds'], standard: practice('3.4'),
        change: claims({ exp: 1e300 }),
    },
    {
        name: 'IssuedInTheFuture', code: idTokenRefused, log: ['"iat"', 'seconds from now'], standard: core('3.1.3.7'),
        change: later(() => ({ iat: now() + 600, exp: now() + 1200 })),
    },
    {
        name: 'IssueTimeMissing', code: idTokenRefused, log: ['no "iat"'], standard: core('2'),
        ofTest: 'oidcc-client-test-missing-iat', change: claims({ iat: undefined }),
    },
    {
        name: 'NotYetValid', code: idTokenRefused, log: ['"nbf"', 'seconds from now'], standard: 'RFC 7519, 4.1.5',
        change: later(() => ({ nbf: now() + 600 })),
    },
    {
        name: 'ClockOff', code: clockOff, log: ['a clock within 60 seconds of the provider\'s', 'a difference of'],
        standard: core('3.1.3.7'), change: issuer => {
            later(() => ({ iat: now() + 3600, exp: now() + 7200 }))(issuer);
            issuer.hooks.token = () => { issuer.date = new Date(Date.now() + 3_600_000).toUTCString(); };
        },
    },
    {
        // The provider's clock differs, and its tokens are right by this machine's.
        name: 'ClockAhead', code: success, standard: field, change: issuer => {
            issuer.hooks.discovery = () => { issuer.date = new Date(Date.now() + 300_000).toUTCString(); };
        },
    },
    {
        name: 'AccessTokenHashOfAnotherToken', code: idTokenRefused, log: ['"at_hash" of the access token'],
        standard: core('3.1.3.8'), change: claims({ at_hash: '77QmUPtjPfzWtF2AnpK9RQ' }),
    },
    { name: 'AccessTokenHashAbsent', code: success, standard: field, change: claims({ at_hash: undefined }) },
    { name: 'AccessTokenHashByRS512', code: success, standard: core('3.1.3.6'), change: signedBy('RS512') },
    {
        name: 'EveryClaimFromUserInfo', code: success, phase: 'user', standard: core('5.4'),
        ofTest: 'oidcc-client-test-scope-userinfo-claims',
    },
];

// --- Discovery ------------------------------------------------------------------------------------------------------

const discoveryCases = [
    { name: 'WellBehaved', code: success, standard: core('3.1'), ofTest: 'oidcc-client-test' },
    { name: 'Discovery', code: success, standard: discovery, ofTest: 'oidcc-client-test-discovery-openid-config' },
    { name: 'KeysFromDiscovery', code: success, standard: discovery, ofTest: 'oidcc-client-test-discovery-jwks-uri-keys' },
    {
        name: 'IssuerMismatchInDiscovery', code: otherIssuer, log: ['came "https://other.example.com"'], standard: discovery,
        ofTest: 'oidcc-client-test-discovery-issuer-mismatch', change: metadata({ issuer: 'https://other.example.com' }),
    },
    {
        name: 'IssuerMissingInDiscovery', code: otherIssuer, log: ['came none'], standard: discovery,
        change: metadata({ issuer: undefined }),
    },
    {
        name: 'PkceOnlyPlain', code: pkceNotOffered, log: ['other methods'], standard: security('2.1.1'),
        change: metadata({ code_challenge_methods_supported: ['plain'] }),
    },
    {
        name: 'PkceNotListed', code: pkceNotOffered, log: ['no list of methods'], standard: security('2.1.1'),
        change: metadata({ code_challenge_methods_supported: undefined }),
    },
    {
        name: 'TokenEndpointOverHttp', code: discoveryMalformed, log: ['"token_endpoint" with an https address'],
        standard: security('2.6'), change: metadata({ token_endpoint: 'http://login.example.com/token' }),
    },
    {
        name: 'TokenEndpointMissing', code: discoveryMalformed, log: ['"token_endpoint"', 'came none'], standard: discovery,
        change: metadata({ token_endpoint: undefined }),
    },
    {
        name: 'AuthorizationEndpointThatIsAScript', code: discoveryMalformed, log: ['"authorization_endpoint"'],
        standard: security('4.11'), change: metadata({ authorization_endpoint: 'javascript:alert(1)' }),
    },
    {
        name: 'AuthorizationEndpointThatIsAFile', code: discoveryMalformed, log: ['"authorization_endpoint"'],
        standard: security('4.11'), change: metadata({ authorization_endpoint: 'file:///C:/Windows/system32/calc.exe' }),
    },
    {
        name: 'AuthorizationEndpointWithAUser', code: discoveryMalformed, log: ['"authorization_endpoint"'],
        standard: security('4.11'), change: metadata({ authorization_endpoint: 'https://login.example.com@attacker.example/' }),
    },
    {
        name: 'AuthorizationEndpointWithAFragment', code: discoveryMalformed, log: ['"authorization_endpoint"'],
        standard: 'RFC 6749, 3.1', change: metadata({ authorization_endpoint: 'https://login.example.com/#a' }),
    },
    {
        name: 'AuthorizationEndpointTooLong', code: discoveryMalformed, log: ['"authorization_endpoint"'],
        standard: practice('3.4'), change: metadata({ authorization_endpoint: `https://login.example.com/${'a'.repeat(4000)}` }),
    },
    {
        name: 'UserInfoEndpointThatIsNoAddress', code: discoveryMalformed, log: ['"userinfo_endpoint"'], standard: discovery,
        change: metadata({ userinfo_endpoint: 7 }),
    },
    {
        name: 'KeySetAddressMissing', code: discoveryMalformed, log: ['"jwks_uri"', 'came none'], standard: discovery,
        change: metadata({ jwks_uri: undefined }),
    },
    {
        name: 'CodeFlowNotOffered', code: discoveryMalformed, log: ['other response types'], standard: discovery,
        change: metadata({ response_types_supported: ['id_token'] }),
    },
    {
        name: 'PushedRequestsRequiredWithoutEndpoint', code: discoveryMalformed, log: ['"pushed_authorization_request_endpoint"'],
        standard: 'RFC 9126, 5', change: metadata({
            require_pushed_authorization_requests: true, pushed_authorization_request_endpoint: undefined,
        }),
    },
    {
        name: 'DiscoveryWithRepeatedIssuer', code: discoveryMalformed, log: ['a text that is not JSON'], standard: practice('2.4'),
        change: issuer => {
            issuer.hooks.discovery = response => {
                const text = JSON.stringify(issuer.metadata);
                issuer.reply(response, 200, `{"issuer":"https://other.example.com",${text.slice(1)}`);
                return true;
            };
        },
    },
];

// --- The redirect ---------------------------------------------------------------------------------------------------

const redirect = values => issuer => { Object.assign(issuer.redirect, values); };
const ignoredState = ['A redirect with a wrong state was ignored'];
const redirectCases = [
    {
        name: 'MixUp', code: redirectOfOtherIssuer, log: ['"https://attacker.example"'], standard: security('4.4'),
        change: redirect({ iss: 'https://attacker.example' }),
    },
    {
        name: 'MixUpWithoutIssuer', code: redirectOfOtherIssuer, log: ['came none'], standard: 'RFC 9207, 2.4',
        change: redirect({ iss: undefined }),
    },
    {
        name: 'IssuerInTheRedirectThatIsNotAnnounced', code: success, standard: 'RFC 9207, 2.4',
        change: metadata({ authorization_response_iss_parameter_supported: undefined }),
    },
    {
        name: 'IssuerNeitherAnnouncedNorSent', code: success, standard: 'RFC 9207, 2.4', change: issuer => {
            delete issuer.metadata.authorization_response_iss_parameter_supported;
            issuer.redirect.iss = undefined;
        },
    },
    {
        name: 'CodeOfAnotherSignIn', code: grantRefused, log: ['"invalid_grant"'], standard: security('4.5'), browser: 'otherCode',
    },
    {
        name: 'StateOfAnotherSignIn', code: success, log: ignoredState, standard: security('4.7'), browser: 'wrongStateThenReal',
    },
    {
        name: 'StateOfAnotherSignInOnly', code: timedOut, log: ignoredState, standard: security('4.7'), browser: 'wrongState',
        slow: true,
    },
    {
        name: 'OtherPathThanTheRedirect', code: success, standard: security('4.1'), browser: 'otherPathThenReal',
    },
    { name: 'RedirectByPost', code: success, standard: security('4.1'), browser: 'postThenReal' },
    { name: 'RedirectOf100Kilobytes', code: success, standard: security('4.1'), browser: 'longThenReal' },
    { name: 'RedirectThatIsNoHttp', code: success, standard: security('4.1'), browser: 'nonsenseThenReal' },
    { name: 'ConnectionsThatSendNothing', code: success, standard: security('4.1'), browser: 'idleConnectionsThenReal' },
    { name: 'RedirectThatComesTwice', code: success, standard: security('4.5'), browser: 'twice' },
    {
        name: 'ParameterThatIsThereTwice', code: redirectMalformed, log: ['a repeated parameter'], standard: 'RFC 6749, 3.1',
        browser: 'repeatedParameter',
    },
    {
        name: 'CodeAndError', code: redirectMalformed, log: ['came both'], standard: 'RFC 6749, 4.1.2', browser: 'codeAndError',
    },
    {
        name: 'NeitherCodeNorError', code: redirectMalformed, log: ['came neither'], standard: 'RFC 6749, 4.1.2',
        browser: 'noCode',
    },
    {
        name: 'CodeWithControlCharacters', code: redirectMalformed, log: ['a code of printable characters'],
        standard: 'RFC 6749, A.11', change: redirect({ code: 'a\r\nb' }),
    },
    {
        name: 'Denied', code: denied, log: ['the error "access_denied"'], standard: 'RFC 6749, 4.1.2.1',
        change: redirect({ code: undefined, error: 'access_denied', error_description: 'The user said no' }),
    },
    {
        name: 'LoginRequired', code: failedAtProvider, log: ['the error "login_required" with the text "Sign in first"'],
        standard: core('3.1.2.6'),
        change: redirect({ code: undefined, error: 'login_required', error_description: 'Sign in first' }),
    },
    {
        name: 'ErrorWithControlCharacters', code: failedAtProvider, log: ['"a?b?[1m"'], standard: 'RFC 6749, 4.1.2.1',
        change: redirect({ code: undefined, error: 'server_error', error_description: 'a\nb\u001b[1m' }),
    },
];

// --- Replies with tokens --------------------------------------------------------------------------------------------

const tokenCases = [
    {
        name: 'CodeRefused', code: grantRefused, log: ['"invalid_grant" with the text "code is expired"'], standard: 'RFC 6749, 5.2',
        change: replyOf('token', 400, { error: 'invalid_grant', error_description: 'code is expired' }),
    },
    {
        name: 'ClientRefused', code: tokenEndpointError, log: ['"invalid_client"'], standard: 'RFC 6749, 5.2',
        change: replyOf('token', 401, { error: 'invalid_client' }),
    },
    {
        name: 'ErrorWithAnEmptyBody', code: tokenEndpointError, log: ['status 400', 'without an error'], standard: field,
        change: replyOf('token', 400, ''),
    },
    {
        name: 'ErrorAsHtml', code: tokenEndpointError, log: ['status 403', '"text/html"', 'without an error'], standard: field,
        change: replyOf('token', 403, '<html>', { 'Content-Type': 'text/html' }),
    },
    {
        name: 'ErrorThatRepeatsTheCode', code: tokenEndpointError, log: ['with the text "bad code * here"'], standard: field,
        change: issuer => {
            issuer.hooks.token = (response, self, { parameters }) => {
                self.reply(response, 400, {
                    error: 'invalid_request', error_description: `bad code ${parameters.get('code')} here`,
                });
                return true;
            };
        },
    },
    { name: 'TokenTypeInLowerCase', code: success, standard: field, change: tokens({ token_type: 'bearer' }) },
    {
        name: 'TokenTypeMissing', code: tokenReplyMalformed, log: ['no "token_type"'], standard: 'RFC 6749, 5.1',
        change: tokens({ token_type: undefined }),
    },
    {
        name: 'TokenTypeDPoP', code: tokenReplyMalformed, log: ['tokens of type "DPoP"'], standard: 'RFC 9449, 5',
        change: tokens({ token_type: 'DPoP' }),
    },
    {
        name: 'AccessTokenMissing', code: tokenReplyMalformed, log: ['no usable "access_token"'], standard: 'RFC 6749, 5.1',
        change: tokens({ access_token: undefined }),
    },
    {
        name: 'AccessTokenWithALineBreak', code: tokenReplyMalformed, log: ['"access_token" is not plain ASCII'],
        standard: 'RFC 6750, 2.1', change: issuer => {
            issuer.hooks.token = () => {
                issuer.tokens.access_token = 'a\r\nb';
                issuer.claims.at_hash = undefined;
            };
        },
    },
    { name: 'AccessTokenThatIsOpaque', code: success, standard: field, phase: 'token' },
    {
        name: 'AccessTokenOf5000Characters', code: textTooLong, log: ['longer than a host can fetch'], standard: field,
        phase: 'token', change: tokens({ access_token: 'a'.repeat(5000) }),
    },
    { name: 'LifetimeMissing', code: success, standard: field, phase: 'token', change: tokens({ expires_in: undefined }) },
    { name: 'LifetimeAsAText', code: success, standard: field, phase: 'token', change: tokens({ expires_in: '300' }) },
    { name: 'LifetimeNegative', code: success, standard: field, change: tokens({ expires_in: -5 }) },
    { name: 'ScopeNarrower', code: success, standard: field, change: tokens({ scope: 'openid' }) },
    { name: 'RefreshTokenMissing', code: success, standard: field, change: tokens({ refresh_token: undefined }) },
    {
        name: 'EscapedMemberName', code: tokenReplyMalformed, log: ['an escaped member name'], standard: practice('3.4'),
        change: replyOf('token', 200, '{"access\\u005ftoken":"a","token_type":"Bearer"}'),
    },
    {
        name: 'TokensOverARedirect', code: providerFailed, log: ['a redirect, which is not followed'], standard: security('4.11'),
        change: issuer => {
            issuer.hooks.token = response => {
                issuer.reply(response, 307, '', { Location: `${issuer.issuer}/token` });
                return true;
            };
        },
    },
];

// --- Later requests -------------------------------------------------------------------------------------------------

const refreshed = (values, more = {}) => issuer => {
    Object.assign(issuer.refreshed, values);
    Object.assign(issuer.refreshedClaims, more);
};
const laterCases = [
    { name: 'Refresh', phase: 'refresh', code: success, standard: core('12.2') },
    {
        name: 'RefreshWithoutIdToken', phase: 'refresh', code: success, standard: field, change: refreshed({ id_token: undefined }),
    },
    {
        name: 'RefreshWithoutNewRefreshToken', phase: 'refresh', code: success, standard: field,
        change: refreshed({ refresh_token: undefined }),
    },
    {
        name: 'RefreshOfAnotherUser', phase: 'refresh', code: subjectDiffers, log: ['an ID token of the user who signed in'],
        standard: core('12.2'), change: refreshed({}, { sub: 'other' }),
    },
    {
        name: 'RefreshWithAnotherNonce', phase: 'refresh', code: idTokenRefused, log: ['the nonce of the request'],
        standard: core('12.2'), change: refreshed({}, { nonce: 'other' }),
    },
    {
        name: 'RefreshForAnotherClient', phase: 'refresh', code: idTokenRefused, log: ['"aud" "other"'], standard: core('12.2'),
        change: refreshed({}, { aud: 'other' }),
    },
    {
        name: 'RefreshRefused', phase: 'refresh', code: grantRefused, log: ['"invalid_grant"'], standard: 'RFC 6749, 5.2',
        change: replyOf('refresh', 400, { error: 'invalid_grant' }),
    },
    {
        name: 'UserInfoOfAnotherUser', phase: 'user', code: subjectDiffers, log: ['claims about the user who signed in'],
        standard: core('5.3.2'), ofTest: 'oidcc-client-test-userinfo-invalid-sub',
        change: issuer => { issuer.userClaims.sub = 'other'; },
    },
    {
        name: 'UserInfoWithoutSubject', phase: 'user', code: userInfoMalformed, log: ['"sub"', 'came none'],
        standard: core('5.3.2'), change: issuer => { issuer.userClaims.sub = undefined; },
    },
    {
        name: 'UserInfoByBearerHeader', phase: 'user', code: success, standard: 'RFC 6750, 2.1',
        ofTest: 'oidcc-client-test-userinfo-bearer-header',
    },
    {
        name: 'RevocationRefusedWith401', phase: 'logout', code: success, log: ['status 401'], standard: field,
        change: replyOf('revocation', 401, { error: 'invalid_client' }),
    },
    {
        name: 'RevocationNotOffered', phase: 'logout', code: success, standard: field,
        change: metadata({ revocation_endpoint: undefined }),
    },
];

// --- Other devices and pushed requests ------------------------------------------------------------------------------

const deviceCases = [
    { name: 'Device', signIn: 'device', code: success, standard: 'RFC 8628' },
    {
        name: 'DeviceNotOffered', signIn: 'device', code: deviceNotOffered, log: ['"device_authorization_endpoint"'],
        standard: 'RFC 8628, 4', change: metadata({ device_authorization_endpoint: undefined }),
    },
    {
        name: 'DeviceSlowDown', signIn: 'device', code: success, standard: 'RFC 8628, 3.5', slow: true, change: issuer => {
            let polls = 0;
            issuer.hooks.poll = response => ++polls === 1 && (issuer.refuse(response, 'slow_down'), true);
        },
    },
    {
        name: 'DeviceDenied', signIn: 'device', code: denied, log: ['the user\'s refusal on the other device'],
        standard: 'RFC 8628, 3.5', change: issuer => {
            issuer.hooks.poll = response => { issuer.refuse(response, 'access_denied'); return true; };
        },
    },
    {
        name: 'DeviceExpired', signIn: 'device', code: deviceCodeExpired, log: ['"expired_token"'], standard: 'RFC 8628, 3.5',
        change: issuer => {
            issuer.hooks.poll = response => { issuer.refuse(response, 'expired_token'); return true; };
        },
    },
    {
        name: 'DeviceWithoutCode', signIn: 'device', code: deviceReplyMalformed, log: ['no usable "device_code"'],
        standard: 'RFC 8628, 3.2', change: issuer => { issuer.device.device_code = undefined; },
    },
    {
        name: 'DeviceAddressThatIsAScript', signIn: 'device', code: deviceReplyMalformed, log: ['no usable "verification_uri"'],
        standard: 'RFC 8628, 3.2', change: issuer => { issuer.device.verification_uri = 'javascript:alert(1)'; },
    },
    {
        name: 'DeviceTokenWithANonce', signIn: 'device', code: idTokenRefused, log: ['no "nonce", because none was sent'],
        standard: core('3.1.3.7'), change: claims({ nonce: 'injected' }),
    },
];

const pushedCases = [
    {
        name: 'PushedRequest', code: success, standard: 'RFC 9126',
        change: metadata({ require_pushed_authorization_requests: true }),
    },
    {
        name: 'PushedRequestRefused', code: pushedRefused, log: ['"invalid_request"'], standard: 'RFC 9126, 2.3', change: issuer => {
            issuer.metadata.require_pushed_authorization_requests = true;
            replyOf('pushed', 400, { error: 'invalid_request' })(issuer);
        },
    },
];

// --- Replies that are not what was asked for ------------------------------------------------------------------------

const html = '<!DOCTYPE html><html><body>Welcome to the network. Please accept the conditions.</body></html>';

/// What may become of any request. `words`: in the log line.
const effects = {
    NoAnswer: { words: ['no complete reply in time'], slow: true, send: () => {} },
    HalfAnAnswer: {
        words: ['the end of the connection'],
        send: response => {
            response.writeHead(200, { 'Content-Type': 'application/json', 'Content-Length': '100' });
            response.write('{"half":', () => response.destroy());
        },
    },
    EndlessAnswer: {
        words: ['more bytes than are read'],
        send: response => {
            response.writeHead(200, { 'Content-Type': 'application/json' });
            const block = Buffer.alloc(65536, ' ');
            const write = () => {
                while (!response.destroyed && response.write(block)) { /* until its buffer is full */ }
            };
            response.on('drain', write);
            write();
        },
    },
    AnswerOf10Megabytes: {
        words: ['more bytes than are read'],
        send: response => {
            const body = Buffer.alloc(10 * 1024 * 1024, ' ');
            response.writeHead(200, { 'Content-Type': 'application/json', 'Content-Length': body.length }).end(body);
        },
    },
    Html: {
        words: ['status 200 with "text/html"'],
        send: response => response.writeHead(200, { 'Content-Type': 'text/html', 'Content-Length': html.length }).end(html),
    },
    WrongType: {
        words: ['status 200 with "text/plain"'],
        send: response => response.writeHead(200, { 'Content-Type': 'text/plain', 'Content-Length': '2' }).end('{}'),
    },
    Redirect: {
        words: ['status 302, a redirect, which is not followed'],
        send: (response, issuer) => response.writeHead(302, {
            Location: `${issuer.issuer}/elsewhere`, 'Content-Length': '0',
        }).end(),
    },
    TooManyRequests: {
        words: ['status 429'], slow: true,
        send: response => response.writeHead(429, { 'Retry-After': '1', 'Content-Length': '0' }).end(),
    },
    ServerError: {
        words: ['status 500'], slow: true,
        send: response => response.writeHead(500, { 'Content-Type': 'text/html', 'Content-Length': '5' }).end('oops!'),
    },
    ClosedConnection: {
        words: ['the end of the connection'], slow: true, send: response => response.destroy(),
    },
};

/// Which code comes of a reply that is complete, but not JSON; and of a redirect.
const requests = {
    discovery: { malformed: discoveryMalformed, redirect: discoveryMalformed },
    keys: { malformed: keysMalformed, redirect: providerFailed },
    token: { malformed: tokenReplyMalformed, redirect: providerFailed },
    refresh: { malformed: tokenReplyMalformed, redirect: providerFailed, phase: 'refresh' },
    userinfo: { malformed: userInfoMalformed, redirect: userInfoMalformed, phase: 'user' },
    revocation: { phase: 'logout' }, // The local login is gone in any case.
    device: { malformed: deviceReplyMalformed, redirect: deviceReplyMalformed, signIn: 'device' },
    pushed: { malformed: pushedRefused, redirect: pushedRefused, pushed: true },
};

function codeOf(effect, request) {
    if (request === requests.revocation)
        return success;
    if (effect === 'Html' || effect === 'WrongType')
        return request.malformed;
    if (effect === 'Redirect')
        return request.redirect;
    if (effect === 'TooManyRequests' || effect === 'ServerError')
        return providerFailed;
    return effect === 'EndlessAnswer' || effect === 'AnswerOf10Megabytes' ? replyTooLarge : unreachable;
}

const transportCases = Object.entries(requests).flatMap(([endpoint, request]) => Object.entries(effects)
    // A revocation is complete with status 200, whatever its body holds.
    .filter(([effect]) => endpoint !== 'revocation' || !['Html', 'WrongType'].includes(effect))
    .map(([effect, { words, slow, send }]) => ({
        name: `${effect}At${endpoint[0].toUpperCase()}${endpoint.slice(1)}`, code: codeOf(effect, request), log: words,
        phase: request.phase, signIn: request.signIn, slow, standard: `the ${endpoint} request`, effect, endpoint,
        change: issuer => {
            if (request.pushed)
                issuer.metadata.require_pushed_authorization_requests = true;
            issuer.hooks[endpoint] = response => { send(response, issuer); return true; };
        },
    })));

const topics = {
    'signature of the ID token': signatureCases,
    'key set': keyCases,
    'claims of the ID token': claimCases,
    'discovery document': discoveryCases,
    'redirect from the browser': redirectCases,
    'reply with tokens': tokenCases,
    'refresh, user info, logout': laterCases,
    'sign-in on another device': deviceCases,
    'pushed request': pushedCases,
    'reply that is not what was asked for': transportCases,
};

export const cases = Object.entries(topics).flatMap(([topic, entries]) => entries.map(entry => ({ ...entry, topic })));
