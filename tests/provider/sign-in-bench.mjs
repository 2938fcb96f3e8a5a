// Measures a sign-in of the agent beside its floor: node sign-in-bench.mjs BUILD [--quick]
//
// The floor is a program that makes the same requests by the same calls of the platform, written by hand: bench/signins. A
// client that others wrote, on this system's Node.js and not under Wine, is measured too, and has no bound.
//
// The time of a sign-in begins when the browser sends the redirect, and ends when a line of the program says that the user is
// signed in: for the agent, a line of a host whose observer received the event. The provider's time is taken off: from the
// headers of each request in between to the end of its reply. The first sign-in of a process requests metadata, keys and
// tokens, a later one tokens alone; any other request fails the measurement. All programs are measured alternately, and the
// median of each counts. A missed bound is measured again, at most twice. Ends with 1 if it is missed each time.

import assert from 'node:assert/strict';
import { spawn } from 'node:child_process';
import { join } from 'node:path';
import { createInterface } from 'node:readline';
import { Installation } from './agent.mjs';
import { ScriptedBrowser } from './browser.mjs';
import { temporaryFolder } from './peer.mjs';
import { here, Peer } from './self-test.mjs';
import { root, windowsPath } from './wine.mjs';

const [build, option] = process.argv.slice(2);
const isQuick = option === '--quick';
const [firstTurns, laterTurns] = isQuick ? [1, 15] : [6, 60];
const bound = isQuick ? 1.5 : 1.2;
const runs = 3;
const settling = 100; // Milliseconds.
const client = 'example-host';
const loggedIn = 'logged in 1000; token available 1000';

const folder = temporaryFolder();
const provider = await Peer.start('provider.mjs');
const issuer = provider.values.insecureIssuer;

let redirectAt; // When the browser sent the last redirect.
const browserOf = name => ({ profile: join(folder, `profile-${name}`), onRedirect: () => { redirectAt = performance.now(); } });

// --- Programs -------------------------------------------------------------------------------------------------------

/// A program that signs in by lines: see bench/signins/SignInFloor.cpp.
class LineProgram {
    constructor(name, command, ...values) {
        this.browser = browserOf(name);
        const environment = { ...process.env };
        // scripts/wine-run would keep the output of a session's programs until they end.
        delete environment.ORLINDEX_WINE_SESSION;
        this.process = spawn(command, [...values, issuer, client, this.file(name)],
            { stdio: ['pipe', 'pipe', 'inherit'], env: environment });
        this.process.stdin.on('error', () => {}); // It has ended, which the next line says.
        this.ended = new Promise(resolve => { this.process.on('close', resolve); });
        createInterface(this.process.stdout).on('line', line => this.receive(...line.replace(/\r$/, '').split('\t')));
    }

    receive(what, text) {
        if (what === 'address')
            this.visit = new ScriptedBrowser(this.browser).open(text);
        else
            this.resolve(performance.now());
    }

    /// Returns when the line of the event came.
    async signIn() {
        const event = new Promise(resolve => { this.resolve = resolve; });
        this.process.stdin.write('\n');
        const at = await Promise.race([event, this.ended.then(() => { throw new Error('the program has ended'); })]);
        await this.visit;
        return at;
    }

    async signOut() {}

    async end() {
        this.process.stdin.end();
        await this.ended;
    }
}

class Floor extends LineProgram {
    constructor() {
        super('floor', join(root, 'scripts/wine-run'), join(build, 'bench/programs/sign_in_floor.exe'));
    }
    file(name) { return windowsPath(join(folder, `tokens-${name}`)); }
}

class OtherClient extends LineProgram {
    constructor() {
        super('client', process.execPath, join(here, 'sign-in-client.mjs'));
    }
    file(name) { return join(folder, `tokens-${name}`); }
}

const installation = await Installation.make(build, folder, browserOf('agent'));
installation.configure({ production: { issuer, allowInsecureLoopback: true } });

class Agent {
    async start() {
        this.host = await installation.startHost();
        await this.host.must('product', 0, client, 'openid');
    }

    async signIn() {
        const { code, text, at } = await this.host.call('signIn').then(result => ({ ...result, at: performance.now() }));
        assert.deepEqual([code, text], [1000, loggedIn]);
        await installation.visits.at(-1);
        return at;
    }

