// Validates JSON files against a JSON Schema: node validate.mjs SCHEMA FILE...
//
// Ends with 0 when all files are valid, with 1 when one is not (each error with file, place and cause), and with 2 for a
// wrong call or an unusable schema.

import { readFileSync } from 'node:fs';
import { packages } from './modules.mjs';

const Ajv = packages('ajv/dist/2020').default;
const addFormats = packages('ajv-formats').default;

function readJson(file) {
    try {
        return { value: JSON.parse(readFileSync(file, 'utf8')) };
    } catch (error) {
        return { error: error.message };
    }
}

function compile(file) {
    const { value, error } = readJson(file);
    if (error)
        throw new Error(error);
    const ajv = new Ajv({ allErrors: true, strict: true });
    addFormats(ajv);
    return ajv.compile(value);
}

function errorsOf(file, validate) {
    const { value, error } = readJson(file);
    if (error)
        return [error];
    return validate(value) ? [] : validate.errors.map(({ instancePath, message }) => `${instancePath || '/'} ${message}`);
}

const [schema, ...files] = process.argv.slice(2);
if (!schema || files.length === 0) {
    console.error('usage: node validate.mjs SCHEMA FILE...');
    process.exit(2);
}
let validate;
try {
    validate = compile(schema);
} catch (error) {
    console.error(`error: ${schema}: ${error.message}`);
    process.exit(2);
}
for (const file of files) {
    const errors = errorsOf(file, validate);
    console.log(errors.length === 0 ? `${file}: valid` : errors.map(error => `${file}: ${error}`).join('\n'));
    if (errors.length > 0)
        process.exitCode = 1;
}
