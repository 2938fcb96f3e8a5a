// Stands for the system's browser in tests: node browser.mjs SETTINGS-FILE ADDRESS
//
// Opens the address as a user would, who signs in: by a scripted client that follows pages and fills in forms, or in headless
// Chromium. Cookies are kept in a profile, so that a second sign-in needs no password. SETTINGS-FILE holds a JSON object, see
// `defaults`; it is read at each start, so that a test can change what the next sign-in does. What happened is appended to the
// log file, a line of JSON each, without codes and tokens.

import { appendFileSync, existsSync, readFileSync, realpathSync, renameSync, writeFileSync } from 'node:fs';
import { request as httpRequest } from 'node:http';
import { request as httpsRequest } from 'node:https';
import { createHash, X509Certificate } from 'node:crypto';
import { connect } from 'node:net';
import { fileURLToPath } from 'node:url';

const defaults = {
    profile: '', // A file with cookies; for Chromium, a folder. Empty for none.
    ca: '', // The file with the root that the provider's certificate is signed by.
    user: 'sam',
    password: 'any',
    userCode: '', // For the page of a device grant that asks for it.
    behavior: 'signIn',
    delay: 0, // Milliseconds before the user does anything.
    onRedirect: () => {}, // Called right before the redirect is sent.
    log: '',
    chromium: '', // The program; empty for the scripted client.
    certificate: '', // For Chromium: the one server certificate that it accepts.
};

// --- What a user does -----------------------------------------------------------------------------------------------

/// What is sent to the redirect address, in this order. `set` replaces parameters, `repeat` sends them twice, null removes one.
/// The last one is what the browser shows in the end.
const real = {};
const behaviors = {
    signIn: { redirects: [real] },
    deny: { cancels: true, redirects: [real] },
    neverAnswers: { stops: true },
    closesAfterSignIn: { redirects: [] },
    wrongState: { redirects: [{ set: { state: 'wrong' } }] },
    wrongStateThenReal: { redirects: [{ set: { state: 'wrong' } }, real] },
    noState: { redirects: [{ set: { state: null } }] },
    wrongIssuer: { redirects: [{ set: { iss: 'https://attacker.example' } }] },
    noIssuer: { redirects: [{ set: { iss: null } }] },
    repeatedParameter: { redirects: [{ repeat: ['code'] }] },
    codeAndError: { redirects: [{ set: { error: 'access_denied' } }] },
    noCode: { redirects: [{ set: { code: null } }] },
    otherCode: { redirects: [{ set: { code: 'a-code-of-somebody-else' } }] },
    otherPathThenReal: { redirects: [{ path: '/other' }, real] },
    postThenReal: { redirects: [{ method: 'POST' }, real] },
    longThenReal: { redirects: [{ set: { padding: 'a'.repeat(100_000) } }, real] },
    nonsenseThenReal: { redirects: [{ raw: 'this is not HTTP\r\n\r\n' }, real] },
    // A browser opens connections ahead of requests.
    idleConnectionsThenReal: { redirects: [{ idle: 20 }, real] },
    twice: { redirects: [real, real] },
};
export const behaviorNames = Object.keys(behaviors);

// --- Cookies --------------------------------------------------------------------------------------------------------

export class Cookies {
    constructor(file) {
        this.file = file;
        this.list = file && existsSync(file) ? JSON.parse(readFileSync(file, 'utf8')) : [];
    }

    store(url, headers) {
        for (const header of headers ?? []) {
            const [pair, ...attributes] = header.split(';').map(text => text.trim());
            const [name, value] = [pair.slice(0, pair.indexOf('=')), pair.slice(pair.indexOf('=') + 1)];
            const attribute = Object.fromEntries(attributes.map(text => text.split('='))
                .map(([key, content]) => [key.toLowerCase(), content ?? '']));
            const path = attribute.path ?? '/';
            const expires = attribute.expires ? Date.parse(attribute.expires) : undefined;
            this.list = this.list.filter(each => each.host !== url.host || each.path !== path || each.name !== name);
            if (value !== '' && !(expires < Date.now()))
                this.list.push({ host: url.host, path, name, value });
        }
    }

    header(url) {
        return this.list.filter(({ host, path }) => host === url.host &&
            (url.pathname === path || url.pathname.startsWith(path.endsWith('/') ? path : `${path}/`)))
            .map(({ name, value }) => `${name}=${value}`).join('; ');
    }

    save() {
        if (!this.file)
            return;
        writeFileSync(`${this.file}.${process.pid}`, JSON.stringify(this.list));
        renameSync(`${this.file}.${process.pid}`, this.file);
    }
}

// --- Pages ----------------------------------------------------------------------------------------------------------

const unescape = text => text.replaceAll('&quot;', '"').replaceAll('&#39;', '\'').replaceAll('&lt;', '<').replaceAll('&gt;', '>')
    .replaceAll('&amp;', '&');

