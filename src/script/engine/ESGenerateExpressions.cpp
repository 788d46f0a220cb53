// The expressions of the code generator; see ESGenerator.h.
#include "script/engine/ESContext.h"
#include "script/engine/ESException.h"
#include "script/engine/ESGenerator.h"
#include "script/engine/ESNode.h"
#include "script/engine/ESObject.h"
#include "script/engine/ESString.h"

#include <cmath>

namespace {

// The instruction of a binary operator. `>` and `>=` are `<` and `<=` with the operands swapped.
int opcodeFor(int kind)
{
    switch (kind) {
    case '+':
    case ESToken::AddAssign: return VM_ADD;
    case '-':
    case ESToken::SubAssign: return VM_SUB;
    case '*':
    case ESToken::MulAssign: return VM_MUL;
    case '/':
    case ESToken::DivAssign: return VM_DIV;
    case '%':
    case ESToken::ModAssign: return VM_MOD;
    case '&':
    case ESToken::AndAssign: return VM_BITAND;
    case '|':
    case ESToken::OrAssign: return VM_BITOR;
    case '^':
    case ESToken::XorAssign: return VM_BITXOR;
    case ESToken::ShiftLeft:
    case ESToken::ShlAssign: return VM_SHL;
    case ESToken::ShiftRight:
    case ESToken::ShrAssign: return VM_SHR;
    case ESToken::ShiftRightUnsigned:
    case ESToken::UshrAssign: return VM_USHR;
    case '<':
    case '>': return VM_LT;
    case ESToken::LessEqual:
    case ESToken::GreaterEqual: return VM_LE;
    case ESToken::Equal: return VM_EQ;
    default: return VM_NE;
    }
}

// The form of an operator that works on a member stands behind the plain one.
int memberForm(int opcode)
{
    return opcode + 1;
}

static_assert(VM_ADDX == VM_ADD + 1 && VM_USHRX == VM_USHR + 1 && VM_MODX == VM_MOD + 1);

} // namespace

void ESGenerator::genexpr(ESNode* node, bool want)
{
    if (want) {
        value(node);
        return;
    }
    if (node->pure)
        return;
    m_line = node->line;
    switch (node->kind) {
    case '=': assign(node, false); return;
    case '?': conditional(node, false); return;
    case ',': comma(node, false); return;
    case ESToken::Increment:
    case ESToken::Decrement:
    case ESToken::PostIncrement:
    case ESToken::PostDecrement: step(node, false); return;
    case '!':
    case '~':
    case ESToken::Void: genexpr(node->kids[0], false); return;
    default: break;
    }
    if (node->kind >= ESToken::AndAssign && node->kind <= ESToken::ModAssign) {
        compoundAssign(node, false);
        return;
    }
    value(node);
    gen0(VM_DROP);
}

// Generates what leaves the node's value in A.
void ESGenerator::value(ESNode* node)
{
    m_line = node->line;
    switch (node->kind) {
    case ESToken::NumberLiteral: number(node); return;
    case ESToken::StringLiteral: genString(VM_STR, node->name); return;
    case ESToken::Identifier: loadName(node->name); return;
    case ESToken::This: gen0(VM_THIS); return;
    case ESToken::True: gen0(VM_TRUE); return;
    case ESToken::False: gen0(VM_FALSE); return;
    case ESToken::Null: gen0(VM_NULL); return;
    case ESToken::Hole: gen0(VM_UNDEFINED); return;
    case ESToken::Function: {
        int operand = m_code->operandFor(node->functionIndex);
        if (operand < 0)
            throw ESFatalError("compiler error: too many functions");
        gen1(VM_CLOSURE, operand);
        return;
    }
    case '.':
        value(node->kids[0]);
        m_line = node->line;
        genString(VM_GETF, node->name);
        return;
    case '[':
        value(node->kids[0]);
        value(node->kids[1]);
        m_line = node->line;
        gen0(VM_GETX);
        return;
    case '=': assign(node, true); return;
    case '?': conditional(node, true); return;
    case ',': comma(node, true); return;
    case ESToken::Increment:
    case ESToken::Decrement:
    case ESToken::PostIncrement:
    case ESToken::PostDecrement: step(node, true); return;
    case ESToken::Delete: deleteExpression(node); return;
    case ESToken::Void:
    case ESToken::Typeof:
    case ESToken::Negate:
    case ESToken::Plus:
    case '!':
    case '~': unary(node); return;
    case ESToken::Call: callExpression(node); return;
    case ESToken::NewCall:
        arguments(node);
        value(node->kids[1]);
        m_line = node->line;
        gen1(VM_NEWA, node->count);
        return;
    case ESToken::New:
        value(node->kids[0]);
        m_line = node->line;
        gen0(VM_NEW);
        return;
    case ESToken::ArrayInit: arrayLiteral(node); return;
    case ESToken::ObjectInit: objectLiteral(node); return;
    default: break;
    }
    if (node->kind >= ESToken::AndAssign && node->kind <= ESToken::ModAssign)
        compoundAssign(node, true);
    else
        chain(node);
}

