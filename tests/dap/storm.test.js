// A storm of requests with arguments of all kinds, right and wrong, at a program that runs and stops. Each has to
// be answered, once. DAP_STORM is the number of messages, DAP_SEED makes another storm.
'use strict';
const { test } = require('node:test');
const assert = require('assert');
const path = require('path');
const { session, launch, example } = require('./harness');

const count = Number(process.env.DAP_STORM || 5000);
let seed = Number(process.env.DAP_SEED || 1);
const random = limit => {
    seed = (Math.imul(seed, 1103515245) + 12345) & 0x7FFFFFFF;
    return (seed >>> 8) % limit;
};
const one = list => list[random(list.length)];

const expressions = ['mode', 'table', 'table[3]', 'root', '*root', 'parts[1].name', '@A[0]', '@PSF', 'mode = 1', '((', '&main', 'main', '1/0',
                     '(char[1000000])0', '*(int*)0x7000000', 'nosuch', '', '"x"', 'root->left->left->left', '(struct { int a; int b; })0x8000'];
const values = [() => random(5), () => -1, () => 2147483647, () => 1e300, () => 0.5, () => null, () => true, () => [], () => ({}),
                () => one(expressions), () => '0x' + random(0x10000).toString(16), () => 'code:0x' + random(0x400).toString(16),
                () => random(60), () => 'x'.repeat(random(3000)), () => '\u0000\uD800'];
const source = { path: path.join(example, 'main.s') };
const names = ['threadId', 'frameId', 'variablesReference', 'expression', 'context', 'name', 'value', 'memoryReference', 'offset', 'count', 'data',
               'startFrame', 'levels', 'start', 'filter', 'instructionOffset', 'instructionCount', 'line', 'targetId', 'text', 'column', 'granularity',
               'bytes', 'asAddress', 'requestId', 'progressId', 'format', 'dataId', 'accessType', 'condition', 'hitCondition', 'logMessage',
               'instructionReference', 'filters', 'arguments'];
const likely = {
    threadId: () => 1, frameId: () => random(40), variablesReference: () => random(200), expression: () => one(expressions),
    context: () => one(['watch', 'hover', 'repl', 'clipboard', 'variables']), memoryReference: () => '0x' + (0x8000 + random(0x400)).toString(16),
    count: () => random(300), instructionCount: () => random(40), instructionOffset: () => random(60) - 30, name: () => one(expressions),
    line: () => random(120), levels: () => random(5), dataId: () => '(char[4])0x8004', accessType: () => one(['read', 'write', 'readWrite']),
    condition: () => one(expressions), hitCondition: () => one(['2', '% 3', '>= 4', 'x']), logMessage: () => one(['a {mode}', '{', '{nosuch}']),
    instructionReference: () => '0x' + (random(0x200) * 2).toString(16), column: () => random(8), text: () => one(['ta', 'mo', 'parts[']),
    value: () => one(['1', 'mode', 'x']), filters: () => [one(['Unsupported opcode', 'x'])],
};
const argument = name => (random(8) === 0 || !likely[name] ? one(values) : likely[name])();
const object = size => {
    const made = {};
    for (let i = random(size); i > 0; --i) {
        const name = one(names);
        made[name] = argument(name);
    }
    return made;
};
const wanted = {
    evaluate: ['expression', 'context'], variables: ['variablesReference'], scopes: ['frameId'], readMemory: ['memoryReference', 'count'],
    disassemble: ['memoryReference', 'instructionOffset', 'instructionCount'], setVariable: ['variablesReference', 'name', 'value'],
    setExpression: ['expression', 'value'], dataBreakpointInfo: ['name'], completions: ['text', 'column'], stackTrace: ['levels'],
    gotoTargets: ['line'], goto: ['targetId'], setExceptionBreakpoints: ['filters'], writeMemory: ['memoryReference', 'data'],
};
const commands = ['continue', 'next', 'stepIn', 'stepOut', 'pause', 'pause', 'threads', 'loadedSources', 'setBreakpoints', 'setFunctionBreakpoints',
                  'setInstructionBreakpoints', 'setDataBreakpoints', 'breakpointLocations', 'exceptionInfo', 'cancel', 'configurationDone', 'launch',
                  'initialize', 'fly', ...Object.keys(wanted), 'evaluate', 'variables', 'scopes', 'stackTrace'];

function request() {
    const command = one(commands);
    const args = object(4);
    for (const name of wanted[command] || [])
        args[name] = argument(name);
    if (/Breakpoints$|gotoTargets|breakpointLocations/.test(command) && command !== 'setExceptionBreakpoints') {
        args.source = random(9) === 0 ? one(values)() : source;
        args.breakpoints = Array.from({ length: random(4) }, () => ({ ...object(4), line: random(120), name: one(expressions),
            instructionReference: likely.instructionReference(), dataId: likely.dataId() }));
    }
    return [command, random(30) === 0 ? one(values)() : args];
}

test(`${count} requests are answered, each once`, () => session(async client => {
    await launch(client);
    await client.send('evaluate', { expression: 'mode = 2', context: 'repl' }); // it runs until it is paused
    for (let done = 0; done < count;) {
        // In bundles, since editors do not wait for each answer either.
        const bundle = Array.from({ length: 50 }, request);
        await Promise.all(bundle.map(([command, args]) => client.send(command, args).catch(() => {})));
        done += bundle.length;
        // Some let the program run to its end.
        if (client.messages.splice(0, client.messages.length - 1).some(message => message.event === 'terminated'))
            await client.send('restart', {});
    }
    assert.strictEqual((await client.threadsRequest()).body.threads.length, 1, 'it still listens');
}));
