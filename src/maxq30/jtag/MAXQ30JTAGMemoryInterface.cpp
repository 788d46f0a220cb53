#include "maxq30/jtag/MAXQ30JTAGMemoryInterface.h"

#include "maxq30/jtag/DebugAccess.h"
#include "maxq30/jtag/JTAGFrames.h"

#include <algorithm>

namespace {

constexpr unsigned CodeWordBytes = 2;
constexpr unsigned DataWordBytes = 4;
constexpr uint32_t LastAddress = 0xFFFFFF;
constexpr unsigned MaxRead = 128; // bytes of one read frame
constexpr unsigned FirstAhead = 8;
constexpr unsigned ShortRead = 16; // bytes; longer ones are frames enough by themselves

} // namespace

MAXQ30JTAGMemoryInterface::MAXQ30JTAGMemoryInterface(MAXQ30JTAGTargetInterface& target, unsigned wordLength)
    : TargetMemoryInterface(Endian::Little, wordLength, true), m_target(target)
{
    addressRanges().add(0, LastAddress, false);
}

void MAXQ30JTAGMemoryInterface::forget()
{
    m_known.clear();
    m_ahead = 0;
}

bool MAXQ30JTAGMemoryInterface::peekKnown(uint32_t address, unsigned count, unsigned char* bytes) const
{
    if (m_known.empty() || count > 2 * m_known.size())
        return false;
    for (unsigned i = 0; i < count; ++i) {
        auto word = m_known.find((address + i) >> 1);
        if (word == m_known.end())
            return false;
        bytes[i] = static_cast<unsigned char>((address + i) & 1 ? word->second >> 8 : word->second);
    }
    return true;
}

// Short reads one behind the other, as a walk along the stack makes them, fetch more each time, so that the
// walk does not take a frame for each step.
void MAXQ30JTAGMemoryInterface::readAhead(uint32_t address, unsigned count)
{
    bool follows = address >= m_nextAddress && address - m_nextAddress <= ShortRead && m_nextAddress != 0;
    m_nextAddress = address + count;
    m_ahead = !follows || count > ShortRead ? 0 : m_ahead == 0 ? FirstAhead : std::min(2 * m_ahead, MaxRead);
    if (m_ahead <= count)
        return;
    uint32_t first = address & ~1u;
    if (first > LastAddress - m_ahead)
        return;
    unsigned char ahead[MaxRead];
    alignedPeekBytes(first, m_ahead, ahead);
    m_nextAddress = first + m_ahead;
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
    if (m_target.memoryStandsStill())
        for (unsigned offset = 0; offset + 1 < length; offset += 2)
            m_known[(wordAddress & ~jtag::CodeSpace) + offset / 2] =
                Endian::unpackUINT16(data, offset, Endian::Little);
}

void MAXQ30JTAGMemoryInterface::writeWords(uint32_t wordAddress, unsigned length, const unsigned char* data,
                                           bool poll)
{
    if (length < 2)
        return;
    DebugAccess access(m_target);
    _maxqd_t* maxqd = m_target.driver();
    for (unsigned offset = 0; offset + 1 < length; offset += 2) {
        m_known.erase(wordAddress & ~jtag::CodeSpace); // what becomes of it is the device's to say
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
    if (m_target.memoryStandsStill()) {
        if (!peekKnown(address, count, bytes))
            readAhead(address, count);
        if (peekKnown(address, count, bytes))
            return;
    }
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
