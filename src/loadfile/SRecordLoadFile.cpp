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
    unsigned count = getAsciiHexByte(line, &sum); // of address, data and checksum
    switch (type) {
    case '0':
        for (unsigned i = 1; i < count; ++i)
            getAsciiHexByte(line, &sum);
        break;
    case '1':
    case '2':
    case '3': {
        unsigned addressBytes = unsigned(type - '0') + 1;
        uint32_t address = getAsciiHexNumber(line, addressBytes, &sum);
        if (count < addressBytes + 1)
            throw HException("invalid record length");
        unsigned dataBytes = count - 1 - addressBytes;
        // The digits are there before room is made for them.
        if (line.left() / 2 < dataBytes)
            throw HException("invalid ASCII encoded byte");
        getAsciiHexBytes(line, dataBytes, store(address, dataBytes), &sum);
        ++m_dataRecords;
        break;
    }
    case '5':
        if (getAsciiHexNumber(line, 2, &sum) != m_dataRecords)
            throw HException("incorrect data record count");
        break;
    case '7':
    case '8':
    case '9': setEntryPoint(getAsciiHexNumber(line, unsigned('9' - type) + 2, &sum)); break;
    default: break;
    }
    unsigned checksum = getAsciiHexByte(line, nullptr);
    if (uint8_t(checksum + sum) != 0xFF)
        throw HException("invalid checksum");
}
