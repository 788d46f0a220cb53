#include "script/engine/ESThread.h"

#include "script/engine/ESCode.h"
#include "script/engine/ESContext.h"
#include "script/engine/ESOpcodes.h"
#include "script/engine/ESStringPool.h"
#include "script/engine/ESValue.h"

#include <algorithm>

namespace {

bool hasTarget(int opcode)
{
    return ESCode::operands(uint8_t(opcode)) == ESOperands::Target;
}

int operandAt(const std::vector<uint8_t>& bytes, int offset)
{
    return bytes[size_t(offset)] << 8 | bytes[size_t(offset) + 1];
}

void setTarget(std::vector<uint8_t>& bytes, int offset, int opcode, int target)
{
    bytes[size_t(offset)] = uint8_t(opcode);
    bytes[size_t(offset) + 1] = uint8_t(target >> 8);
    bytes[size_t(offset) + 2] = uint8_t(target);
}

// The step for arithmetic instruction `opcode`, in form S, or -1.
int arithmeticStep(int opcode)
{
    if (opcode < VM_ADD || opcode > VM_USHR || (opcode - VM_ADD) % 2)
        return -1;
    return STEP_ADD_S + (opcode - VM_ADD) / 2 * ArithmeticForms;
}

} // namespace

ESThread::ESThread(ESCode& code) : m_code(code)
{
    measureStack(code);
    std::vector<uint8_t> bytes = code.code;
    simplifyLogic(bytes);
    markTargets(bytes);
    translate(bytes);
    makeTables();
    m_depthAt = {};
    m_isTarget = {};
    for (const ESCode::Variable& variable : code.variables) {
        ESProperty slot;
        slot.nameIndex = uint32_t(variable.name->index());
        slot.attributes = uint8_t(variable.attributes);
        bool parameter = int(m_parameterSlots.size()) < code.formalCount;
        (parameter ? m_parameterSlots : m_localSlots).push_back(slot);
        m_names = uint16_t(m_names | variable.name->nameBit());
    }
}

// Follows all paths and notes the greatest depth. Depths agree wherever paths meet.
void ESThread::measureStack(const ESCode& code)
{
    std::vector<int>& depthAt = m_depthAt;
    depthAt.assign(size_t(code.length()), -1);
    std::vector<int> open{0};
    depthAt[0] = code.needsArguments ? 1 : 0;
    int deepest = 0;
    auto visit = [&](int offset, int depth) {
        assert(depth >= 0 && offset < code.length());
        if (depthAt[size_t(offset)] < 0) {
            depthAt[size_t(offset)] = depth;
            open.push_back(offset);
        }
        assert(depthAt[size_t(offset)] == depth);
    };
    while (!open.empty()) {
        int offset = open.back();
        open.pop_back();
        int depth = depthAt[size_t(offset)];
        deepest = std::max(deepest, depth);
        int op = code.code[size_t(offset)];
        switch (OpcodeTable[op].flow) {
        case ESFlow::Branch:
            visit(code.operandAt(offset + 1), depth + code.depthChange(offset, true));
            [[fallthrough]];
        case ESFlow::Next:
            visit(offset + ESCode::size(uint8_t(op)), depth + code.depthChange(offset, false));
            break;
        case ESFlow::Goto: visit(code.operandAt(offset + 1), depth + code.depthChange(offset, true)); break;
        case ESFlow::Return: break;
        }
    }
    // More for the instruction that stores A before it looks for a callee, and for a key that is pushed.
    m_stackNeed = deepest + 3 + (code.needsFrame ? 0 : code.localCount);
}

// Lets a jump that lands on a jump go where it would end up, and turns `&&` and `||` in conditions into
// plain jumps on each part. Targets of && and || lie ahead, so the last ones are done first.
void ESThread::simplifyLogic(std::vector<uint8_t>& bytes) const
{
    std::vector<int> offsets;
    for (int offset = 0; offset < int(bytes.size()); offset += ESCode::size(bytes[size_t(offset)]))
        offsets.push_back(offset);
    for (size_t i = offsets.size(); i-- > 0;) {
        int offset = offsets[i];
        int op = bytes[size_t(offset)];
        if (!hasTarget(op))
            continue;
        int target = operandAt(bytes, offset + 1);
        int next = bytes[size_t(target)];
        if (next == VM_J && target > offset && op != VM_NEXT) {
            target = operandAt(bytes, target + 1);
            next = bytes[size_t(target)];
            setTarget(bytes, offset, op, target);
        }
        if (op != VM_LOGAND && op != VM_LOGOR)
            continue;
        // What A will do at the target: && jumps with a false value, || with a true one.
        int same = op == VM_LOGAND ? VM_JF : VM_JT;
        int other = op == VM_LOGAND ? VM_JT : VM_JF;
        int otherLogic = op == VM_LOGAND ? VM_LOGOR : VM_LOGAND;
        if (next == same)
            setTarget(bytes, offset, same, operandAt(bytes, target + 1));
        else if (next == op)
            setTarget(bytes, offset, op, operandAt(bytes, target + 1));
        else if (next == other || next == otherLogic)
            setTarget(bytes, offset, same, target + 3);
    }
}

