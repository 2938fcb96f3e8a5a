// What the test peers share: temporary folders, servers on this machine, a control interface, the life of the process.

import { mkdtempSync, rmSync } from 'node:fs';
import { createServer as createHttpServer } from 'node:http';
import { createServer as createHttpsServer } from 'node:https';
import { tmpdir } from 'node:os';
import { join } from 'node:path';

/// A folder that is removed when the process ends.
export function temporaryFolder() {
    const folder = mkdtempSync(join(tmpdir(), 'orlindex-provider.'));
    process.on('exit', () => rmSync(folder, { recursive: true, force: true }));
    return folder;
}

/// A server on a free port of this machine; over TLS if there is a certificate. Returns it with its port.
export async function listen(handle, certificate) {
    const server = certificate ? createHttpsServer(certificate, handle) : createHttpServer(handle);
    server.on('tlsClientError', () => {}); // The client's refusal of a certificate.
    await new Promise((resolve, reject) => {
        server.once('error', reject);
        server.listen(0, '127.0.0.1', resolve);
    });
    return { server, port: server.address().port };
}

export async function bodyOf(request) {
    const blocks = [];
    for await (const block of request)
        blocks.push(block);
    return Buffer.concat(blocks).toString();
}

/// Serves operations: GET without arguments, POST with a JSON object. An operation returns what becomes the reply.
export async function serveControl(operations) {
    const { port } = await listen(async (request, response) => {
        const reply = (status, value) => response.writeHead(status, { 'Content-Type': 'application/json' })
            .end(JSON.stringify(value));
        try {
            const operation = operations[request.url.slice(1)];
            if (!operation)
                return reply(404, { error: `no such operation: ${request.url}` });
            const body = await bodyOf(request);
            return reply(200, (await operation(body === '' ? {} : JSON.parse(body))) ?? {});
        } catch (error) {
            return reply(500, { error: String(error) });
        }
    });
    return `http://127.0.0.1:${port}`;
}

/// Calls an operation of a control interface.
export async function control(address, operation, values) {
    const response = await fetch(`${address}/${operation}`, values === undefined ? {} : {
        method: 'POST', body: JSON.stringify(values),
    });
    const result = await response.json();
    if (!response.ok)
        throw new Error(`${operation}: ${result.error}`);
    return result;
}

/// Says on one line that the peer is ready, and ends the process when its standard input is closed: a peer never outlives its
/// caller.
export function ready(values) {
    process.stdin.on('end', () => process.exit(0));
    process.stdin.on('error', () => process.exit(0));
    process.stdin.resume();
    process.stdout.write(JSON.stringify(values) + '\n');
}

/// What the test of a CMake list passes: JSON as the one argument of the program.
export function settingsOf(text, defaults) {
    const settings = JSON.parse(text ?? '{}');
    for (const name of Object.keys(settings)) {
        if (!(name in defaults))
            throw new Error(`unknown setting: ${name}`);
    }
    return { ...defaults, ...settings };
}
