// Runs the tests of the HTTPS client beside servers that behave well and badly: node https-tests.mjs WINE-RUN PROGRAM
//
// The certificates are made for this run. The program trusts their root while it runs, in its user's root store.

import { execFileSync, spawn } from 'node:child_process';
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { createServer as createHttpServer } from 'node:http';
import { createServer as createHttpsServer } from 'node:https';
import { createServer as createTcpServer } from 'node:net';
import { tmpdir } from 'node:os';
import { join } from 'node:path';

const [wineRun, program, ...arguments_] = process.argv.slice(2);
const folder = mkdtempSync(join(tmpdir(), 'orlindex-https.'));
const path = name => join(folder, name);
const openssl = (...texts) => execFileSync('openssl', texts, { cwd: folder, stdio: ['ignore', 'pipe', 'pipe'] });
const windowsPath = name => 'Z:' + name.replaceAll('/', '\\');

// --- Certificates ---------------------------------------------------------------------------------------------------

function makeRoot(name) {
    openssl('req', '-x509', '-newkey', 'rsa:2048', '-nodes', '-keyout', `${name}.key`, '-out', `${name}.pem`, '-days', '2',
        '-subj', `/CN=Orlindex test ${name}`, '-addext', 'basicConstraints=critical,CA:TRUE',
        '-addext', 'keyUsage=critical,keyCertSign,cRLSign');
}

function makeCertificate(name, root, host, ...dates) {
    openssl('req', '-newkey', 'rsa:2048', '-nodes', '-keyout', `${name}.key`, '-out', `${name}.csr`, '-subj', `/CN=${host}`);
    writeFileSync(path(`${name}.txt`), '');
    writeFileSync(path(`${name}.cnf`), `
[ca]
default_ca = own
[own]
database = ${name}.txt
rand_serial = yes
new_certs_dir = .
default_md = sha256
default_days = 2
policy = any
unique_subject = no
[any]
commonName = supplied
[leaf]
basicConstraints = critical,CA:FALSE
keyUsage = critical,digitalSignature,keyEncipherment
extendedKeyUsage = serverAuth
subjectAltName = DNS:${host}
`);
    openssl('ca', '-batch', '-notext', '-config', `${name}.cnf`, '-extensions', 'leaf', '-cert', `${root}.pem`, '-keyfile',
        `${root}.key`, '-in', `${name}.csr`, '-out', `${name}.pem`, ...dates);
    return { key: readFileSync(path(`${name}.key`)), cert: readFileSync(path(`${name}.pem`)), minVersion: 'TLSv1.2' };
}

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

function handle(request, response) {
    const behavior = behaviors[request.url.split('?')[0]];
    response.on('error', () => {});
    if (behavior)
        behavior(request, response);
    else
        response.writeHead(404, { 'Content-Type': 'text/html' }).end('<html>');
}

const servers = [];
async function listen(server) {
    server.on('error', error => { throw error; });
    server.on('tlsClientError', () => {}); // The client's refusal of a certificate.
    await new Promise(resolve => { server.listen(0, '127.0.0.1', resolve); });
    servers.push(server);
    return String(server.address().port);
}

// --- The run --------------------------------------------------------------------------------------------------------

let status = 1;
try {
    makeRoot('root');
    makeRoot('unknown');
    const environment = {
        ...process.env,
        HTTPS_ROOT: windowsPath(path('root.der')),
        HTTPS_GOOD: await listen(createHttpsServer(makeCertificate('good', 'root', 'localhost'), handle)),
        HTTPS_OTHER_HOST: await listen(createHttpsServer(makeCertificate('other', 'root', 'other.example.com'), handle)),
        HTTPS_EXPIRED: await listen(createHttpsServer(makeCertificate('expired', 'root', 'localhost', '-startdate',
            '20200101000000Z', '-enddate', '20210101000000Z'), handle)),
        HTTPS_UNKNOWN_ROOT: await listen(createHttpsServer(makeCertificate('foreign', 'unknown', 'localhost'), handle)),
        HTTP_PLAIN: await listen(createHttpServer(handle)),
        TCP_SILENT: await listen(createTcpServer(socket => { stalled.add(socket); socket.on('error', () => {}); })),
        TCP_CLOSING: await listen(createTcpServer(socket => socket.destroy())),
    };
    const free = createTcpServer();
    environment.TCP_CLOSED = await listen(free);
    await new Promise(resolve => { free.close(resolve); });
    openssl('x509', '-in', 'root.pem', '-outform', 'DER', '-out', 'root.der');
    const run = spawn(wineRun, [program, ...arguments_], { env: environment, stdio: 'inherit' });
    status = await new Promise(resolve => { run.on('close', code => resolve(code ?? 1)); });
} finally {
    rmSync(folder, { recursive: true, force: true });
}
// The servers hold connections that never end.
process.exit(status);
