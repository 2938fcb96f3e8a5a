// The signed agent and hosts of it under Wine, for the drivers of this folder.

import { spawn, spawnSync } from 'node:child_process';
import { appendFileSync, chmodSync, closeSync, copyFileSync, existsSync, mkdirSync, openSync, readdirSync, readFileSync, readSync,
    statSync, writeFileSync } from 'node:fs';
import { createServer } from 'node:net';
import { join } from 'node:path';
import { createInterface } from 'node:readline';
import { openInChromium, ScriptedBrowser } from './browser.mjs';
import { root, runWindows, windowsPath } from './wine.mjs';

export const servers = { production: 0, staging: 1, development: 2 };

/// A host process. Commands return { code, text }.
export class Host {
    constructor(installation, folder) {
        this.pending = new Map();
        this.next = 1;
        /// Whether the program has begun.
        this.ready = new Promise(resolve => { this.pending.set('0', ({ code }) => resolve(code === 1000)); });
        const environment = { ...installation.environment };
        // scripts/wine-run would keep the output of a session's programs until they end.
        delete environment.ORLINDEX_WINE_SESSION;
        this.process = spawn(join(root, 'scripts/wine-run'), [join(folder, 'provider_host.exe')], {
            stdio: ['pipe', 'pipe', 'ignore'], env: environment, cwd: folder,
        });
        this.process.stdin.on('error', () => {}); // The host was killed.
        this.ended = new Promise(resolve => { this.process.on('exit', resolve); });
        createInterface(this.process.stdout).on('line', line => {
            const [number, code, ...text] = line.replace(/\r$/, '').split('\t');
            this.pending.get(number)?.({ code: Number(code), text: text.join('\t') });
            this.pending.delete(number);
        });
        this.ended.then(() => {
            for (const resolve of this.pending.values())
                resolve({ code: NaN, text: 'the host has ended' });
            this.pending.clear();
        });
    }

    call(command, ...values) {
        const number = String(this.next++);
        return new Promise(resolve => {
            this.pending.set(number, resolve);
            this.process.stdin.write([number, command, ...values].join('\t') + '\n');
        });
    }

    /// The same, for a command that has to succeed.
    async must(command, ...values) {
        const { code, text } = await this.call(command, ...values);
        if (code !== 1000)
            throw new Error(`${command} ${values.join(' ')}: ${code} ${text}`);
        return text;
    }

    kill() {
        this.process.kill('SIGKILL');
    }

    async exit() {
        this.process.stdin.write('0\texit\n');
        return this.ended;
    }
}

/// The log of all agents in the prefix. take() returns the lines since the last call.
class Log {
    constructor(file) {
        this.file = file;
        this.offset = existsSync(file) ? statSync(file).size : 0;
    }

    take() {
        if (!existsSync(this.file))
            return [];
        const size = statSync(this.file).size;
        let text = '';
        if (size < this.offset) // It was renamed when it was full.
            text = readFileSync(this.file.replace(/\.log$/, '.old.log')).subarray(this.offset).toString();
        const from = size < this.offset ? 0 : this.offset;
        const bytes = Buffer.alloc(size - from);
        const handle = openSync(this.file, 'r');
        readSync(handle, bytes, 0, bytes.length, from);
        closeSync(handle);
        this.offset = size;
        return (text + bytes).split(/\r?\n/).filter(line => line !== '');
    }
}

/// An installation of the agent with hosts, apart from all others in the prefix: it has a folder of its own for logins, and so
/// a server process of its own, and a browser of its own.
export class Installation {
    /// Call make(). `browser`: settings of the scripted browser; its `behavior` may change between sign-ins.
    constructor(build, folder, browser = {}) {
        this.build = build;
        this.folder = folder;
        this.browser = browser;
        this.visits = []; // What the browser did, promises.
        this.queue = Promise.resolve();
        this.logReader = new Log(logFile());
        for (const name of ['Pellwick', 'host', 'bin'])
            mkdirSync(join(folder, name), { recursive: true });
        for (const [file, target] of [['agent/Pellwick.exe', 'Pellwick'], ['agent/PellwickClient.dll', 'Pellwick'],
            ['agent/TALIXVersionCompatibility.config', 'Pellwick'], ['bin/Orlindex.dll', 'host'],
            ['tests/provider/provider_host.exe', 'host']])
            copyFileSync(join(build, file), join(folder, target, file.split('/').at(-1)));
        this.writeHostConfig('host', 'com.kestrany.provider-test');
        this.environment = {
            ...process.env,
            PELLWICK_SIMULATOR_DATA: windowsPath(join(folder, 'data')),
            PATH: `${join(folder, 'bin')}:${process.env.PATH}`,
        };
    }

