// A text file with one line for each executed instruction: byte address, words, and the registers that
// it changed, such as
//
//     000012: 2b00 0a05            A[3]=00000010
//
// Lines are buffered; the file is complete when the object is gone.
#pragma once

#include "sim/Machine.h"

#include <array>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace maxq30 {

class TraceFile {
public:
    // Null when the file cannot be written. An earlier file of that name is replaced.
    static std::unique_ptr<TraceFile> open(const std::string& fileName);

    // Around the execution of one instruction; `after` answers false once the file takes no more.
    void before(Machine& machine, const Op& op);
    bool after(Machine& machine);
    // At the entry into an interrupt.
    void interrupt(Machine& machine);
    // Whether all lines so far are in the file.
    bool flush() { return std::fflush(m_file.get()) == 0; }

private:
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    explicit TraceFile(std::FILE* file) : m_file(file) {}
    void beginLine(uint32_t address);
    void addHex(uint32_t value, unsigned digits);
    void addChange(std::string_view name, uint32_t value, unsigned digits);

    std::unique_ptr<std::FILE, Close> m_file;
    std::string m_line;
    std::array<uint32_t, RegisterNumbers> m_before{};
    uint32_t m_psf = 0;
};

} // namespace maxq30
