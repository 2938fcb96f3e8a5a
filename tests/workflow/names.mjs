// Compares what the workflow files and scripts/windows name with a source tree: node names.mjs ROOT [BUILD]
//
// - A step runs scripts of the tree or commands of CMake, and apt-get; it uses actions of the organisation "actions" by their
//   major version. A job has a time limit. The workflow may only read the repository.
// - Paths, presets, targets, CMake variables and vcpkg features exist, and so do the tests in left-out.txt.
// - Products below build/ are named by the script that makes them. With BUILD, a build of the preset mingw-release, each product
//   that a script takes from the build exists there, too: the presets have one layout.
//
// Ends with 0 if there is no finding, with 1 otherwise, and with 2 for a wrong call.

import { execFileSync } from 'node:child_process';
import { existsSync, readFileSync, readdirSync } from 'node:fs';
import { basename, join } from 'node:path';
import { packages } from '../node/modules.mjs';
import { withoutComments } from './syntax.mjs';

const { parseDocument } = packages('yaml');

const [root, build] = process.argv.slice(2);
if (!root) {
    console.error('usage: node names.mjs ROOT [BUILD]');
    process.exit(2);
}

const folders = ['.ci', '.github', 'agent', 'bench', 'cmake', 'docs', 'examples', 'include', 'scripts', 'src', 'tests', 'tools'];
const read = file => readFileSync(join(root, file), 'utf8');

function filesBelow(folder) {
    return readdirSync(join(root, folder), { withFileTypes: true }).flatMap(entry =>
        entry.isDirectory() ? filesBelow(`${folder}/${entry.name}`) : [`${folder}/${entry.name}`]);
}
const tree = [...folders.flatMap(filesBelow),
    ...readdirSync(root, { withFileTypes: true }).filter(entry => entry.isFile()).map(entry => entry.name)];