    /// See the constructor.
    static async make(build, folder, browser) {
        const installation = new Installation(build, folder, browser);
        await installation.openBrowser();
        return installation;
    }

    writeHostConfig(name, bundleId) {
        writeFileSync(join(this.folder, name, 'Orlindex.config'), JSON.stringify({
            ssoServer: { bundleId, searchPaths: windowsPath(join(this.folder, 'Pellwick')) },
        }));
    }

    /// Wine opens addresses with the first xdg-open in PATH. This one hands them to this process.
    async openBrowser() {
        this.receiver = createServer(socket => {
            createInterface(socket).once('line', address => {
                // One after the other: they share the cookies of one profile.
                this.queue = this.queue.then(() => this.visit(address));
                this.visits.push(this.queue);
            });
            socket.on('error', () => {});
        });
        await new Promise(resolve => { this.receiver.listen(0, '127.0.0.1', resolve); });
        const script = join(this.folder, 'bin', 'xdg-open');
        writeFileSync(script, `#!/bin/bash\nprintf '%s\\n' "$1" >/dev/tcp/127.0.0.1/${this.receiver.address().port}\n`);
        chmodSync(script, 0o755);
        this.receiver.unref();
    }

    async visit(address) {
        try {
            return await (this.browser.chromium ? openInChromium(address, this.browser)
                : new ScriptedBrowser(this.browser).open(address));
        } catch (error) {
            return { error: String(error) };
        }
    }

    /// Writes the configuration; the next server process reads it.
    configure(providers, more = { window: false }) {
        writeFileSync(join(this.folder, 'Pellwick', 'Pellwick.config.json'), JSON.stringify({ servers: providers, ...more }));
    }

    async startHost({ backoff = [1, 1, 1, 1, 0] } = {}) {
        let host = new Host(this, join(this.folder, 'host'));
        // Once in some thousand starts, Wine fails before the program has begun: see scripts/wine-run.
        if (!await host.ready) {
            recordSilentStart('ended before it began: provider_host.exe');
            host = new Host(this, join(this.folder, 'host'));
        }
        await host.must('start');
        await host.must('backoff', ...backoff);
        return host;
    }

    /// Ends the server process, if there is one.
    quit() {
        return runWindows(join(this.folder, 'Pellwick', 'Pellwick.exe'), ['--quit'], { environment: this.environment });
    }

    /// The process ID, of this system and not of Wine, of the server process; undefined if there is none.
    serverProcess() {
        const program = windowsPath(join(this.folder, 'Pellwick', 'Pellwick.exe'));
        return readdirSync('/proc').filter(name => /^\d+$/.test(name)).map(Number).find(id => {
            try {
                return readFileSync(`/proc/${id}/cmdline`, 'utf8').startsWith(program);
            } catch {
                return false; // It has ended.
            }
        });
    }

    log() {
        return this.logReader.take();
    }
}

/// Records a program that Wine ended before it began. scripts/test.sh shows the records.
export function recordSilentStart(what) {
    appendFileSync(join(prefix(), 'silent-starts'), `${what}\n`);
}

export function prefix() {
    return process.env.WINEPREFIX || join(root, '.deps/wine-run');
}

/// Where the agent writes its log, for the user who runs this.
function logFile() {
    const user = spawnSync('id', ['-un'], { encoding: 'utf8' }).stdout.trim();
    return join(prefix(), 'drive_c/users', user, 'AppData/Local/Kestrany/Identity Services/Log/IdServices.log');
}
