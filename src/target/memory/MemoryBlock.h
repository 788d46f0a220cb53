// Cursors over bytes, through which the debugger's expression code reads and writes values: over a
// private copy (MemoryBlock) or over live target memory (LazyMemoryBlock).
#pragma once

#include "support/Endian.h"

#include <cstdint>
#include <vector>

class MemoryBlockInterface {
public:
    virtual ~MemoryBlockInterface() = default;
    virtual unsigned getMemoryPointer() = 0; // address of the cursor's position
    virtual void setMemoryPointer(unsigned offset) = 0;
    virtual void resetMemoryPointer() = 0; // back to the first byte
    virtual void incrementMemoryPointer(unsigned count) = 0;
    // Numbers of `size` bytes, 1 to 8, not sign-extended.
    virtual uint64_t getInt(int size) = 0;
    virtual void putInt(unsigned long long value, int size) = 0;
    virtual void getBytes(unsigned count, unsigned char* bytes) = 0;
    virtual void putBytes(unsigned count, const unsigned char* bytes) = 0;
    // At most `maximum` bytes, the closing zero included; always zero-terminated when maximum is not 0.
    virtual void getNullTerminatedString(unsigned maximum, char* text) = 0;
    // Bit numbering is Endian's. The cursor stays where it was.
    virtual uint64_t unpackBitField(unsigned size, unsigned bitOffset, unsigned bitWidth,
                                    unsigned lsbFirst) = 0;
    virtual void packBitField(unsigned long long value, unsigned size, unsigned bitOffset, unsigned bitWidth,
                              unsigned lsbFirst) = 0;
};

// Over an array of its own. What lies beyond the end reads as 0 and is not written.
class MemoryBlock : public MemoryBlockInterface {
public:
    MemoryBlock(std::vector<unsigned char> bytes, Endian::EndianType endian);

    unsigned getMemoryPointer() override { return m_position; }
    void setMemoryPointer(unsigned offset) override { m_position = offset; }
    void resetMemoryPointer() override { m_position = 0; }
    void incrementMemoryPointer(unsigned count) override { m_position += count; }
    uint64_t getInt(int size) override;
    void putInt(unsigned long long value, int size) override;
    void getBytes(unsigned count, unsigned char* bytes) override;
    void putBytes(unsigned count, const unsigned char* bytes) override;
    void getNullTerminatedString(unsigned maximum, char* text) override;
    uint64_t unpackBitField(unsigned size, unsigned bitOffset, unsigned bitWidth, unsigned lsbFirst) override;
    void packBitField(unsigned long long value, unsigned size, unsigned bitOffset, unsigned bitWidth,
                      unsigned lsbFirst) override;

private:
    std::vector<unsigned char> m_bytes;
    unsigned m_position = 0;
    Endian::EndianType m_endian;
};

// What a LazyMemoryBlock reads through: the debugger's access to the memories of a stopped target.
// Each returns the number of bytes moved, 0 for a range that does not exist.
class LiveMemory {
public:
    virtual ~LiveMemory() = default;
    virtual unsigned readPeripheralMemory(unsigned address, unsigned count, unsigned char* bytes) = 0;
    virtual unsigned writePeripheralMemory(unsigned address, unsigned count, const unsigned char* bytes) = 0;
    virtual unsigned readEepromMemory(unsigned address, unsigned count, unsigned char* bytes) = 0;
    virtual unsigned writeEepromMemory(unsigned address, unsigned count, const unsigned char* bytes) = 0;
    virtual unsigned readCodeMemory(unsigned address, unsigned count, unsigned char* bytes) = 0;
    virtual unsigned writeCodeMemory(unsigned address, unsigned count, const unsigned char* bytes) = 0;
    virtual unsigned readMemory(unsigned address, unsigned count, unsigned char* bytes) = 0;
    virtual unsigned writeMemory(unsigned address, unsigned count, const unsigned char* bytes) = 0;
};

// Over target memory; nothing is fetched until asked for. An unknown kind accesses nothing, but the
// cursor still moves.
class LazyMemoryBlock : public MemoryBlockInterface {
public:
    enum Kind { Peripheral = 0, Eeprom = 1, Code = 2, Data = 3 };

    LazyMemoryBlock(LiveMemory* memory, Endian::EndianType endian, int kind, unsigned base);

    unsigned getMemoryPointer() override { return m_base + m_offset; }
    void setMemoryPointer(unsigned offset) override { m_offset = offset; }
    void resetMemoryPointer() override { m_offset = 0; }
    void incrementMemoryPointer(unsigned count) override { m_offset += count; }
    uint64_t getInt(int size) override;
    void putInt(unsigned long long value, int size) override;
    void getBytes(unsigned count, unsigned char* bytes) override;
    void putBytes(unsigned count, const unsigned char* bytes) override;
    void getNullTerminatedString(unsigned maximum, char* text) override;
    uint64_t unpackBitField(unsigned size, unsigned bitOffset, unsigned bitWidth, unsigned lsbFirst) override;
    void packBitField(unsigned long long value, unsigned size, unsigned bitOffset, unsigned bitWidth,
                      unsigned lsbFirst) override;

private:
    LiveMemory* m_memory; // not owned
    Endian::EndianType m_endian;
    int m_kind;
    unsigned m_base;
    unsigned m_offset = 0;
};
