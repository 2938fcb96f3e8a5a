// Searches files by value for secrets: in clear, as UTF-8 and as UTF-16.

import { readdirSync, readFileSync, statSync } from 'node:fs';
import { join } from 'node:path';

const largest = 64 * 1024 * 1024;

function* filesIn(path) {
    const status = statSync(path, { throwIfNoEntry: false });
    if (status?.isFile() && status.size <= largest)
        yield path;
    if (!status?.isDirectory())
        return;
    for (const entry of readdirSync(path, { withFileTypes: true })) {
        if (entry.isDirectory() || entry.isFile()) // Links lead out of the prefix.
            yield* filesIn(join(path, entry.name));
    }
}

/// Returns the files that hold one of the values, and how many files were searched.
export function search(paths, values) {
    const forms = values.flatMap(value => [value, Buffer.from(value, 'utf16le').toString('latin1')]);
    const found = [];
    let count = 0;
    for (const path of paths) {
        for (const file of filesIn(path)) {
            ++count;
            const text = readFileSync(file, 'latin1');
            if (forms.some(form => text.includes(form)))
                found.push(file);
        }
    }
    return { found, count };
}
