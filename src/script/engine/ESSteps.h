// The steps of the machine, written once. A step is what one or several bytecode instructions become
// before they run: operands decoded, jump targets resolved, and frequent pairs and triples of
// instructions made one.
#pragma once

#include <cstdint>

class ESCode;
class ESString;

// Operand forms of arithmetic: both on the stack; right operand a register, constant or global; both
// registers; register and constant; and the last two with the result going to a register.
#define ES_ARITHMETIC_FORMS(X, op)                                                                           \
    X(op##_S) X(op##_R) X(op##_K) X(op##_G) X(op##_RR) X(op##_RK) X(op##_RRP) X(op##_RKP)
enum ESArithmeticForm { FormS, FormR, FormK, FormG, FormRR, FormRK, FormRRP, FormRKP, ArithmeticForms };
// The forms of a comparison and the jump on its outcome; KR has the constant on the left.
#define ES_COMPARE_FORMS(X, op) X(op##_S) X(op##_R) X(op##_K) X(op##_G) X(op##_RR) X(op##_RK) X(op##_KR)
enum ESCompareForm { JumpS, JumpR, JumpK, JumpG, JumpRR, JumpRK, JumpKR, CompareForms };

// clang-format off
#define ES_STEPS(X) \
    X(CONST) X(THIS) X(DROP) X(DUP) X(VOID) X(TYPEOF) X(NEW) X(ENUM) X(CLOSURE) X(MKARRAY) \
    X(NEWOBJ) X(WITH) X(ENDWITH) X(INITF) \
    X(CALLW) X(CALLF) X(CALLF_R) X(CALLF_T) X(CALLG) X(CALLR) X(CALLAM) X(CALLLM) X(CALLX) \
    X(GETW) X(GETF) X(GETF_R) X(GETF_T) X(GETG) X(GETR) X(GETAM) X(GETLM) X(GETX) X(GETX_R) X(GETX_RR) \
    X(PUTW) X(PUTF) X(PUTF_R) X(PUTF_T) X(PUTG) X(PUTR) X(PUTAM) X(PUTLM) X(PUTX) X(PUTX_RR) \
    X(STORER) X(STOREG) X(MOVE) X(SETR) \
    ES_ARITHMETIC_FORMS(X, ADD) ES_ARITHMETIC_FORMS(X, SUB) ES_ARITHMETIC_FORMS(X, MUL) \
    ES_ARITHMETIC_FORMS(X, DIV) ES_ARITHMETIC_FORMS(X, MOD) ES_ARITHMETIC_FORMS(X, BITAND) \
    ES_ARITHMETIC_FORMS(X, BITOR) ES_ARITHMETIC_FORMS(X, BITXOR) ES_ARITHMETIC_FORMS(X, SHL) \
    ES_ARITHMETIC_FORMS(X, SHR) ES_ARITHMETIC_FORMS(X, USHR) \
    X(MEMBEROP) X(STEP) X(STEPG) X(STEPR) X(STEPAM) X(STEPLM) X(STEPX) X(STEPW) \
    X(DELETEW) X(DELETEX) X(LT) X(LE) X(EQ) X(NE) X(IDENTITY) X(NONIDENTITY) \
    X(LOGNOT) X(BITNOT) X(POS) X(NEG) X(SWITCH) X(RET) X(RET_R) X(RETU) \
    X(NEXT) X(LOGAND) X(LOGOR) X(J) X(JT) X(JF) X(JT_R) X(JF_R) X(JT_DROP) X(CASE) \
    ES_COMPARE_FORMS(X, JLT) ES_COMPARE_FORMS(X, JNLT) ES_COMPARE_FORMS(X, JLE) \
    ES_COMPARE_FORMS(X, JNLE) ES_COMPARE_FORMS(X, JEQ) ES_COMPARE_FORMS(X, JNEQ) \
    ES_COMPARE_FORMS(X, JID) ES_COMPARE_FORMS(X, JNID)
// clang-format on

#define ES_ENUMERATE(name) STEP_##name,
enum ESStepCode : uint16_t { ES_STEPS(ES_ENUMERATE) STEP_Count };
#undef ES_ENUMERATE

// The jumps, whose distance is resolved when all steps are there, stand last in the list, and last among them
// those that compare.
constexpr bool isJump(int step)
{
    return step >= STEP_NEXT;
}
constexpr bool isCompareJump(int step)
{
    return step >= STEP_JLT_S;
}
constexpr bool isArithmetic(int step)
{
    return step >= STEP_ADD_S && step <= STEP_USHR_RKP;
}

// What a, b, c and the union hold depends on the step: registers, slots, counts, a jump's distance in
// steps (always a), the type of a constant (always b).
struct ESStep {
    uint16_t op = 0;
    uint16_t b = 0;
    int32_t a = 0;
    int32_t c = 0;
    uint32_t cache = 0; // the slot at which this step last found its name
    union {
        uint64_t bits;
        double number;
        ESString* name;
        ESCode* code;
    } u = {0};
};