void ESThread::markTargets(const std::vector<uint8_t>& bytes)
{
    m_isTarget.assign(bytes.size() + 1, false);
    for (int offset = 0; offset < int(bytes.size()); offset += ESCode::size(bytes[size_t(offset)]))
        if (hasTarget(bytes[size_t(offset)]))
            m_isTarget[size_t(operandAt(bytes, offset + 1))] = true;
}

void ESThread::translate(const std::vector<uint8_t>& bytes)
{
    std::vector<int> stepAt(bytes.size() + 1, 0);
    for (int offset = 0; offset < int(bytes.size()); offset += ESCode::size(bytes[size_t(offset)])) {
        if (m_isTarget[size_t(offset)])
            m_barrier = m_steps.size();
        stepAt[size_t(offset)] = int(m_steps.size());
        translateOne(bytes, offset);
        while (combine()) {
        }
    }
    resolveJumps(stepAt);
}

void ESThread::resolveJumps(const std::vector<int>& stepAt)
{
    for (size_t i = 0; i < m_steps.size(); ++i)
        if (isJump(m_steps[i].op))
            m_steps[i].a = stepAt[size_t(m_steps[i].a)] - int(i);
}

void ESThread::add(ESStep step, int line)
{
    m_steps.push_back(step);
    m_lines.push_back(line);
}

void ESThread::addJump(int op, int target, int line)
{
    ESStep step;
    step.op = uint16_t(op);
    step.a = target;
    add(step, line);
}

