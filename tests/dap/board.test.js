// Whole sessions on the virtual board, behind both adapters: what the hardware has too little of, and what goes
// wrong with it.
'use strict';
const { test } = require('node:test');
const assert = require('assert');
const fs = require('fs');
const path = require('path');
const { session, launch, lineOf, launchArguments, example, bin, spawn } = require('./harness');

const source = name => ({ path: path.join(example, name) });
const at = (name, text) => lineOf(path.join(example, name), text);

// Runs a board beside the act, which gets the launch arguments and the environment to reach it.
async function withBoard(usb, act) {
    const folder = fs.mkdtempSync('/tmp/qburn-dap-board-');
    const socket = path.join(folder, 'usb');
    const board = spawn(path.join(bin, 'vboard'), usb ? ['--usb', socket] : [], { cwd: folder });
    try {
        const port = await new Promise((resolve, reject) => {
            board.stdout.once('data', data => resolve(data.toString().trim()));
            board.once('exit', () => reject(new Error('the board has ended')));
        });
        const sanitizer = process.env.ASAN_OPTIONS ? process.env.ASAN_OPTIONS + ':' : '';
        await act(usb ? { target: 'usb_th' } : { target: 'serial_jtag', setprop: { 'Port Name': port } },
                  usb ? { LD_PRELOAD: path.join(bin, '../lib/libvusb.so'), VBOARD_USB: socket,
                          ASAN_OPTIONS: sanitizer + 'verify_asan_link_order=0' } : {}, board);
    } finally {
        board.kill('SIGTERM');
        fs.rmSync(folder, { recursive: true, force: true });
    }
}

for (const usb of [false, true])
    test(`a whole session behind the ${usb ? 'USB' : 'serial'} adapter`, () => withBoard(usb, (args, environment) => session(async client => {
        client.defaultTimeout = 60000;
        await client.initializeRequest({ adapterID: 'qburn', linesStartAt1: true, columnsStartAt1: true, pathFormat: 'path',
                                         supportsProgressReporting: true });
        assert.strictEqual((await launch(client, args)).reason, 'entry');
        const started = client.events('progressStart');
        assert.deepStrictEqual(started.map(each => each.progressId), client.events('progressEnd').map(each => each.progressId));
        assert(started.length >= 2, 'download and verification are seen');

        // Four fit; the others wait for a place.
        const lines = ['CALL    fill', 'CALL    plant', 'CALL    weigh', 'CALL    label', 'CALL    report', 'CALL    wander'];
        const wanted = lines.map(text => ({ line: at('main.s', text) }));
        const set = (await client.setBreakpointsRequest({ source: source('main.s'), breakpoints: wanted })).body.breakpoints;
        assert.deepStrictEqual(set.map(each => each.verified), [true, true, true, true, false, false]);
        assert.deepStrictEqual(set.slice(4).map(each => each.message), Array(2).fill('No more code breakpoints available'));

        assert.strictEqual((await client.until('continue')).reason, 'breakpoint');
        assert.strictEqual(await client.refused('next', { threadId: 1 }), 'No more code breakpoints available');
        await client.until('stepIn');
        await client.until('next');
        assert.deepStrictEqual((await client.where()).map(frame => [frame.name, frame.line])[0],
                               ['fill', at('main.s', '.ADJUST -4') + 1], 'steps go on with all places in use');
        assert.strictEqual((await client.until('continue')).reason, 'breakpoint');
        assert.strictEqual((await client.where())[0].line, wanted[1].line);
        assert.strictEqual((await client.variables((await client.variables((await client.scopes()).Globals)).table.variablesReference))['[5]'].value, '25');

        const changed = client.waitForEvent('breakpoint');
        await client.setBreakpointsRequest({ source: source('main.s'), breakpoints: wanted.slice(2) });
        assert.strictEqual((await client.setBreakpointsRequest({ source: source('main.s'), breakpoints: wanted.slice(2) })).body.breakpoints
            .every(each => each.verified), true);
        changed.catch(() => {});
        await client.setFunctionBreakpointsRequest({ breakpoints: [{ name: 'divide' }] });
        await client.setBreakpointsRequest({ source: source('main.s'), breakpoints: [] });
        assert.strictEqual((await changed).body.breakpoint.verified, true, 'a place became free');
        assert.strictEqual((await client.until('continue')).reason, 'function breakpoint');
        assert.deepStrictEqual((await client.where()).map(frame => frame.name), ['divide', 'average', 'summarise', 'report', 'main', 'start']);
        const exited = client.waitForEvent('exited');
        await client.setFunctionBreakpointsRequest({ breakpoints: [] });
        await client.send('continue', { threadId: 1 });
        assert.strictEqual((await exited).body.exitCode, 12);
    }, [], environment)));

test('a second adapter on one port says that it is busy, and the first goes on', () => withBoard(false, args => session(async client => {
    await launch(client, args);
    await session(async other => {
        await other.initializeRequest();
        assert.match(await other.refused('launch', { ...launchArguments, ...args }), /busy|in use/);
    });
    assert.strictEqual((await client.until('next')).reason, 'step');
})));

test('a download is cancelled by its request and by a disconnect, and the board can be used again', () => withBoard(false, async args => {
    // Sent at once behind the launch, so that they are there when its work begins.
    for (const way of ['cancel', 'disconnect'])
        await session(async client => {
            await client.initializeRequest({ adapterID: 'qburn', supportsProgressReporting: true });
            const requestId = client.sequence;
            const outcome = client.refused('launch', { ...launchArguments, ...args });
            const second = client.send(way, way === 'cancel' ? { requestId } : {});
            assert.strictEqual(await outcome, 'cancelled');
            await second;
            assert.deepStrictEqual(client.events('progressStart').map(each => each.progressId),
                                   client.events('progressEnd').map(each => each.progressId));
        });
    await session(async client => {
        assert.strictEqual((await launch(client, args)).reason, 'entry');
    });
}));

test('a program is attached to as it runs, and left running or ended', () => withBoard(true, async (args, environment) => {
    await session(async client => {
        await launch(client, args);
        await client.send('evaluate', { expression: 'mode = 2', context: 'repl' });
        await client.send('continue', { threadId: 1 });
        await client.send('disconnect', { terminateDebuggee: false });
    }, [], environment);
    for (let i = 0; i < 2; ++i)
        await session(async client => {
            await client.initializeRequest();
            const initialized = client.waitForEvent('initialized');
            const { target, solution, project, config } = { ...launchArguments, ...args };
            await client.send('attach', { target, solution, project, config });
            await initialized;
            await client.send('configurationDone');
            assert.strictEqual((await client.until('pause')).reason, 'pause');
            assert.strictEqual((await client.where())[0].name, 'wander');
            assert.strictEqual(await client.value('mode'), '2', 'it was neither loaded nor reset');
            assert.match(await client.refused('restart', {}), /cannot be restarted/);
        }, [], environment);
}));

test('a board that goes away in the middle of a step is told, and the session ends', () => withBoard(false, (args, environment, board) => session(async client => {
    await launch(client, args);
    await client.send('evaluate', { expression: 'mode = 2', context: 'repl' });
    await client.send('continue', { threadId: 1 });
    const told = client.waitForEvent('output');
    board.kill('SIGKILL');
    assert.strictEqual((await told).body.category, 'important');
})));