// Binary operators. A chain of them leans to the left, so it is followed down in a loop and generated
// on the way back.
void ESGenerator::chain(ESNode* node)
{
    std::vector<ESNode*> links;
    auto followed = [](const ESNode* n) {
        switch (n->kind) {
        case '|':
        case '^':
        case '&':
        case '+':
        case '-':
        case '*':
        case '/':
        case '%':
        case '<':
        case ESToken::LessEqual:
        case ESToken::Equal:
        case ESToken::NotEqual:
        case ESToken::ShiftLeft:
        case ESToken::ShiftRight:
        case ESToken::ShiftRightUnsigned:
        case ESToken::LogicalOr:
        case ESToken::LogicalAnd: return true;
        default: return false;
        }
    };
    for (; followed(node); node = node->kids[0])
        links.push_back(node);

    if (links.empty()) {
        // `>` and `>=`: the right operand comes first.
        value(node->kids[1]);
        value(node->kids[0]);
        m_line = node->line;
        gen0(opcodeFor(node->kind));
        return;
    }
    value(node);
    for (size_t i = links.size(); i-- > 0;) {
        if (links[i]->kind == ESToken::LogicalOr)
            logical(links[i], VM_LOGOR);
        else if (links[i]->kind == ESToken::LogicalAnd)
            logical(links[i], VM_LOGAND);
        else
            operate(links[i]);
    }
}

void ESGenerator::comma(ESNode* node, bool want)
{
    std::vector<ESNode*> members;
    for (; node->kind == ','; node = node->kids[0])
        members.push_back(node->kids[1]);
    genexpr(node, false);
    for (size_t i = members.size(); i-- > 0;)
        genexpr(members[i], want && i == 0);
}

void ESGenerator::operate(ESNode* node)
{
    value(node->kids[1]);
    m_line = node->line;
    gen0(opcodeFor(node->kind));
}

void ESGenerator::logical(ESNode* node, int opcode)
{
    int end = plant(opcode, ESNode::EmptyChain);
    value(node->kids[1]);
    patchHere(end);
}

void ESGenerator::conditional(ESNode* node, bool want)
{
    value(node->kids[0]);
    int otherwise = plant(VM_JF, ESNode::EmptyChain);
    genexpr(node->kids[1], want);
    int end = plant(VM_J, ESNode::EmptyChain);
    patchHere(otherwise);
    genexpr(node->kids[2], want);
    patchHere(end);
}

void ESGenerator::unary(ESNode* node)
{
    ESNode* operand = node->kids[0];
    if (node->kind == ESToken::Void && operand->pure) {
        gen0(VM_UNDEFINED);
        return;
    }
    value(operand);
    m_line = node->line;
    switch (node->kind) {
    case ESToken::Void: gen0(VM_VOID); break;
    case ESToken::Typeof: gen0(VM_TYPEOF); break;
    case ESToken::Negate: gen0(VM_NEG); break;
    case ESToken::Plus: gen0(VM_POS); break;
    case '!': gen0(VM_LOGNOT); break;
    default: gen0(VM_BITNOT); break;
    }
}

void ESGenerator::number(ESNode* node)
{
    double number = m_code->numbers[size_t(node->number)];
    if (number >= 0 && number <= 4 && number == int(number) && !std::signbit(number))
        gen0(VM_NUM_0 + int(number));
    else if (number == -1)
        gen0(VM_NUM_M1);
    else
        gen1(VM_NUM, int(node->number));
}

void ESGenerator::store(ESNode* target)
{
    if (target->kind == ESToken::Identifier) {
        storeName(target->name);
        return;
    }
    value(target->kids[0]);
    if (target->kind == '.') {
        m_line = target->line;
        genString(VM_PUTF, target->name);
    } else {
        value(target->kids[1]);
        m_line = target->line;
        gen0(VM_PUTX);
    }
}

void ESGenerator::assign(ESNode* node, bool want)
{
    value(node->kids[1]);
    if (want)
        gen0(VM_DUP);
    store(node->kids[0]);
}

// Pushes the key of a member whose object has been pushed.
void ESGenerator::key(ESNode* member)
{
    if (member->kind == '.')
        genString(VM_STR, member->name);
    else
        value(member->kids[1]);
}

