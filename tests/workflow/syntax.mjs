// Reads PowerShell by its public grammar for tree-sitter.

import { setFlagsFromString } from 'node:v8';
import { packages } from '../node/modules.mjs';

// The optimising compiler takes seconds for the grammar, and Node.js waits for it before it ends.
setFlagsFromString('--liftoff-only');

const { Language, Parser } = packages('web-tree-sitter');

await Parser.init();
const parser = new Parser();
parser.setLanguage(await Language.load(packages.resolve('tree-sitter-powershell/tree-sitter-powershell.wasm')));

export const parse = text => parser.parse(text);

// Calls `visit` for a node and all nodes below it. If it returns false, those below are left out.
export function walk(node, visit) {
    if (visit(node) !== false)
        for (const child of node.children)
            walk(child, visit);
}

// The commands of a script: the call operator ('&', '.' or none), the name as it is written, and the node.
export function commandsOf(tree) {
    const found = [];
    walk(tree.rootNode, node => {
        if (node.type !== 'command')
            return;
        const operator = node.children.find(child => child.type === 'command_invokation_operator')?.text ?? '';
        found.push({ node, operator, name: node.childForFieldName('command_name')?.text ?? node.text });
    });
    return found;
}

// The text of a script with blanks in place of its comments.
export function withoutComments(text) {
    const characters = [...text];
    for (const comment of parse(text).rootNode.descendantsOfType('comment'))
        characters.fill(' ', comment.startIndex, comment.endIndex);
    return characters.join('');
}
