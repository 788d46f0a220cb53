// Statements and the emission of instructions; expressions are in ESGenerateExpressions.cpp.
#include "script/engine/ESGenerator.h"

#include "script/engine/ESContext.h"
#include "script/engine/ESException.h"
#include "script/engine/ESNode.h"
#include "script/engine/ESObject.h"
#include "script/engine/ESString.h"

namespace {

bool isLoop(int kind)
{
    switch (kind) {
    case ESToken::While:
    case ESToken::Do:
    case ESToken::For:
    case ESToken::ForIn:
    case ESToken::ForVarIn: return true;
    default: return false;
    }
}

} // namespace

// Puts a statement on the stack of enclosing statements while its inside is generated.
class ESGenerator::Inside {
public:
    Inside(ESGenerator* generator, ESNode* node) : m_generator(generator)
    {
        // A second pass over the same tree starts afresh.
        node->breakChain = node->continueChain = ESNode::EmptyChain;
        generator->m_enclosing.push_back({node, generator->m_withDepth});
    }
    ~Inside() { m_generator->m_enclosing.pop_back(); }
    Inside(const Inside&) = delete;
    Inside& operator=(const Inside&) = delete;

private:
    ESGenerator* m_generator;
};

// Emission.

void ESGenerator::tooLarge()
{
    throw ESFatalError("compiler error: patch constant too large");
}

void ESGenerator::gen0(int opcode)
{
    m_code->emit(uint8_t(opcode), m_line);
}

void ESGenerator::gen1(int opcode, int operand)
{
    gen0(opcode);
    m_code->emitOperand(operand, m_line);
}

void ESGenerator::gen2(int opcode, int operand, int second)
{
    gen1(opcode, operand);
    m_code->emitOperand(second, m_line);
}

void ESGenerator::genquick(int opcode, int flag)
{
    gen0(opcode);
    m_code->emit(uint8_t(flag), m_line);
}

int ESGenerator::stringOperand(ESString* name)
{
    int operand = m_code->operandFor(name->index());
    if (operand < 0)
        throw ESFatalError("compiler error: too many names");
    return operand;
}

void ESGenerator::genString(int opcode, ESString* name)
{
    gen1(opcode, stringOperand(name));
}

// Forward jumps are chained through their own operands until their target is known.
int ESGenerator::plant(int opcode, int head)
{
    int slot = m_code->length() + 1;
    if (slot >= ESNode::EmptyChain)
        tooLarge();
    gen1(opcode, head);
    return slot;
}

void ESGenerator::patch(int head, int target)
{
    if (target > 0xFFFF)
        tooLarge();
    while (head != ESNode::EmptyChain) {
        int next = m_code->operandAt(head);
        m_code->setOperand(head, target);
        head = next;
    }
}

void ESGenerator::jumpTo(int opcode, int target)
{
    if (target > 0xFFFF)
        tooLarge();
    gen1(opcode, target);
}

// Names.

ESGenerator::Location ESGenerator::locate(ESString* name)
{
    return m_compiler.resolve(m_function, m_code, name, m_withDepth, m_pass);
}

void ESGenerator::loadName(ESString* name)
{
    Location where = locate(name);
    bool frame = m_code->needsFrame;
    switch (where.kind) {
    case Location::Global: gen1(VM_GETG, where.slot); break;
    case Location::Parameter: gen1(frame ? VM_GETAM : VM_GETA, where.slot); break;
    case Location::Local: gen1(frame ? VM_GETLM : VM_GETL, where.slot); break;
    case Location::Dynamic: genString(VM_GETW, name); break;
    }
}

void ESGenerator::storeName(ESString* name)
{
    Location where = locate(name);
    bool frame = m_code->needsFrame;
    switch (where.kind) {
    case Location::Global: gen1(VM_PUTG, where.slot); break;
    case Location::Parameter: gen1(frame ? VM_PUTAM : VM_PUTA, where.slot); break;
    case Location::Local: gen1(frame ? VM_PUTLM : VM_PUTL, where.slot); break;
    case Location::Dynamic: genString(VM_PUTW, name); break;
    }
}

// Functions and statement lists.

void ESGenerator::function(ESNode* node)
{
    m_line = node->line;
    if (m_pass == 2 && m_code->needsArguments)
        storeName(g_argumentsString);
    statements(node->kids[0], false);
    gen0(VM_RETU);
}

