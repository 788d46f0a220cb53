// Joins frequent neighbours among the steps of a thread: each step that is added is looked at together with
// those before it, as far back as the last place that a jump leads to.
#include "script/engine/ESThread.h"
#include "script/engine/ESValue.h"

namespace {

bool isNumber(const ESStep& step)
{
    return step.op == STEP_CONST && step.b == ESValue::Number;
}

} // namespace

// Puts the step in the place of the last two, keeping the last one's line.
void ESThread::replaceLastTwo(const ESStep& step)
{
    m_steps.pop_back();
    m_steps.back() = step;
    m_lines[m_lines.size() - 2] = m_lines.back();
    m_lines.pop_back();
}

bool ESThread::combine()
{
    if (m_steps.size() < m_barrier + 2)
        return false;
    ESStep& last = m_steps[m_steps.size() - 1];
    ESStep& before = m_steps[m_steps.size() - 2];
    if (isArithmetic(last.op))
        return combineOperator(last, before);
    if (last.op == STEP_JT || last.op == STEP_JF || isCompareJump(last.op))
        return combineCompare(last, before);
    if (last.op == STEP_JT_DROP)
        return combineCase();
    if (last.op == STEP_PUTR || last.op == STEP_PUTG || last.op == STEP_RET)
        return combineStore(last, before);
    return combineAccess(last, before);
}

bool ESThread::combineOperator(ESStep& last, ESStep& before)
{
    int form = (last.op - STEP_ADD_S) % ArithmeticForms;
    int base = last.op - form;
    ESStep step = last;
    if (form == FormS && before.op == STEP_GETR) {
        step.op = uint16_t(base + FormR);
        step.a = before.a;
    } else if (form == FormS && isNumber(before)) {
        step.op = uint16_t(base + FormK);
        step.u = before.u;
    } else if (form == FormS && before.op == STEP_GETG) {
        step.op = uint16_t(base + FormG);
        step.a = before.a;
    } else if (form == FormR && before.op == STEP_GETR) {
        step.op = uint16_t(base + FormRR);
        step.c = last.a;
        step.a = before.a;
    } else if (form == FormK && before.op == STEP_GETR) {
        step.op = uint16_t(base + FormRK);
        step.a = before.a;
    } else {
        return false;
    }
    replaceLastTwo(step);
    return true;
}

bool ESThread::combineCompare(ESStep& last, ESStep& before)
{
    ESStep step = last;
    if (last.op == STEP_JT || last.op == STEP_JF) {
        bool sense = last.op == STEP_JT;
        auto compare = [&](int whenTrue, int whenFalse) { step.op = uint16_t(sense ? whenTrue : whenFalse); };
        switch (before.op) {
        case STEP_LT: compare(STEP_JLT_S, STEP_JNLT_S); break;
        case STEP_LE: compare(STEP_JLE_S, STEP_JNLE_S); break;
        case STEP_EQ: compare(STEP_JEQ_S, STEP_JNEQ_S); break;
        case STEP_NE: compare(STEP_JNEQ_S, STEP_JEQ_S); break;
        case STEP_IDENTITY: compare(STEP_JID_S, STEP_JNID_S); break;
        case STEP_NONIDENTITY: compare(STEP_JNID_S, STEP_JID_S); break;
        case STEP_LOGNOT: compare(STEP_JF, STEP_JT); break;
        case STEP_GETR:
            compare(STEP_JT_R, STEP_JF_R);
            step.c = before.a;
            break;
        default: return false;
        }
        replaceLastTwo(step);
        return true;
    }

    int form = (last.op - STEP_JLT_S) % CompareForms;
    int base = last.op - form;
    if (form == JumpS && before.op == STEP_GETR) {
        step.op = uint16_t(base + JumpR);
        step.c = before.a;
    } else if (form == JumpS && isNumber(before)) {
        step.op = uint16_t(base + JumpK);
        step.u = before.u;
    } else if (form == JumpS && before.op == STEP_GETG) {
        step.op = uint16_t(base + JumpG);
        step.c = before.a;
    } else if (form == JumpR && before.op == STEP_GETR && before.a <= 0xFFFF) {
        step.op = uint16_t(base + JumpRR);
        step.b = uint16_t(before.a);
    } else if (form == JumpR && isNumber(before)) {
        step.op = uint16_t(base + JumpKR);
        step.u = before.u;
    } else if (form == JumpK && before.op == STEP_GETR) {
        step.op = uint16_t(base + JumpRK);
        step.c = before.a;
    } else {
        return false;
    }
    replaceLastTwo(step);
    return true;
}

