// Runs the tests of the HTTPS client beside servers that behave well and badly: node https-tests.mjs WINE-RUN PROGRAM
//
// The certificates are made for this run. The program trusts their root while it runs, in its user's root store.

import { spawn } from 'node:child_process';
import { createServer as createHttpServer, request as forward } from 'node:http';
import { createServer as createHttpsServer } from 'node:https';
import { connect, createServer as createTcpServer } from 'node:net';
import { Certificates } from '../../provider/certificates.mjs';
import { temporaryFolder } from '../../provider/peer.mjs';
import { windowsPath } from '../../provider/wine.mjs';

const [wineRun, program, ...arguments_] = process.argv.slice(2);
const certificates = new Certificates(temporaryFolder());

// --- Servers --------------------------------------------------------------------------------------------------------

const stalled = new Set(); // So that nothing ends a connection that waits.

function read(request, then) {
    const blocks = [];
    request.on('data', block => blocks.push(block));
    request.on('end', () => then(Buffer.concat(blocks).toString()));
}

// With its length: Wine takes an empty body in chunks for an error.
const empty = (response, status, headers) => response.writeHead(status, { 'Content-Length': '0', ...headers }).end();

const behaviors = {
    '/json': (request, response) => response.writeHead(200, { 'Content-Type': 'application/json; charset=utf-8' })
        .end('{"ok":true}'),
    '/request': (request, response) => read(request, body => response.writeHead(200, { 'Content-Type': 'application/json' })
        .end(JSON.stringify({
            method: request.method, target: request.url, body, headers: request.headers, port: request.socket.remotePort,
        }))),
    '/cookie': (request, response) => empty(response, 200, { 'Set-Cookie': 'a=b; Path=/' }),
    '/redirect': (request, response) => empty(response, 302, { Location: '/json' }),
    '/unauthorized': (request, response) => response.writeHead(401, { 'WWW-Authenticate': 'Negotiate' }).end('{}'),
    '/many': (request, response) => empty(response, 429, { 'Retry-After': '7' }),
    '/error': (request, response) => response.writeHead(500).end('broken'),
    '/large': (request, response) => response.writeHead(200).end(Buffer.alloc(10 * 1024 * 1024, 'a')),
    '/endless': (request, response) => {
        const block = Buffer.alloc(65536, 'a');
        const write = () => {
            while (!response.destroyed && response.write(block)) { /* until its buffer is full */ }
        };
        response.on('drain', write);
        write();
    },
    '/half': (request, response) => {
        response.writeHead(200, { 'Content-Length': '100' });
        response.write('half', () => response.destroy());
    },
    '/closed': request => request.socket.destroy(),
    '/nonsense': request => request.socket.end('this is not HTTP\r\n\r\n'),
    '/stalled': (request, response) => stalled.add(response),
    '/drip': (request, response) => {
        response.writeHead(200);
        const timer = setInterval(() => response.write('a'), 100);
        response.on('close', () => clearInterval(timer));
    },
};

// --- Proxies --------------------------------------------------------------------------------------------------------

/// What each proxy was asked for, by its port: `target` and `user`, which is empty without credentials. Wine presents no credentials
/// for a tunnel, so proxies forward plain requests, too.
const proxied = new Map();
behaviors['/proxied'] = (request, response) => response.writeHead(200, { 'Content-Type': 'application/json' })
    .end(JSON.stringify({ requests: proxied.get(request.url.split('?')[1]) ?? [] }));

/// A proxy for servers on this machine. If there are credentials, "name:password", it asks for them.
function makeProxy(credentials) {
    const challenge = { 'Proxy-Authenticate': 'Basic realm="tests"' };
    const isAdmitted = request => {
        const [scheme, encoded = ''] = (request.headers['proxy-authorization'] ?? '').split(' ');
        const user = scheme === 'Basic' ? Buffer.from(encoded, 'base64').toString() : scheme;
        const requests = proxied.get(String(proxy.address().port)) ?? [];
        proxied.set(String(proxy.address().port), [...requests, { target: request.url, user }]);
        return credentials === undefined || user === credentials;
    };
    const proxy = createHttpServer((request, response) => {
        if (!isAdmitted(request))
            return empty(response, 407, challenge);
        const headers = { ...request.headers };
        delete headers['proxy-authorization'];
        const target = new URL(request.url);
        return request.pipe(forward(target, { method: request.method, headers }, reply => {
            response.writeHead(reply.statusCode, reply.headers);
            reply.pipe(response);
        }));
    });
    proxy.on('connect', (request, client) => {
        client.on('error', () => {});
        if (!isAdmitted(request))
            return client.end('HTTP/1.1 407 Proxy Authentication Required\r\nProxy-Authenticate: Basic realm="tests"\r\n\r\n');
        const server = connect(Number(request.url.split(':')[1]), '127.0.0.1', () => {
            client.write('HTTP/1.1 200 Connection established\r\n\r\n');
            server.pipe(client).pipe(server);
        });
        server.on('error', () => client.destroy());
    });
    return proxy;
}

function handle(request, response) {
    // Through a proxy, Wine writes the whole address.
    const behavior = behaviors[new URL(request.url, 'https://localhost').pathname];
    response.on('error', () => {});
    if (behavior)
        behavior(request, response);
    else
        response.writeHead(404, { 'Content-Type': 'text/html' }).end('<html>');
}

async function listen(server) {
    server.on('error', error => { throw error; });
    server.on('tlsClientError', () => {}); // The client's refusal of a certificate.
    await new Promise(resolve => { server.listen(0, '127.0.0.1', resolve); });
    return String(server.address().port);
}

// --- The run --------------------------------------------------------------------------------------------------------

certificates.makeRoot('root');
certificates.makeRoot('unknown');
const environment = {
    ...process.env,
    HTTPS_ROOT: windowsPath(certificates.path('root.der')),
    HTTPS_GOOD: await listen(createHttpsServer(certificates.make('good', 'root', 'localhost'), handle)),
    HTTPS_OTHER_HOST: await listen(createHttpsServer(certificates.make('other', 'root', 'other.example.com'), handle)),
    HTTPS_EXPIRED: await listen(createHttpsServer(certificates.make('expired', 'root', 'localhost', '-startdate',
        '20200101000000Z', '-enddate', '20210101000000Z'), handle)),
    HTTPS_UNKNOWN_ROOT: await listen(createHttpsServer(certificates.make('foreign', 'unknown', 'localhost'), handle)),
    HTTP_PLAIN: await listen(createHttpServer(handle)),
    HTTP_PROXY_OPEN: await listen(makeProxy()),
    HTTP_PROXY_WITH_USERS: await listen(makeProxy('name:pass:word')),
    TCP_SILENT: await listen(createTcpServer(socket => { stalled.add(socket); socket.on('error', () => {}); })),
    TCP_CLOSING: await listen(createTcpServer(socket => socket.destroy())),
};
const free = createTcpServer();
environment.TCP_CLOSED = await listen(free);
await new Promise(resolve => { free.close(resolve); });
const run = spawn(wineRun, [program, ...arguments_], { env: environment, stdio: 'inherit' });
// The servers hold connections that never end.
run.on('close', code => process.exit(code ?? 1));
