// Prints the cases of the hostile provider as a table in Markdown: node table.mjs [--all]
//
// Without --all, only those that correspond to a relying-party test of the OpenID Foundation.

import { cases } from './hostile-cases.mjs';

const chosen = cases.filter(({ ofTest }) => process.argv[2] === '--all' || ofTest !== undefined);
console.log('| Relying-party test | Case | Asked for by | Result | The log says |\n|---|---|---|---|---|');
for (const { name, ofTest, standard, code, log = [] } of chosen) {
    const words = log.map(text => `\`${text}\``).join(', ');
    console.log(`| ${ofTest ? `\`${ofTest}\`` : ''} | ${name} | ${standard} | ${code === 0 ? 'accepted' : `refused, ${code}`} | ${words} |`);
}
