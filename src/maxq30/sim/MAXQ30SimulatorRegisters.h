// The registers of the simulated processor, which keeps the values itself. IP counts words there and
// bytes here.
#pragma once

#include "maxq30/cpu/MAXQ30Registers.h"
#include "sim/maxqsim.h"

class MAXQ30SimulatorRegisters final : public MAXQ30Registers {
public:
    // The library's object is not owned.
    explicit MAXQ30SimulatorRegisters(MAXQSIMInterface* simulator) : m_simulator(simulator) {}

    uint32_t getPC() override { return m_simulator->readRegister(moduleOf(IP), indexOf(IP)) * 2; }
    void setPC(uint32_t value) override { m_simulator->writeRegister(moduleOf(IP), indexOf(IP), value / 2); }
    uint32_t getSP() override { return m_simulator->readRegister(moduleOf(SP), indexOf(SP)); }

    uint32_t getValue1(unsigned number) override
    {
        uint32_t value = m_simulator->readRegister(moduleOf(number), indexOf(number));
        return number == IP ? value * 2 : value;
    }
    void setValue1(unsigned number, uint32_t value) override
    {
        m_simulator->writeRegister(moduleOf(number), indexOf(number), number == IP ? value / 2 : value);
    }

private:
    MAXQSIMInterface* m_simulator;
};
