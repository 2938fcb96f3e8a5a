// The declarations against the description, which compilers have checked, and the declarations for TypeScript against the code:
//
//     node declarations.mjs PROJECT INTERFACE      PROJECT: where install.sh installed the package

import assert from 'node:assert/strict';
import fs from 'node:fs';
import { createRequire } from 'node:module';
import path from 'node:path';

const [project, interfaceFile] = process.argv.slice(2);
const load = createRequire(path.resolve(project, 'package.json'));
// koffi for this machine: the project has the one for Windows.
const koffi = createRequire(path.resolve(process.env.ORLINDEX_RUNTIMES, 'package.json'))('koffi');
const description = JSON.parse(fs.readFileSync(interfaceFile, 'utf8'));
const lib = path.join(path.dirname(load.resolve('orlindex/package.json')), 'lib');
const declarations = load(path.join(lib, 'declarations.js'));

for (const record of description.records) {
    const type = koffi.struct(declarations.records[record.name]);
    assert.equal(koffi.sizeof(type), record.size, record.name);
    assert.deepEqual(Object.keys(declarations.records[record.name]), record.fields.map(field => field.name));
    for (const field of record.fields)
        assert.equal(koffi.offsetof(type, field.name), field.offset, `${record.name}.${field.name}`);
}
assert.deepEqual(Object.keys(declarations.functions), description.functions.map(({ name }) => name));
for (const { name, parameters } of description.functions)
    assert.equal(declarations.functions[name][1].length, parameters.length, name);
assert.equal(declarations.libraryVersion, description.library.version);

// What TypeScript sees is there, and nothing else.
const types = fs.readFileSync(path.join(lib, 'index.d.ts'), 'utf8');
const body = types.slice(types.indexOf('export class OrlindexClient'), types.indexOf('export class OrlindexError'));
const declared = [...body.matchAll(/^    (?:static |readonly )?(\w+)(?:[(:])/gm)].map(([, name]) => name);
const source = fs.readFileSync(path.join(lib, 'client.js'), 'utf8');
const written = [...source.slice(source.indexOf('class OrlindexClient')).matchAll(/^    (?:static )?(?:async )?(?:get )?([a-z]\w*)\(/gm)]
    .map(([, name]) => name);
const wanted = new Set(declared.filter(name => name !== 'constructor'));
assert.deepEqual(new Set(written.filter(name => name !== 'constructor')), wanted);
assert.ok(wanted.size > 20);
console.log(`${description.records.length} records, ${description.functions.length} functions, ${wanted.size} members`);
