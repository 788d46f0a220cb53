// Memory of the target as a display reads it: in pieces within the object that is shown, so that its items
// cost few accesses, and with a note whether something could not be read.
#pragma once

#include "target/memory/MemoryBlock.h"

#include <vector>

class ReadAhead : public LiveMemory {
public:
    // `failed` is set when a read fails; what it should have given is zeros.
    ReadAhead(LiveMemory& memory, bool& failed, int kind) : m_memory(memory), m_failed(failed), m_kind(kind)
    {
    }

    // All of this is going to be read, so that it may be read at once. A part of what is announced
    // already changes nothing.
    void announce(uint32_t address, uint32_t size);

    unsigned readPeripheralMemory(unsigned address, unsigned count, unsigned char* bytes) override;
    unsigned writePeripheralMemory(unsigned address, unsigned count, const unsigned char* bytes) override;
    unsigned readEepromMemory(unsigned address, unsigned count, unsigned char* bytes) override;
    unsigned writeEepromMemory(unsigned address, unsigned count, const unsigned char* bytes) override;
    unsigned readCodeMemory(unsigned address, unsigned count, unsigned char* bytes) override;
    unsigned writeCodeMemory(unsigned address, unsigned count, const unsigned char* bytes) override;
    unsigned readMemory(unsigned address, unsigned count, unsigned char* bytes) override;
    unsigned writeMemory(unsigned address, unsigned count, const unsigned char* bytes) override;

private:
    unsigned read(int kind, unsigned address, unsigned count, unsigned char* bytes);
    unsigned fetch(int kind, unsigned address, unsigned count, unsigned char* bytes);

    LiveMemory& m_memory;
    bool& m_failed;
    int m_kind;
    uint32_t m_start = 0; // of what is announced
    uint32_t m_size = 0;
    uint32_t m_piece = 0; // where the bytes come from
    std::vector<unsigned char> m_bytes;
};

// An object in the target's memory, nothing of which is read until somebody asks.
class ObjectBlock : private ReadAhead, public LazyMemoryBlock {
public:
    ObjectBlock(LiveMemory& memory, Endian::EndianType endian, bool& failed, int kind, uint32_t address)
        : ReadAhead(memory, failed, kind),
          LazyMemoryBlock(static_cast<ReadAhead*>(this), endian, kind, address), m_address(address)
    {
    }

    // By the position in the object.
    void announce(uint32_t position, uint32_t size) { ReadAhead::announce(m_address + position, size); }

private:
    uint32_t m_address;
};
