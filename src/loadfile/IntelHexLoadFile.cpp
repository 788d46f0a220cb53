#include "loadfile/IntelHexLoadFile.h"

#include "loadfile/TextLines.h"
#include "loadfile/limits.h"

namespace {
enum RecordType {
    Data = 0,
    EndOfFile = 1,
    ExtendedSegmentAddress = 2,
    StartSegmentAddress = 3,
    ExtendedLinearAddress = 4,
    StartLinearAddress = 5,
};
}

template <class Source> void IntelHexLoadFile::read(Source source)
{
    bool ended =
        forEachLine(source, LoadFileLimits::RecordLine, [this](Cursor line) { return readRecord(line); });
    if (!ended)
        failAtLine("invalid end of file in hex file");
}

IntelHexLoadFile::IntelHexLoadFile(const char* file)
{
    read(file);
}

IntelHexLoadFile::IntelHexLoadFile(std::span<const char> text)
{
    read(text);
}

// False at the end-of-file record.
bool IntelHexLoadFile::readRecord(Cursor line)
{
    if (line.next() != ':')
        throw HException("missing record mark in hex file");
    uint8_t sum = 0;
    constexpr unsigned HeadBytes = 4; // count, offset of two bytes, type
    uint64_t head;
    if (!getHead(line, HeadBytes, head, sum))
        head = getAsciiHexNumber(line, HeadBytes, &sum);
    unsigned count = unsigned(head >> 24);
    uint32_t offset = uint32_t(head >> 8 & 0xFFFF);
    unsigned type = head & 0xFF;
    switch (type) {
    case Data: {
        // The digits are there before room is made for them.
        if (line.left() / 2 < count)
            throw HException("invalid ASCII encoded byte");
        uint32_t address = (m_linear << 16 | offset) + (m_segment << 4);
        getAsciiHexBytes(line, count, store(address, count), &sum);
        break;
    }
    case ExtendedSegmentAddress: m_segment = getAsciiHexNumber(line, 2, &sum); break;
    case ExtendedLinearAddress: m_linear = getAsciiHexNumber(line, 2, &sum); break;
    case StartSegmentAddress:
    case StartLinearAddress: setEntryPoint(getAsciiHexNumber(line, 4, &sum)); break;
    default: break;
    }
    unsigned checksum = getAsciiHexByte(line, nullptr);
    if (uint8_t(checksum + sum) != 0)
        throw HException("invalid checksum");
    return type != EndOfFile;
}
