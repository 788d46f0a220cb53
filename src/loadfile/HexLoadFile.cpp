#include "loadfile/HexLoadFile.h"

#include "loadfile/TextLines.h"
#include "loadfile/limits.h"
#include "support/HException.h"

template <class Source> void HexLoadFile::read(Source source)
{
    forEachLine(source, LoadFileLimits::ListingLine, [this](Cursor line) {
        readLine(line);
        return true;
    });
}

HexLoadFile::HexLoadFile(const char* file)
{
    read(file);
}

HexLoadFile::HexLoadFile(std::span<const char> text)
{
    read(text);
}

void HexLoadFile::readLine(Cursor line)
{
    constexpr size_t AddressDigits = 8;
    if (line.left() < AddressDigits)
        throw HException("invalid address");
    uint32_t count = uint32_t(line.left() + 1 - (AddressDigits + 1)) / 3;
    uint32_t address = getAsciiHexNumber(line, 4, nullptr);
    unsigned char* to = store(address, count);
    for (uint32_t i = 0; i < count; ++i) {
        if (line.next() != ' ')
            throw HException("invalid seperator");
        to[i] = uint8_t(getAsciiHexByte(line, nullptr));
    }
}