function attributesOf(tag) {
    const attributes = {};
    for (const [, name, quoted, single, plain] of tag.matchAll(/([a-zA-Z-]+)(?:="([^"]*)"|='([^']*)'|=([^\s>"']+))?/g))
        attributes[name.toLowerCase()] = unescape(quoted ?? single ?? plain ?? '');
    return attributes;
}

/// The first form of a page; undefined if there is none.
export function formOf(html, url) {
    const found = /<form([^>]*)>([\s\S]*?)<\/form>/i.exec(html);
    if (!found)
        return undefined;
    const { action, method, id } = attributesOf(found[1]);
    // A button may belong to the form by its attribute only.
    const outside = [...html.matchAll(/<button[^>]*>/gi)].map(([tag]) => tag)
        .filter(tag => id && attributesOf(tag).form === id);
    const fields = [...found[2].matchAll(/<(?:input|button)[^>]*>/gi)].map(([tag]) => tag).concat(outside)
        .map(tag => ({ button: /^<button/i.test(tag), ...attributesOf(tag.slice(tag.indexOf(' '))) }));
    return { action: new URL(action || url.href, url), method: (method ?? 'get').toUpperCase(), fields };
}

export const textOf = html => unescape(html.replace(/<(style|script)[\s\S]*?<\/\1>/gi, ' ').replace(/<[^>]*>/g, ' ')
    .replace(/\s+/g, ' ')).trim();

/// Whether an address is the redirect to the application: nothing else carries these.
function isRedirect(url) {
    return ['code', 'error'].some(name => url.searchParams.has(name)) && url.searchParams.has('state');
}

export class ScriptedBrowser {
    constructor(settings) {
        this.settings = { ...defaults, ...settings };
        this.cookies = new Cookies(this.settings.profile);
        this.ca = this.settings.ca ? readFileSync(this.settings.ca) : undefined;
        this.behavior = behaviors[this.settings.behavior];
        if (!this.behavior)
            throw new Error(`unknown behavior: ${this.settings.behavior}`);
    }

    log(event) {
        if (this.settings.log)
            appendFileSync(this.settings.log, JSON.stringify(event) + '\n');
    }

    /// One request, without following redirects.
    async send(url, method = 'GET', form = undefined) {
        const body = form === undefined ? undefined : new URLSearchParams(form).toString();
        const target = body !== undefined && method === 'GET' ? new URL(`?${body}`, url) : url;
        const sends = body !== undefined && method !== 'GET';
        const response = await new Promise((resolve, reject) => {
            const start = url.protocol === 'https:' ? httpsRequest : httpRequest;
            const cookie = this.cookies.header(target);
            start(target, {
                method, ca: this.ca, agent: false,
                headers: {
                    'User-Agent': 'Mozilla/5.0 (test)', Accept: 'text/html,*/*;q=0.8', Connection: 'close',
                    ...cookie ? { Cookie: cookie } : {},
                    ...sends ? { 'Content-Type': 'application/x-www-form-urlencoded', 'Content-Length': Buffer.byteLength(body) } : {},
                },
            }, resolve).on('error', reject).end(sends ? body : undefined);
        });
        const blocks = [];
        for await (const block of response)
            blocks.push(block);
        this.cookies.store(target, response.headers['set-cookie']);
        const { location } = response.headers;
        return {
            url: target, status: response.statusCode, html: Buffer.concat(blocks).toString(),
            location: location === undefined ? undefined : new URL(location, target),
        };
    }

    /// Opens an address and does what the behavior says. Returns the last page.
    async open(address) {
        await new Promise(resolve => { setTimeout(resolve, this.settings.delay); });
        const result = { passwords: 0, pages: 0 };
        try {
            let page = await this.send(new URL(address));
            for (;; ++result.pages) {
                if (result.pages > 30)
                    throw new Error('too many pages');
                const step = await this.next(page, result);
                if (step === undefined)
                    break;
                page = step;
            }
            Object.assign(result, { status: page.status, text: textOf(page.html) });
        } finally {
            this.cookies.save();
            this.log(result);
        }
        return result;
    }

    /// The page that follows; undefined if there is none.
    async next(page, result) {
        if (page.location && isRedirect(page.location))
            return this.deliver(page.location, result);
        if (page.location && page.status >= 300 && page.status < 400)
            return this.send(page.location);
        if (result.redirected)
            return undefined;
        if (this.behavior.stops)
            return undefined;
        const form = formOf(page.html, page.url);
        if (form === undefined)
            return undefined;
        if (this.behavior.cancels) {
            const abort = /href="([^"]*\/abort)"/.exec(page.html);
            if (abort)
                return this.send(new URL(unescape(abort[1]), page.url));
        }
        return this.send(form.action, form.method, this.fill(form, result));
    }

    fill({ fields }, result) {
        const values = [];
        for (const { name, type, value, button } of fields) {
            if (!name)
                continue;
            if (type === 'password') {
                ++result.passwords;
                values.push([name, this.settings.password]);
            } else if (name === 'login')
                values.push([name, this.settings.user]);
            else if (name === 'user_code')
                values.push([name, value || this.settings.userCode]);
            else if (!(button && /abort/i.test(name + value))) // Every other button is a yes.
                values.push([name, value ?? '']);
        }
        return values;
    }

    /// Sends what the behavior makes of the redirect.
    async deliver(url, result) {
        result.redirected = true;
        this.settings.onRedirect();
        let last;
        for (const change of this.behavior.redirects ?? [{}]) {
            try {
                last = await this.sendRedirect(url, change);
            } catch (error) {
                (result.errors ??= []).push(error.code ?? error.message);
            }
        }
        return last;
    }

    async sendRedirect(url, { set = {}, repeat = [], path, method, raw, idle }) {
        if (raw !== undefined || idle !== undefined) {
            await this.sendRaw(url, raw, idle);
            return undefined;
        }
        const changed = new URL(url);
        for (const [name, value] of Object.entries(set)) {
            if (value === null)
                changed.searchParams.delete(name);
            else
                changed.searchParams.set(name, value);
        }
        for (const name of repeat)
            changed.searchParams.append(name, url.searchParams.get(name));
        if (path !== undefined)
            changed.pathname = path;
        return this.send(changed, method);
    }

    /// Connections that send nothing, or something that is no request. They stay open until this process ends.
    sendRaw({ hostname, port }, raw, idle = 1) {
        return Promise.all(Array.from({ length: idle }, () => new Promise((resolve, reject) => {
            const socket = connect(Number(port), hostname.replace(/^\[|\]$/g, ''), () => {
                if (raw === undefined) {
                    socket.unref(); // Not before: a process with nothing else to do would end instead of connecting.
                    return resolve();
                }
                socket.once('close', resolve);
                socket.resume();
                return socket.end(raw);
            });
            socket.on('error', error => (raw === undefined ? reject(error) : resolve()));
        })));
    }
}

