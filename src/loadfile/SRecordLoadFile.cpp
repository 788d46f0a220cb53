#include "loadfile/SRecordLoadFile.h"

#include "loadfile/TextLines.h"
#include "loadfile/limits.h"

template <class Source> void SRecordLoadFile::read(Source source)
{
    forEachLine(source, LoadFileLimits::RecordLine, [this](Cursor line) {
        readRecord(line);
        return true;
    });
}

SRecordLoadFile::SRecordLoadFile(const char* file)
{
    read(file);
}

SRecordLoadFile::SRecordLoadFile(std::span<const char> text)
{
    read(text);
}

void SRecordLoadFile::readRecord(Cursor line)
{
    if (line.next() != 'S')
        throw HException("no leading 'S' character");
    char type = line.next();
    uint8_t sum = 0;
    unsigned count; // of address, data and checksum
    if (type >= '1' && type <= '3') {
        unsigned addressBytes = unsigned(type - '0') + 1;
        uint32_t address;
        if (uint64_t head; getHead(line, 1 + addressBytes, head, sum)) {
            count = unsigned(head >> 8 * addressBytes);
            address = uint32_t(head & ((uint64_t(1) << 8 * addressBytes) - 1));
        } else {
            count = getAsciiHexByte(line, &sum);
            address = getAsciiHexNumber(line, addressBytes, &sum);
        }
        if (count < addressBytes + 1)
            throw HException("invalid record length");
        unsigned dataBytes = count - 1 - addressBytes;
        // The digits are there before room is made for them.
        if (line.left() / 2 < dataBytes)
            throw HException("invalid ASCII encoded byte");
        getAsciiHexBytes(line, dataBytes, store(address, dataBytes), &sum);
        ++m_dataRecords;
        checkSum(line, sum);
        return;
    }
    count = getAsciiHexByte(line, &sum);
    switch (type) {
    case '0':
        for (unsigned i = 1; i < count; ++i)
            getAsciiHexByte(line, &sum);
        break;
    case '5':
        if (getAsciiHexNumber(line, 2, &sum) != m_dataRecords)
            throw HException("incorrect data record count");
        break;
    case '7':
    case '8':
    case '9': setEntryPoint(getAsciiHexNumber(line, unsigned('9' - type) + 2, &sum)); break;
    default: break;
    }
    checkSum(line, sum);
}

void SRecordLoadFile::checkSum(Cursor& line, uint8_t sum)
{
    unsigned checksum = getAsciiHexByte(line, nullptr);
    if (uint8_t(checksum + sum) != 0xFF)
        throw HException("invalid checksum");
}
