#include "sim/TraceFile.h"

#include "sim/RegisterFile.h"
#include "sim/limits.h"

#include <vector>

namespace maxq30 {

namespace {

constexpr size_t BufferBytes = 1 << 16;
constexpr size_t RegisterColumn = 29; // behind address and four words
constexpr unsigned WordDigits = 4;

struct Traced {
    unsigned number;
    std::string name;
    unsigned digits;
};

// In the order in which changes are written.
const std::vector<Traced>& tracedRegisters()
{
    static const std::vector<Traced> list = [] {
        std::vector<Traced> made;
        for (unsigned n = 0; n < 16; ++n)
            made.push_back({reg::A(n), "A[" + std::to_string(n) + "]", 8});
#define X(symbol, name, module, index, bits)                                                                 \
    if (reg::symbol != reg::PSF)                                                                             \
        made.push_back({reg::symbol, name, bits > 16 ? 8u : 4u});
        MAXQ30_REGISTERS(X)
#undef X
        for (unsigned number = 0; number < RegisterNumbers; ++number)
            if (isPeripheral(number))
                made.push_back(
                    {number, "M" + std::to_string(number & 15) + "[" + std::to_string(number >> 4) + "]", 8});
        return made;
    }();
    return list;
}

} // namespace

std::unique_ptr<TraceFile> TraceFile::open(const std::string& fileName)
{
    std::FILE* file = std::fopen(fileName.c_str(), "w");
    if (!file)
        return nullptr;
    std::setvbuf(file, nullptr, _IOFBF, BufferBytes);
    return std::unique_ptr<TraceFile>(new TraceFile(file));
}

void TraceFile::beginLine(uint32_t address)
{
    m_line.clear();
    addHex(address, address < limits::MaximumMemory ? 6 : 8);
    m_line += ':';
}

void TraceFile::addHex(uint32_t value, unsigned digits)
{
    for (unsigned i = digits; i > 0; --i)
        m_line += "0123456789abcdef"[value >> (4 * (i - 1)) & 15];
}

void TraceFile::addChange(std::string_view name, uint32_t value, unsigned digits)
{
    if (m_line.size() < RegisterColumn - 1)
        m_line.append(RegisterColumn - 1 - m_line.size(), ' ');
    m_line += ' ';
    m_line += name;
    m_line += '=';
    addHex(value, digits);
}

void TraceFile::before(Machine& m, const Op& op)
{
    for (const Traced& r : tracedRegisters())
        m_before[r.number] = m.regs[r.number];
    m_psf = m.readRegister(reg::PSF);
    beginLine(m.ip() * 2);
    for (unsigned i = 0; i < op.words && m.ip() + i < m.codeWords; ++i) {
        m_line += ' ';
        addHex(m.codeWord(m.ip() + i), WordDigits);
    }
}

bool TraceFile::after(Machine& m)
{
    for (const Traced& r : tracedRegisters())
        if (m.regs[r.number] != m_before[r.number])
            addChange(r.name, m.regs[r.number], r.digits);
    if (uint32_t psf = m.readRegister(reg::PSF); psf != m_psf)
        addChange("PSF", psf, WordDigits);
    m_line += '\n';
    return std::fwrite(m_line.data(), 1, m_line.size(), m_file.get()) == m_line.size();
}

void TraceFile::interrupt(Machine& m)
{
    beginLine(m.ip() * 2);
    m_line += " interrupt, requests ";
    addHex(m.regs[reg::IIR] & m.regs[reg::IMR], WordDigits);
    m_line += '\n';
    std::fwrite(m_line.data(), 1, m_line.size(), m_file.get());
}

} // namespace maxq30