void ESGenerator::program(ESNode* list)
{
    statements(list, true);
    gen0(VM_RET);
}

void ESGenerator::statements(ESNode* list, bool want)
{
    bool valued = false;
    for (ESNode* node = list->kids[0]; node; node = node->next) {
        bool last = want && !node->next && !node->declaration;
        statement(node, last);
        valued = valued || last;
    }
    if (want && !valued)
        gen0(VM_UNDEFINED);
}

void ESGenerator::statement(ESNode* node, bool want)
{
    m_line = node->line;
    switch (node->kind) {
    case '{': statements(node, want); return;
    case ESToken::Var: variables(node, want); return;
    case ';':
        if (node->kids[0]) {
            genexpr(node->kids[0], want);
            return;
        }
        break;
    case ESToken::Label: {
        Inside inside(this, node);
        statement(node->kids[0], want);
        if (want && node->breakChain != ESNode::EmptyChain) {
            // A statement that was left has no value.
            int end = plant(VM_J, ESNode::EmptyChain);
            patchHere(node->breakChain);
            gen0(VM_UNDEFINED);
            patchHere(end);
            return;
        }
        patchHere(node->breakChain);
        return;
    }
    case ESToken::If: ifStatement(node); break;
    case ESToken::While: whileStatement(node); break;
    case ESToken::Do: doStatement(node); break;
    case ESToken::For: forStatement(node); break;
    case ESToken::ForIn:
    case ESToken::ForVarIn: forInStatement(node); break;
    case ESToken::With: withStatement(node); break;
    case ESToken::Switch: switchStatement(node); break;
    case ESToken::Return: returnStatement(node); break;
    case ESToken::Break: breakStatement(node); break;
    case ESToken::Continue: continueStatement(node); break;
    default: break; // the forms of `try`, and `throw`
    }
    if (want)
        gen0(VM_UNDEFINED);
}

void ESGenerator::variables(ESNode* node, bool want)
{
    for (ESNode* item = node->kids[0]; item; item = item->next) {
        bool last = want && !item->next;
        if (item->kind == '=')
            genexpr(item, last);
        else if (last)
            gen0(VM_UNDEFINED);
    }
}

// Statements.

void ESGenerator::ifStatement(ESNode* node)
{
    value(node->kids[0]);
    int otherwise = plant(VM_JF, ESNode::EmptyChain);
    statement(node->kids[1], false);
    if (!node->kids[2]) {
        patchHere(otherwise);
        return;
    }
    int end = plant(VM_J, ESNode::EmptyChain);
    patchHere(otherwise);
    statement(node->kids[2], false);
    patchHere(end);
}

// Emits the test of a loop and its jump, taken when the condition has the given sense; returns the new
// head of the jump's chain.
int ESGenerator::gencond(ESNode* node, bool sense, int list)
{
    if (sense && node->kind == '<') {
        value(node->kids[0]);
        value(node->kids[1]);
        return plant(VM_JLT, list);
    }
    value(node);
    return plant(sense ? VM_JT : VM_JF, list);
}

void ESGenerator::whileStatement(ESNode* node)
{
    Inside inside(this, node);
    int top = m_code->length();
    node->breakChain = gencond(node->kids[0], false, node->breakChain);
    statement(node->kids[1], false);
    jumpTo(VM_J, top);
    patch(node->continueChain, top);
    patchHere(node->breakChain);
}

void ESGenerator::doStatement(ESNode* node)
{
    Inside inside(this, node);
    int top = m_code->length();
    statement(node->kids[1], false);
    patchHere(node->continueChain);
    value(node->kids[0]);
    jumpTo(VM_JT, top);
    patchHere(node->breakChain);
}

void ESGenerator::forStatement(ESNode* node)
{
    ESNode* start = node->kids[0];
    if (start && start->kind == ESToken::Var)
        variables(start, false);
    else if (start)
        genexpr(start, false);

    Inside inside(this, node);
    int test = plant(VM_J, ESNode::EmptyChain);
    int body = m_code->length();
    statement(node->kids[3], false);
    patchHere(node->continueChain);
    if (node->kids[2])
        genexpr(node->kids[2], false);
    patchHere(test);
    m_line = node->line;
    int back =
        node->kids[1] ? gencond(node->kids[1], true, ESNode::EmptyChain) : plant(VM_J, ESNode::EmptyChain);
    patch(back, body);
    patchHere(node->breakChain);
}

