// Windows programs under Wine, for the drivers of this folder.

import { spawn } from 'node:child_process';
import { createHash } from 'node:crypto';
import { closeSync, mkdtempSync, openSync, readFileSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join, resolve } from 'node:path';
import { here } from './self-test.mjs';

export const root = resolve(here, '../..');
export const windowsPath = path => `Z:${resolve(path).replaceAll('/', '\\')}`;

/// Runs a program to its end. Its output goes to a file: a server process that it starts goes on after it, with the output open,
/// and the reader of a pipe would wait for that.
export async function runWindows(program, arguments_ = [], { environment = {}, cwd } = {}) {
    const folder = mkdtempSync(join(tmpdir(), 'orlindex-output.'));
    const file = join(folder, 'output');
    const output = openSync(file, 'w');
    try {
        const child = spawn(join(root, 'scripts/wine-run'), [program, ...arguments_], {
            stdio: ['ignore', output, output], env: { ...process.env, ...environment }, cwd,
        });
        const code = await new Promise((done, fail) => { child.on('exit', done); child.on('error', fail); });
        return { code, output: readFileSync(file, 'utf8').replaceAll('\r', '') };
    } finally {
        closeSync(output);
        rmSync(folder, { recursive: true, force: true });
    }
}

const storeKey = 'HKCU\\Software\\Microsoft\\SystemCertificates\\Root\\Certificates';

/// The registry's form of a certificate: its hash as property 3, and itself as property 32.
function certificateBlob(der) {
    const property = (id, bytes) => {
        const head = Buffer.alloc(12);
        head.writeUInt32LE(id, 0);
        head.writeUInt32LE(1, 4);
        head.writeUInt32LE(bytes.length, 8);
        return Buffer.concat([head, bytes]);
    };
    const hash = createHash('sha1').update(der).digest();
    return { name: hash.toString('hex').toUpperCase(), blob: Buffer.concat([property(3, hash), property(32, der)]) };
}

/// Lets the user of the Wine prefix trust a root. Returns what takes it away again.
export async function trustRoot(file) {
    const { name, blob } = certificateBlob(readFileSync(file));
    const add = await runWindows('reg', ['add', `${storeKey}\\${name}`, '/v', 'Blob', '/t', 'REG_BINARY', '/d',
        blob.toString('hex'), '/f']);
    if (add.code !== 0)
        throw new Error(`the root was not added: ${add.output}`);
    return () => runWindows('reg', ['delete', `${storeKey}\\${name}`, '/f']);
}
