// Processor instructions: mnemonics and operands as disassembly prints them, made into words.
#pragma once

#include "tools/kvas/Cursor.h"
#include "tools/kvas/ExpressionParser.h"
#include "tools/kvas/Program.h"

#include <string_view>

namespace kvas {

struct Mnemonic {
    enum class Form : uint8_t { Plain, Operation, Move, Push, Pop, Jump, Call, Loop, Return, Complement };
    Form form;
    uint16_t word;
    uint16_t prefix = 0;    // bits of the nearest prefix word, when the operation has one in any case
    bool carryForm = false; // has a form "C, ACC.n"
};

// In upper case; null when there is no such instruction.
const Mnemonic* findMnemonic(std::string_view name);

// Fills in word, prefix, size and operand of an instruction item. An operand that is known is put into the
// item at once where its place does not matter; otherwise it stays in `operand`.
void parseInstruction(const Mnemonic& mnemonic, Cursor& cursor, ExpressionParser& expressions, Item& item);

// The immediate operand is a code target.
bool takesCodeTarget(const Item& item);

// Words that the instruction needs for the operand's value at its pc, with prefix words. Code targets within
// reach of a jump of one word need only that, if it may be near.
unsigned wordsNeeded(const Item& item, int64_t value, bool mayBeNear = true);

// The whole opcode in item.size words, the highest 16-bit group first. An operand that lies beyond a
// short form's reach is our own mistake.
uint64_t encodeInstruction(const Item& item, int64_t value);

} // namespace kvas
