// Shows a sign-in with a real provider, through its page in a browser: node demo.mjs BUILD CHROMIUM FOLDER
//
// scripts/demo.sh --provider runs it, in a Wine session of its own. FOLDER receives the installation and the browser's profile.
// Prints claims, and never a token.

import { join } from 'node:path';
import { Installation } from './agent.mjs';
import { Peer } from './self-test.mjs';
import { trustRoot } from './wine.mjs';

const [build, chromium, folder] = process.argv.slice(2);
const scope = 'openid profile email';
const success = 1000;
const say = text => console.log(`  ${text}`);
const title = text => console.log(`\n== ${text}`);

function fail(text) {
    throw new Error(text);
}

const claimsOf = token => JSON.parse(Buffer.from(token.split('.')[1], 'base64url'));

async function expectCode(host, expected, ...command) {
    const { code, text } = await host.call(...command);
    if (code !== expected)
        fail(`${command[0]}: result ${code} instead of ${expected}`);
    return text;
}

async function showTokens(host) {
    const access = await host.must('token');
    say(`access token    ${access.length} characters, ${access.split('.').length === 3 ? 'a signed one' : 'opaque'}`);
    const idToken = await host.must('idToken');
    const header = JSON.parse(Buffer.from(idToken.split('.')[0], 'base64url'));
    say(`ID token        signed with ${header.alg}, key ${header.kid}`);
    for (const [name, value] of Object.entries(claimsOf(idToken)))
        say(`  ${name.padEnd(14)}${['exp', 'iat', 'auth_time'].includes(name) ? new Date(value * 1000).toISOString() : value}`);
    return access;
}

async function waitForVisit(installation, before) {
    for (const end = Date.now() + 300_000; installation.visits.length <= before; ) {
        if (Date.now() > end)
            fail('no browser was opened');
        await new Promise(resolve => { setTimeout(resolve, 50); });
    }
    const visit = await installation.visits.at(-1);
    return visit.error ? fail(`the browser: ${visit.error}`) : visit;
}

const provider = await Peer.start('provider.mjs');
const forgetRoot = await trustRoot(provider.values.rootForWindows);
const installation = await Installation.make(build, folder, {
    chromium, profile: join(folder, 'chromium'), user: 'sam', password: 'any',
    certificate: join(provider.values.certificates, 'localhost.pem'),
});
installation.configure({ production: { issuer: provider.values.issuer, timeouts: { signInSeconds: 300 } } });
let status = 1;
let host;
try {
    title('A provider on this machine');
    say(`issuer          ${provider.values.issuer}`);
    say('Pellwick.config.json names it; its certificate is trusted in this Wine prefix alone.');

    title('Sign in, through the provider\'s page in Chromium');
    host = await installation.startHost();
    await host.must('product', 0, 'example-host', scope);
    await expectCode(host, success, 'login');
    const visit = await waitForVisit(installation, 0);
    say(`the browser     typed ${visit.passwords} password, and ended on the agent's page: ${visit.text.split('\n')[0]}`);
    const [id, name, email] = (await expectCode(host, success, 'user')).split('|');
    say(`the user        ${name} <${email}>, ${id}`);
    const first = await showTokens(host);

    title('Refresh');
    await expectCode(host, success, 'refresh');
    if (await showTokens(host) === first)
        fail('the access token is the old one');
    say('The refresh token was replaced, too; the server application alone has it.');

    title('Restart the server application, and restore the login');
    if ((await installation.quit()).code !== 0)
        fail('the server application did not quit');
    say('Pellwick.exe has quit.');
    installation.log();
    await expectCode(host, success, 'token');
    const restored = installation.log().find(line => line.includes('Login restored')) ?? fail('no login was restored');
    say(`the log says    ${restored.slice(restored.indexOf('Login restored'))}`);

    title('A second application signs in without a password');
    const other = await installation.startHost();
    await other.must('product', 0, 'second-host', scope);
    await expectCode(other, success, 'login');
    const { passwords } = await waitForVisit(installation, 1);
    say(`the browser     typed ${passwords} passwords`);
    if (passwords !== 0)
        fail('a password was asked for');
    await other.exit();

    title('Sign out');
    const before = installation.visits.length;
    await expectCode(host, success, 'logout');
    await waitForVisit(installation, before);
    say('The tokens are revoked, and the provider\'s logout page was opened.');
    await expectCode(host, 4001, 'token');
    say('The host gets no token any more (4001).');
    const { counts } = await provider.control('state');
    title('What the provider was asked for');
    for (const [endpoint, count] of Object.entries(counts))
        say(`${endpoint.padEnd(26)}${count}`);
    status = 0;
} catch (error) {
    console.error(`\nerror: ${error.message}`);
    console.error(installation.log().filter(line => / (Error|Warning) /.test(line)).join('\n'));
} finally {
    host?.kill();
    await installation.quit();
    await forgetRoot();
    await provider.stop();
}
process.exit(status);
