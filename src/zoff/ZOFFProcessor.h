// What the object format needs of the processor whose code it holds. The processor's side of the program
// keeps one such record, and the program (a main, a test) installs it before any file is read.
//
// An opcode is an instruction's 16-bit words in a chain, the first word in the highest bits.
#pragma once

#include "support/Installed.h"

#include <bit>
#include <cstdint>
#include <memory>
#include <string>

class HFileBlocks;
class ZOFFExpr;
class ZOFFProcessorInsn;
class ZOFFReader;

struct ZOFFProcessor {
    // A reader of files with such code. The input outlives it.
    std::unique_ptr<ZOFFReader> (*newReader)(HFileBlocks* input, bool keepLoci);
    // An instruction in the current pool; the operand may be null.
    ZOFFProcessorInsn* (*newInsn)(uint64_t opcode, ZOFFExpr* operand);
    std::string (*registerName)(unsigned number);
    int addressSize; // bytes of an address that stands in data
    bool bigEndian;  // of numbers in data, and of the bytes of a code word

    static constexpr unsigned WordSize = 2;

    // Bytes of the instruction that has an opcode.
    static constexpr unsigned insnLength(uint64_t opcode)
    {
        return WordSize * ((unsigned(std::bit_width(opcode | 1)) + 15) / 16);
    }
    // The opcode that `count` bytes of code stand for, 2 to 8.
    uint64_t opcodeOf(const uint8_t* bytes, unsigned count) const
    {
        uint64_t opcode = 0;
        for (unsigned i = 0; i < count; i += WordSize)
            opcode = opcode << 16 | wordOf(bytes + i);
        return opcode;
    }
    unsigned wordOf(const uint8_t* bytes) const
    {
        return bigEndian ? unsigned(bytes[0] << 8 | bytes[1]) : unsigned(bytes[0] | bytes[1] << 8);
    }

    // The record stays good for as long as the program runs; a later one takes its place.
    static void install(const ZOFFProcessor& processor) { s_current.install(processor); }
    // The installed one. That there is none is a fault of the program, which ends here.
    static const ZOFFProcessor& current() { return s_current.get(); }

private:
    static Installed<const ZOFFProcessor> s_current;
};
