// Numbers, widths and names of the processor's registers. A number is (index << 4) | module, 9 bits.
#pragma once

#include <array>
#include <cstdint>

namespace maxq30 {

constexpr unsigned RegisterNumbers = 512;

constexpr unsigned registerNumber(unsigned module, unsigned index)
{
    return index << 4 | module;
}

// Every register that holds something, with its module, index and width in bits. FP and the
// accumulator are views of others and so are missing.
#define MAXQ30_REGISTERS(X)                                                                                  \
    X(AP, "AP", 8, 0, 4)                                                                                     \
    X(APC, "APC", 8, 1, 8)                                                                                   \
    X(PSF, "PSF", 8, 4, 16)                                                                                  \
    X(IC, "IC", 8, 5, 8)                                                                                     \
    X(IMR, "IMR", 8, 6, 16)                                                                                  \
    X(SC, "SC", 8, 8, 16)                                                                                    \
    X(IPR0, "IPR0", 8, 9, 16)                                                                                \
    X(IPR1, "IPR1", 8, 10, 16)                                                                               \
    X(IIR, "IIR", 8, 11, 16)                                                                                 \
    X(CKCN, "CKCN", 8, 14, 16)                                                                               \
    X(WDCN, "WDCN", 8, 15, 8)                                                                                \
    X(SP, "SP", 13, 1, 32)                                                                                   \
    X(IV, "IV", 13, 2, 32)                                                                                   \
    X(LC0, "LC[0]", 13, 6, 16)                                                                               \
    X(LC1, "LC[1]", 13, 7, 16)                                                                               \
    X(BP, "BP", 14, 0, 32)                                                                                   \
    X(OFFS, "OFFS", 14, 3, 32)                                                                               \
    X(DP0, "DP[0]", 15, 3, 32)                                                                               \
    X(DP1, "DP[1]", 15, 13, 32)

namespace reg {
#define X(symbol, name, module, index, bits) constexpr unsigned symbol = registerNumber(module, index);
MAXQ30_REGISTERS(X)
#undef X
constexpr unsigned ACC = registerNumber(10, 0);
constexpr unsigned ActiveA = registerNumber(10, 1); // A[AP], the same accumulator
constexpr unsigned PFX = registerNumber(11, 0);
constexpr unsigned IP = registerNumber(12, 0);
constexpr unsigned FP = registerNumber(14, 11);
// A second number under which a debugger finds DP[1]; instructions name an access through DP[0] by it.
constexpr unsigned DP1ForDebuggers = registerNumber(15, 7);
constexpr unsigned A(unsigned n)
{
    return registerNumber(9, n);
}
} // namespace reg

// Bits of PSF and IC.
constexpr uint32_t FlagE = 0x01;
constexpr uint32_t FlagC = 0x02;
constexpr uint32_t FlagS = 0x40;
constexpr uint32_t FlagZ = 0x80;
constexpr uint32_t InterruptEnable = 0x01;
constexpr uint32_t InterruptInService = 0x02;

constexpr unsigned PeripheralModules = 5;
constexpr bool isPeripheral(unsigned number)
{
    return (number & 15) < PeripheralModules;
}

// The bits that a register keeps; 0 for a number without storage of its own.
constexpr auto makeRegisterMasks()
{
    std::array<uint32_t, RegisterNumbers> masks{};
    for (unsigned number = 0; number < RegisterNumbers; ++number)
        if (isPeripheral(number))
            masks[number] = 0xFFFFFFFF;
    for (unsigned n = 0; n < 16; ++n)
        masks[reg::A(n)] = 0xFFFFFFFF;
#define X(symbol, name, module, index, bits) masks[reg::symbol] = uint32_t((uint64_t(1) << bits) - 1);
    MAXQ30_REGISTERS(X)
#undef X
    return masks;
}
inline constexpr auto RegisterMasks = makeRegisterMasks();

} // namespace maxq30
