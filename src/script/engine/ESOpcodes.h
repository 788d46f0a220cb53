// The instructions of the machine, written once: name and operands. Operands follow the opcode byte,
// two bytes each with the high byte first, but for Flag, which is one byte. Jump targets are offsets in
// the same code.
#pragma once

#include <cstdint>

enum class ESOperands : uint8_t {
    None,
    Number,    // index in the code's numbers
    String,    // interned string
    Function,  // index of a function's code
    Slot,      // variable slot
    SlotCount, // variable slot, argument count
    NameCount, // interned string, argument count
    Count,     // elements or arguments
    Target,    // jump target
    Flag       // 1 for a dynamic name in A, 0 for an object and a key
};

// clang-format off
#define ES_OPCODES(X) \
    X(NUM, Number) X(NUM_0, None) X(NUM_1, None) X(NUM_2, None) X(NUM_3, None) X(NUM_4, None) \
    X(NUM_M1, None) X(NULL, None) X(TRUE, None) X(FALSE, None) X(UNDEFINED, None) X(THIS, None) \
    X(STR, String) X(NEW, None) X(NEWA, Count) X(DROP, None) X(DUP, None) X(VOID, None) \
    X(TYPEOF, None) X(ENUM, None) X(NEXT, Target) X(CLOSURE, Function) X(MKARRAY, Count) \
    X(NEWOBJ, None) X(WITH, None) X(ENDWITH, None) X(INITF, String) \
    X(CALLW, NameCount) X(CALLF, NameCount) X(CALLG, SlotCount) X(CALLA, SlotCount) \
    X(CALLAM, SlotCount) X(CALLL, SlotCount) X(CALLLM, SlotCount) X(CALLX, Count) \
    X(GETW, String) X(GETF, String) X(GETG, Slot) X(GETA, Slot) X(GETL, Slot) X(GETAM, Slot) \
    X(GETLM, Slot) X(GETX, None) \
    X(PUTW, String) X(PUTF, String) X(PUTG, Slot) X(PUTA, Slot) X(PUTL, Slot) X(PUTAM, Slot) \
    X(PUTLM, Slot) X(PUTX, None) \
    X(ADD, None) X(ADDX, None) X(SUB, None) X(SUBX, None) X(MUL, None) X(MULX, None) \
    X(DIV, None) X(DIVX, None) X(MOD, None) X(MODX, None) X(BITAND, None) X(BITANDX, None) \
    X(BITOR, None) X(BITORX, None) X(BITXOR, None) X(BITXORX, None) X(SHL, None) X(SHLX, None) \
    X(SHR, None) X(SHRX, None) X(USHR, None) X(USHRX, None) \
    X(INC, None) X(INCG, Slot) X(INCA, Slot) X(INCL, Slot) X(INCM, Slot) X(INCLM, Slot) \
    X(DEC, None) X(DECG, Slot) X(DECA, Slot) X(DECL, Slot) X(DECAM, Slot) X(DECLM, Slot) \
    X(PREINCX, Flag) X(POSTINCX, Flag) X(PREDECX, Flag) X(POSTDECX, Flag) \
    X(DELETEW, String) X(DELETEX, None) \
    X(LT, None) X(LE, None) X(EQ, None) X(NE, None) X(IDENTITY, None) X(NONIDENTITY, None) \
    X(LOGNOT, None) X(BITNOT, None) X(POS, None) X(NEG, None) \
    X(LOGAND, Target) X(LOGOR, Target) X(J, Target) X(JT, Target) X(JF, Target) \
    X(JT_DROP, Target) X(JLT, Target) X(RET, None) X(RETU, None)
// clang-format on

#define ES_ENUMERATE(name, operands) VM_##name,
enum ESVmOpcode : uint8_t { ES_OPCODES(ES_ENUMERATE) VM_OpcodeCount };
#undef ES_ENUMERATE

static_assert(VM_NONIDENTITY == 96);