void ESGenerator::compoundAssign(ESNode* node, bool want)
{
    ESNode* target = node->kids[0];
    int opcode = opcodeFor(node->kind);
    if (target->kind == ESToken::Identifier) {
        loadName(target->name);
        value(node->kids[1]);
        m_line = node->line;
        gen0(opcode);
        if (want)
            gen0(VM_DUP);
        storeName(target->name);
        return;
    }
    value(node->kids[1]);
    value(target->kids[0]);
    key(target);
    m_line = node->line;
    gen0(memberForm(opcode));
    if (!want)
        gen0(VM_DROP);
}

void ESGenerator::step(ESNode* node, bool want)
{
    ESNode* target = node->kids[0];
    bool up = node->kind == ESToken::Increment || node->kind == ESToken::PostIncrement;
    bool post = node->kind == ESToken::PostIncrement || node->kind == ESToken::PostDecrement;
    int memberOpcode = up ? (post ? VM_POSTINCX : VM_PREINCX) : (post ? VM_POSTDECX : VM_PREDECX);

    if (target->kind != ESToken::Identifier) {
        value(target->kids[0]);
        key(target);
        m_line = node->line;
        genquick(memberOpcode, 0);
        if (!want)
            gen0(VM_DROP);
        return;
    }

    Location where = locate(target->name);
    bool frame = m_code->needsFrame;
    int opcode = 0;
    switch (where.kind) {
    case Location::Dynamic:
        genString(VM_STR, target->name);
        genquick(memberOpcode, 1);
        if (!want)
            gen0(VM_DROP);
        return;
    case Location::Global: opcode = up ? VM_INCG : VM_DECG; break;
    case Location::Parameter: opcode = frame ? (up ? VM_INCM : VM_DECAM) : (up ? VM_INCA : VM_DECA); break;
    case Location::Local: opcode = frame ? (up ? VM_INCLM : VM_DECLM) : (up ? VM_INCL : VM_DECL); break;
    }
    if (want && post)
        loadName(target->name);
    gen1(opcode, where.slot);
    if (want && !post)
        loadName(target->name);
}

void ESGenerator::deleteExpression(ESNode* node)
{
    ESNode* target = node->kids[0];
    if (target->kind == ESToken::Identifier) {
        Location where = m_compiler.resolve(m_function, m_code, target->name, m_withDepth, m_pass, false);
        if (where.kind == Location::Parameter || where.kind == Location::Local)
            gen0(VM_FALSE);
        else
            genString(VM_DELETEW, target->name);
    } else if (target->kind == '.' || target->kind == '[') {
        value(target->kids[0]);
        key(target);
        m_line = node->line;
        gen0(VM_DELETEX);
    } else {
        genexpr(target, false);
        gen0(VM_TRUE);
    }
}

void ESGenerator::arguments(ESNode* list)
{
    for (ESNode* argument = list->kids[0]; argument; argument = argument->next)
        value(argument);
}

void ESGenerator::callExpression(ESNode* node)
{
    ESNode* callee = node->kids[1];
    bool member = callee->kind == '.' || callee->kind == '[';
    ESString* name = callee->name;
    if (!member && callee->kind != ESToken::Identifier) {
        // The value of an expression is called by way of a temporary variable.
        if (!node->name)
            node->name = ESCompiler::mktempnam();
        name = node->name;
        m_compiler.codevar(m_function, m_code, name, ESProperty::DontEnum, false);
        value(callee);
        storeName(name);
    }
    arguments(node);
    if (member) {
        value(callee->kids[0]);
        if (callee->kind == '[')
            value(callee->kids[1]);
        m_line = node->line;
        if (callee->kind == '.')
            gen2(VM_CALLF, stringOperand(name), node->count);
        else
            gen1(VM_CALLX, node->count);
        return;
    }
    m_line = node->line;
    Location where = locate(name);
    bool frame = m_code->needsFrame;
    switch (where.kind) {
    case Location::Global: gen2(VM_CALLG, where.slot, node->count); break;
    case Location::Parameter: gen2(frame ? VM_CALLAM : VM_CALLA, where.slot, node->count); break;
    case Location::Local: gen2(frame ? VM_CALLLM : VM_CALLL, where.slot, node->count); break;
    case Location::Dynamic:
        if (name == node->name)
            m_code->calleeTemporaries.push_back(name);
        gen2(VM_CALLW, stringOperand(name), node->count);
        break;
    }
}

void ESGenerator::arrayLiteral(ESNode* node)
{
    arguments(node);
    gen1(VM_MKARRAY, node->count);
}

void ESGenerator::objectLiteral(ESNode* node)
{
    gen0(VM_NEWOBJ);
    for (ESNode* member = node->kids[0]; member; member = member->next) {
        value(member->kids[0]);
        genString(VM_INITF, member->name);
    }
}
