// What an editor shows of a stopped program, on the simulator.
'use strict';
const { test } = require('node:test');
const assert = require('assert');
const path = require('path');
const { session, launch, lineOf, example } = require('./harness');

const source = name => ({ path: path.join(example, name) });
const at = (name, text) => lineOf(path.join(example, name), text);

// Stops where a text stands in a file.
async function stopAt(client, name, text, args = {}) {
    return launch(client, { breakSymbol: '', ...args }, () =>
        client.setBreakpointsRequest({ source: source(name), breakpoints: [{ line: at(name, text) }] }));
}

test('frames are paged, have the lines of their calls, and each its own variables', () => session(async client => {
    await stopAt(client, 'report.s', 'SUB     A[1]');
    const frames = await client.where();
    assert.deepStrictEqual(frames.map(frame => frame.name),
                           ['subtract', 'divide', 'average', 'summarise', 'report', 'main', 'start']);
    assert.deepStrictEqual(frames.slice(1, 3).map(frame => frame.line),
                           [at('report.s', 'CALL    subtract'), at('report.s', 'CALL    divide')]);
    const page = (await client.send('stackTrace', { threadId: 1, startFrame: 1, levels: 2 })).body;
    assert.deepStrictEqual(page.stackFrames.map(frame => frame.name), ['divide', 'average']);
    assert.strictEqual((await client.send('stackTrace', { threadId: 1, startFrame: 7, levels: 2 })).body.totalFrames, 7);
    const divide = await client.variables((await client.scopes(1)).Locals);
    assert.strictEqual(divide.quotient.value, '0');
    assert.strictEqual(divide.dividend.value, '60');
    const average = frames[2].id;
    const of = (await client.send('evaluate', { expression: 'of->count', frameId: average, context: 'watch' })).body;
    assert.strictEqual(of.result, '5');
}));

test('children are opened level by level, in pages, and evaluate back to themselves', () => session(async client => {
    await stopAt(client, 'report.s', 'CALL    summarise');
    const { Globals, Statics, Registers } = await client.scopes();
    const globals = await client.variables(Globals);
    const [name] = Object.entries(globals).find(([, variable]) => variable.value === '[...]' && variable.indexedVariables === 5);
    assert.strictEqual(name, 'parts');
    const parts = await client.variables(globals.parts.variablesReference);
    assert.deepStrictEqual(Object.keys(parts), ['[0]', '[1]', '[2]', '[3]', '[4]']);
    const page = await client.variables(globals.parts.variablesReference, { filter: 'indexed', start: 3, count: 1 });
    assert.deepStrictEqual(Object.keys(page), ['[3]']);
    assert.deepStrictEqual(await client.variables(globals.parts.variablesReference, { filter: 'named' }), {});
    const fields = await client.variables(page['[3]'].variablesReference);
    assert.deepStrictEqual(Object.entries(fields).map(([field, { value }]) => [field, value]).slice(0, 6), [
        ['number', '10'], ['weight', '3'], ['kind', '4'], ['painted', '0'], ['level', '1'], ['name', 'pin'],
    ]);
    const root = await client.variables(globals.root.variablesReference);
    const left = await client.variables(root.left.variablesReference);
    assert.deepStrictEqual([left.number.value, left.left.value === '0'], ['20', false]);
    for (const variable of [...Object.values(fields), ...Object.values(left), ...Object.values(parts)])
        assert.strictEqual(await client.value(variable.evaluateName), variable.value, variable.evaluateName);

    const hexadecimal = await client.variables(page['[3]'].variablesReference, { format: { hex: true } });
    assert.deepStrictEqual([hexadecimal.number.value, hexadecimal.weight.value], ['0x0000000a', '0x0003']);
    assert.strictEqual((await client.variables(Statics)).sum, undefined, 'sum belongs to another file');
    assert.strictEqual((await client.variables(Statics)).figures.value, '{...}');
    const registers = await client.variables(Registers);
    assert.match(registers['A[1]'].value, /^0x[0-9a-f]{8}$/);
    await client.setVariableRequest({ variablesReference: Registers, name: 'PSF', value: '0x03' });
    const flags = await client.variables(registers.PSF.variablesReference);
    // S and Z follow the accumulator, whatever is written.
    const shown = Object.entries(flags).map(([flag, { value }]) => flag + value);
    assert.deepStrictEqual([shown.slice(0, 2), Object.keys(flags)], [['E1', 'C1'], ['E', 'C', 'S', 'Z']]);
    await client.setVariableRequest({ variablesReference: registers.PSF.variablesReference, name: 'C', value: '0' });
    assert.strictEqual(await client.value('@PSF & 3'), '1');
}));

