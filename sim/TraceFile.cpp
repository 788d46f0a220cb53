#include "sim/TraceFile.h"

#include <algorithm>

namespace maxq30 {

namespace {

struct Named {
    unsigned number;
    const char* name;
};

constexpr Named plainRegisters[] = {
#define X(symbol, name, module, index, bits) {reg::symbol, name},
    MAXQ30_REGISTERS(X)
#undef X
};

constexpr size_t BufferBytes = 1 << 16;
constexpr int WordColumns = 21;

} // namespace

std::unique_ptr<TraceFile> TraceFile::open(const std::string& fileName)
{
    std::FILE* file = std::fopen(fileName.c_str(), "w");
    if (!file)
        return nullptr;
    std::setvbuf(file, nullptr, _IOFBF, BufferBytes);
    return std::unique_ptr<TraceFile>(new TraceFile(file));
}

void TraceFile::before(Machine& m, const Op& op)
{
    m_before = m.regs;
    m_psf = m.readRegister(reg::PSF);
    std::fprintf(m_file.get(), "%06x:", m.ip() * 2);
    int columns = 0;
    bool inMemory = m.ip() < m.codeWords;
    for (unsigned i = 0; inMemory && i < op.words && m.ip() + i < m.codeWords; ++i)
        columns += std::fprintf(m_file.get(), " %04x", m.codeWord(m.ip() + i));
    std::fprintf(m_file.get(), "%*s", std::max(0, WordColumns - columns), "");
}

bool TraceFile::after(Machine& m)
{
    std::FILE* file = m_file.get();
    for (unsigned n = 0; n < 16; ++n)
        if (m.regs[reg::A(n)] != m_before[reg::A(n)])
            std::fprintf(file, " A[%u]=%08x", n, m.regs[reg::A(n)]);
    for (const Named& r : plainRegisters)
        if (r.number != reg::PSF && m.regs[r.number] != m_before[r.number])
            std::fprintf(file, " %s=%0*x", r.name, registerMasks[r.number] > 0xFFFF ? 8 : 4,
                         m.regs[r.number]);
    for (unsigned number = 0; number < RegisterNumbers; ++number)
        if (isPeripheral(number) && m.regs[number] != m_before[number])
            std::fprintf(file, " M%u[%u]=%08x", number & 15, number >> 4, m.regs[number]);
    if (uint32_t psf = m.readRegister(reg::PSF); psf != m_psf)
        std::fprintf(file, " PSF=%04x", psf);
    std::fputc('\n', file);
    return !std::ferror(file);
}

void TraceFile::interrupt(Machine& m)
{
    std::fprintf(m_file.get(), "%06x: interrupt, requests %04x\n", m.ip() * 2,
                 m.regs[reg::IIR] & m.regs[reg::IMR]);
}

} // namespace maxq30
