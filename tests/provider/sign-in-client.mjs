// Signs in as bench/signins/SignInFloor.cpp does, with an OpenID Connect client that others wrote:
// node sign-in-client.mjs ISSUER CLIENT FILE
//
// Each line on the standard input begins a sign-in. Prints "address URL", and "event SUBJECT" when the user is signed in. This
// system has no encryption for a user: the tokens are written as they are.

import { open, rename } from 'node:fs/promises';
import { createInterface } from 'node:readline';
import { packages } from '../node/modules.mjs';
import { RedirectListener } from './self-test.mjs';

const client = await import(packages.resolve('openid-client'));

const [issuer, clientId, file] = process.argv.slice(2);
let configuration;

async function discover() {
    configuration = await client.discovery(new URL(issuer), clientId, undefined, client.None(),
        { execute: [client.allowInsecureRequests] });
    // It trusts the connection by default, and does not verify signatures.
    client.enableNonRepudiationChecks(configuration);
}

async function write(text) {
    const next = await open(`${file}.new`, 'w', 0o600);
    await next.writeFile(text);
    await next.sync();
    await next.close();
    await rename(`${file}.new`, file);
}

async function signIn() {
    if (!configuration)
        await discover();
    const listener = await RedirectListener.start();
    const verifier = client.randomPKCECodeVerifier();
    const state = client.randomState();
    const nonce = client.randomNonce();
    const address = client.buildAuthorizationUrl(configuration, {
        redirect_uri: listener.address, scope: 'openid', state, nonce, code_challenge_method: 'S256',
        code_challenge: await client.calculatePKCECodeChallenge(verifier),
    });
    console.log(`address\t${address.href}`);
    const tokens = await client.authorizationCodeGrant(configuration, await listener.next(),
        { pkceCodeVerifier: verifier, expectedState: state, expectedNonce: nonce });
    await write(JSON.stringify(tokens));
    console.log(`event\t${tokens.claims().sub}`);
    listener.stop();
}

for await (const _ of createInterface(process.stdin))
    await signIn();
