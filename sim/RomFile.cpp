#include "sim/RomFile.h"
#include "sim/Core.h"
#include "sim/limits.h"

#include <array>
#include <fstream>

namespace maxq30 {

namespace {

enum RecordType : uint8_t {
    Data = 0,
    EndOfFile = 1,
    ExtendedSegment = 2,
    StartSegment = 3,
    ExtendedLinear = 4,
    StartLinear = 5
};

struct Record {
    std::array<uint8_t, limits::RomLine / 2> bytes; // count, address high and low, type, data, checksum
    unsigned count() const { return bytes[0]; }
    uint32_t address() const { return uint32_t(bytes[1] << 8 | bytes[2]); }
    unsigned type() const { return bytes[3]; }
    const uint8_t* data() const { return bytes.data() + 4; }
    uint32_t word() const { return uint32_t(bytes[4] << 8 | bytes[5]); }
};

int digit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

// Null when the line is a record that holds what it says, otherwise what is wrong with it.
const char* parseRecord(std::string_view line, Record& record)
{
    if (line.empty() || line[0] != ':')
        return "a record begins with a colon";
    line.remove_prefix(1);
    if (line.size() < 10 || line.size() % 2 || line.size() + 1 > limits::RomLine)
        return "bad record length";
    uint8_t sum = 0;
    for (size_t i = 0; i < line.size() / 2; ++i) {
        int high = digit(line[2 * i]);
        int low = digit(line[2 * i + 1]);
        if (high < 0 || low < 0)
            return "not a hexadecimal digit";
        record.bytes[i] = uint8_t(high << 4 | low);
        sum = uint8_t(sum + record.bytes[i]);
    }
    if (line.size() / 2 != record.count() + 5u)
        return "bad record length";
    return sum ? "bad checksum" : nullptr;
}

// Carries out one record. Null when all is well.
const char* apply(Core& core, const Record& record, uint32_t& base, bool& ended)
{
    switch (record.type()) {
    case Data:
        return core.writeCode(base + record.address(), record.count(), record.data())
                   ? nullptr
                   : "data outside the code memory";
    case EndOfFile: ended = true; return record.count() == 0 ? nullptr : "bad record length";
    case ExtendedSegment:
        base = record.word() << 4;
        return record.count() == 2 ? nullptr : "bad record length";
    case ExtendedLinear:
        base = record.word() << 16;
        return record.count() == 2 ? nullptr : "bad record length";
    case StartSegment:
    case StartLinear: // a start address; the processor starts at 0 all the same
        return record.count() == 4 ? nullptr : "bad record length";
    }
    return "unknown record type";
}

} // namespace

bool loadRomText(Core& core, std::string_view text, std::string& error)
{
    uint32_t base = 0;
    bool ended = false;
    for (unsigned lineNumber = 1; !text.empty() && !ended; ++lineNumber) {
        size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        while (!line.empty() && (line.back() == '\r' || line.back() == ' ' || line.back() == '\t'))
            line.remove_suffix(1);
        if (line.empty())
            continue;
        Record record;
        const char* fault = parseRecord(line, record);
        if (!fault)
            fault = apply(core, record, base, ended);
        if (fault) {
            error = "utility ROM, line " + std::to_string(lineNumber) + ": " + fault;
            return false;
        }
    }
    if (!ended)
        error = "utility ROM: no end record";
    return ended;
}

bool loadRomFile(Core& core, const std::string& fileName, std::string& error)
{
    std::ifstream file(fileName, std::ios::binary);
    std::string text;
    std::array<char, 65536> piece;
    // A directory opens like a file; only the read tells, by the state of the stream.
    while (file.read(piece.data(), piece.size()) || file.gcount() > 0) {
        text.append(piece.data(), size_t(file.gcount()));
        if (text.size() > limits::RomText) {
            error = "utility ROM " + fileName + " is too large";
            return false;
        }
    }
    if (file.bad() || text.empty()) {
        error = "cannot read utility ROM " + fileName;
        return false;
    }
    return loadRomText(core, text, error);
}

} // namespace maxq30
