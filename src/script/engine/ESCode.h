// One compiled function, or the top level of one source text.
#pragma once

#include "script/engine/ESObject.h"
#include "script/engine/ESOpcodes.h"
#include "script/engine/ESString.h"

#include <cstdint>
#include <memory>
#include <vector>

class ESThread;

class ESCode {
public:
    ESCode();
    ~ESCode();
    ESCode(const ESCode&) = delete;
    ESCode& operator=(const ESCode&) = delete;

    // The instructions (ESOpcodes.h), and the source line of each code byte.
    std::vector<uint8_t> code;
    std::vector<int> lines;
    // Numeric constants, without duplicates.
    std::vector<double> numbers;
    // Pool and function indices too large for an operand; see farOperand.
    std::vector<int> far;
    // Temporaries that hold what an expression came to until it is called. They are no members of what
    // holds them, so `this` of such a call is the global object even where names are looked up.
    std::vector<ESString*> calleeTemporaries;
    // Names in slot order: parameters first, marked as such, then locals and temporaries.
    struct Variable {
        ESString* name;
        unsigned attributes;
    };
    std::vector<Variable> variables;
    int formalCount = 0;
    int localCount = 0;
    bool needsArguments = false; // an `arguments` object is made on each call
    bool needsFrame = false;     // the variables live in an activation object

    int length() const { return int(code.size()); }
    // Index in `numbers`, or -1 when there is no more room.
    int addNumber(double number);
    // The operand that stands for a pool or function index; -1 when there is no more room.
    int operandFor(int index);
    int indexOf(int operand) const;

    uint16_t operandAt(int offset) const
    {
        return uint16_t(code[size_t(offset)] << 8 | code[size_t(offset) + 1]);
    }
    // Appends one byte, growing the buffers to 200 bytes first and doubling them from there.
    void emit(uint8_t byte, int line);
    void emitOperand(int operand, int line);
    void setOperand(int offset, int operand);
    void discard();

    static ESOperands operands(uint8_t opcode) { return OpcodeTable[opcode].operands; }
    // Bytes of the instruction with its operands.
    static int size(uint8_t opcode) { return 1 + operandBytes(OpcodeTable[opcode].operands); }
    // What the instruction at an offset does to the depth of the stack.
    int depthChange(int offset, bool jumps) const;

    // The form that the machine runs, made on first use.
    ESThread& thread() { return m_thread ? *m_thread : makeThread(); }

    // How many properties the objects had that this constructor made: room for the next one.
    uint32_t constructedProperties = 0;

private:
    ESThread& makeThread();
    std::unique_ptr<ESThread> m_thread;
};
