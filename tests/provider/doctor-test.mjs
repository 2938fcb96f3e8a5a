// `orlindex-doctor provider` finds what is wrong with a provider: node doctor-test.mjs DOCTOR REPORT-FOLDER
//
// REPORT-FOLDER receives some of the reports, for the validator of their schema.

import assert from 'node:assert/strict';
import { mkdirSync, writeFileSync } from 'node:fs';
import { createServer } from 'node:http';
import { join } from 'node:path';
import { Certificates } from './certificates.mjs';
import { listen, temporaryFolder } from './peer.mjs';
import { Peer, runChecks } from './self-test.mjs';
import { runWindows, trustRoot, windowsPath } from './wine.mjs';

const [doctor, reportFolder] = process.argv.slice(2);
const folder = temporaryFolder();
const certificates = new Certificates(folder);
certificates.makeRoot('root');
certificates.makeRoot('unknown');
certificates.make('localhost', 'root', 'localhost');
const hostile = await Peer.start('hostile.mjs', { certificates: folder });
const forget = await trustRoot(certificates.path('root.der'));
mkdirSync(reportFolder, { recursive: true });

const secureCase = name => ({ issuer: `${hostile.values.issuer}/${name}` });
const plainCase = name => ({ issuer: `${hostile.values.insecureIssuer}/${name}`, allowInsecureLoopback: true });

let configs = 0;
async function examine(provider, arguments_ = [], { server = 'production' } = {}) {
    const file = join(folder, `config-${++configs}.json`);
    writeFileSync(file, typeof provider === 'string' ? provider : JSON.stringify({ servers: { [server]: provider } }));
    const run = await runWindows(doctor, ['provider', '--config', windowsPath(file), '--json', ...arguments_]);
    try {
        return { ...run, report: JSON.parse(run.output) };
    } catch {
        throw new Error(`no report: ${run.output}`);
    }
}

const store = (name, { output }) => writeFileSync(join(reportFolder, `${name}.json`), output);
const stepOf = ({ report }, name) => report.steps.find(({ step }) => step === name);
const resultsOf = (run, name) => stepOf(run, name).findings.map(finding => `${finding.name}: ${finding.result}`);

function expectFailure(run, code, step, result, ...words) {
    const { verdict } = run.report;
    assert.deepEqual([run.code, verdict.exitCode, verdict.step, verdict.result, verdict.starts], [code, code, step, result, false],
        run.output);
    assert.equal(stepOf(run, step).mark, 'failed', run.output);
    assert.ok(verdict.remedy.length > 0);
    for (const word of words)
        assert.ok(verdict.cause.includes(word), `"${word}" in: ${verdict.cause}`);
}

