// Verifies the tokens of a real run with a public JOSE library: node verify-tokens.mjs WINE-RUN AGENT-TESTS
//
// A host signs in at a server of its own; both tokens must verify by the key set that the server published, hold their
// claims, and be refused once anything in them is changed.

import assert from 'node:assert/strict';
import { spawnSync } from 'node:child_process';
import { mkdtempSync, readFileSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { pathToFileURL } from 'node:url';
import { packages } from '../node/modules.mjs';

const { createLocalJWKSet, jwtVerify } = await import(pathToFileURL(packages.resolve('jose')));
const [wineRun, program] = process.argv.slice(2);
const folder = mkdtempSync(join(tmpdir(), 'orlindex-tokens.'));
const windowsPath = path => 'Z:' + path.replaceAll('/', '\\');

function changed(token, part) {
    const parts = token.split('.');
    const text = parts[part];
    // Not the last character: some of its bits stand for nothing.
    const place = Math.floor(text.length / 2);
    parts[part] = text.slice(0, place) + (text[place] === 'A' ? 'B' : 'A') + text.slice(place + 1);
    return parts.join('.');
}

async function check(token, keys, type) {
    const issuer = 'https://production.simulator.invalid';
    const options = { issuer, audience: 'verified-client', typ: type, algorithms: ['ES256'] };
    const { payload } = await jwtVerify(token, keys, options);
    assert.equal(payload.sub, 'simulator-0001');
    assert.equal(payload.exp - payload.iat, 3600);
    assert.ok(Math.abs(payload.iat - Date.now() / 1000) < 120, 'made just now');
    assert.ok(payload.jti.length >= 16);
    for (const part of [0, 1, 2])
        await assert.rejects(jwtVerify(changed(token, part), keys, options), undefined, `part ${part} was changed`);
    await assert.rejects(jwtVerify(token, keys, { ...options, audience: 'other' }));
    return payload;
}

try {
    const file = join(folder, 'tokens');
    const run = spawnSync(wineRun, [program, '--host', 'none', 'tokens', windowsPath(file)], {
        env: { ...process.env, PELLWICK_SIMULATOR_DATA: windowsPath(folder) },
        encoding: 'utf8',
        timeout: 60_000,
    });
    assert.equal(run.status, 0, `${run.stdout}${run.stderr}`);
    const [access, id] = readFileSync(file, 'utf8').split('\n');
    const keySet = JSON.parse(readFileSync(join(folder, 'simulator-jwks.json'), 'utf8'));
    assert.equal(keySet.keys.length, 1);
    assert.ok(!('d' in keySet.keys[0]), 'the private key stays private');
    const keys = createLocalJWKSet(keySet);

    const accessClaims = await check(access, keys, 'at+jwt');
    assert.equal(accessClaims.scope, 'openid profile');
    assert.equal(accessClaims.client_id, 'verified-client');
    const idClaims = await check(id, keys, 'JWT');
    assert.equal(idClaims.name, 'Sam Example (simulator)');
    assert.equal(idClaims.email, 'sam.example@simulator.invalid');
    assert.notEqual(idClaims.jti, accessClaims.jti);
    console.log('both tokens verify, and none that was changed');
} finally {
    rmSync(folder, { recursive: true, force: true });
}
