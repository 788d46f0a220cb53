// The registers of a stopped MAXQ30 device. The first value asked for after a stop fetches the whole
// register map in one transfer, which then serves until the next stop.
#pragma once

#include "maxq30/cpu/MAXQ30Registers.h"

#include <bitset>

class MAXQ30JTAGTargetInterface;

class MAXQ30JTAGRegisters : public MAXQ30Registers {
public:
    static constexpr unsigned MapAnswerBytes = 754;

    explicit MAXQ30JTAGRegisters(MAXQ30JTAGTargetInterface& target) : m_target(target) {}

    // A register that the map lacks has the value that was last stored, at first 0.
    uint32_t getValue1(unsigned number) override;
    // The map keeps the old value: a register that was not read before still has it.
    void setValue1(unsigned number, uint32_t value) override;
    // Forgets what was fetched.
    void clear();

private:
    void fetchMap();

    MAXQ30JTAGTargetInterface& m_target;
    unsigned char m_answer[MapAnswerBytes];
    const unsigned char* m_map = nullptr; // into the answer; null while none is held
    std::bitset<NumRegisters> m_valid;    // fetched since the last stop
};