// --- Chromium -------------------------------------------------------------------------------------------------------

/// Signs in through the provider's page in headless Chromium. Only the behaviors without changed redirects.
export async function openInChromium(address, given) {
    const settings = { ...defaults, ...given };
    const { packages } = await import('../node/modules.mjs');
    const { chromium } = packages('playwright-core');
    const pin = createHash('sha256').update(new X509Certificate(readFileSync(settings.certificate)).publicKey
        .export({ type: 'spki', format: 'der' })).digest('base64');
    const context = await chromium.launchPersistentContext(settings.profile, {
        executablePath: settings.chromium, headless: true,
        // The sandbox needs rights that containers lack. Of all certificates that no root signs, the test's is accepted.
        args: ['--no-sandbox', `--ignore-certificate-errors-spki-list=${pin}`],
    });
    const result = { passwords: 0, pages: 0 };
    try {
        const page = context.pages()[0] ?? await context.newPage();
        // The page's font is not on this machine.
        await context.route(url => !['localhost', '127.0.0.1', '[::1]'].includes(url.hostname), route => route.abort());
        await page.goto(address);
        for (; result.pages < 10; ++result.pages) {
            if (isRedirect(new URL(page.url())) || settings.behavior === 'neverAnswers')
                break;
            if (settings.behavior === 'deny') {
                await page.locator('a[href$="/abort"]').click();
                continue;
            }
            const password = page.locator('input[type=password]');
            if (await password.count() > 0) {
                ++result.passwords;
                await page.locator('input[name=login]').fill(settings.user);
                await password.fill(settings.password);
            }
            const submit = page.locator('button[type=submit]');
            if (await submit.count() === 0)
                break;
            await submit.first().click();
            await page.waitForLoadState();
        }
        Object.assign(result, { redirected: isRedirect(new URL(page.url())), text: (await page.innerText('body')).trim() });
    } finally {
        await context.close();
        if (settings.log)
            appendFileSync(settings.log, JSON.stringify(result) + '\n');
    }
    return result;
}

// --- The program ----------------------------------------------------------------------------------------------------

if (process.argv[1] && realpathSync(process.argv[1]) === fileURLToPath(import.meta.url)) {
    const [file, address] = process.argv.slice(2);
    const settings = { ...defaults, ...JSON.parse(readFileSync(file, 'utf8')) };
    try {
        const result = await (settings.chromium ? openInChromium(address, settings) : new ScriptedBrowser(settings).open(address));
        console.log(JSON.stringify(result));
    } catch (error) {
        if (settings.log)
            appendFileSync(settings.log, JSON.stringify({ error: String(error) }) + '\n');
        console.error(error);
        process.exitCode = 1;
    }
    process.exit();
}
