#include "maxq30/jtag/MAXQ30JTAGMemoryInterface.h"

#include "maxq30/jtag/DebugAccess.h"
#include "maxq30/jtag/JTAGFrames.h"

#include <algorithm>

namespace {

constexpr unsigned CodeWordBytes = 2;
constexpr unsigned DataWordBytes = 4;
constexpr uint32_t LastAddress = 0xFFFFFF;
constexpr unsigned MaxRead = 128; // bytes of one read frame

} // namespace

MAXQ30JTAGMemoryInterface::MAXQ30JTAGMemoryInterface(MAXQ30JTAGTargetInterface& target, unsigned wordLength)
    : TargetMemoryInterface(Endian::Little, wordLength, true), m_target(target)
{
    addressRanges().add(0, LastAddress, false);
}

void MAXQ30JTAGMemoryInterface::readWords(uint32_t wordAddress, unsigned length, unsigned char* data)
{
    if (length < 2)
        return;
    DebugAccess access(m_target);
    _maxqd_t* maxqd = m_target.driver();
    unsigned char frame[8] = {jtag::ReadMemory};
    Endian::packUINT32(frame, 1, wordAddress, Endian::Little);
    Endian::packUINT16(frame, 5, uint16_t(length >> 1), Endian::Little);
    maxqd->multiShiftInDR8(maxqd, frame, sizeof frame);
    maxqd->multiShiftOutDR8(maxqd, data, length);
    access.end();
}

void MAXQ30JTAGMemoryInterface::writeWords(uint32_t wordAddress, unsigned length, const unsigned char* data,
                                           bool poll)
{
    if (length < 2)
        return;
    DebugAccess access(m_target);
    _maxqd_t* maxqd = m_target.driver();
    for (unsigned offset = 0; offset + 1 < length; offset += 2) {
        unsigned char frame[8] = {jtag::WriteMemory};
        Endian::packUINT32(frame, 1, wordAddress++, Endian::Little);
        frame[5] = data[offset];
        frame[6] = data[offset + 1];
        frame[7] = jtag::Poll;
        maxqd->multiShiftInDR8(maxqd, frame, poll ? 8 : 7);
    }
    access.end();
}

void MAXQ30JTAGMemoryInterface::peekBytes(uint32_t address, unsigned count, unsigned char* bytes)
{
    if (count == 0)
        return;
    DebugAccess access(m_target);
    unsigned char word[2];
    if (address & 1) {
        alignedPeekBytes(address & ~1u, 2, word);
        *bytes++ = word[1];
        ++address;
        --count;
    }
    while (count >= 2) {
        unsigned piece = std::min(count & ~1u, MaxRead);
        alignedPeekBytes(address, piece, bytes);
        address += piece;
        bytes += piece;
        count -= piece;
    }
    if (count > 0) {
        alignedPeekBytes(address, 2, word);
        *bytes = word[0];
    }
    access.end();
}

// Single bytes at either end are put into the words that are there.
void MAXQ30JTAGMemoryInterface::pokeBytes(uint32_t address, unsigned count, const unsigned char* bytes)
{
    if (count == 0)
        return;
    DebugAccess access(m_target);
    unsigned char word[2];
    if (address & 1) {
        alignedPeekBytes(address & ~1u, 2, word);
        word[1] = *bytes++;
        alignedPokeBytes(address & ~1u, 2, word);
        ++address;
        --count;
    }
    if (unsigned even = count & ~1u) {
        alignedPokeBytes(address, even, bytes);
        address += even;
        bytes += even;
        count -= even;
    }
    if (count > 0) {
        alignedPeekBytes(address, 2, word);
        word[0] = *bytes;
        alignedPokeBytes(address, 2, word);
    }
    access.end();
}

MAXQ30JTAGCodeMemoryInterface::MAXQ30JTAGCodeMemoryInterface(MAXQ30JTAGTargetInterface& target)
    : MAXQ30JTAGMemoryInterface(target, CodeWordBytes)
{
}

void MAXQ30JTAGCodeMemoryInterface::alignedPokeBytes(unsigned int address, unsigned int length,
                                                     const unsigned char* data)
{
    writeWords(address >> 1 | jtag::CodeSpace, length, data, false);
}

void MAXQ30JTAGCodeMemoryInterface::alignedPeekBytes(unsigned int address, unsigned int length,
                                                     unsigned char* data)
{
    readWords(address >> 1 | jtag::CodeSpace, length, data);
}

MAXQ30JTAGDataMemoryInterface::MAXQ30JTAGDataMemoryInterface(MAXQ30JTAGTargetInterface& target)
    : MAXQ30JTAGMemoryInterface(target, DataWordBytes)
{
}

void MAXQ30JTAGDataMemoryInterface::alignedPokeBytes(unsigned int address, unsigned int length,
                                                     const unsigned char* data)
{
    writeWords(address >> 1, length, data, true);
}

void MAXQ30JTAGDataMemoryInterface::alignedPeekBytes(unsigned int address, unsigned int length,
                                                     unsigned char* data)
{
    readWords(address >> 1, length, data);
}
