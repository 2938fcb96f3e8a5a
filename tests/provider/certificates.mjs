// Certificates of one test run, made with openssl: a root of its own, and what it signs.

import { execFileSync } from 'node:child_process';
import { readFileSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';

/// The certificates in a folder, which must exist. Whoever made the folder removes it.
export class Certificates {
    constructor(folder) {
        this.folder = folder;
    }

    path(name) {
        return join(this.folder, name);
    }

    openssl(...texts) {
        return execFileSync('openssl', texts, { cwd: this.folder, stdio: ['ignore', 'pipe', 'pipe'] });
    }

    /// Makes a root: NAME.pem, and NAME.der for Windows.
    makeRoot(name) {
        this.openssl('req', '-x509', '-newkey', 'rsa:2048', '-nodes', '-keyout', `${name}.key`, '-out', `${name}.pem`,
            '-days', '2', '-subj', `/CN=Orlindex test ${name}`, '-addext', 'basicConstraints=critical,CA:TRUE',
            '-addext', 'keyUsage=critical,keyCertSign,cRLSign');
        this.openssl('x509', '-in', `${name}.pem`, '-outform', 'DER', '-out', `${name}.der`);
    }

    /// Makes a server's certificate. `dates`: options of `openssl ca`, such as -startdate. Returns what a server of Node takes.
    make(name, root, host, ...dates) {
        this.openssl('req', '-newkey', 'rsa:2048', '-nodes', '-keyout', `${name}.key`, '-out', `${name}.csr`, '-subj',
            `/CN=${host}`);
        writeFileSync(this.path(`${name}.txt`), '');
        writeFileSync(this.path(`${name}.cnf`), `
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
        this.openssl('ca', '-batch', '-notext', '-config', `${name}.cnf`, '-extensions', 'leaf', '-cert', `${root}.pem`,
            '-keyfile', `${root}.key`, '-in', `${name}.csr`, '-out', `${name}.pem`, ...dates);
        return this.load(name);
    }

    load(name) {
        // Wine has no TLS 1.3.
        return {
            key: readFileSync(this.path(`${name}.key`)), cert: readFileSync(this.path(`${name}.pem`)), minVersion: 'TLSv1.2',
        };
    }
}