const cmakeFiles = tree.filter(file => /(^|\/)CMakeLists\.txt$|\.cmake$/.test(file));
const cmakeText = cmakeFiles.map(read).join('\n').replace(/^\s*#.*$/gm, '');
const scriptText = tree.filter(file => /^scripts\/.*\.(ps1|sh)$/.test(file)).map(read).join('\n');
const presets = JSON.parse(read('CMakePresets.json'));
const features = Object.keys(JSON.parse(read('vcpkg.json')).features);

const counts = {};
const findings = [];

// Counts a name of a kind, and reports it if it does not exist.
function expect(place, kind, name, exists) {
    counts[kind] = (counts[kind] ?? 0) + 1;
    if (!exists)
        findings.push(`${place}: there is no ${kind} ${name}`);
}

const escaped = text => text.replace(/[.*+?^${}()|[\]\\]/g, '\\$&');

function pathExists(path) {
    const pattern = new RegExp(`^${path.split('*').map(escaped).join('[^/]*')}(/|$)`);
    return tree.some(file => pattern.test(file));
}

function isProduct(path) {
    return /^(build|\.deps)(\/|$)/.test(path);
}

// --- CMake ----------------------------------------------------------------------------------------------------------

const documentedVariables = new Set(execFileSync('cmake', ['--help-variable-list'], { encoding: 'utf8' }).split('\n'));
// Variables of vcpkg's toolchain file.
const vcpkgVariables = new Set(['VCPKG_MANIFEST_FEATURES', 'VCPKG_TARGET_TRIPLET']);

function variableExists(name) {
    if (name.startsWith('ORLINDEX_'))
        return new RegExp(`\\b${name}\\b`).test(cmakeText);
    if (/^\w+_DIR$/.test(name) && !name.startsWith('CMAKE_'))
        return new RegExp(`\\bfind_package\\(\\s*${name.replace(/_DIR$/, '')}\\b`).test(cmakeText);
    return vcpkgVariables.has(name) || documentedVariables.has(name) ||
        documentedVariables.has(name.replace(/_(C|CXX|RC)_/, '_<LANG>_'));
}

function targetExists(name) {
    return new RegExp(`\\b(add_executable|add_library|add_custom_target|orlindex_add_plugin)\\(\\s*${escaped(name)}\\b`)
        .test(cmakeText);
}

// The names in a command line of CMake's programs. Quotation marks and commas are those of a PowerShell array.
function checkCommand(place, command) {
    const words = command.replace(/['",`@()]/g, ' ').split(/\s+/).filter(Boolean);
    const program = basename(words[0], '.exe');
    const kind = program === 'ctest' ? 'test' : words.includes('--build') ? 'build' : 'configure';
    words.forEach((word, index) => {
        const next = words[index + 1];
        if (word === '--preset')
            expect(place, `${kind} preset`, next, presets[`${kind}Presets`].some(({ name, hidden }) => name === next && !hidden));
        if (word === '--target')
            expect(place, 'target', next, targetExists(next));
        const [, variable, value] = /^-D(\w+)=(.*)$/.exec(word) ?? [];
        if (variable)
            expect(place, 'CMake variable', variable, variableExists(variable));
        if (variable === 'VCPKG_MANIFEST_FEATURES')
            for (const feature of value.split(';'))
                expect(place, 'vcpkg feature', feature, features.includes(feature));
    });
}

for (const { name, cacheVariables = {} } of presets.configurePresets)
    for (const variable of Object.keys(cacheVariables))
        expect(`CMakePresets.json, ${name}`, 'CMake variable', variable, variableExists(variable));

// By CTest, and by vcpkg in the folder that the workflow itself names.
const madeByTools = /\/LastTest\.log$|^build\/vcpkg-archives$/;

function isMade(path) {
    return madeByTools.test(path) || new RegExp(`(?<![\\w-])${escaped(basename(path))}(?!\\w)`).test(scriptText);
}

// --- Workflow files -------------------------------------------------------------------------------------------------

function checkRunLine(place, line) {
    const script = /^(?:bash )?(?:\.\/)?((?:scripts|\.ci)\/[\w./-]+)( |$)/.exec(line);
    if (!script && !/^(cmake|ctest|cpack|apt-get) /.test(line))
        findings.push(`${place}: neither a script of this tree nor a command of CMake: ${line}`);
    if (/^(cmake|ctest|cpack) /.test(line))
        checkCommand(place, line);
    const parameters = script?.[1].endsWith('.ps1') && tree.includes(script[1]) ? parametersOf(read(script[1])) : [];
    for (const [, name] of script?.[1].endsWith('.ps1') ? line.matchAll(/ -(\w+)/g) : [])
        expect(place, `parameter of ${script[1]}`, name, parameters.includes(name));
}

function parametersOf(text) {
    const block = /^param\(([^]*?)\)$/m.exec(withoutComments(text));
    return block ? [...block[1].matchAll(/\$(\w+)/g)].map(([, name]) => name) : [];
}

// All texts of a parsed file.
function textsOf(value) {
    if (typeof value === 'string')
        return [value];
    return value && typeof value === 'object' ? Object.values(value).flatMap(textsOf) : [];
}

function checkPaths(place, text) {
    const below = [...folders, 'build'].map(escaped).join('|');
    const expression = new RegExp(
        `(?<![\\w/.$])(?:\\./)?((?:${below})/[\\w.*/-]+|\\.deps|vcpkg\\.json|CMake[A-Za-z]+\\.(?:json|txt))`, 'g');
    for (const [, path] of text.matchAll(expression)) {
        if (path.startsWith('build/'))
            expect(place, 'script that makes', path, isMade(path));
        else
            expect(place, 'file', path, isProduct(path) || pathExists(path));
    }
}

function checkStep(place, step) {
    if (step.uses) {
        counts.actions = (counts.actions ?? 0) + 1;
        if (!/^actions\/[a-z-]+@v\d+$/.test(step.uses))
            findings.push(`${place}: not an action of "actions" by its major version: ${step.uses}`);
        if (/^actions\/checkout@/.test(step.uses) && step.with?.['persist-credentials'] !== false)
            findings.push(`${place}: the checkout would leave a token on the machine: persist-credentials is not false`);
    }
    for (const line of (step.run ?? '').split('\n').map(text => text.trim()).filter(Boolean))
        checkRunLine(place, line);
}

function checkWorkflow(file) {
    const workflow = parseDocument(read(file)).toJS();
    if (JSON.stringify(workflow.permissions) !== '{"contents":"read"}')
        findings.push(`${file}: the permissions are not "contents: read"`);
    for (const [name, job] of Object.entries(workflow.jobs)) {
        const place = `${file}, job ${name}`;
        if (job.permissions !== undefined)
            findings.push(`${place}: it has permissions of its own`);
        if (!job['timeout-minutes'])
            findings.push(`${place}: it has no time limit`);
        for (const step of job.steps)
            checkStep(`${place}, ${step.name ?? step.uses}`, step);
    }
    for (const text of textsOf(workflow))
        checkPaths(file, text);
}

// --- PowerShell -----------------------------------------------------------------------------------------------------

function checkScript(file) {
    const text = withoutComments(read(file)).replace(/\\/g, '/');
    for (const [, path] of text.matchAll(/\$Root\/([\w.*/-]+)/g))
        expect(file, 'file', path, isProduct(path) || pathExists(path));
    for (const [, path] of text.matchAll(/\$PSScriptRoot\/([\w-][\w./-]*)/g))
        expect(file, 'file', `scripts/windows/${path}`, pathExists(`scripts/windows/${path}`));
    // Some variables hold a folder of the build.
    const held = new Map([...text.matchAll(/\$(\w+) = "\$Build\/([\w./-]+)"/g)].map(([, name, path]) => [name, path]));
    const expanded = text.replace(/\$(\w+)\//g, (whole, name) => held.has(name) ? `$Build/${held.get(name)}/` : whole);
    for (const [, path] of expanded.matchAll(/\$Build\/([\w./-]+\.(?:exe|dll|cmake|config))\b/g))
        if (build)
            expect(file, `file in ${build}`, path, existsSync(join(build, path)));
    // A command continues after a line that ends with a comma.
    for (const [, command] of text.matchAll(/Invoke-Native '?((?:cmake|ctest|cpack)(?:[^\n]*,\n)*[^\n]*)/g))
        checkCommand(file, command);
}

// --- Tests that are left out ----------------------------------------------------------------------------------------

function checkLeftOut(file) {
    const sources = tree.filter(name => /^tests\/.*\.cpp$/.test(name)).map(read).join('\n');
    read(file).split('\n').forEach((line, index) => {
        if (line === '' || line.startsWith('#'))
            return;
        const [, name, reason] = /^([^:\s]+): (\S.*)$/.exec(line) ?? [];
        if (!reason) {
            findings.push(`${file}:${index + 1}: not of the form "<name>: <reason>"`);
            return;
        }
        const [suite, test] = name.split('.').slice(-2);
        const inSource = new RegExp(`\\bTEST(_F|_P)?\\(${suite}, ${test}\\)`).test(sources);
        expect(`${file}:${index + 1}`, 'test', name, inSource || new RegExp(`\\bNAME\\s+${escaped(name)}\\s`).test(cmakeText));
    });
}

for (const file of tree.filter(name => /^\.github\/workflows\/.*\.ya?ml$/.test(name)))
    checkWorkflow(file);
for (const file of tree.filter(name => /^scripts\/windows\/.*\.ps1$/.test(name)))
    checkScript(file);
checkLeftOut('scripts/windows/left-out.txt');

const kinds = ['file', 'configure preset', 'build preset', 'test preset', 'CMake variable', 'vcpkg feature', 'test', 'actions'];
for (const kind of kinds)
    if (!counts[kind])
        findings.push(`no name of this kind was found: ${kind}`);
if (findings.length > 0) {
    console.error(findings.join('\n'));
    process.exit(1);
}
console.log(Object.entries(counts).map(([kind, count]) => `${count} ${kind}`).join(', '));
