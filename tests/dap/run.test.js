// Runs, steps, breakpoints of all kinds, and the ends of sessions, on the simulator.
'use strict';
const { test } = require('node:test');
const assert = require('assert');
const path = require('path');
const { session, launch, lineOf, launchArguments, example } = require('./harness');

const source = name => ({ path: path.join(example, name) });
const at = (name, text) => lineOf(path.join(example, name), text);
const setBreakpoints = async (client, name, breakpoints) =>
    (await client.setBreakpointsRequest({ source: source(name), breakpoints })).body.breakpoints;
const place = async client => (await client.where()).map(frame => frame.name);

test('the client of the protocol hits a breakpoint by its own sequence', () => session(async client => {
    await client.hitBreakpoint({ ...launchArguments, breakSymbol: '' }, { ...source('report.s'), line: at('report.s', 'CALL    summarise') });
}));

test('steps go into, over and out of calls, by line and by instruction', () => session(async client => {
    assert.strictEqual((await launch(client)).reason, 'entry');
    const first = (await client.where())[0];
    assert.strictEqual(first.line, at('main.s', 'MOVE    A[0], #welcome'));
    assert.strictEqual((await client.until('next')).reason, 'step');
    await client.until('next');
    assert.deepStrictEqual((await client.where()).map(frame => [frame.name, frame.line])[0],
                           ['main', at('main.s', 'CALL    fill')], 'puts was stepped over');
    await client.until('stepIn');
    assert.deepStrictEqual((await place(client)).slice(0, 2), ['fill', 'main']);
    await client.until('stepIn', { granularity: 'instruction' });
    await client.until('next', { granularity: 'instruction' });
    await client.until('stepOut');
    assert.deepStrictEqual((await client.where()).map(frame => [frame.name, frame.line])[0],
                           ['main', at('main.s', 'CALL    plant')]);
    assert.strictEqual(client.output('stdout'), 'parts\n');
}));

