// The demo with a real browser, as a test: node chromium-test.mjs BUILD. Ends with 77 if there is no Chromium.

import { spawnSync } from 'node:child_process';
import { accessSync, constants } from 'node:fs';
import { delimiter, join } from 'node:path';
import { temporaryFolder } from './peer.mjs';
import { here } from './self-test.mjs';

const [build] = process.argv.slice(2);

const chromium = process.env.PATH.split(delimiter).map(folder => join(folder, 'chromium')).find(file => {
    try {
        accessSync(file, constants.X_OK);
        return true;
    } catch {
        return false;
    }
});
if (!chromium) {
    console.log('skipped: Chromium is not installed; scripts/demo.sh --provider installs it');
    process.exit(77);
}
const { status } = spawnSync(process.execPath, [join(here, 'demo.mjs'), build, chromium, temporaryFolder()], { stdio: 'inherit' });
process.exit(status ?? 1);
