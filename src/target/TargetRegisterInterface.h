// Access to the registers of a stopped target by number. The processor class says what the numbers
// mean; values are at most 32 bits wide.
#pragma once

#include <cstdint>
#include <string>

class TargetRegisterInterface {
public:
    virtual ~TargetRegisterInterface() = default;
    virtual unsigned numRegisters() = 0;
    virtual std::string numberToName(unsigned number) = 0;
    virtual unsigned nameToNumber(const char* name) = 0;
    virtual unsigned sizeInBytes(unsigned number) = 0; // 0 when there is no such register
    virtual uint32_t getValue(unsigned number) = 0;
    virtual void setValue(unsigned number, uint32_t value) = 0;
    virtual unsigned pcIndex() = 0;
    // Byte addresses.
    virtual uint32_t getPC() = 0;
    virtual uint32_t getSP() = 0;
    virtual void setPC(uint32_t value) = 0;
    virtual void setSP(uint32_t value) = 0;
};
