// Measures a token request of a signed-in host beside its floor: node bench.mjs BUILD [--quick]
//
// talix_get_token of a kept token crosses to the server application and back. Its floor is a bare round trip on a named pipe to
// another process, with as many bytes. Both are measured in turns; the median of the turns' ratios counts. A measurement that
// misses the bound is repeated, at most twice: other programs on the machine can make a turn slower. Ends with 1 if the bound was
// missed each time. scripts/bench.sh runs this program, and with it both sides, on one processor.

import { join } from 'node:path';
import { Installation } from './agent.mjs';
import { temporaryFolder } from './peer.mjs';
import { Peer } from './self-test.mjs';

const [build, option] = process.argv.slice(2);
const isQuick = option === '--quick';
const [runs, calls] = isQuick ? [5, 200] : [15, 500];
const bound = isQuick ? 1.5 : 1.3;
const attempts = 3;

// Bytes of the request and of the response, for a token of 43 characters and a request number of four digits.
const sizes = [212, 91];

const folder = temporaryFolder();
const provider = await Peer.start('provider.mjs');
const installation = await Installation.make(build, folder, { profile: join(folder, 'profile') });
installation.configure({ production: { issuer: provider.values.insecureIssuer, allowInsecureLoopback: true } });

const median = values => [...values].sort((one, other) => one - other)[values.length >> 1];
let status = 1;
let host;
try {
    host = await installation.startHost();
    await host.must('product', 0, 'example-host', 'openid');
    await host.must('login');
    for (let attempt = 0; attempt < attempts && status !== 0; ++attempt) {
        const tokens = [];
        const pipes = [];
        for (let run = 0; run < runs; ++run) {
            pipes.push(Number(await host.must('timePipe', calls, ...sizes)));
            tokens.push(Number(await host.must('timeTokens', calls)));
        }
        const ratio = median(tokens.map((time, run) => time / pipes[run]));
        status = ratio <= bound ? 0 : 1;
        const shown = times => `${(median(times) / 1000).toFixed(1)} us`;
        console.log(`talix_get_token, kept token        ${shown(tokens)}`);
        console.log(`a bare round trip on a named pipe  ${shown(pipes)}`);
        console.log(`ratio ${ratio.toFixed(2)}, bound ${bound}: ${status === 0 ? 'met' : 'missed'}`);
    }
} finally {
    host?.kill();
    await installation.quit();
    await provider.stop();
}
process.exit(status);
