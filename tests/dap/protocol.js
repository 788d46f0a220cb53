// Holds messages against the types of the protocol, as its makers publish them. A property that the types do
// not know is a fault, too.
'use strict';
const fs = require('fs');
const path = require('path');

function load(modules) {
    const ts = require(path.join(modules, 'typescript'));
    const file = path.join(modules, '@vscode/debugprotocol/lib/debugProtocol.d.ts');
    const source = ts.createSourceFile(file, fs.readFileSync(file, 'utf8'), ts.ScriptTarget.Latest, true);
    const declarations = new Map();
    (function walk(node) {
        if (ts.isInterfaceDeclaration(node) || ts.isTypeAliasDeclaration(node))
            declarations.set(node.name.text, node);
        ts.forEachChild(node, walk);
    })(source);

    // Members of an interface; those of what it extends are hidden by its own.
    function members(declaration) {
        const all = new Map();
        for (const clause of declaration.heritageClauses || [])
            for (const base of clause.types)
                for (const [name, member] of members(declarations.get(base.expression.text)))
                    all.set(name, member);
        for (const member of declaration.members)
            all.set(ts.isIndexSignatureDeclaration(member) ? '[]' : member.name.text, member);
        return all;
    }

    function object(value, all, where, faults) {
        if (typeof value !== 'object' || value === null || Array.isArray(value)) {
            faults.push(`${where} is no object`);
            return;
        }
        for (const [name, member] of all)
            if (name !== '[]' && !member.questionToken && !(name in value))
                faults.push(`${where}.${name} is missing`);
        for (const name of Object.keys(value)) {
            const member = all.get(name) || all.get('[]');
            if (member)
                check(value[name], member.type, `${where}.${name}`, faults);
            else
                faults.push(`${where}.${name} is not in the protocol`);
        }
    }

    function check(value, type, where, faults) {
        const kind = ts.SyntaxKind;
        const expect = (good, what) => {
            if (!good)
                faults.push(`${where} is ${JSON.stringify(value)}, and no ${what}`);
        };
        switch (type.kind) {
        case kind.StringKeyword: return expect(typeof value === 'string', 'text');
        case kind.NumberKeyword: return expect(typeof value === 'number', 'number');
        case kind.BooleanKeyword: return expect(typeof value === 'boolean', 'boolean');
        case kind.AnyKeyword: return undefined;
        case kind.ParenthesizedType: return check(value, type.type, where, faults);
        case kind.LiteralType: {
            const text = type.literal.kind === kind.NullKeyword ? null : type.literal.text;
            return expect(value === text, `"${text}"`);
        }
        case kind.ArrayType:
            if (!Array.isArray(value))
                return expect(false, 'list');
            return value.forEach((entry, i) => check(entry, type.elementType, `${where}[${i}]`, faults));
        case kind.UnionType: {
            const attempts = type.types.map(alternative => {
                const found = [];
                check(value, alternative, where, found);
                return found;
            });
            if (attempts.every(found => found.length > 0))
                faults.push(...attempts[0]);
            return undefined;
        }
        case kind.TypeLiteral: return object(value, members(type), where, faults);
        case kind.TypeReference: {
            const declaration = declarations.get(type.typeName.right ? type.typeName.right.text : type.typeName.text);
            if (!declaration)
                throw new Error(`${where}: unknown type ${type.getText()}`);
            return declaration.members ? object(value, members(declaration), where, faults)
                                       : check(value, declaration.type, where, faults);
        }
        default: throw new Error(`${where}: unknown kind of type ${type.getText()}`);
        }
    }

    // What is wrong with a message of the adapter, as a list of texts.
    return function faultsOf(message) {
        const capital = text => text.charAt(0).toUpperCase() + text.slice(1);
        let name = message.type === 'event' ? `${capital(message.event)}Event`
            : message.success ? `${capital(message.command)}Response` : 'ErrorResponse';
        const declaration = declarations.get(name);
        if (!declaration)
            return [`there is no ${name}`];
        const faults = [];
        const all = new Map(members(declaration));
        if (name === 'ErrorResponse' && !('body' in message))
            all.delete('body'); // "can provide more details"
        object(message, all, name, faults);
        return faults;
    };
}

module.exports = { load };
