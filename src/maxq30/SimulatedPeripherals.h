// Peripherals that a user simulates outside the processor core. A simulated target asks them when the
// program reaches the peripheral window, and at a reset. Failures are thrown as HException.
#pragma once

#include <QString>
#include <functional>
#include <memory>

class TargetInterface;

class SimulatedPeripherals {
public:
    virtual ~SimulatedPeripherals() = default;

    virtual int reset() = 0;
    virtual int connect(const QString& name) = 0;
    // A register of the peripheral window, by its number; the flag goes to the description as it is.
    virtual int loadPeripheral(unsigned address, unsigned size, bool flag) = 0;
    virtual int storePeripheral(unsigned address, unsigned size, unsigned value) = 0;
    // Takes the interrupt requests that are pending, bit n for module n, and answers the new ones.
    virtual int pollForInterrupts(unsigned requests) = 0;

    // Makes the peripherals that a file describes, for a target that outlives them.
    using Maker = std::function<std::unique_ptr<SimulatedPeripherals>(const QString& file, TargetInterface*)>;
};