const checks = {
    async 'a good provider over https'() {
        const run = await examine({ ...secureCase('WellBehaved'), redirectPorts: [50_171, 50_172] });
        assert.equal(run.code, 0, run.output);
        assert.equal(run.report.verdict.result, 'starts');
        assert.deepEqual(run.report.steps.map(({ step, mark }) => `${step} ${mark}`), ['provider-config ok', 'name-resolution ok',
            'tls ok', 'discovery ok', 'issuer ok', 'endpoints ok', 'pkce ok', 'algorithms ok', 'keys ok', 'redirect-ports ok',
            'clock ok']);
        assert.deepEqual(resultsOf(run, 'keys'), ['key set: usable', 'key: usable']);
        assert.deepEqual(resultsOf(run, 'redirect-ports'), ['port 50171: free', 'port 50172: free']);
        assert.equal(stepOf(run, 'endpoints').findings.find(({ name }) => name === 'end of the session').result, 'not-offered');
        const { requests } = await hostile.control('state', { name: 'WellBehaved' });
        assert.deepEqual(requests, { discovery: 1, keys: 1 });
        store('provider', run);
    },

    async 'the text form ends with one result'() {
        const file = join(folder, 'text.json');
        writeFileSync(file, JSON.stringify({ servers: { staging: plainCase('PkceOnlyPlain') } }));
        const run = await runWindows(doctor, ['provider', '--config', windowsPath(file)]);
        assert.equal(run.code, 68, run.output);
        assert.match(run.output, /\nPKCE\n {2}FAILED /);
        assert.match(run.output, /\nCause: {2}The provider does not offer PKCE with S256 \(4035\)/);
        assert.match(run.output, /\nRemedy: Enable it at the provider\./);
        assert.match(run.output, /\nStep: {3}pkce, exit code 68\n$/);
        assert.equal(run.output.match(/\nCause:/g).length, 1);
    },

    async 'a configuration that is not there, wrong, or without the server'() {
        const missing = await runWindows(doctor, ['provider', '--config', windowsPath(join(folder, 'none.json')), '--json']);
        expectFailure({ ...missing, report: JSON.parse(missing.output) }, 60, 'provider-config', 'provider-config-not-found');
        expectFailure(await examine('{ "servers": { "production": { "isuer": "https://login.example.com" } } }'), 61,
            'provider-config', 'provider-config-invalid', 'did you mean "issuer"?');
        expectFailure(await examine({ issuer: 'http://login.example.com' }), 61, 'provider-config', 'provider-config-invalid',
            'must begin with https://');
        const other = await examine(secureCase('WellBehaved'), ['--server', 'staging']);
        expectFailure(other, 61, 'provider-config', 'provider-config-invalid', 'does not configure the server "staging"');
        store('provider-config', other);
    },

    async 'a name without an address'() {
        const run = await examine({ issuer: 'https://login.orlindex.invalid' });
        expectFailure(run, 62, 'name-resolution', 'provider-name-not-resolved', '"login.orlindex.invalid"');
        assert.equal(stepOf(run, 'discovery'), undefined);
        assert.equal(stepOf(run, 'redirect-ports').mark, 'ok');
        store('provider-name', run);
    },

    async 'nobody listens, and nobody replies'() {
        const { server, port } = await listen(() => {});
        const silent = await examine({
            issuer: `http://127.0.0.1:${port}`, allowInsecureLoopback: true, timeouts: { requestSeconds: 1 },
        });
        expectFailure(silent, 63, 'tls', 'provider-unreachable', 'no complete reply in time');
        server.closeAllConnections();
        await new Promise(resolve => { server.close(resolve); });
        const closed = await examine({ issuer: `http://127.0.0.1:${port}`, allowInsecureLoopback: true });
        expectFailure(closed, 63, 'tls', 'provider-unreachable', 'no connection');
    },

    async 'certificates that are not trusted'() {
        for (const [name, authority, host, ...dates] of [['foreign', 'unknown', 'localhost'],
            ['other', 'root', 'other.example.com'],
            ['expired', 'root', 'localhost', '-startdate', '20200101000000Z', '-enddate', '20210101000000Z']]) {
            const { port } = await listen((request, response) => response.end(), certificates.make(name, authority, host, ...dates));
            const run = await examine({ issuer: `https://localhost:${port}` });
            expectFailure(run, 64, 'tls', 'provider-tls-refused');
            store(`provider-tls-${name}`, run);
        }
    },

    async 'discovery documents that are not usable'() {
        for (const [name, ...words] of [['HtmlAtDiscovery', '"text/html"'], ['ServerErrorAtDiscovery', 'status 500'],
            ['RedirectAtDiscovery', 'a redirect, which is not followed'], ['AnswerOf10MegabytesAtDiscovery', 'more bytes'],
            ['WrongTypeAtDiscovery', '"text/plain"'], ['DiscoveryWithRepeatedIssuer', 'not JSON']])
            expectFailure(await examine(plainCase(name)), 65, 'discovery', 'provider-discovery-unusable', ...words);
    },

    async 'another issuer'() {
        const run = await examine(plainCase('IssuerMismatchInDiscovery'));
        expectFailure(run, 66, 'issuer', 'provider-other-issuer', '"https://other.example.com"');
        assert.equal(stepOf(run, 'discovery').mark, 'ok');
        store('provider-issuer', run);
    },

    async 'endpoints that are missing or no https addresses'() {
        expectFailure(await examine(plainCase('TokenEndpointOverHttp')), 67, 'endpoints', 'provider-endpoints-unusable',
            '"token_endpoint"', 'http://login.example.com/token');
        expectFailure(await examine({ ...plainCase('DeviceNotOffered'), signIn: 'device' }), 67, 'endpoints',
            'provider-endpoints-unusable', '"device_authorization_endpoint"');
        const run = await examine({ ...plainCase('Device'), signIn: 'device' });
        assert.equal(run.code, 0, run.output);
        assert.deepEqual(resultsOf(run, 'redirect-ports'), ['redirect ports: not-used']);
    },

    async 'no PKCE'() {
        const run = await examine(plainCase('PkceNotListed'));
        expectFailure(run, 68, 'pkce', 'provider-pkce-missing', 'no list of methods');
        store('provider-pkce', run);
        assert.equal((await examine({ ...plainCase('PkceNotListed'), assumePkce: true })).code, 0);
    },

    async 'no algorithm that the agent accepts'() {
        const server = createServer((request, response) => {
            const issuer = `http://127.0.0.1:${server.address().port}`;
            response.writeHead(200, { 'Content-Type': 'application/json' }).end(JSON.stringify({
                issuer, authorization_endpoint: `${issuer}/a`, token_endpoint: `${issuer}/t`, jwks_uri: `${issuer}/k`, keys: [],
                code_challenge_methods_supported: ['S256'], id_token_signing_alg_values_supported: ['HS256', 'EdDSA'],
            }));
        });
        await new Promise(resolve => { server.listen(0, '127.0.0.1', resolve); });
        const run = await examine({ issuer: `http://127.0.0.1:${server.address().port}`, allowInsecureLoopback: true });
        expectFailure(run, 69, 'algorithms', 'provider-algorithms-unusable', 'HS256, EdDSA');
        store('provider-algorithms', run);
        server.closeAllConnections();
        server.close();
    },

    async 'keys that are not usable'() {
        for (const [name, word] of [['HtmlAtKeys', '"text/html"'], ['KeySetWithoutKeys', 'without a list'],
            ['KeySetEmpty', 'no key that can verify'], ['RsaKeyOf1024Bits', 'no key that can verify'],
            ['KeyForEncryption', 'no key that can verify']]) {
            const run = await examine(plainCase(name));
            expectFailure(run, 70, 'keys', 'provider-keys-unusable', word);
            store(`provider-keys-${name}`, run);
        }
    },

    async 'ports that are taken'() {
        const { server, port } = await listen(() => {});
        const one = await examine({ ...plainCase('WellBehaved'), redirectPorts: [port] });
        expectFailure(one, 71, 'redirect-ports', 'provider-no-redirect-port');
        store('provider-ports', one);
        const two = await examine({ ...plainCase('WellBehaved'), redirectPorts: [port, 50_173] });
        assert.equal(two.code, 0, two.output);
        assert.deepEqual(resultsOf(two, 'redirect-ports'), [`port ${port}: not-free`, 'port 50173: free']);
        server.close();
    },

    async 'a clock that is off'() {
        const server = createServer((request, response) => {
            // With its length: Wine takes an empty body in chunks for an error.
            response.writeHead(404, { Date: new Date(Date.now() + 600_000).toUTCString(), 'Content-Length': '0' }).end();
        });
        await new Promise(resolve => { server.listen(0, '127.0.0.1', resolve); });
        const provider = { issuer: `http://127.0.0.1:${server.address().port}`, allowInsecureLoopback: true };
        const run = await examine(provider);
        // The first step that fails is the cause; the clock is in the report nevertheless.
        expectFailure(run, 65, 'discovery', 'provider-discovery-unusable', 'status 404');
        assert.deepEqual(resultsOf(run, 'clock'), ['this machine\'s clock: off']);
        server.closeAllConnections();
        server.close();
        const alone = await examine(plainCase('ClockAhead'));
        expectFailure(alone, 72, 'clock', 'provider-clock-off', 'behind the provider\'s', '60 seconds are tolerated');
        assert.equal((await examine({ ...plainCase('ClockAhead'), clockToleranceSeconds: 600 })).code, 0);
        store('provider-clock', alone);
    },

    async 'options that do not belong together'() {
        for (const [arguments_, word] of [[['provider', '--load'], '--load does not belong to it'],
            [['--config', 'a'], '--config belongs to provider'], [['check', 'a', '--server', 'staging'], '--server belongs to provider'],
            [['provider', '--server', 'test'], '--server needs production, staging or development'],
            [['provider', 'x'], 'unexpected argument: \'x\''], [['provider', '--config'], '--config needs a file']]) {
            const run = await runWindows(doctor, arguments_);
            assert.equal(run.code, 2, run.output);
            assert.ok(run.output.includes(word), run.output);
        }
    },
};

let status = 1;
try {
    status = await runChecks(checks);
} finally {
    await forget();
    await hostile.stop();
}
process.exit(status);
