// Parses PowerShell files: node powershell.mjs FILE...
//
// Reports syntax errors, characters outside ASCII, which Windows PowerShell reads by the machine's code page, and two habits of
// these scripts: every script sources common.ps1, which ends it at its first error, and starts programs by Invoke-Native, which
// checks exit codes. Each function or cmdlet that they call is defined in one of the files or listed here. Parameters and types are
// not checked.
//
// Ends with 0 if there is no finding, with 1 otherwise, and with 2 for a wrong call.

import { readFileSync } from 'node:fs';
import { basename } from 'node:path';
import { commandsOf, parse, walk } from './syntax.mjs';

// Functions and cmdlets have names of this form. Anything else is a program.
const cmdlet = /^[A-Za-z]+-[A-Za-z]+$/;

const cmdlets = new Set([
    'Add-Content', 'ConvertTo-Json', 'Copy-Item', 'Enter-VsDevShell', 'Expand-Archive', 'ForEach-Object', 'Get-ChildItem',
    'Get-Command', 'Get-Content', 'Get-FileHash', 'Import-Module', 'Join-Path', 'New-Item', 'Out-Null', 'Pop-Location',
    'Push-Location', 'Remove-Item', 'Select-Object', 'Set-StrictMode', 'Split-Path', 'Test-Path', 'Write-Host', 'Write-Output'
]);

function functionsOf(tree) {
    const found = [];
    walk(tree.rootNode, node => {
        if (node.type === 'function_name')
            found.push(node.text);
    });
    return found;
}

function syntaxErrors(tree) {
    const found = [];
    walk(tree.rootNode, node => {
        if (node.isError || node.isMissing)
            found.push([node, node.isMissing ? `${node.type} is missing` : 'syntax error']);
        return !node.isError;
    });
    return found;
}

function habits(tree, text, file, functions) {
    const commands = commandsOf(tree);
    const found = commands.filter(({ name }) => cmdlet.test(name) && !cmdlets.has(name) && !functions.has(name))
        .map(({ node, name }) => [node, `${name} is no function of these files and no cmdlet that is listed here`]);
    if (basename(file) === 'common.ps1') {
        if (!/^\$ErrorActionPreference = 'Stop'$/m.test(text))
            found.push([tree.rootNode, "no $ErrorActionPreference = 'Stop'"]);
        return found;
    }
    if (!commands.some(({ operator, name }) => operator === '.' && name === '"$PSScriptRoot/common.ps1"'))
        found.push([tree.rootNode, 'does not source common.ps1']);
    for (const { node, operator, name } of commands) {
        const script = operator !== '' && /^"\$PSScriptRoot\/[\w-]+\.ps1"$/.test(name);
        if (!script && !cmdlet.test(name))
            found.push([node, `starts ${name} without Invoke-Native, which checks its exit code`]);
    }
    return found;
}

const files = process.argv.slice(2);
if (files.length === 0) {
    console.error('usage: node powershell.mjs FILE...');
    process.exit(2);
}
const sources = files.map(file => {
    const text = readFileSync(file, 'utf8');
    return { file, text, tree: parse(text) };
});
const functions = new Set(sources.flatMap(({ tree }) => functionsOf(tree)));
for (const { file, text, tree } of sources) {
    const errors = syntaxErrors(tree);
    // A file that cannot be parsed has no reliable commands.
    const findings = errors.length > 0 ? errors : habits(tree, text, file, functions);
    for (const [node, message] of findings)
        console.error(`${file}:${node.startPosition.row + 1}:${node.startPosition.column + 1}: ${message}`);
    const foreign = text.split('\n').findIndex(line => /[^\t\x20-\x7e]/.test(line));
    if (foreign >= 0)
        console.error(`${file}:${foreign + 1}: a character outside ASCII`);
    if (findings.length > 0 || foreign >= 0)
        process.exitCode = 1;
}
if (!process.exitCode)
    console.log(`${files.length} PowerShell files, no finding`);
