// The expression language over the memories and registers of a stopped target. How these are reached is left
// to a derived class, which implements LiveMemory, too.
//
// Values are read through memory blocks on a stack; whoever pushes one pops it, on every way out.
#pragma once

#include "expression/ExpressionParser.h"
#include "support/Endian.h"
#include "target/memory/MemoryBlock.h"

class DebugExpressionParser : public ExpressionParser, public LiveMemory {
public:
    using ExpressionParser::getRegister;

    explicit DebugExpressionParser(Endian::EndianType endian);
    ~DebugExpressionParser() override;

    Endian::EndianType endian() const { return m_endian; }

    // 8 bytes of the top block as a double, other sizes 4 bytes as a float.
    virtual double getFloat(unsigned size);
    virtual void putFloat(double value, unsigned size);

    // Registers by number. Reading and writing may throw ParserException or HException.
    virtual uint64_t getRegister(unsigned number) = 0;
    virtual unsigned getRegisterLength(unsigned number) = 0; // in bytes; 0 when unknown
    virtual void setRegister(unsigned number, uint64_t value) = 0;
    // The register that continues a value that is wider than one.
    virtual unsigned nextRegisterNumber(unsigned number) = 0;
    virtual int registerNameToNumber(const char* name) = 0; // -1 when there is none
    virtual QString registerNumberToName(unsigned number) = 0;
    virtual bool registerNumberLT(unsigned a, unsigned b) = 0;

protected:
    MemoryBlockInterface& block() const { return *m_blocks.back(); } // the top one
    void pushBlock(std::unique_ptr<MemoryBlockInterface> block) { m_blocks.push_back(std::move(block)); }
    void discardMemoryBuffer() { m_blocks.pop_back(); }
    size_t blocks() const { return m_blocks.size(); }

private:
    std::vector<std::unique_ptr<MemoryBlockInterface>> m_blocks;
    Endian::EndianType m_endian;
};
