// The registers of a MAXQ30 by number, and a file of their values. A number is (index << 4) | module,
// 9 bits. The base keeps the values itself, as a stack frame needs them; a target class overrides
// getValue1 and setValue1 to reach its registers.
#pragma once

#include "target/TargetRegisterInterface.h"

#include <array>
#include <span>

class MAXQ30Registers : public TargetRegisterInterface {
public:
    static constexpr unsigned NumRegisters = 512;
    static constexpr unsigned NumModules = 16;
    static constexpr unsigned NumIndexes = 32;

    // Numbers that code refers to.
    enum Number : unsigned {
        PSF = 72,
        IC = 88,
        SC = 136,
        IP = 12,
        SP = 29,
        LC0 = 109,
        LC1 = 125,
        BP = 14,
        OFFS = 62,
        FP = 190, // computed: BP plus OFFS
        DP0 = 63,
        DP1 = 127,
    };
    // What nameToNumber returns for the names of the two arrays that need an index.
    enum ArrayNumber : unsigned { ArrayA = 9, ArrayLC = 4096, ArrayDP = 4097 };
    // Bits of PSF, and the global enable of IC.
    enum Flag : unsigned { FlagE = 0x01, FlagC = 0x02, FlagS = 0x40, FlagZ = 0x80 };
    static constexpr unsigned GlobalInterruptEnable = 0x01;

    static constexpr unsigned moduleOf(unsigned number) { return number & 15; }
    static constexpr unsigned indexOf(unsigned number) { return number >> 4 & 31; }

    MAXQ30Registers() = default;
    // The values of all registers of another file, read through its getValue.
    explicit MAXQ30Registers(MAXQ30Registers* other);

    unsigned numRegisters() override { return NumRegisters; }
    std::string numberToName(unsigned number) override;
    // 0 for a name that means nothing.
    unsigned nameToNumber(const char* name) override;
    unsigned sizeInBytes(unsigned number) override;
    uint32_t getValue(unsigned number) override;
    void setValue(unsigned number, uint32_t value) override;
    unsigned pcIndex() override { return IP; }
    uint32_t getPC() override { return getValue(IP); }
    uint32_t getSP() override { return getValue(SP); }
    void setPC(uint32_t value) override { setValue(IP, value); }
    void setSP(uint32_t value) override { setValue(SP, value); }

    // The raw value, without the computed register. Numbers from 512 up read as 0 and take nothing.
    virtual uint32_t getValue1(unsigned number);
    virtual void setValue1(unsigned number, uint32_t value);

    // The numbers of all registers with a name, in the order in which they are listed.
    static std::span<const unsigned> named();

    // Byte offset in the register map that a device's debug engine sends; -1 when it is not there.
    static int offsetInRegisterMap(unsigned number);

protected:
    uint32_t& storage(unsigned number) { return m_values[moduleOf(number) * NumIndexes + indexOf(number)]; }

private:
    std::array<uint32_t, NumModules * NumIndexes> m_values{}; // by module, then index
};
