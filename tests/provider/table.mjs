// The tables of docs/openid.md about the cases of the hostile provider: node table.mjs check|write PAGE [RESULTS]
//
//   check   compares the tables of the page with the cases, and with the results if the file is named
//   write   writes the tables into the page
//
// RESULTS is what hostile-test.mjs --results wrote: the codes that a host of the signed agent got. All relying-party tests must be
// among them. The codes of the other cases are proven by every run of hostile-self-test.mjs, and by a long run of hostile-test.mjs.

import assert from 'node:assert/strict';
import { readFileSync, writeFileSync } from 'node:fs';
import { cases } from './hostile-cases.mjs';

const resultOf = code => (code === 0 ? 'accepted' : `refused, ${code}`);
const row = cells => `| ${cells.join(' | ')} |`;
const table = (heads, rows) => [row(heads), `|${'---|'.repeat(heads.length)}`, ...rows.map(row)].join('\n');
const unique = values => [...new Set(values)];

function relyingPartyTests() {
    return table(['Relying-party test', 'Case', 'Asked for by', 'Result', 'The log says'],
        cases.filter(({ ofTest }) => ofTest).map(({ name, ofTest, standard, code, log = [] }) => [
            `\`${ofTest}\``, name, standard, resultOf(code), log.map(text => `\`${text}\``).join(', '),
        ]));
}

function otherCases() {
    const others = cases.filter(({ ofTest, effect }) => !ofTest && !effect);
    return table(['About', 'Result', 'Cases'], unique(others.map(({ topic }) => topic)).flatMap(topic => {
        const ofTopic = others.filter(entry => entry.topic === topic);
        return unique(ofTopic.map(({ code }) => code)).sort((a, b) => a - b).map((code, index) => [
            index === 0 ? topic : '', resultOf(code), ofTopic.filter(entry => entry.code === code).map(({ name }) => name).join(', '),
        ]);
    }));
}

/// "AnswerOf10Megabytes" is what becomes of a request: "answer of 10 megabytes".
const words = name => name.replace(/(?<=[a-z0-9])(?=[A-Z])|(?<=[a-z])(?=[0-9])/g, ' ').toLowerCase().replace('html', 'HTML');

function replies() {
    const ofReplies = cases.filter(({ effect }) => effect);
    const endpoints = unique(ofReplies.map(({ endpoint }) => endpoint));
    return table(['Reply', ...endpoints], unique(ofReplies.map(({ effect }) => effect)).map(effect => [
        words(effect), ...endpoints.map(endpoint => {
            const found = ofReplies.find(entry => entry.effect === effect && entry.endpoint === endpoint);
            return found ? found.code || 'success' : '';
        }),
    ]));
}

const tables = { 'relying-party tests': relyingPartyTests, 'other cases': otherCases, replies };

/// The page with the tables in their places.
function withTables(text) {
    return Object.entries(tables).reduce((page, [name, make]) => {
        const begin = `<!-- made by tests/provider/table.mjs: ${name} -->\n`;
        const from = page.indexOf(begin) + begin.length;
        const to = page.indexOf('<!-- end -->', from);
        assert.ok(from >= begin.length && to >= 0, `the page has a place for the table: ${begin}`);
        return `${page.slice(0, from)}${make()}\n${page.slice(to)}`;
    }, text);
}

/// What the signed agent did is what the tables say.
function compareResults(results) {
    for (const { name, code, ofTest } of cases) {
        if (name in results)
            assert.equal(results[name], code || 1000, `the code of ${name}`);
        else
            assert.ok(!ofTest, `${name} was run with the signed agent`);
    }
    assert.deepEqual(Object.keys(results).filter(name => !cases.some(entry => entry.name === name)), [], 'results of other cases');
}

const [what, page, resultsFile] = process.argv.slice(2);
const text = readFileSync(page, 'utf8');
const expected = withTables(text);
if (what === 'write') {
    writeFileSync(page, expected);
} else {
    assert.equal(what, 'check');
    assert.equal(text, expected, 'the tables of the page; node tests/provider/table.mjs write docs/openid.md makes them');
    if (resultsFile)
        compareResults(JSON.parse(readFileSync(resultsFile, 'utf8')));
    console.log(`count: relying-party tests in docs/openid.md = ${cases.filter(({ ofTest }) => ofTest).length}`);
}
