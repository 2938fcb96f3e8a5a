// Each case of the hostile provider sends what it says, and nothing wrong once it is healed: node hostile-self-test.mjs [NAME...]

import assert from 'node:assert/strict';
import { cases } from './hostile-cases.mjs';
import { ReferenceClient } from './reference-client.mjs';
import { Peer, runChecks } from './self-test.mjs';

const limit = 15_000; // Of one request: far beyond what any takes on a busy machine.
const names = process.argv.slice(2);
const chosen = cases.filter(({ name }) => names.length === 0 || names.includes(name));
const peer = await Peer.start('hostile.mjs');
const issuerOf = name => `${peer.values.insecureIssuer}/${name}`;

/// Runs all cases, several at a time: some wait for a limit.
async function runAll(run) {
    const results = new Map();
    const left = [...chosen];
    const work = async () => {
        for (let entry = left.shift(); entry; entry = left.shift()) {
            try {
                results.set(entry.name, await run(entry));
            } catch (error) {
                results.set(entry.name, error);
            }
        }
    };
    await Promise.all(Array.from({ length: 32 }, work));
    return results;
}

const codes = await runAll(entry => new ReferenceClient(issuerOf(entry.name), limit).run(entry));
const states = await runAll(({ name }) => peer.control('state', { name }));
await runAll(({ name }) => peer.control('heal', { name }));
const healed = await runAll(({ name, signIn }) => new ReferenceClient(issuerOf(name), limit).run({ signIn }));

const checks = {};
for (const { name, code, phase } of chosen) {
    checks[name] = () => {
        assert.equal(codes.get(name), code, 'the code of the table');
        assert.deepEqual(states.get(name).problems, [], 'what the client sent');
        assert.equal(healed.get(name), 0, 'the next sign-in');
        if (phase === 'logout' && name !== 'RevocationNotOffered')
            assert.equal(states.get(name).requests.revocation, 1);
    };
}

if (names.length === 0) {
    checks['names are unique, and codes and words are there'] = () => {
        assert.equal(new Set(cases.map(({ name }) => name)).size, cases.length);
        for (const { name, code, log, standard } of cases) {
            assert.match(name, /^[A-Z][A-Za-z0-9]*$/);
            assert.ok(Number.isInteger(code) && standard, name);
            assert.ok(code === 0 || log?.length > 0, `${name} has words`);
        }
    };
    checks['what a public client must not send is noticed'] = async () => {
        const name = 'WellBehaved';
        await fetch(`${issuerOf(name)}/token?code_verifier=a`, {
            method: 'POST', body: new URLSearchParams('client_secret=a&code=b&code=c'),
        });
        await fetch(`${issuerOf(name)}/authorize?code_challenge_method=plain&redirect_uri=http://127.0.0.1`, { redirect: 'manual' });
        const { problems } = await peer.control('state', { name });
        for (const word of ['a secret of a public client', 'a secret in the address', '"code" twice', 'no "nonce"', 'no "state"',
            'another flow'])
            assert.ok(problems.some(problem => problem.includes(word)), word);
    };
}

const status = await runChecks(checks);
console.log(`count: cases of the hostile provider = ${chosen.length}`);
await peer.stop();
process.exit(status);
