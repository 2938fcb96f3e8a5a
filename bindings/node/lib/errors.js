'use strict';

const { StatusCode, meanings } = require('./declarations.js');

const names = new Map(Object.entries(StatusCode).map(([name, value]) => [value, name]));
const doctor = 'Run orlindex-doctor --host "<folder of the program>" --load: it takes the steps of a start-up and names the one ' +
    'that fails.';

/** A function of the library returned another code than IdSuccess. */
class OrlindexError extends Error {
    constructor(operation, status) {
        const name = names.get(status) ?? '';
        const meaning = meanings.get(status) ??
            'The client plugin module returned this code; its documentation has the meaning.';
        const remedy = status === StatusCode.IdClientUnavailable ? ` ${doctor}` : '';
        super(`${operation} returned ${status}${name && ` (${name})`}: ${meaning}${remedy}`);
        this.code = 'ERR_ORLINDEX_STATUS';
        this.operation = operation;
        this.status = status;
        this.statusName = name;
        this.meaning = meaning;
    }
}
OrlindexError.prototype.name = 'OrlindexError';

/** Orlindex.dll could not be loaded, or is not the library that this package needs. */
class OrlindexLibraryError extends Error {
    constructor(path, reason, remedy, options) {
        super(`cannot use ${path}: ${reason}. ${remedy}`, options);
        this.code = 'ERR_ORLINDEX_LIBRARY';
        this.path = path;
        this.reason = reason;
        this.remedy = remedy;
    }
}
OrlindexLibraryError.prototype.name = 'OrlindexLibraryError';

/** As Node.js itself words the use of something that is closed. */
function useAfterClose() {
    const error = new Error('OrlindexClient was closed');
    error.code = 'ERR_USE_AFTER_CLOSE';
    return error;
}

module.exports = { OrlindexError, OrlindexLibraryError, useAfterClose };
