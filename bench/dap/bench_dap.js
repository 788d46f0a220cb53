// Times of the debug adapter on the simulator, in milliseconds, of the best of several sessions.
'use strict';
const path = require('path');
const { session, launch, lineOf, example } = require('../../tests/dap/harness');

const now = () => Number(process.hrtime.bigint()) / 1e6;
const best = {};
const note = (what, value, better = Math.min) => { best[what] = what in best ? better(best[what], value) : value; };

async function measure(client) {
    await client.initializeRequest();
    let start = now();
    await launch(client);
    note('launch to main, ms (150)', now() - start);

    const steps = 50;
    start = now();
    for (let i = 0; i < steps; ++i) {
        await client.until('stepIn');
        const frame = (await client.send('stackTrace', { threadId: 1, levels: 1 })).body.stackFrames[0];
        const { scopes } = (await client.send('scopes', { frameId: frame.id })).body;
        await client.send('variables', { variablesReference: scopes[0].variablesReference });
    }
    note('step with stack, scopes and locals, ms (5)', (now() - start) / steps);

    const array = (await client.send('evaluate', { expression: '(unsigned short[100000])0x8000', context: 'watch' })).body;
    start = now();
    await client.send('variables', { variablesReference: array.variablesReference, filter: 'indexed', start: 0, count: 100 });
    note('first page of 100,000 elements, ms', now() - start);

    const file = path.join(example, 'main.s');
    await client.send('evaluate', { expression: 'mode = 2', context: 'repl' });
    await client.setBreakpointsRequest({
        source: { path: file }, breakpoints: [{ line: lineOf(file, 'CMP     #2'), logMessage: 'mode is {mode}' }],
    });
    const before = client.messages.length;
    start = now();
    await client.send('continue', { threadId: 1 });
    await new Promise(resolve => setTimeout(resolve, 1000));
    const hits = client.messages.length - before;
    note('log points a second (10,000)', hits * 1000 / (now() - start), Math.max);
    await client.until('pause');
}

(async () => {
    for (let i = 0; i < 5; ++i)
        await session(measure);
    for (const [what, value] of Object.entries(best))
        console.log(`${what.padEnd(46)} ${value.toFixed(value > 100 ? 0 : 2)}`);
})();
