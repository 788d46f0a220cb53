// What the four text readers share: lines of bounded length, hexadecimal bytes, and data that goes
// on where the current section ends or else opens a new one. A reader is a pure function over the
// bytes of a file; the constructors that take a name only fetch them.
#pragma once

#include "loadfile/LoadFileInterface.h"
#include "loadfile/LoadFileSection.h"

#include <cstddef>
#include <span>

class TextLoadFile : public StandardLoadFile {
public:
    bool hasLoadAddress() const override { return true; }
    void setLoadAddress(unsigned long) override {} // the file has its own

protected:
    // Position in one line.
    struct Cursor {
        const char* at;
        const char* end;
        size_t left() const { return size_t(end - at); }
        // The next character, 0 at the end of the line.
        char next() { return at < end ? *at++ : '\0'; }
    };

    // Two hexadecimal digits of either case; added to *sum, modulo 256, when sum is not null. Throws
    // HException "invalid ASCII encoded byte".
    static unsigned getAsciiHexByte(Cursor& cursor, uint8_t* sum);
    // `count` such bytes into `to`, at full speed.
    static void getAsciiHexBytes(Cursor& cursor, size_t count, unsigned char* to, uint8_t* sum);
    // A number of `count` bytes, at most 4, high byte first.
    static uint32_t getAsciiHexNumber(Cursor& cursor, unsigned count, uint8_t* sum);

    // The number of `count` bytes, at most 8, at the beginning of a record, and their sum, in one go. False,
    // and nothing is read, when the next sixteen characters are not all digits; the functions above then tell
    // what is wrong.
    static bool getHead(Cursor& cursor, unsigned count, uint64_t& head, uint8_t& sum);

    // Room for `count` bytes at the address.
    unsigned char* store(uint32_t address, uint32_t count)
    {
        if (!m_current || m_current->end() != address) [[unlikely]]
            beginSection(address);
        return m_current->expand(count);
    }

    // Calls handleLine(Cursor) for each line, its newline included, a line longer than `longest` in
    // pieces, until it answers false; then the result is true, and false when the text ends first.
    // A file passes through a buffer of fixed size.
    // A failure gets " : line N" behind its text.
    template <class HandleLine>
    bool forEachLine(std::span<const char> text, size_t longest, HandleLine handleLine);
    template <class HandleLine> bool forEachLine(const char* file, size_t longest, HandleLine handleLine);
    // Throws the text with the present line number behind it.
    [[noreturn]] void failAtLine(const char* text) const;

    bool createLoadFileSections() override { return true; }

private:
    [[noreturn]] void appendLineAndThrow(class HException& failure) const;
    void beginSection(uint32_t address);

    ExpandingLoadFileSection* m_current = nullptr; // owned by m_sections
    int m_line = 1;
};