test('a stop tells which breakpoint it was, and hits are counted behind the condition', () => session(async client => {
    let ids;
    const stop = await launch(client, { breakSymbol: '' }, async () => {
        const set = await setBreakpoints(client, 'main.s', [
            { line: at('main.s', '.add:'), condition: 'side == 4', hitCondition: '% 3' },
            { line: at('main.s', 'MOVE    @DP[1].L++, A[0]'), hitCondition: '>= 5' },
            { line: at('main.s', 'MOVE    A[4], #0'), logMessage: 'fill {1 + 1} \\{{mode}' },
            { line: 100000 },
            { line: 1, hitCondition: 'often' },
            { line: 1, logMessage: 'no {end' },
        ]);
        ids = set.map(breakpoint => breakpoint.id);
        assert.deepStrictEqual(set.map(breakpoint => breakpoint.verified), [true, true, true, false, false, false]);
        assert.deepStrictEqual(set.slice(3).map(breakpoint => breakpoint.message),
                               ['No code for breakpoint', 'invalid hit condition "often"',
                                'the log message has a "{" without a "}"']);
    });
    assert.deepStrictEqual([stop.reason, stop.hitBreakpointIds], ['breakpoint', [ids[0]]]);
    assert.strictEqual(await client.value('side'), '4');
    assert.strictEqual(await client.value('@LC[0]'), '2', 'the third time');
    assert.deepStrictEqual((await client.until('continue')).hitBreakpointIds, [ids[1]]);
    assert.strictEqual(await client.value('index'), '4', 'the fifth element');
    assert.match(client.output('console'), /^Programming\nVerifying\nfill 2 {0\n$/);
    const moved = await setBreakpoints(client, 'tree.s', [{ line: at('tree.s', '; Puts all parts into') }]);
    assert.strictEqual(moved[0].line, at('tree.s', 'PUSH    A[4]'), 'a comment has no code, the next line has');
}));

test('a step over a call in which log points and failing conditions are hit ends behind the call', () => session(async client => {
    await launch(client);
    await setBreakpoints(client, 'main.s', [
        { line: at('main.s', 'MOVE    DP[1], A[5]'), logMessage: 'i={index}' },
        { line: at('main.s', '.done:  RET'), condition: 'side == 100' },
    ]);
    for (let line = 0; line !== at('main.s', 'CALL    fill');)
        line = await client.until('next').then(() => client.where()).then(frames => frames[0].line);
    assert.strictEqual((await client.until('next')).reason, 'step');
    assert.strictEqual((await client.where())[0].line, at('main.s', 'CALL    plant'));
    assert.strictEqual(client.output('console').replace(/^Programming\nVerifying\n/, ''), [0, 1, 2, 3, 4, 5].map(i => `i=${i}\n`).join(''));
}));

test('function, instruction and data breakpoints stop, each for its reason', () => session(async client => {
    await launch(client);
    const functions = await client.setFunctionBreakpointsRequest({ breakpoints: [{ name: 'square' }, { name: 'mode' }, { name: 'no' }] });
    assert.deepStrictEqual(functions.body.breakpoints.map(each => each.message),
                           [undefined, '"mode" is no function', 'no symbol not found']);
    assert.strictEqual((await client.until('continue')).reason, 'function breakpoint');
    await client.setFunctionBreakpointsRequest({ breakpoints: [] });
    const caller = (await client.where())[1].instructionPointerReference;
    await client.send('setInstructionBreakpoints', { breakpoints: [{ instructionReference: caller }] });
    assert.strictEqual((await client.until('continue')).reason, 'instruction breakpoint');
    await client.send('setInstructionBreakpoints', { breakpoints: [] });

    const scopes = await client.scopes();
    const global = (await client.variables(scopes.Globals)).table.variablesReference;
    const element = (await client.dataBreakpointInfoRequest({ variablesReference: global, name: '[3]' })).body;
    assert.deepStrictEqual(element.accessTypes.sort(), ['read', 'readWrite', 'write']);
    const register = (await client.dataBreakpointInfoRequest({ name: '@IP' })).body;
    assert.strictEqual((await client.dataBreakpointInfoRequest({ name: 'PRIMES' }).catch(() => ({ body: { dataId: null } }))).body.dataId, null);
    assert.notStrictEqual(register.dataId, null);
    await client.setDataBreakpointsRequest({ breakpoints: [{ dataId: element.dataId, accessType: 'write' }] });
    assert.strictEqual((await client.until('continue')).reason, 'data breakpoint');
    assert.strictEqual(await client.value('index'), '3');
    const range = (await client.dataBreakpointInfoRequest({ name: '0x8004', asAddress: true, bytes: 4 })).body;
    await client.setDataBreakpointsRequest({ breakpoints: [{ dataId: range.dataId, accessType: 'read', condition: 'mode == 0' }] });
    assert.strictEqual((await client.until('continue')).reason, 'data breakpoint');
    assert.strictEqual((await place(client))[0], 'wander');
}));

test('a program that runs is paused, takes breakpoints, and refuses what needs it to stand', () => session(async client => {
    await launch(client);
    await client.send('evaluate', { expression: 'mode = 2', context: 'repl' });
    await client.send('continue', { threadId: 1 });
    for (const command of ['stackTrace', 'next', 'continue', 'scopes', 'readMemory', 'goto'])
        assert.strictEqual(await client.refused(command, { threadId: 1 }), 'notStopped');
    assert.strictEqual(await client.refused('evaluate', { expression: 'mode', context: 'watch' }), 'notStopped');
    assert.strictEqual((await client.until('pause')).reason, 'pause');
    assert.strictEqual((await place(client))[0], 'wander');
    await client.send('continue', { threadId: 1 });
    const stopped = client.waitForEvent('stopped');
    const [set] = await setBreakpoints(client, 'main.s', [{ line: at('main.s', '.again: MOVE    DP[0], #mode') }]);
    assert.deepStrictEqual((await stopped).body.hitBreakpointIds, [set.id]);
}));

test('exceptions of the target stop where they are enabled, goto leaves code out, and the exit status is told', () => session(async client => {
    await launch(client);
    const [changed] = client.events('capabilities');
    const filters = changed.capabilities.exceptionBreakpointFilters.map(filter => filter.filter);
    assert(filters.length > 0);
    await client.setExceptionBreakpointsRequest({ filters });
    await client.send('evaluate', { expression: 'mode = 1', context: 'repl' });
    const stop = await client.until('continue');
    assert.strictEqual(stop.reason, 'exception');
    assert(filters.includes((await client.exceptionInfoRequest({ threadId: 1 })).body.exceptionId), stop.text);
    const none = await client.gotoTargetsRequest({ source: source('main.s'), line: 1 });
    assert.deepStrictEqual(none.body.targets, []);
    await client.setExceptionBreakpointsRequest({ filters: [] });
    // The stop is where the read is, or behind it; the line in front of both is left for another one.
    const { body } = await client.gotoTargetsRequest({ source: source('main.s'), line: at('main.s', 'CMP     #1') + 1 });
    assert.strictEqual((await client.until('goto', { targetId: body.targets[0].id })).reason, 'goto');
    assert.strictEqual((await client.where())[0].line, at('main.s', 'CMP     #1') + 1);
    const exited = client.waitForEvent('exited');
    const terminated = client.waitForEvent('terminated');
    await client.send('continue', { threadId: 1 });
    assert.strictEqual((await exited).body.exitCode, 12);
    await terminated;
    assert.strictEqual(await client.refused('stackTrace', { threadId: 1 }), 'the program has ended');
}));

test('restart begins again with the breakpoints, and terminate ends', () => session(async client => {
    await launch(client, { stopOnEntry: true }, () => setBreakpoints(client, 'tree.s', [{ line: at('tree.s', '.here:') }]));
    assert.strictEqual((await client.until('continue')).reason, 'breakpoint');
    assert.strictEqual((await client.until('restart')).reason, 'entry');
    assert.deepStrictEqual(await place(client), ['start']);
    assert.strictEqual((await client.until('continue')).reason, 'breakpoint');
    const terminated = client.waitForEvent('terminated');
    await client.terminateRequest();
    await terminated;
}));

test('what the program writes and reads goes through the console', () => session(async client => {
    const calc = path.join(example, '../calc');
    await client.initializeRequest();
    const initialized = client.waitForEvent('initialized');
    await client.send('launch', { ...launchArguments, solution: path.join(calc, 'calc.kvp'), project: 'calc', breakSymbol: '' });
    await initialized;
    await client.send('configurationDone');
    const answer = async (line, text) => {
        while (await client.send('evaluate', { expression: line, context: 'repl' }).then(() => false, () => true))
            await new Promise(resolve => setTimeout(resolve, 5)); // until the program reads
        while (!client.output('stdout').includes(text))
            await client.waitForEvent('output');
    };
    await answer('12 * 34', '408');
    const exited = client.waitForEvent('exited');
    await answer('done', '');
    assert.strictEqual((await exited).body.exitCode, 1);
}));