    /// Waits for the provider's logout page, too: it ends the grants of the browser's session, later ones included.
    async signOut() {
        const visits = installation.visits.length;
        await this.host.must('logout');
        while (installation.visits.length === visits)
            await new Promise(resolve => { setTimeout(resolve, 5); });
        await installation.visits.at(-1);
        await this.host.must('events');
    }

    async end() {
        await this.host?.exit();
        await installation.quit();
    }
}

const programs = {
    agent: async () => { const agent = new Agent(); await agent.start(); return agent; },
    floor: () => new Floor(),
    client: () => new OtherClient(),
};
const names = Object.keys(programs);

// --- Measurement ----------------------------------------------------------------------------------------------------

/// What a program requests. The browser's own requests are not among them.
const ofPrograms = ({ counts }) => Object.fromEntries(Object.entries(counts).filter(([name]) => name !== 'authorization'));
const laterRequests = { token: 1, 'token:authorization_code': 1 };
const firstRequests = { discovery: 1, keys: 1, ...laterRequests };

/// Milliseconds of one sign-in. The metadata is requested before the browser opens.
async function timeOf(program, requests) {
    await provider.control('reset', {});
    // Processes of the sign-in before may still be ending, such as those that opened its browser.
    await new Promise(resolve => { setTimeout(resolve, settling); });
    const at = await program.signIn();
    const state = await provider.control('state');
    assert.deepEqual(ofPrograms(state), requests);
    const time = at - redirectAt - (state.spent.token + (state.spent.keys ?? 0));
    if (process.env.ORLINDEX_VERBOSE)
        console.error(program.constructor.name, time.toFixed(2), state.spent);
    await program.signOut();
    return time;
}

const median = values => values.sort((one, other) => one - other)[values.length >> 1];
const medians = times => Object.fromEntries(names.map(name => [name, median(times[name])]));
const noTimes = () => Object.fromEntries(names.map(name => [name, []]));

/// The medians of first and of later sign-ins, by program.
async function measure() {
    const first = noTimes();
    const later = noTimes();
    for (let turn = 0; turn < firstTurns; ++turn) {
        const started = {};
        try {
            for (const name of names) {
                started[name] = await programs[name]();
                first[name].push(await timeOf(started[name], firstRequests));
            }
            for (let count = turn; count < laterTurns; count += firstTurns) {
                for (const name of names)
                    later[name].push(await timeOf(started[name], laterRequests));
                names.push(names.shift()); // Each program comes first as often as the others.
            }
        } finally {
            for (const program of Object.values(started))
                await program.end();
        }
    }
    return { first: medians(first), later: medians(later) };
}

function print({ first, later }) {
    const time = value => `${value.toFixed(2)} ms`;
    const ratio = (times, other) => (times.agent / times[other]).toFixed(2);
    const result = later.agent / later.floor <= bound ? 'met' : 'MISSED';
    const lines = [
        ['measured', 'agent', 'floor', 'ratio', 'bound', 'result'],
        ['a sign-in, redirect to event', time(later.agent), time(later.floor), ratio(later, 'floor'), `<= ${bound}`, result],
        ['... the first of a process', time(first.agent), time(first.floor), ratio(first, 'floor'), '', ''],
        ['... against openid-client on Node.js', time(later.agent), time(later.client), ratio(later, 'client'), '', ''],
        ['... the first of a process', time(first.agent), time(first.client), ratio(first, 'client'), '', ''],
    ];
    const widths = lines[0].map((_, column) => Math.max(...lines.map(line => line[column].length)));
    for (const line of lines)
        console.log(line.map((cell, column) => cell.padEnd(widths[column])).join(' | ').trimEnd());
    console.log('Requests of the first sign-in: 1 for the metadata, 1 for the keys, 1 for tokens; of a later one: 1 for tokens.');
}

let best;
try {
    for (let run = 0; run < runs && !(best?.later.agent / best?.later.floor <= bound); ++run) {
        const result = await measure();
        if (!best || result.later.agent / result.later.floor < best.later.agent / best.later.floor)
            best = result;
    }
    print(best);
} finally {
    await installation.quit();
    await provider.stop();
}
process.exit(best.later.agent / best.later.floor <= bound ? 0 : 1);
