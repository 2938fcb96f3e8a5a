// Runs the tests of signing in beside the real provider: node sign-in-tests.mjs PROGRAM PELLWICK [GOOGLETEST-ARGUMENTS...]
//
// The scripted browser stands for the system's: Wine opens addresses by the first `xdg-open` on the path.

import { chmodSync, copyFileSync, mkdirSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { temporaryFolder } from '../../provider/peer.mjs';
import { Peer, here } from '../../provider/self-test.mjs';
import { runWindows, trustRoot, windowsPath } from '../../provider/wine.mjs';

const [program, server, ...arguments_] = process.argv.slice(2);
const folder = temporaryFolder();

const provider = await Peer.start('provider.mjs');
const { issuer, insecureIssuer, control, root, rootForWindows } = provider.values;

const installation = join(folder, 'Pellwick');
mkdirSync(installation);
copyFileSync(server, join(installation, 'Pellwick.exe'));

const settings = join(folder, 'browser.json');
const quoted = text => `'${text.replaceAll('\'', '\'\\\'\'')}'`;
const opener = join(folder, 'bin', 'xdg-open');
mkdirSync(join(folder, 'bin'));
writeFileSync(opener, `#!/bin/sh\nexec ${[process.execPath, join(here, 'browser.mjs'), settings].map(quoted).join(' ')} "$1"\n`);
chmodSync(opener, 0o755);

const forget = await trustRoot(rootForWindows);
try {
    const { code, output } = await runWindows(program, arguments_, {
        environment: {
            PATH: `${join(folder, 'bin')}:${process.env.PATH}`,
            OPENID_ISSUER: issuer,
            OPENID_INSECURE_ISSUER: insecureIssuer,
            OPENID_CONTROL: control,
            OPENID_FOLDER: windowsPath(folder),
            OPENID_BROWSERS_FOLDER: folder, // The same folder: the browser is a program of this system.
            OPENID_ROOT: root,
        },
    });
    process.stdout.write(output);
    process.exitCode = code;
} finally {
    await forget();
    await provider.stop();
}
