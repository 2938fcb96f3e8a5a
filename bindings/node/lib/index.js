'use strict';

const { OrlindexClient } = require('./client.js');
const {
    BooleanKey, Environment, EventCode, LoginMode, LogoutFlags, Server, StatusCode, libraryVersion,
} = require('./declarations.js');
const { OrlindexError, OrlindexLibraryError } = require('./errors.js');

// Plain names only: Node.js finds them for "import { ... } from".
module.exports = {
    OrlindexClient, OrlindexError, OrlindexLibraryError,
    BooleanKey, Environment, EventCode, LoginMode, LogoutFlags, Server, StatusCode, libraryVersion,
};
