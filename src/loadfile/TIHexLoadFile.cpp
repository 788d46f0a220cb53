#include "loadfile/TIHexLoadFile.h"

#include "loadfile/TextLines.h"
#include "loadfile/limits.h"
#include "support/HException.h"

template <class Source> void TIHexLoadFile::read(Source source)
{
    bool ended =
        forEachLine(source, LoadFileLimits::ListingLine, [this](Cursor line) { return readLine(line); });
    if (!ended)
        failAtLine("unexpected end of file");
}

TIHexLoadFile::TIHexLoadFile(const char* file)
{
    read(file);
}

TIHexLoadFile::TIHexLoadFile(std::span<const char> text)
{
    read(text);
}

// False at the line that ends the file.
bool TIHexLoadFile::readLine(Cursor line)
{
    if (*line.at == 'q')
        return false;
    if (*line.at == '@') {
        ++line.at;
        uint64_t address = 0;
        const char* digits = line.at;
        while (line.at < line.end && uint8_t(*line.at) > ' ') {
            char pair[2] = {'0', *line.at++};
            Cursor digit{pair, pair + 2};
            address = address << 4 | getAsciiHexByte(digit, nullptr);
            if (address >= LoadFileLimits::AddressSpace)
                throw HException("invalid address");
        }
        if (line.at == digits)
            throw HException("invalid address");
        m_address = uint32_t(address);
        return true;
    }
    // Three characters a byte: two digits and one separator, which the newline can be.
    uint32_t count = uint32_t(line.left() + 1) / 3;
    unsigned char* to = store(m_address, count);
    for (uint32_t i = 0; i < count; ++i) {
        to[i] = uint8_t(getAsciiHexByte(line, nullptr));
        line.next();
    }
    m_address += count;
    return true;
}