void ESThread::translateOne(const std::vector<uint8_t>& bytes, int offset)
{
    int op = bytes[size_t(offset)];
    int line = m_code.lines[size_t(offset)];
    int first = ESCode::size(uint8_t(op)) >= 3 ? operandAt(bytes, offset + 1) : 0;
    int second = ESCode::size(uint8_t(op)) == 5 ? operandAt(bytes, offset + 3) : 0;
    int formals = m_code.formalCount;

    ESStep step;
    auto plain = [&](int code) { step.op = uint16_t(code); };
    auto withSlot = [&](int code, int slot) {
        step.op = uint16_t(code);
        step.a = slot;
        step.b = uint16_t(second);
    };
    auto constant = [&](const ESValue& value) {
        step.op = STEP_CONST;
        step.b = uint16_t(value.type());
        step.u.bits = value.bits();
    };
    auto named = [&](int code) {
        step.op = uint16_t(code);
        step.u.name = ESStringPool::get(m_code.indexOf(first));
        step.b = uint16_t(second);
    };
    auto stepBy = [&](int code, int slot, int delta) {
        step.op = uint16_t(code);
        step.a = slot;
        step.c = delta;
    };
    auto memberStep = [&](int delta, bool post) {
        step.op = bytes[size_t(offset) + 1] ? STEP_STEPW : STEP_STEPX;
        step.c = delta;
        step.b = post;
    };

    // A member that is named by an array index is taken as an element with that key.
    auto elementKey = [&](int code) {
        ESString* name = ESStringPool::get(m_code.indexOf(first));
        if (name->arrayIndex() < 0)
            return false;
        constant(ESValue(double(name->arrayIndex())));
        add(step, line);
        step = ESStep();
        step.op = uint16_t(code);
        step.a = second;
        add(step, line);
        return true;
    };

    if (int arithmetic = arithmeticStep(op); arithmetic >= 0) {
        plain(arithmetic);
        add(step, line);
        return;
    }
    // Only code that no compiler made has another opcode.
    if (op >= VM_OpcodeCount)
        qFatal("%s", qPrintable(QStringLiteral("unknown instruction %1 at %2").arg(op).arg(offset)));
    switch (ESVmOpcode(op)) {
    case VM_NUM: constant(ESValue(m_code.numbers[size_t(first)])); break;
    case VM_NUM_0:
    case VM_NUM_1:
    case VM_NUM_2:
    case VM_NUM_3:
    case VM_NUM_4: constant(ESValue(double(op - VM_NUM_0))); break;
    case VM_NUM_M1: constant(ESValue(-1.0)); break;
    case VM_NULL: constant(g_null); break;
    case VM_TRUE: constant(g_true); break;
    case VM_FALSE: constant(g_false); break;
    case VM_UNDEFINED: constant(g_undefined); break;
    case VM_STR: constant(ESValue(ESStringPool::get(m_code.indexOf(first)))); break;
    case VM_THIS: plain(STEP_THIS); break;
    case VM_NEW:
    case VM_NEWA: withSlot(STEP_NEW, first); break;
    case VM_DROP: plain(STEP_DROP); break;
    case VM_DUP: plain(STEP_DUP); break;
    case VM_VOID: plain(STEP_VOID); break;
    case VM_TYPEOF: plain(STEP_TYPEOF); break;
    case VM_ENUM: plain(STEP_ENUM); break;
    case VM_NEXT: addJump(STEP_NEXT, first, line); return;
    case VM_CLOSURE:
        plain(STEP_CLOSURE);
        step.u.code = ESContext::functionCode(m_code.indexOf(first));
        break;
    case VM_MKARRAY: withSlot(STEP_MKARRAY, first); break;
    case VM_NEWOBJ:
        plain(STEP_NEWOBJ);
        m_literals.push_back({m_depthAt[size_t(offset)] + 1, m_steps.size()});
        break;
    case VM_WITH: plain(STEP_WITH); break;
    case VM_ENDWITH: plain(STEP_ENDWITH); break;
    case VM_INITF:
        named(STEP_INITF);
        // The literal whose object lies right under the value: it makes room for one member more.
        while (!m_literals.empty() && m_literals.back().depth > m_depthAt[size_t(offset)] - 1)
            m_literals.pop_back();
        if (!m_literals.empty())
            ++m_steps[m_literals.back().step].a;
        break;
    case VM_CALLW:
        named(STEP_CALLW);
        step.a = std::ranges::find(m_code.calleeTemporaries, step.u.name) != m_code.calleeTemporaries.end();
        break;
    case VM_CALLF:
        if (elementKey(STEP_CALLX))
            return;
        named(STEP_CALLF);
        break;
    case VM_CALLG: withSlot(STEP_CALLG, first); break;
    case VM_CALLA: withSlot(STEP_CALLR, first); break;
    case VM_CALLL: withSlot(STEP_CALLR, formals + first); break;
    case VM_CALLAM: withSlot(STEP_CALLAM, first); break;
    case VM_CALLLM: withSlot(STEP_CALLLM, first); break;
    case VM_CALLX: withSlot(STEP_CALLX, first); break;
    case VM_GETW: named(STEP_GETW); break;
    case VM_GETF:
        if (elementKey(STEP_GETX))
            return;
        named(STEP_GETF);
        break;
    case VM_GETG: withSlot(STEP_GETG, first); break;
    case VM_GETA: withSlot(STEP_GETR, first); break;
    case VM_GETL: withSlot(STEP_GETR, formals + first); break;
    case VM_GETAM: withSlot(STEP_GETAM, first); break;
    case VM_GETLM: withSlot(STEP_GETLM, first); break;
    case VM_GETX: plain(STEP_GETX); break;
    case VM_PUTW: named(STEP_PUTW); break;
    case VM_PUTF:
        if (elementKey(STEP_PUTX))
            return;
        named(STEP_PUTF);
        break;
    case VM_PUTG: withSlot(STEP_PUTG, first); break;
    case VM_PUTA: withSlot(STEP_PUTR, first); break;
    case VM_PUTL: withSlot(STEP_PUTR, formals + first); break;
    case VM_PUTAM: withSlot(STEP_PUTAM, first); break;
    case VM_PUTLM: withSlot(STEP_PUTLM, first); break;
    case VM_PUTX: plain(STEP_PUTX); break;
    case VM_INC: stepBy(STEP_STEP, 0, 1); break;
    case VM_INCG: stepBy(STEP_STEPG, first, 1); break;
    case VM_INCA: stepBy(STEP_STEPR, first, 1); break;
    case VM_INCL: stepBy(STEP_STEPR, formals + first, 1); break;
    case VM_INCM: stepBy(STEP_STEPAM, first, 1); break;
    case VM_INCLM: stepBy(STEP_STEPLM, first, 1); break;
    case VM_DEC: stepBy(STEP_STEP, 0, -1); break;
    case VM_DECG: stepBy(STEP_STEPG, first, -1); break;
    case VM_DECA: stepBy(STEP_STEPR, first, -1); break;
    case VM_DECL: stepBy(STEP_STEPR, formals + first, -1); break;
    case VM_DECAM: stepBy(STEP_STEPAM, first, -1); break;
    case VM_DECLM: stepBy(STEP_STEPLM, first, -1); break;
    case VM_PREINCX: memberStep(1, false); break;
    case VM_POSTINCX: memberStep(1, true); break;
    case VM_PREDECX: memberStep(-1, false); break;
    case VM_POSTDECX: memberStep(-1, true); break;
    case VM_DELETEW: named(STEP_DELETEW); break;
    case VM_DELETEX: plain(STEP_DELETEX); break;
    case VM_LT: plain(STEP_LT); break;
    case VM_LE: plain(STEP_LE); break;
    case VM_EQ: plain(STEP_EQ); break;
    case VM_NE: plain(STEP_NE); break;
    case VM_IDENTITY: plain(STEP_IDENTITY); break;
    case VM_NONIDENTITY: plain(STEP_NONIDENTITY); break;
    case VM_LOGNOT: plain(STEP_LOGNOT); break;
    case VM_BITNOT: plain(STEP_BITNOT); break;
    case VM_POS: plain(STEP_POS); break;
    case VM_NEG: plain(STEP_NEG); break;
    case VM_LOGAND: addJump(STEP_LOGAND, first, line); return;
    case VM_LOGOR: addJump(STEP_LOGOR, first, line); return;
    case VM_J:
        // A jump to the end of the function ends it.
        if (bytes[size_t(first)] == VM_RET || bytes[size_t(first)] == VM_RETU) {
            plain(bytes[size_t(first)] == VM_RET ? STEP_RET : STEP_RETU);
            break;
        }
        addJump(STEP_J, first, line);
        return;
    case VM_JT: addJump(STEP_JT, first, line); return;
    case VM_JF: addJump(STEP_JF, first, line); return;
    case VM_JT_DROP: addJump(STEP_JT_DROP, first, line); return;
    case VM_JLT: addJump(STEP_JLT_S, first, line); return;
    case VM_RET: plain(STEP_RET); break;
    case VM_RETU: plain(STEP_RETU); break;
    case VM_ADDX:
    case VM_SUBX:
    case VM_MULX:
    case VM_DIVX:
    case VM_MODX:
    case VM_BITANDX:
    case VM_BITORX:
    case VM_BITXORX:
    case VM_SHLX:
    case VM_SHRX:
    case VM_USHRX: withSlot(STEP_MEMBEROP, op - 1); break;
    case VM_ADD:
    case VM_SUB:
    case VM_MUL:
    case VM_DIV:
    case VM_MOD:
    case VM_BITAND:
    case VM_BITOR:
    case VM_BITXOR:
    case VM_SHL:
    case VM_SHR:
    case VM_USHR:
    case VM_OpcodeCount: return; // left above
    }
    add(step, line);
}

// Gives a run of cases with small whole numbers a jump table. The table stands in front of the first of
// them by taking its place; what it does not hold goes on with the case behind the run.
void ESThread::makeTables()
{
    constexpr int WorthATable = 4;
    constexpr int TableSize = 256;
    auto tabular = [](const ESStep& step) {
        return step.op == STEP_CASE && step.b == ESValue::Number && step.u.number >= 0 &&
               step.u.number < TableSize && step.u.number == int(step.u.number);
    };
    for (size_t i = 0; i < m_steps.size(); ++i) {
        size_t end = i;
        while (end < m_steps.size() && tabular(m_steps[end]))
            ++end;
        if (int(end - i) < WorthATable) {
            i = end > i ? end - 1 : i;
            continue;
        }
        std::vector<int32_t> table;
        for (size_t k = end; k-- > i;) {
            size_t value = size_t(m_steps[k].u.number);
            if (table.size() <= value)
                table.resize(value + 1, 0);
            table[value] = m_steps[k].a + int32_t(k - i);
        }
        m_steps[i].op = STEP_SWITCH;
        m_steps[i].a = int32_t(end - i);
        m_steps[i].c = int32_t(m_tables.size());
        m_tables.push_back(std::move(table));
        i = end - 1;
    }
}
