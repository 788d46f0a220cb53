// One MAXQ30 instruction: a move, nearly always, from a source to a destination. A register is named by
// a module (four bits) and an index in it; operands of more than eight bits are reached through prefix
// words in front of the instruction word.
//
// The opcode holds the instruction's words in their order, the instruction word in the low 16 bits.
#pragma once

#include "zoff/ZOFFExpr.h"
#include "zoff/ZOFFInsn.h"

class ZOFFMAXQ30Insn : public ZOFFProcessorInsn {
public:
    explicit ZOFFMAXQ30Insn(uint64_t opcode, ZOFFExpr* operand = nullptr) : ZOFFProcessorInsn(opcode, operand)
    {
    }

    // 2, 4, 6 or 8 bytes, by the opcode.
    int length() const override;
    bool isCall() const { return (m_opcode & 0x7F00) == 0x3D00; }
    // Whether the instruction goes to an immediate place (an immediate PUSH shares the pattern), and
    // where: a byte address. A jump without prefix is relative to the pc.
    bool isJump(uint32_t& target) const;
    // Appends the text. It allocates nothing while `out` has room.
    void print(std::string& out) const override;

    // The operand side, for an assembler. The opcode is a template: the operand's value goes into the
    // low bytes of its words, most significant first, and a prefix word that the template lacks is the
    // plain one (0x0B00). Jumps, calls and loops take the near form when there is no prefix and the
    // place is within reach, and else the place in words.
    //
    // The length in bytes at the present pc; the shortest form while the operand is unresolved.
    int estimatedLength() const override;
    // Replaces the opcode by the full one and sets the bytes. Throws HException with the reason when the
    // operand is unresolved.
    void encode() override;

private:
    void printSource(std::string& out, bool isData) const; // decodeSource
    bool isNearFamily() const;
    int templateWords() const;
};

// The name of a register by its number, (index << 4) | module: "A[3]", "DP[0]", or "M" and the numbers.
std::string decodeModule(unsigned number);
// The name of the register that an opcode writes to.
std::string decodeDestinationRegister(uint64_t opcode);
// "0x%x" above 15, else decimal.
std::string hex(uint32_t value);
