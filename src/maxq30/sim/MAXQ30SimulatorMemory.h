// The memories of the simulated processor. Addresses and lengths go to the simulator library as they
// are; what lies outside its memories throws HException. The ranges are those of the memory map.
#pragma once

#include "target/memory/TargetMemoryInterface.h"

class MAXQSIMInterface;

class MAXQ30CodeMemory : public TargetMemoryInterface {
public:
    // The library's object is not owned.
    explicit MAXQ30CodeMemory(MAXQSIMInterface* simulator);
    void pokeBytes(uint32_t address, unsigned count, const unsigned char* bytes) override;
    void peekBytes(uint32_t address, unsigned count, unsigned char* bytes) override;

private:
    MAXQSIMInterface* m_simulator;
};

class MAXQ30DataMemory : public TargetMemoryInterface {
public:
    explicit MAXQ30DataMemory(MAXQSIMInterface* simulator);
    void pokeBytes(uint32_t address, unsigned count, const unsigned char* bytes) override;
    void peekBytes(uint32_t address, unsigned count, unsigned char* bytes) override;

private:
    MAXQSIMInterface* m_simulator;
};
