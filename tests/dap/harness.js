// What the tests of the debug adapter share: the protocol's own client around a real adapter, each of whose
// messages is held against the protocol's types, and programs from the assembler.
'use strict';
const assert = require('assert');
const { spawn, spawnSync } = require('child_process');
const fs = require('fs');
const os = require('os');
const path = require('path');

const modules = process.env.DAP_MODULES;
const bin = process.env.QBURN_BIN;
const sources = process.env.QBURN_SOURCE;
if (!fs.existsSync(path.join(modules, 'typescript'))) {
    console.log('skipped: the client was not fetched, see the output of the build');
    process.exit(77);
}
const { DebugClient } = require(path.join(modules, '@vscode/debugadapter-testsupport'));
const faultsOf = require('./protocol').load(modules);

const qburn = path.join(bin, 'qburn');
const example = path.join(sources, 'examples/debug');
const build = path.dirname(bin);

class Client extends DebugClient {
    // Options go in front of -dap.
    constructor(options = [], environment = {}) {
        super(qburn, qburn, 'qburn');
        this.options = options;
        this.environment = environment;
        this.messages = [];
        this.problems = [];
        this.defaultTimeout = 20000;
    }

    // In place of the client's own start, which can pass no options. The adapter's home is an empty one.
    async start() {
        this.home = fs.mkdtempSync(path.join(os.tmpdir(), 'qburn-dap-'));
        this.adapter = spawn(qburn, [...this.options, '-dap'], {
            cwd: this.home,
            env: { ...process.env, HOME: this.home, LC_ALL: 'C.UTF-8', ...this.environment },
        });
        this.errors = '';
        this.adapter.stderr.on('data', data => { this.errors += data; });
        this.ended = new Promise(resolve => this.adapter.on('close', (status, signal) => resolve({ status, signal })));
        this.adapter.stdin.on('error', () => {}); // of an adapter that has ended
        this.connect(this.adapter.stdout, this.adapter.stdin);
    }

    dispatch(body) {
        const message = JSON.parse(body);
        if (this.messages.length > 0 && message.seq !== this.messages[this.messages.length - 1].seq + 1)
            this.problems.push(`message ${message.seq} is out of order`);
        this.messages.push(message);
        for (const fault of faultsOf(message))
            this.problems.push(`${fault}\n    in ${body.slice(0, 400)}`);
        super.dispatch(body);
    }

    // Ends the adapter as an editor does. Fails when one of its messages was not what the protocol says.
    async stop() {
        if (this.adapter.exitCode === null && !this.adapter.stdin.writableEnded) {
            await Promise.race([this.send('disconnect', {}).catch(() => {}), this.ended]);
            this.adapter.stdin.end();
        }
        const timer = setTimeout(() => this.adapter.kill('SIGKILL'), 20000);
        const ended = await this.ended;
        clearTimeout(timer);
        fs.rmSync(this.home, { recursive: true, force: true });
        assert.deepStrictEqual(this.problems, []);
        assert.strictEqual(ended.signal, null, 'the adapter did not end by itself\n' + this.errors);
        return ended.status;
    }

    // Bytes as they are, past the framing.
    raw(bytes) { this.adapter.stdin.write(bytes); }

    events(name) { return this.messages.filter(message => message.event === name).map(message => message.body); }
    output(category) {
        return this.events('output').filter(body => body.category === category).map(body => body.output).join('');
    }

    // The response to a request that has to fail, as its text.
    async refused(command, args) {
        const outcome = await this.send(command, args).then(() => 'it succeeded', failure => failure.message);
        assert.notStrictEqual(outcome, 'it succeeded', `${command} ${JSON.stringify(args)}`);
        return outcome;
    }

    async value(expression, args = {}) {
        const frames = await this.send('stackTrace', { threadId: 1, levels: 1 });
        const frameId = frames.body.stackFrames[0].id;
        return (await this.send('evaluate', { expression, frameId, context: 'watch', ...args })).body.result;
    }

    async scopes(frame = 0) {
        const frames = await this.send('stackTrace', { threadId: 1 });
        const found = await this.send('scopes', { frameId: frames.body.stackFrames[frame].id });
        return Object.fromEntries(found.body.scopes.map(scope => [scope.name, scope.variablesReference]));
    }
    async variables(variablesReference, args = {}) {
        const found = await this.send('variables', { variablesReference, ...args });
        return Object.fromEntries(found.body.variables.map(variable => [variable.name, variable]));
    }

    // Sends a request that makes the program go on, and waits for its stop.
    async until(command, args = {}) {
        const stopped = this.waitForEvent('stopped');
        await this.send(command, { threadId: 1, ...args });
        return (await stopped).body;
    }
    async where() {
        const frames = await this.send('stackTrace', { threadId: 1 });
        return frames.body.stackFrames;
    }
}

// Runs a test with a client, and ends the client in any case.
async function session(act, options, environment) {
    const client = new Client(options, environment);
    await client.start();
    try {
        await act(client);
    } catch (failure) {
        console.error(client.messages.slice(-8).map(message => JSON.stringify(message).slice(0, 500)).join('\n'));
        console.error(client.errors);
        client.adapter.kill('SIGKILL');
        throw failure;
    }
    return client.stop();
}

// The line of a source on which a text stands.
function lineOf(file, text) {
    const index = fs.readFileSync(file, 'utf8').split('\n').findIndex(line => line.includes(text));
    assert(index >= 0, `${file} has no "${text}"`);
    return index + 1;
}

const launchArguments = {
    target: 'sim', solution: path.join(example, 'debug.kvp'), project: 'debug', config: 'Debug', breakSymbol: 'main',
};

// Initializes and launches; the breakpoints are set by `configure`. Comes back at the first stop.
async function launch(client, args = {}, configure = async () => {}) {
    if (!client.messages.some(message => message.command === 'initialize' && message.success))
        await client.initializeRequest();
    const initialized = client.waitForEvent('initialized');
    const stopped = client.waitForEvent('stopped');
    stopped.catch(() => {});
    await client.send('launch', { ...launchArguments, ...args });
    await initialized;
    await configure();
    await client.send('configurationDone');
    return (await stopped).body;
}

module.exports = { Client, session, launch, lineOf, launchArguments, qburn, bin, build, example, sources, spawnSync, spawn };