void ESGenerator::forInStatement(ESNode* node)
{
    // The names still to come wait in a temporary variable, so that the stack is empty in the body.
    if (!node->name)
        node->name = ESCompiler::mktempnam();
    m_compiler.codevar(m_function, m_code, node->name, ESProperty::DontEnum, false);
    ESNode* target = node->kids[0];
    if (target->kind == '=') {
        genexpr(target, false);
        target = target->kids[0];
    }
    value(node->kids[1]);
    gen0(VM_ENUM);
    storeName(node->name);

    Inside inside(this, node);
    int test = plant(VM_J, ESNode::EmptyChain);
    int body = m_code->length();
    store(target);
    statement(node->kids[2], false);
    patchHere(test);
    patchHere(node->continueChain);
    m_line = node->line;
    loadName(node->name);
    jumpTo(VM_NEXT, body);
    patchHere(node->breakChain);
}

void ESGenerator::withStatement(ESNode* node)
{
    value(node->kids[0]);
    gen0(VM_WITH);
    ++m_withDepth;
    statement(node->kids[1], false);
    --m_withDepth;
    gen0(VM_ENDWITH);
}

void ESGenerator::switchStatement(ESNode* node)
{
    value(node->kids[0]);
    Inside inside(this, node);
    ESNode* fallback = nullptr;
    for (ESNode* clause = node->kids[1]->kids[0]; clause; clause = clause->next) {
        clause->continueChain = ESNode::EmptyChain;
        if (!clause->kids[0]) {
            fallback = clause;
            continue;
        }
        m_line = clause->kids[0]->line;
        gen0(VM_DUP);
        value(clause->kids[0]);
        gen0(VM_IDENTITY);
        clause->continueChain = plant(VM_JT_DROP, clause->continueChain);
    }
    gen0(VM_DROP);
    int& elsewhere = fallback ? fallback->continueChain : node->breakChain;
    elsewhere = plant(VM_J, elsewhere);
    for (ESNode* clause = node->kids[1]->kids[0]; clause; clause = clause->next) {
        patchHere(clause->continueChain);
        statements(clause->kids[1], false);
    }
    patchHere(node->breakChain);
}

void ESGenerator::leave(int withDepth)
{
    for (int depth = m_withDepth; depth > withDepth; --depth)
        gen0(VM_ENDWITH);
}

void ESGenerator::returnStatement(ESNode* node)
{
    if (node->kids[0])
        value(node->kids[0]);
    leave(0);
    gen0(node->kids[0] ? VM_RET : VM_RETU);
}

const ESGenerator::Enclosing* ESGenerator::findLabel(ESNode* jump) const
{
    for (size_t i = m_enclosing.size(); i-- > 0;)
        if (m_enclosing[i].node->kind == ESToken::Label && m_enclosing[i].node->name == jump->name)
            return &m_enclosing[i];
    m_compiler.fail(jump->line, QStringLiteral("can't find label ") + jump->name->text());
}

void ESGenerator::breakStatement(ESNode* node)
{
    const Enclosing* target = nullptr;
    if (node->name) {
        target = findLabel(node);
    } else {
        for (size_t i = m_enclosing.size(); i-- > 0 && !target;)
            if (m_enclosing[i].node->kind != ESToken::Label)
                target = &m_enclosing[i];
        if (!target)
            m_compiler.fail(node->line, QStringLiteral("'break' not in a 'for' or 'while' loop"));
    }
    leave(target->withDepth);
    target->node->breakChain = plant(VM_J, target->node->breakChain);
}

void ESGenerator::continueStatement(ESNode* node)
{
    ESNode* loop = nullptr;
    if (node->name) {
        loop = findLabel(node)->node;
        while (loop->kind == ESToken::Label)
            loop = loop->kids[0];
        if (!isLoop(loop->kind))
            m_compiler.fail(node->line, QStringLiteral("labeled 'continue' doesn't mark a loop"));
    }
    for (size_t i = m_enclosing.size(); i-- > 0;) {
        const Enclosing& candidate = m_enclosing[i];
        if (loop ? candidate.node != loop : !isLoop(candidate.node->kind))
            continue;
        leave(candidate.withDepth);
        candidate.node->continueChain = plant(VM_J, candidate.node->continueChain);
        return;
    }
}
