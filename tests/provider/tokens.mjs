// Keys and signed tokens of every kind, the wrong ones included. A JOSE library refuses to make most of the wrong ones, so
// signatures are made here; the self-test verifies the right ones with that library.

import { constants, createHash, createHmac, generateKeyPairSync, sign } from 'node:crypto';

const hashOf = algorithm => (algorithm === 'EdDSA' ? 'sha512' : `sha${algorithm.slice(-3)}`);

/// A private key, and its public part as JWK.
function makeKey(type, options) {
    const { privateKey, publicKey } = generateKeyPairSync(type, options);
    return { privateKey, jwk: publicKey.export({ format: 'jwk' }) };
}

/// The keys of one process, made when they are needed for the first time.
const kinds = {
    rsa: ['rsa', { modulusLength: 2048 }],
    otherRsa: ['rsa', { modulusLength: 2048 }],
    weakRsa: ['rsa', { modulusLength: 1024 }],
    p256: ['ec', { namedCurve: 'P-256' }],
    otherP256: ['ec', { namedCurve: 'P-256' }],
    p384: ['ec', { namedCurve: 'P-384' }],
    p521: ['ec', { namedCurve: 'P-521' }],
    ed25519: ['ed25519', {}],
};
const made = new Map();
export function keyOf(kind) {
    if (!made.has(kind))
        made.set(kind, makeKey(...kinds[kind]));
    return made.get(kind);
}

/// The kind of key that an algorithm is used with.
export const keyKindOf = algorithm => ({ ES256: 'p256', ES384: 'p384', ES512: 'p521', EdDSA: 'ed25519' }[algorithm] ?? 'rsa');

export const base64url = value => Buffer.from(typeof value === 'string' || Buffer.isBuffer(value) ? value : JSON.stringify(value))
    .toString('base64url');

/// "at_hash" of an access token.
export const accessTokenHash = (token, algorithm) => {
    const digest = createHash(hashOf(algorithm)).update(token).digest();
    return digest.subarray(0, digest.length / 2).toString('base64url');
};

function signatureOf(algorithm, text, key, saltLength) {
    if (algorithm.startsWith('HS'))
        return createHmac(hashOf(algorithm), key).update(text).digest();
    if (algorithm === 'EdDSA')
        return sign(null, Buffer.from(text), key);
    if (algorithm.startsWith('ES'))
        return sign(hashOf(algorithm), Buffer.from(text), { key, dsaEncoding: 'ieee-p1363' });
    if (algorithm.startsWith('PS'))
        return sign(hashOf(algorithm), Buffer.from(text), {
            key, padding: constants.RSA_PKCS1_PSS_PADDING, saltLength: saltLength ?? constants.RSA_PSS_SALTLEN_DIGEST,
        });
    return sign(hashOf(algorithm), Buffer.from(text), key);
}

/// A signed token in its compact form. `algorithm`: the one that signs, whatever the header says.
export function signToken(header, claims, algorithm, key, saltLength) {
    const text = `${base64url(header)}.${base64url(claims)}`;
    return `${text}.${signatureOf(algorithm, text, key, saltLength).toString('base64url')}`;
}

/// The same token with another bit in the middle of its signature.
export function withAlteredSignature(token) {
    const end = token.lastIndexOf('.') + 1;
    const signature = Buffer.from(token.slice(end), 'base64url');
    signature[signature.length >> 1] ^= 1;
    return token.slice(0, end) + signature.toString('base64url');
}

export const headerOf = token => JSON.parse(Buffer.from(token.split('.')[0], 'base64url'));
export const claimsOf = token => JSON.parse(Buffer.from(token.split('.')[1], 'base64url'));
