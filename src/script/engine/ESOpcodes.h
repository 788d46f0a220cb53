// The instructions of the machine, written once: name, operands, what they do to the depth of the stack, and
// where they go on. The enumeration, the disassembler, the measuring of the stack and the checks of generated
// code are expanded from this list. Operands follow the opcode byte, two bytes each with the high byte first,
// but for Flag, which is one byte. Jump targets are offsets in the same code.
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

enum class ESFlow : uint8_t {
    Next,   // goes on behind itself
    Branch, // there or at its target
    Goto,   // at its target
    Return  // ends the code
};

// Name, operands, change of the depth when it goes on behind itself, change when it jumps, flow. A count
// among the operands is taken off the depth besides, and a flag added to it.
// clang-format off
#define ES_OPCODES(X) \
    X(NUM, Number, 1, 0, Next) X(NUM_0, None, 1, 0, Next) X(NUM_1, None, 1, 0, Next) \
    X(NUM_2, None, 1, 0, Next) X(NUM_3, None, 1, 0, Next) X(NUM_4, None, 1, 0, Next) \
    X(NUM_M1, None, 1, 0, Next) X(NULL, None, 1, 0, Next) X(TRUE, None, 1, 0, Next) \
    X(FALSE, None, 1, 0, Next) X(UNDEFINED, None, 1, 0, Next) X(THIS, None, 1, 0, Next) \
    X(STR, String, 1, 0, Next) X(NEW, None, 0, 0, Next) X(NEWA, Count, 0, 0, Next) \
    X(DROP, None, -1, 0, Next) X(DUP, None, 1, 0, Next) X(VOID, None, 0, 0, Next) \
    X(TYPEOF, None, 0, 0, Next) X(ENUM, None, 0, 0, Next) X(NEXT, Target, -1, 0, Branch) \
    X(CLOSURE, Function, 1, 0, Next) X(MKARRAY, Count, 1, 0, Next) X(NEWOBJ, None, 1, 0, Next) \
    X(WITH, None, -1, 0, Next) X(ENDWITH, None, 0, 0, Next) X(INITF, String, -1, 0, Next) \
    X(CALLW, NameCount, 1, 0, Next) X(CALLF, NameCount, 0, 0, Next) X(CALLG, SlotCount, 1, 0, Next) \
    X(CALLA, SlotCount, 1, 0, Next) X(CALLAM, SlotCount, 1, 0, Next) X(CALLL, SlotCount, 1, 0, Next) \
    X(CALLLM, SlotCount, 1, 0, Next) X(CALLX, Count, -1, 0, Next) X(GETW, String, 1, 0, Next) \
    X(GETF, String, 0, 0, Next) X(GETG, Slot, 1, 0, Next) X(GETA, Slot, 1, 0, Next) \
    X(GETL, Slot, 1, 0, Next) X(GETAM, Slot, 1, 0, Next) X(GETLM, Slot, 1, 0, Next) \
    X(GETX, None, -1, 0, Next) X(PUTW, String, -1, 0, Next) X(PUTF, String, -2, 0, Next) \
    X(PUTG, Slot, -1, 0, Next) X(PUTA, Slot, -1, 0, Next) X(PUTL, Slot, -1, 0, Next) \
    X(PUTAM, Slot, -1, 0, Next) X(PUTLM, Slot, -1, 0, Next) X(PUTX, None, -3, 0, Next) \
    X(ADD, None, -1, 0, Next) X(ADDX, None, -2, 0, Next) X(SUB, None, -1, 0, Next) \
    X(SUBX, None, -2, 0, Next) X(MUL, None, -1, 0, Next) X(MULX, None, -2, 0, Next) \
    X(DIV, None, -1, 0, Next) X(DIVX, None, -2, 0, Next) X(MOD, None, -1, 0, Next) \
    X(MODX, None, -2, 0, Next) X(BITAND, None, -1, 0, Next) X(BITANDX, None, -2, 0, Next) \
    X(BITOR, None, -1, 0, Next) X(BITORX, None, -2, 0, Next) X(BITXOR, None, -1, 0, Next) \
    X(BITXORX, None, -2, 0, Next) X(SHL, None, -1, 0, Next) X(SHLX, None, -2, 0, Next) \
    X(SHR, None, -1, 0, Next) X(SHRX, None, -2, 0, Next) X(USHR, None, -1, 0, Next) \
    X(USHRX, None, -2, 0, Next) X(INC, None, 0, 0, Next) X(INCG, Slot, 0, 0, Next) \
    X(INCA, Slot, 0, 0, Next) X(INCL, Slot, 0, 0, Next) X(INCM, Slot, 0, 0, Next) \
    X(INCLM, Slot, 0, 0, Next) X(DEC, None, 0, 0, Next) X(DECG, Slot, 0, 0, Next) \
    X(DECA, Slot, 0, 0, Next) X(DECL, Slot, 0, 0, Next) X(DECAM, Slot, 0, 0, Next) \
    X(DECLM, Slot, 0, 0, Next) X(PREINCX, Flag, -1, 0, Next) X(POSTINCX, Flag, -1, 0, Next) \
    X(PREDECX, Flag, -1, 0, Next) X(POSTDECX, Flag, -1, 0, Next) X(DELETEW, String, 1, 0, Next) \
    X(DELETEX, None, -1, 0, Next) X(LT, None, -1, 0, Next) X(LE, None, -1, 0, Next) \
    X(EQ, None, -1, 0, Next) X(NE, None, -1, 0, Next) X(IDENTITY, None, -1, 0, Next) \
    X(NONIDENTITY, None, -1, 0, Next) X(LOGNOT, None, 0, 0, Next) X(BITNOT, None, 0, 0, Next) \
    X(POS, None, 0, 0, Next) X(NEG, None, 0, 0, Next) X(LOGAND, Target, -1, 0, Branch) \
    X(LOGOR, Target, -1, 0, Branch) X(J, Target, 0, 0, Goto) X(JT, Target, -1, -1, Branch) \
    X(JF, Target, -1, -1, Branch) X(JT_DROP, Target, -1, -2, Branch) X(JLT, Target, -2, -2, Branch) \
    X(RET, None, 0, 0, Return) X(RETU, None, 1, 0, Return)
// clang-format on

#define ES_ENUMERATE(name, operands, next, jump, flow) VM_##name,
enum ESVmOpcode : uint8_t { ES_OPCODES(ES_ENUMERATE) VM_OpcodeCount };
#undef ES_ENUMERATE

static_assert(VM_NONIDENTITY == 96);

struct ESOpcodeInfo {
    const char* mnemonic;
    ESOperands operands;
    int8_t next;
    int8_t jump;
    ESFlow flow;
};
// By opcode.
#define ES_INFO(name, operands, next, jump, flow) {#name, ESOperands::operands, next, jump, ESFlow::flow},
inline constexpr ESOpcodeInfo OpcodeTable[] = {ES_OPCODES(ES_INFO)};
#undef ES_INFO

// Bytes that the operands take.
constexpr int operandBytes(ESOperands operands)
{
    switch (operands) {
    case ESOperands::None: return 0;
    case ESOperands::Flag: return 1;
    case ESOperands::SlotCount:
    case ESOperands::NameCount: return 4;
    case ESOperands::Number:
    case ESOperands::String:
    case ESOperands::Function:
    case ESOperands::Slot:
    case ESOperands::Count:
    case ESOperands::Target: return 2;
    }
    return 0;
}
