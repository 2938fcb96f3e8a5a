// The packages of the folder that the variable ORLINDEX_NODE names: scripts/setup.sh installs them outside the source tree.

import { createRequire } from 'node:module';
import { resolve } from 'node:path';

const folder = process.env.ORLINDEX_NODE;
if (!folder) {
    console.error('error: the variable ORLINDEX_NODE must name the folder with the installed packages, .deps/node');
    process.exit(2);
}
export const packages = createRequire(resolve(folder, 'package.json'));