test('values are set where they stand, and looking changes nothing', () => session(async client => {
    await stopAt(client, 'report.s', 'CALL    summarise');
    const { Globals, Registers } = await client.scopes();
    const globals = await client.variables(Globals);
    const set = async (variablesReference, name, value) =>
        (await client.setVariableRequest({ variablesReference, name, value })).body.value;
    assert.strictEqual(await set(globals.table.variablesReference, '[4]', '3 + 4'), '7');
    assert.strictEqual(await client.value('table[4]'), '7');
    assert.strictEqual(await set(Registers, 'A[3]', '0x123'), '291');
    assert.strictEqual(await client.value('@A[3]'), '291');
    const parts = await client.variables(globals.parts.variablesReference);
    assert.strictEqual(await set(parts['[0]'].variablesReference, 'painted', '0'), '0');
    assert.strictEqual(await client.value('parts[0].painted'), '0');
    assert.strictEqual(await client.value('parts[0].level'), '2', 'its neighbours stay');
    assert.strictEqual((await client.send('setExpression', { expression: 'ratio', value: '0.5' })).body.value, '0.5');
    assert.strictEqual(await client.refused('setVariable', { variablesReference: Globals, name: 'table', value: '1' }),
                       'only a single value can be changed');
    assert.strictEqual(await client.refused('setExpression', { expression: '1', value: '1' }), 'it cannot be changed');
    assert.match(await client.refused('setVariable', { variablesReference: Globals, name: 'tables', value: '1' }), /no "tables"/);
    for (const context of ['hover', 'watch', 'clipboard', 'variables'])
        assert.strictEqual(await client.refused('evaluate', { expression: 'mode = 3', context }), 'an assignment is not allowed here');
    assert.strictEqual(await client.value('mode'), '0');
    assert.strictEqual(await client.value('mode = 3', { context: 'repl' }), '3');
    assert.strictEqual(await client.value('nosuch', { context: 'repl' }).catch(failure => failure.message), 'nosuch symbol not found');
    assert.match(await client.value('parts[3]', { context: 'clipboard' }), /^\{number=10, weight=3, kind=4, painted=0, level=1, name=pin/);
    const targets = (await client.completionsRequest({ text: 'mode + tab', column: 11 })).body.targets;
    assert.deepStrictEqual(targets, [{ label: 'table', start: 8, length: 3 }]);
}));

test('what the prompt prints is what the adapter shows', () => session(async client => {
    await stopAt(client, 'report.s', 'CALL    summarise');
    for (const expression of ['total', 'ratio', 'precise', 'parts[1].name', 'parts[2].level', 'root->weight', 'table[1] + 1']) {
        const before = client.output('console').length;
        await client.send('evaluate', { expression: `> Debug.print("${expression}", "d")`, context: 'repl' });
        const printed = client.output('console').slice(before).trim().replace(/^[^=]*=/, '');
        assert.strictEqual(await client.value(expression), printed, expression);
    }
    const resumed = client.waitForEvent('continued');
    const stopped = client.waitForEvent('stopped');
    await client.send('evaluate', { expression: '> Debug.stepinto()', context: 'repl' });
    await resumed;
    assert.strictEqual((await stopped).body.reason, 'pause');
    assert.strictEqual((await client.where())[0].name, 'summarise', 'a script makes the program go on, too');
    assert.match(await client.refused('evaluate', { expression: '> Debug.fly()', context: 'repl' }), /not a function/);
}));

test('both memories are read and written, and code is disassembled in both directions', () => session(async client => {
    await stopAt(client, 'report.s', 'CALL    summarise');
    const { Globals } = await client.scopes();
    const { mode, primes } = await client.variables(Globals);
    const read = async (memoryReference, count, offset = 0) => {
        const { body } = await client.send('readMemory', { memoryReference, count, offset });
        return [body.data ? Buffer.from(body.data, 'base64').toString('hex') : '', body.unreadableBytes || 0];
    };
    await client.send('writeMemory', { memoryReference: mode.memoryReference, offset: 1, data: 'AQI=' });
    assert.deepStrictEqual(await read(mode.memoryReference, 4), ['00010200', 0]);
    assert.strictEqual(await client.value('mode'), String(0x20100));
    assert.deepStrictEqual(await read(primes.memoryReference, 6), ['020003000500', 0]);
    assert.deepStrictEqual((await read('0xfffe', 4))[1], 2, 'the memory ends in between');
    assert.deepStrictEqual(await read('0x7000000', 8), ['', 8]);
    assert.match(await client.refused('writeMemory', { memoryReference: '0xffff', data: 'AQI=' }), /ends in front/);
    assert.strictEqual((await client.send('writeMemory', { memoryReference: '0xffff', data: 'AQI=', allowPartial: true })).body.bytesWritten, 1);

    const pc = (await client.where())[0].instructionPointerReference;
    const listing = async args => (await client.send('disassemble', { memoryReference: pc, ...args })).body.instructions;
    const around = await listing({ instructionOffset: -20, instructionCount: 30 });
    assert.strictEqual(around.length, 30);
    assert.strictEqual(around[20].address, pc);
    assert.match(around[20].instruction, /CALL/);
    assert.strictEqual(around[20].line, at('report.s', 'CALL    summarise'));
    const addresses = around.map(entry => Number(entry.address));
    for (let i = 1; i < 30; ++i)
        assert.strictEqual(addresses[i] - addresses[i - 1], around[i - 1].instructionBytes.length / 2, around[i].address);
    const ahead = await listing({ instructionOffset: 5, instructionCount: 3 });
    assert.deepStrictEqual(ahead.map(entry => entry.address), around.slice(25, 28).map(entry => entry.address));
    const front = await listing({ memoryReference: '0x2', instructionOffset: -4, instructionCount: 6 });
    assert.deepStrictEqual(front.map(entry => entry.presentationHint === 'invalid'), [true, true, true, false, false, false]);
}));

test('sources are found by the editor\'s names for them, and lines with code are listed', () => session(async client => {
    const elsewhere = name => ({ path: `/elsewhere/${name}` });
    const stop = await launch(client, { breakSymbol: '', sourceMap: { [example]: '/elsewhere' } }, async () => {
        const other = await client.setBreakpointsRequest({ source: elsewhere('no.s'), breakpoints: [{ line: 60 }] });
        assert.strictEqual(other.body.breakpoints[0].message, 'No code for breakpoint');
        await client.setBreakpointsRequest({ source: elsewhere('main.s'), breakpoints: [{ line: at('main.s', 'CALL    fill') }] });
    });
    assert.strictEqual(stop.reason, 'breakpoint');
    const [frame] = await client.where();
    assert.deepStrictEqual(frame.source, { name: 'main.s', path: '/elsewhere/main.s' });
    const paths = (await client.send('loadedSources')).body.sources.map(each => each.path);
    assert(paths.includes('/elsewhere/tree.s'), paths.join(' '));
    const first = at('main.s', '.FUNC main');
    const { body } = await client.send('breakpointLocations', { source: elsewhere('main.s'), line: first, endLine: first + 4 });
    assert.deepStrictEqual(body.breakpoints.map(each => each.line), [first + 2, first + 3, first + 4]);
}));
