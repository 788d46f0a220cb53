// The code and data memory of a MAXQ30 device through its debug engine, which works in 16-bit words.
// Addresses are byte addresses; every access is bracketed as a debug access, so a running program is
// stopped for its length. Code memory is written elsewhere during a load, by the bootloader.
#pragma once

#include "target/memory/TargetMemoryInterface.h"

#include <unordered_map>

class MAXQ30JTAGTargetInterface;

class MAXQ30JTAGMemoryInterface : public TargetMemoryInterface {
public:
    MAXQ30JTAGMemoryInterface(MAXQ30JTAGTargetInterface& target, unsigned wordLength);

    void pokeBytes(uint32_t address, unsigned count, const unsigned char* bytes) override;
    void peekBytes(uint32_t address, unsigned count, unsigned char* bytes) override;

    unsigned optimumPokeBytesFragment() const override { return Fragment; }
    unsigned optimumDownloadBytesFragment() const override { return Fragment; }
    unsigned optimumPeekBytesFragment() const override { return Fragment; }
    unsigned optimumUploadBytesFragment() const override { return Fragment; }
    unsigned optimumMemsetBytesFragment() const override { return Fragment; }
    unsigned optimumVerifyBytesFragment() const override { return Fragment; }

    // From an even address; the length is even, and at most 128 bytes when reading. Nothing below 2.
    virtual void alignedPokeBytes(unsigned int address, unsigned int length, const unsigned char* data) = 0;
    virtual void alignedPeekBytes(unsigned int address, unsigned int length, unsigned char* data) = 0;

    // What was read is to be read anew.
    void forget();

protected:
    // The two with a word address.
    void writeWords(uint32_t wordAddress, unsigned length, const unsigned char* data, bool poll);
    void readWords(uint32_t wordAddress, unsigned length, unsigned char* data);

private:
    static constexpr unsigned Fragment = 0x10000;
    bool peekKnown(uint32_t address, unsigned count, unsigned char* bytes) const;
    void readAhead(uint32_t address, unsigned count);

    MAXQ30JTAGTargetInterface& m_target;
    // While the target says that memory stands still: what was read of it, by the word address that goes over
    // the wire; and how much more is read when short reads follow each other.
    std::unordered_map<uint32_t, uint16_t> m_known;
    uint32_t m_nextAddress = 0;
    unsigned m_ahead = 0; // bytes
};

class MAXQ30JTAGCodeMemoryInterface : public MAXQ30JTAGMemoryInterface {
public:
    explicit MAXQ30JTAGCodeMemoryInterface(MAXQ30JTAGTargetInterface& target);
    unsigned optimumEraseBytesFragment() const override { return 0x20000; }
    void alignedPokeBytes(unsigned int address, unsigned int length, const unsigned char* data) override;
    void alignedPeekBytes(unsigned int address, unsigned int length, unsigned char* data) override;
};

class MAXQ30JTAGDataMemoryInterface : public MAXQ30JTAGMemoryInterface {
public:
    explicit MAXQ30JTAGDataMemoryInterface(MAXQ30JTAGTargetInterface& target);
    void alignedPokeBytes(unsigned int address, unsigned int length, const unsigned char* data) override;
    void alignedPeekBytes(unsigned int address, unsigned int length, unsigned char* data) override;
};
