// Finds Orlindex.dll, loads it and checks that it is the library that the declarations describe.

'use strict';

const fs = require('node:fs');
const path = require('node:path');
const koffi = require('koffi');
const declarations = require('./declarations.js');
const { OrlindexLibraryError } = require('./errors.js');

const { libraryFile, libraryVersion } = declarations;
const kit = `Copy the 64-bit ${libraryFile} of the kit beside the program, and use a 64-bit Node.js.`;
const update = `Use the ${libraryFile} of the kit that this package came with, or a later one of the same major version.`;

const machines = new Map([[0x014c, '32-bit x86'], [0x8664, '64-bit x64'], [0xaa64, '64-bit ARM']]);

// Asynchronous calls run on stacks of koffi. The default of 128 KiB is less than what Windows gives a thread, and too small for
// the verification of a signature.
const stackSize = 1024 * 1024;

/** The folder of the main script, and that of the executable, for programs that contain their script. */
function besideTheProgram() {
    const folders = [process.execPath, process.argv[1]].filter(Boolean).map(file => path.dirname(path.resolve(file))).reverse();
    const candidates = [...new Set(folders)].map(folder => path.join(folder, libraryFile));
    return { file: candidates.find(candidate => fs.existsSync(candidate)) ?? candidates[0], candidates };
}

/** The processor that a Windows module is built for; undefined if the file is no Windows module. */
function machineOf(file) {
    const descriptor = fs.openSync(file, 'r');
    try {
        const read = (size, position) => {
            const bytes = Buffer.alloc(size);
            return fs.readSync(descriptor, bytes, 0, size, position) === size ? bytes : undefined;
        };
        const header = read(64, 0);
        if (header?.toString('latin1', 0, 2) !== 'MZ')
            return undefined;
        const signature = read(6, header.readUInt32LE(60));
        return signature?.toString('latin1', 0, 4) === 'PE\0\0' ? signature.readUInt16LE(4) : undefined;
    } finally {
        fs.closeSync(descriptor);
    }
}

function checkFile(file, candidates) {
    let machine;
    try {
        machine = machineOf(file);
    } catch (error) {
        const missing = error.code === 'ENOENT';
        const others = missing && candidates.length > 1 ? `, nor ${candidates.slice(1).join(', ')}` : '';
        const reason = missing ? `there is no such file${others}` : `it cannot be read (${error.code})`;
        throw new OrlindexLibraryError(file, reason, kit, { cause: error });
    }
    if (process.arch !== 'x64')
        throw new OrlindexLibraryError(file, `this process is ${process.arch}, and the package supports x64 only`, kit);
    if (machine !== undefined && machine !== 0x8664) {
        const kind = machines.get(machine) ?? `machine 0x${machine.toString(16)}`;
        throw new OrlindexLibraryError(file, `it is built for ${kind}, and this process is 64-bit x64`, kit);
    }
}

// At once, because koffi lets its settings change only until something is loaded.
let cannotPrepare;
if (koffi.config().async_stack_size < stackSize) {
    try {
        koffi.config({ async_stack_size: stackSize });
    } catch (error) {
        cannotPrepare = error;
    }
}

function loadModule(file) {
    if (cannotPrepare) {
        throw new Error(`koffi loaded something before this package, with an async_stack_size below ${stackSize}: ` +
            'import this package first, or call koffi.config first', { cause: cannotPrepare });
    }
    try {
        return koffi.load(file);
    } catch (error) {
        throw new OrlindexLibraryError(file, `the system cannot load it (${error.message.trim()})`, kit, { cause: error });
    }
}

// Types without names, because names of koffi are global: two copies of this package may be in one process.
const records = Object.fromEntries(Object.entries(declarations.records).map(
    ([name, fields]) => [name, koffi.inout(koffi.pointer(koffi.struct(fields)))]));
const callbacks = Object.fromEntries(Object.entries(declarations.callbacks).map(
    ([name, [result, parameters]]) => [name, koffi.pointer(koffi.proto(result, parameters))]));

function typeOf(kind) {
    const name = kind.replace(/\*$/, '');
    return records[name] ?? callbacks[name] ?? kind;
}

const numbersOf = version => (/^\d+(\.\d+)*$/.test(version) ? version.split('.').map(Number) : undefined);

function isAtLeast(found, needed) {
    for (let i = 0; i < Math.max(found.length, needed.length); ++i) {
        if ((found[i] ?? 0) !== (needed[i] ?? 0))
            return (found[i] ?? 0) > (needed[i] ?? 0);
    }
    return true;
}

/** The text in a buffer, up to its zero. */
function textOf(buffer) {
    const end = buffer.indexOf(0);
    return buffer.toString('utf8', 0, end < 0 ? buffer.length : end);
}

function checkVersion(file, getVersions) {
    const [server, own] = [Buffer.alloc(1024), Buffer.alloc(1024)];
    getVersions({ server_version: server, server_version_size: server.length, sdk_version: own, sdk_version_size: own.length });
    const text = textOf(own);
    const [found, needed] = [numbersOf(text), numbersOf(libraryVersion)];
    if (found?.[0] !== needed[0] || !isAtLeast(found, needed)) {
        throw new OrlindexLibraryError(file, `it has the version ${text || 'unknown'}, and this package needs ` +
            `${libraryVersion} or a later version ${needed[0]}.x`, update);
    }
}

function functionsOf(library, file) {
    const functions = {};
    const missing = [];
    for (const [name, [result, parameters]] of Object.entries(declarations.functions)) {
        try {
            library.symbol(name);
        } catch {
            missing.push(name);
            continue;
        }
        functions[name] = library.func(name, result, parameters.map(typeOf));
    }
    if (functions.talix_get_versions)
        checkVersion(file, functions.talix_get_versions);
    if (missing.length > 0) {
        throw new OrlindexLibraryError(
            file, `it does not export ${missing.join(', ')}, so it is another version or another library`, update);
    }
    return functions;
}

/** Loads the library. Returns its functions by name; each has a member async. */
function load(given) {
    const { file, candidates } = given === undefined ? besideTheProgram() : { file: path.resolve(given), candidates: [] };
    checkFile(file, candidates);
    const library = loadModule(file);
    try {
        return functionsOf(library, file);
    } catch (error) {
        // The right library looks for itself by its name, and must not find this one.
        library.unload();
        throw error;
    }
}

module.exports = { load, textOf, eventCallback: callbacks.talix_event_callback };
