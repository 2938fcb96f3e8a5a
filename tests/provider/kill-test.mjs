// Kills server and host processes anywhere in sign-in, refresh and logout: node kill-test.mjs BUILD [--rounds COUNT]
//
// The real provider rotates refresh tokens, and ends a grant when an old refresh token is presented. After each round the user is
// still signed in, and another refresh proves it. There are three exceptions. The round killed a sign-in that had not ended. It
// killed a logout that had begun. Or it killed the server process while the provider's reply to a refresh was on its way, and the
// new token was lost. Rounds of the last kind are counted and named.

import { join } from 'node:path';
import { Installation } from './agent.mjs';
import { temporaryFolder } from './peer.mjs';
import { Peer } from './self-test.mjs';
import { trustRoot } from './wine.mjs';

const [build, ...options] = process.argv.slice(2);
const rounds = options[0] === '--rounds' ? Number(options[1]) : process.env.ORLINDEX_LONG ? 200 : 10;

const folder = temporaryFolder();
const provider = await Peer.start('provider.mjs');
const forgetRoot = await trustRoot(provider.values.rootForWindows);
const installation = await Installation.make(build, folder, { ca: provider.values.root, profile: join(folder, 'profile') });
installation.configure({ production: { issuer: provider.values.issuer, timeouts: { signInSeconds: 30 } } });

const success = 1000;
const notLoggedIn = 4001;
const grantRefused = 4047;
const sleep = milliseconds => new Promise(resolve => { setTimeout(resolve, milliseconds); });

/// Milliseconds within which an answer arrives and is stored, on a machine that does other things, too.
const arrival = 250;

let host;
async function newHost() {
    host = await installation.startHost();
    await host.must('product', 0, 'example-host', 'openid profile');
}

async function codeOf(...command) {
    return (await host.call(...command)).code;
}

/// Asks until the server process replies: after a kill, the first answer can be that it was lost.
async function stateAfterKill() {
    for (const end = Date.now() + 120_000; Date.now() < end; await sleep(50)) {
        const code = await codeOf('token');
        if (code === success)
            // The stored refresh token has to be the newest one: the access token would be accepted for an hour.
            return codeOf('refresh');
        if ([notLoggedIn, grantRefused].includes(code))
            return code;
    }
    throw new Error('no server process replies');
}

function killServer() {
    const id = installation.serverProcess();
    if (id !== undefined)
        process.kill(id, 'SIGKILL');
}

/// A host process of this system and not of Wine: the one that scripts/wine-run became.
async function killHost() {
    host.kill();
    await host.ended;
    await newHost();
}

const outcomes = {};
const count = name => { outcomes[name] = (outcomes[name] ?? 0) + 1; };
const problems = [];

/// What is killed during what, and when at the latest, in milliseconds.
const operations = [['login', 400], ['refresh', 120], ['refresh', 120], ['logout', 120]];

async function round(number) {
    const [operation, longest] = operations[number % operations.length];
    const victim = Math.floor(number / operations.length) % 3 === 2 ? 'host' : 'server';
    const wait = Math.floor(Math.random() * longest);
    const name = `${operation}, ${victim} killed after ${wait} ms`;
    if (operation === 'login') {
        if (await codeOf('token') === success)
            await codeOf('logout');
    } else if (await codeOf('token') !== success && await codeOf('login') !== success)
        throw new Error(`round ${number}: no sign-in before ${name}`);
    await installation.queue; // The logout page of the round before.
    await provider.control('reset', {});
    const call = host.call(operation);
    let hasEnded = false;
    call.then(() => { hasEnded = true; });
    await sleep(wait);
    const wasOver = hasEnded;
    const { repliedAt } = await provider.control('state');
    const killedAt = Date.now();
    if (victim === 'server')
        killServer();
    else
        await killHost();
    const { code } = await call;
    const after = await stateAfterKill();
    const revoked = (await provider.control('state')).events['grant.revoked'] ?? 0;
    const hadArrived = wasOver || killedAt - (repliedAt.token ?? killedAt) > arrival;
    if (after === success)
        return count(`${operation}: signed in afterwards`);
    if (operation === 'login' && !(wasOver && code === success))
        return count('login: it had not ended');
    if (operation === 'logout')
        return count('logout: signed out');
    // The provider saw an old token: its answer to the killed process was lost on the wire.
    if (victim === 'server' && revoked > 0 && !hadArrived)
        return count('refresh: the answer was lost on the wire with the killed process');
    problems.push(`round ${number}: ${name}: ${after} afterwards, ${revoked} grants revoked\n${installation.log()
        .filter(line => / (Error|Warning) /.test(line)).slice(-8).join('\n')}`);
    return count(`${operation}: signed out without reason`);
}

let status = 1;
try {
    await newHost();
    for (let number = 0; number < rounds; ++number) {
        installation.log();
        await round(number);
    }
    if (await codeOf('token') !== success && await codeOf('login') !== success)
        problems.push('no sign-in after all rounds');
    status = problems.length === 0 ? 0 : 1;
} catch (error) {
    problems.push(error.stack);
} finally {
    host?.kill();
    await installation.quit();
    await forgetRoot();
    await provider.stop();
}
for (const problem of problems)
    console.log(`FAILED: ${problem}`);
for (const [name, number] of Object.entries(outcomes).sort())
    console.log(`${String(number).padStart(5)}  ${name}`);
console.log(`count: rounds with a killed process = ${rounds}`);
process.exit(status);