// `DUP`, a constant, `IDENTITY`, `JT_DROP`: one case of a switch.
bool ESThread::combineCase()
{
    size_t count = m_steps.size();
    if (count < m_barrier + 4 || m_steps[count - 2].op != STEP_IDENTITY ||
        m_steps[count - 3].op != STEP_CONST || m_steps[count - 4].op != STEP_DUP)
        return false;
    ESStep step = m_steps[count - 3];
    step.op = STEP_CASE;
    step.a = m_steps[count - 1].a;
    m_steps.resize(count - 3);
    m_lines.resize(count - 3);
    m_steps.back() = step;
    return true;
}

bool ESThread::combineStore(ESStep& last, ESStep& before)
{
    ESStep step = last;
    if (last.op == STEP_RET) {
        if (before.op != STEP_GETR)
            return false;
        step.op = STEP_RET_R;
        step.a = before.a;
    } else if (before.op == STEP_DUP) {
        step.op = last.op == STEP_PUTR ? STEP_STORER : STEP_STOREG;
    } else if (last.op == STEP_PUTG) {
        return false;
    } else if (before.op == STEP_GETR) {
        step.op = STEP_MOVE;
        step.c = before.a;
    } else if (before.op == STEP_CONST) {
        step.op = STEP_SETR;
        step.b = before.b;
        step.u = before.u;
    } else if (isArithmetic(before.op) && last.a <= 0xFFFF) {
        int form = (before.op - STEP_ADD_S) % ArithmeticForms;
        if (form != FormRR && form != FormRK)
            return false;
        step = before;
        step.op = uint16_t(before.op + (FormRRP - FormRR));
        step.b = uint16_t(last.a);
    } else {
        return false;
    }
    replaceLastTwo(step);
    return true;
}

bool ESThread::combineAccess(ESStep& last, ESStep& before)
{
    ESStep step = last;
    bool fromRegister = before.op == STEP_GETR;
    bool fromThis = before.op == STEP_THIS;
    step.c = before.a;
    switch (last.op) {
    case STEP_GETF:
        if (!fromRegister && !fromThis)
            return false;
        step.op = fromRegister ? STEP_GETF_R : STEP_GETF_T;
        break;
    case STEP_PUTF:
        if (!fromRegister && !fromThis)
            return false;
        step.op = fromRegister ? STEP_PUTF_R : STEP_PUTF_T;
        break;
    case STEP_CALLF:
        if (!fromRegister && !fromThis)
            return false;
        step.op = fromRegister ? STEP_CALLF_R : STEP_CALLF_T;
        break;
    case STEP_GETX:
        if (!fromRegister)
            return false;
        step.op = STEP_GETX_R;
        break;
    case STEP_GETX_R:
        if (!fromRegister)
            return false;
        step.op = STEP_GETX_RR;
        step.a = before.a;
        step.c = last.c;
        break;
    case STEP_PUTX: {
        if (!fromRegister || m_steps.size() < m_barrier + 3)
            return false;
        const ESStep& object = m_steps[m_steps.size() - 3];
        if (object.op != STEP_GETR)
            return false;
        step.op = STEP_PUTX_RR;
        step.a = object.a;
        m_steps.erase(m_steps.end() - 3);
        m_lines.erase(m_lines.end() - 3);
        break;
    }
    default: return false;
    }
    replaceLastTwo(step);
    return true;
}
