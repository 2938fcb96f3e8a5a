// The signed agent and a host against every case of the hostile provider:
//
//     node hostile-test.mjs BUILD [--results FILE] [--all | NAME...]
//
// --results writes the code that the host got in each case, as JSON: table.mjs compares docs/openid.md with it.
// Of each case: the code and the log line are those of the table, nothing is kept, no host waits longer than the limit, and the
// next sign-in works. Without --all, and unless ORLINDEX_LONG is set, only a part of the cases runs: the rest are proven in
// seconds by the native tests of the portable core.

import assert from 'node:assert/strict';
import { mkdirSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { parseArgs } from 'node:util';
import { Installation, recordSilentStart, servers } from './agent.mjs';
import { ScriptedBrowser } from './browser.mjs';
import { Certificates } from './certificates.mjs';
import { cases } from './hostile-cases.mjs';
import { temporaryFolder } from './peer.mjs';
import { Peer } from './self-test.mjs';
import { trustRoot } from './wine.mjs';

const { values: options, positionals: [build, ...names] } = parseArgs({
    options: { all: { type: 'boolean' }, results: { type: 'string' } }, allowPositionals: true,
});
const isLong = options.all || Boolean(process.env.ORLINDEX_LONG);

/// The short form: what the adapters for Windows have a part in, and of the rest the relying-party tests.
const isShort = entry => entry.ofTest !== undefined || entry.browser !== undefined || entry.signIn === 'device' ||
    entry.phase !== undefined || ['discovery', 'token'].includes(entry.endpoint) ||
    ['MixUp', 'Denied', 'PushedRequest', 'PkceNotListed', 'TokenEndpointOverHttp', 'PointThatIsNotOnTheCurve'].includes(entry.name);
const isSkipped = entry => entry.slow && ['ServerError', 'TooManyRequests'].includes(entry.effect) && entry.endpoint !== 'token';

const chosen = cases.filter(entry => (names.length > 0 ? names.includes(entry.name)
    : isLong || (isShort(entry) && !isSkipped(entry))));

const requestSeconds = 1;
/// A device is polled after seconds, and its user does not come again.
const limitOf = ({ signIn }) => (signIn === 'device' ? 60 : 10);
const lanes = Math.min(2, chosen.length);
const client = 'hostile-client';
const scope = 'openid profile email';

const folder = temporaryFolder();
const certificates = new Certificates(folder);
certificates.makeRoot('root');
certificates.make('localhost', 'root', 'localhost');
const hostile = await Peer.start('hostile.mjs', { certificates: folder });
const forgetRoot = await trustRoot(certificates.path('root.der'));

const sleep = milliseconds => new Promise(resolve => { setTimeout(resolve, milliseconds); });

/// Waits until something is true; null at the limit.
async function until(condition, milliseconds = 60_000) {
    for (const end = Date.now() + milliseconds; Date.now() < end; await sleep(20)) {
        const result = condition();
        if (result)
            return result;
    }
    return null;
}

class Lane {
    static async make(number) {
        const lane = new Lane();
        const own = join(folder, `lane-${number}`);
        mkdirSync(own);
        lane.installation = await Installation.make(build, own, { ca: certificates.path('root.pem') });
        lane.lines = [];
        return lane;
    }

    /// One server process for a case at each of its servers.
    async run(batch, results) {
        const providers = Object.fromEntries(batch.map((entry, index) => [Object.keys(servers)[index], {
            issuer: `${hostile.values.issuer}/${entry.name}`, signIn: entry.signIn ?? 'browser',
            timeouts: { requestSeconds, signInSeconds: limitOf(entry) },
        }]));
        this.installation.configure(providers);
        this.host = await this.installation.startHost();
        for (const [index, entry] of batch.entries()) {
            const server = Object.values(servers)[index];
            await this.host.must('product', server, client, scope);
            await this.host.must('server', server);
            if (index === 0)
                this.pid = await this.serverProcess();
            this.lines.length = 0;
            if (process.env.ORLINDEX_VERBOSE)
                console.error(`${new Date().toISOString()} ${entry.name}`);
            try {
                await this.check(entry);
                results.set(entry.name, null);
            } catch (error) {
                results.set(entry.name, `${error.message}\n${this.log().join('\n')}`);
            }
        }
        await this.host.exit();
        await this.installation.quit();
    }

    /// The ID of the server process that the host started. Once in some thousand starts, Wine ends a program before it begins (see
    /// scripts/wine-run). The host's next call then starts the server again.
    async serverProcess() {
        const { code, text } = await this.host.call('serverProcess');
        if (code === 1000)
            return text;
        const errors = this.installation.log().filter(line => line.includes(' Error '));
        recordSilentStart(`no server process after the start of a host: ${errors.join(' ')}`);
        await this.host.call('status');
        return this.host.must('serverProcess');
    }

    log() {
        this.lines.push(...this.installation.log().filter(line => line.includes(`[${this.pid}]`)));
        return this.lines;
    }

    async logIn(entry, behavior) {
        this.installation.browser.behavior = behavior;
        const login = this.host.call('login');
        if (entry.signIn === 'device')
            this.confirmDevice(login);
        const began = Date.now();
        const { code } = await login;
        // Half a minute more for a machine that does other things, too.
        assert.ok(Date.now() - began < (limitOf(entry) + 30) * 1000, 'no host waits longer than the limit');
        return code;
    }

    /// Opens the page for the other device when the log names it.
    async confirmDevice(login) {
        let isDone = false;
        login.then(() => { isDone = true; });
        const isShown = line => / Sign in at (\S+) with the code (\S+)/.exec(line);
        const seen = this.log().filter(isShown).length;
        const match = await until(() => isDone || this.log().filter(isShown).slice(seen).map(isShown).at(-1));
        if (match?.[1]?.startsWith('http'))
            await new ScriptedBrowser({ ca: certificates.path('root.pem') }).open(`${match[1]}?user_code=${match[2]}`);
    }

    async logOut() {
        return (await this.host.call('logout')).code;
    }

    async afterLogin(phase) {
        switch (phase) {
        case 'refresh': return (await this.host.call('refresh')).code;
        case 'user': return (await this.host.call('user')).code;
        case 'token': return (await this.host.call('token')).code;
        case 'logout': return this.logOut();
        case 'twice':
            assert.equal(await this.logOut(), 1000, 'the logout between two logins');
            return (await this.host.call('login')).code;
        default: return 1000;
        }
    }

    async check(entry) {
        const { name, phase, log = [] } = entry;
        const expected = entry.code || 1000;
        let code = await this.logIn(entry, entry.browser ?? 'signIn');
        const isSignedIn = code === 1000;
        if (isSignedIn)
            code = await this.afterLogin(phase);
        codes[name] = code;
        assert.equal(code, expected, 'the code');
        if (log.length > 0) {
            const line = await until(() => this.log().find(each => log.every(words => each.includes(words))), 20_000);
            assert.ok(line, `a line with ${JSON.stringify(log)} in the log`);
            // Where the result is a failure, its line names the code.
            assert.ok(expected === 1000 || line.includes(`(${expected})`) || log[0].startsWith('A redirect with a wrong state'),
                `the code in: ${line}`);
        }
        const { problems } = await hostile.control('state', { name });
        assert.deepEqual(problems, [], 'what the agent sent');
        if (!isSignedIn) {
            assert.match(await this.host.must('status'), /loggedIn=0/, 'nothing is kept');
            assert.equal((await this.host.call('token')).text, '', 'nothing is kept');
        }
        await hostile.control('heal', { name });
        if (isSignedIn)
            await this.logOut();
        assert.equal(await this.logIn(entry, 'signIn'), 1000, 'the next sign-in');
        assert.equal((await this.host.call('token')).code, 1000, 'the token of the next sign-in');
    }
}

const results = new Map();
const codes = {};
const left = [...chosen];
const began = Date.now();
await Promise.all(Array.from({ length: lanes }, async (unused, number) => {
    const lane = await Lane.make(number);
    while (left.length > 0) {
        const batch = left.splice(0, Object.keys(servers).length);
        try {
            await lane.run(batch, results);
        } catch (error) {
            for (const { name } of batch)
                results.set(name, results.get(name) ?? `the lane: ${error.stack}`);
            lane.host?.kill();
            await lane.installation.quit();
        }
    }
}));

let failed = 0;
for (const { name } of chosen) {
    const problem = results.get(name);
    if (problem === null)
        continue;
    ++failed;
    console.log(`FAILED: ${name}: ${problem.replaceAll('\n', '\n    ')}`);
}
console.log(`${chosen.length} of ${cases.length} cases in ${Math.round((Date.now() - began) / 1000)} s, ${failed} failed`);
console.log(`count: cases against the signed agent = ${chosen.length}`);
if (options.results)
    writeFileSync(options.results, JSON.stringify(codes));
await forgetRoot();
await hostile.stop();
process.exit(failed === 0 ? 0 : 1);
