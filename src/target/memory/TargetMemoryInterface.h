// Byte and word access to one target memory. A concrete memory implements pokeBytes and peekBytes and
// inherits the rest; one with better means (erase blocks, whole words, a fast load) overrides more.
// Addresses are byte addresses. Failures are thrown as HException by the concrete memory.
#pragma once

#include "support/AddressRanges.h"
#include "support/Endian.h"

#include <cstdint>
#include <string>

class TargetMemoryInterface {
public:
    static constexpr unsigned NoLimit = 0xFFFFFFFF;

    // The word length is in bytes. `erase` says that the memory must be erased before it is
    // programmed. The display width starts equal to the word length.
    TargetMemoryInterface(Endian::EndianType endian, unsigned wordLength, bool erase);
    virtual ~TargetMemoryInterface() = default;
    TargetMemoryInterface(const TargetMemoryInterface&) = delete;
    TargetMemoryInterface& operator=(const TargetMemoryInterface&) = delete;

    virtual bool supportsDifferentialDownloading() const { return false; }

    virtual void pokeBytes(uint32_t address, unsigned count, const unsigned char* bytes) = 0;
    virtual void peekBytes(uint32_t address, unsigned count, unsigned char* bytes) = 0;
    // Up to a zero byte, which is not part of the text, or `maximum` bytes; read in pieces of 64.
    virtual std::string peekString(uint32_t address, unsigned maximum);

    // Writing as part of a load; `last` marks its final piece.
    virtual void downloadBytes(uint32_t address, unsigned count, const unsigned char* bytes);
    virtual void downloadBytes(uint32_t address, unsigned count, const unsigned char* bytes, bool last);
    virtual void uploadBytes(uint32_t address, unsigned count, unsigned char* bytes);
    virtual void memsetBytes(uint32_t address, unsigned count, unsigned char value);
    // False at the first difference; a count of 0 is true and reads nothing.
    virtual bool verifyBytes(uint32_t address, unsigned count, const unsigned char* bytes);

    virtual void eraseBytesBegin() {}
    virtual void eraseBytesEnd() {}
    // Reports what was erased, whole blocks where the memory has them; each pointer may be null.
    virtual void eraseBytes(uint32_t address, unsigned count, unsigned* erasedAddress, unsigned* erasedCount);
    virtual void eraseAll() {}
    virtual bool erase() const { return m_erase; }
    virtual void lockBytes(uint32_t, unsigned) {}
    virtual void lockAll() {}
    virtual void unlockBytes(uint32_t, unsigned) {}
    virtual void unlockAll() {}

    // Counts are in elements; the byte order is the memory's.
    virtual void pokeMultUint16(uint32_t address, unsigned count, const unsigned short* values);
    virtual void peekMultUint16(uint32_t address, unsigned count, unsigned short* values);
    virtual void memsetUint16(uint32_t address, unsigned count, unsigned short value);
    virtual void pokeMultUint32(uint32_t address, unsigned count, const unsigned int* values);
    virtual void peekMultUint32(uint32_t address, unsigned count, unsigned int* values);
    virtual void memsetUint32(uint32_t address, unsigned count, unsigned int value);
    virtual void pokeByte(uint32_t address, unsigned char value);
    virtual unsigned char peekByte(uint32_t address);
    virtual void pokeUint16(uint32_t address, unsigned short value);
    virtual unsigned short peekUint16(uint32_t address);
    virtual void pokeUint32(uint32_t address, unsigned int value);
    virtual unsigned int peekUint32(uint32_t address);
    // One word of the word length.
    virtual void pokeWord(uint32_t address, uint64_t value);
    virtual uint64_t peekWord(uint32_t address);
    // `size` bytes, 1 to 8.
    virtual void pokeNumber(uint32_t address, unsigned size, uint64_t value);
    virtual uint64_t peekNumber(uint32_t address, unsigned size);

    virtual Endian::EndianType endian() const { return m_endian; }
    // The range that holds `address` also holds the last byte.
    virtual bool memoryExists(uint32_t address, unsigned count);
    // What exists. An empty set means that nothing is known of the layout.
    virtual AddressRanges& addressRanges() { return m_addressRanges; }
    virtual void flush() {}

    // The largest piece that one call of each kind should be given, in bytes.
    virtual unsigned optimumPokeBytesFragment() const { return NoLimit; }
    virtual unsigned optimumDownloadBytesFragment() const { return NoLimit; }
    virtual unsigned optimumUploadBytesFragment() const { return NoLimit; }
    virtual unsigned optimumPeekBytesFragment() const { return NoLimit; }
    virtual unsigned optimumMemsetBytesFragment() const { return NoLimit; }
    virtual unsigned optimumEraseBytesFragment() const { return NoLimit; }
    virtual unsigned optimumLockBytesFragment() const { return NoLimit; }
    virtual unsigned optimumUnlockBytesFragment() const { return NoLimit; }
    virtual unsigned optimumVerifyBytesFragment() const { return NoLimit; }

    unsigned wordLength() const { return m_wordLength; }
    void setEndian(Endian::EndianType endian) { m_endian = endian; }
    void setDisplayWidthInCharacters(unsigned width) { m_displayWidth = width; }
    unsigned addressDisplayWidthInCharacters() const { return m_displayWidth; }

private:
    Endian::EndianType m_endian;
    unsigned m_wordLength;
    AddressRanges m_addressRanges;
    bool m_erase;
    unsigned m_displayWidth;
};
