// What an editor, or whoever stands at the other end of the pipe, may send, in whatever order and form.
'use strict';
const { test } = require('node:test');
const assert = require('assert');
const { session, launch, launchArguments, Client } = require('./harness');

const framed = json => `Content-Length: ${Buffer.byteLength(json)}\r\n\r\n${json}`;

test('requests that come too early, twice, unknown or with wrong arguments are refused, and the next one is carried out', () => session(async client => {
    assert.match(await client.refused('launch', {}), /first request must be "initialize"/);
    await client.initializeRequest();
    assert.strictEqual(await client.refused('initialize', {}), 'the adapter is initialized already');
    assert.strictEqual(await client.refused('fly', {}), 'unknown request "fly"');
    assert.match(await client.refused('setBreakpoints', {}), /no program is being debugged/);
    assert.deepStrictEqual((await client.threadsRequest()).body.threads.map(thread => thread.id), [1]);

    const wrong = [
        ['setBreakpoints', { source: 3 }, 'argument "source" must be an object'],
        ['setBreakpoints', { source: { path: '/x' }, breakpoints: [3] }, 'argument "breakpoints" must be a list of objects'],
        ['setFunctionBreakpoints', { breakpoints: 'all' }, 'argument "breakpoints" must be a list'],
        ['variables', { variablesReference: 1.5 }, 'argument "variablesReference" must be a whole number'],
        ['variables', { variablesReference: -1 }, 'argument "variablesReference" is out of range'],
        ['variables', {}, 'argument "variablesReference" is missing'],
        ['variables', { variablesReference: 77 }, 'unknown reference'],
        ['evaluate', { expression: ['a'] }, 'argument "expression" must be a text'],
        ['evaluate', { expression: 'mode', format: { hex: 'yes' } }, 'argument "format.hex" must be true or false'],
        ['readMemory', { memoryReference: 'moon', count: 4 }, '"moon" is no address'],
        ['readMemory', { memoryReference: 'moon:0', count: 4 }, 'the target has no memory "moon"'],
        ['readMemory', { memoryReference: '0x0', offset: -1, count: 4 }, '"0x0" is outside of all memory'],
        ['readMemory', { memoryReference: '0', count: 2000000 }, 'more than 1 MB at a time'],
        ['writeMemory', { memoryReference: '0x8000', data: '*' }, 'argument "data" is not in base64'],
        ['goto', { threadId: 1, targetId: 5 }, 'unknown reference'],
    ];
    await launch(client);
    for (const [command, args, text] of wrong)
        assert.strictEqual(await client.refused(command, args), text);
    assert.strictEqual(await client.refused('launch', launchArguments), 'a program is being debugged already');
    assert.strictEqual(await client.value('mode'), '0');
}));

test('what is no message is told once, and the stream is found again', () => session(async client => {
    const faults = () => client.messages.filter(message => message.request_seq === 0).map(message => message.message);
    client.raw('Content-Length: twelve\r\n\r\n' + framed('{"seq":90,"type":"request","command":"threads"}'));
    client.raw('noise '.repeat(2000) + '\r\n\r\nContent-Length: 99999999\r\n\r\n');
    client.raw(framed('['.repeat(1000000)));
    client.raw(framed('{"seq":1,"type":'));
    client.raw(framed('[1]'));
    client.raw(framed('{"type":"request","command":"threads"}'));
    client.raw('Content-Length: 30\r\n\r\n{"seq":91,"type":"request","command":"threads"}');
    await client.initializeRequest();
    assert.deepStrictEqual(faults().map(text => text.replace(/ JSON: .*/, ' JSON')), [
        "a message's Content-Length is not one number",
        "a message's header is longer than 4096 bytes",
        'the message is nested too deeply',
        'the message is not JSON',
        'the message is not an object',
        'the request has no number',
        'the message is not JSON',
        "a message's header has no Content-Length",
    ]);
}));

test('a launch argument that is misspelt or that the program cannot have is refused, and the session is over', async () => {
    const cases = [
        [{ taget: 'sim' }, 'unknown launch argument "taget"'],
        [{ setprop: 'Speed' }, 'format for option should be "-setprop PROPERTY=VALUE"'],
        [{ target: 'toaster' }, /^unknown target "toaster"/],
        [{ project: 'nothing' }, /^invalid project "nothing"/],
        [{ files: ['/no/such/file.kvx'] }, 'The file "file.kvx" does not exist\nlooked for /no/such/file.kvx'],
        [{ sourceMap: [['a']] }, 'argument "sourceMap" must be a list of pairs of paths'],
        [{ stopOnEntry: 'main' }, 'argument "stopOnEntry" must be true or false'],
    ];
    for (const [args, text] of cases)
        await session(async client => {
            await client.initializeRequest();
            const terminated = client.waitForEvent('terminated');
            const told = await client.refused('launch', { ...launchArguments, ...args });
            text instanceof RegExp ? assert.match(told, text) : assert.strictEqual(told, text);
            await terminated;
            assert.match(await client.refused('launch', launchArguments), /ended/);
        });
});

test('every request that is announced is carried out, and no other is', () => session(async client => {
    const capabilities = (await client.initializeRequest()).body;
    const requests = {
        supportsRestartRequest: 'restart', supportsTerminateRequest: 'terminate', supportsCancelRequest: 'cancel',
        supportsGotoTargetsRequest: 'gotoTargets', supportsLoadedSourcesRequest: 'loadedSources',
        supportsReadMemoryRequest: 'readMemory', supportsDisassembleRequest: 'disassemble',
        supportsStepBack: 'stepBack', supportsModulesRequest: 'modules', supportsStepInTargetsRequest: 'stepInTargets',
        supportsRestartFrame: 'restartFrame', supportsTerminateThreadsRequest: 'terminateThreads',
    };
    for (const [capability, command] of Object.entries(requests))
        assert.strictEqual(Boolean(capabilities[capability]),
                           !(await client.refused(command, { seq: 0, requestId: 'x' })).startsWith('unknown request'), command);
}));

test('references die when the program goes on', () => session(async client => {
    await launch(client);
    const [frame] = await client.where();
    const scopes = await client.scopes();
    await client.until('next');
    const old = 'the reference is from before the program went on';
    assert.strictEqual(await client.refused('variables', { variablesReference: scopes.Locals }), old);
    assert.strictEqual(await client.refused('scopes', { frameId: frame.id }), old);
    assert.strictEqual(await client.refused('evaluate', { expression: 'mode', frameId: frame.id }), old);
}));

test('an editor that closes the pipe leaves no adapter behind', async () => {
    for (const moment of ['at once', 'before the answer', 'while it runs']) {
        const client = new Client();
        await client.start();
        await client.initializeRequest();
        if (moment === 'before the answer')
            client.send('launch', launchArguments).catch(() => {});
        if (moment === 'while it runs') {
            await launchRunning(client);
        }
        client.adapter.stdin.end();
        client.adapter.stdout.destroy();
        assert.deepStrictEqual(await client.ended, { status: 0, signal: null }, moment);
    }
});

async function launchRunning(client) {
    const initialized = client.waitForEvent('initialized');
    await client.send('launch', { ...launchArguments, breakSymbol: '' });
    await initialized;
    await client.send('configurationDone');
}
