// What the self-tests share: named checks that are run one after the other, and peers as child processes.

import { spawn } from 'node:child_process';
import { createServer } from 'node:http';
import { dirname, join } from 'node:path';
import { createInterface } from 'node:readline';
import { fileURLToPath } from 'node:url';
import { control } from './peer.mjs';

export const here = dirname(fileURLToPath(import.meta.url));

/// A peer in a process of its own: `values` is the line that it prints.
export class Peer {
    static async start(program, settings = {}) {
        const peer = new Peer();
        peer.process = spawn(process.execPath, [join(here, program), JSON.stringify(settings)], {
            stdio: ['pipe', 'pipe', process.env.ORLINDEX_VERBOSE ? 'inherit' : 'ignore'],
        });
        peer.ended = new Promise(resolve => { peer.process.on('close', resolve); });
        peer.values = await new Promise((resolve, reject) => {
            createInterface(peer.process.stdout).once('line', line => resolve(JSON.parse(line)));
            peer.process.once('close', code => reject(new Error(`${program} ended with ${code} before it was ready`)));
        });
        return peer;
    }

    control(operation, values) {
        return control(this.values.control, operation, values);
    }

    /// Closes its standard input. Returns its exit code.
    async stop() {
        this.process.stdin.end();
        return this.ended;
    }
}

/// Stands for an application's redirect listener. `next()` waits for one request and returns its address and method.
export class RedirectListener {
    static async start() {
        const listener = new RedirectListener();
        listener.requests = [];
        listener.waiting = [];
        listener.server = createServer((request, response) => {
            response.writeHead(200, { 'Content-Type': 'text/html' }).end('<p>You are signed in.</p>');
            const url = Object.assign(new URL(request.url, listener.address), { method: request.method });
            const waiting = listener.waiting.shift();
            if (waiting)
                waiting(url);
            else
                listener.requests.push(url);
        });
        await new Promise(resolve => { listener.server.listen(0, '127.0.0.1', resolve); });
        listener.address = `http://127.0.0.1:${listener.server.address().port}/callback`;
        return listener;
    }

    next(limit = 120_000) {
        const request = this.requests.shift();
        return request ? Promise.resolve(request) : new Promise((resolve, reject) => {
            const timer = setTimeout(() => reject(new Error('no redirect came')), limit);
            this.waiting.push(url => { clearTimeout(timer); resolve(url); });
        });
    }

    stop() {
        this.server.closeAllConnections();
        this.server.close();
    }
}

/// Runs checks in order and prints a line for each. All are run, whatever fails. Returns the exit code.
export async function runChecks(checks) {
    let failed = 0;
    for (const [name, check] of Object.entries(checks)) {
        try {
            await check();
            console.log(`passed: ${name}`);
        } catch (error) {
            ++failed;
            console.log(`FAILED: ${name}\n    ${String(error.stack ?? error).replaceAll('\n', '\n    ')}`);
        }
    }
    console.log(`${Object.keys(checks).length} checks, ${failed} failed`);
    return failed === 0 ? 0 : 1;
}
