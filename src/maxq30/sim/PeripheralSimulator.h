// Peripherals that a user describes in a script file instead of in the simulator core. The file runs in a
// context of its own, with the target object at hand, and defines the functions reset, connect,
// loadPeripheral, storePeripheral and pollForInterrupts, which the host calls at fixed events.
#pragma once

#include "script/host/BuiltinScript.h"

#include <QString>
#include <memory>

class ESContext;
class TargetInterface;

class PeripheralSimulator : public BuiltinScript {
public:
    // Evaluates the file; one that cannot be opened leaves the script empty. The target is not owned.
    // Script failures here and in the events are thrown as HException.
    PeripheralSimulator(const QString& fileName, TargetInterface* target);
    ~PeripheralSimulator() override;

    // Each returns the script's numeric result, truncated towards zero; 0 for what is no number.
    int reset();
    int connect(const QString& name);
    // A register of the peripheral window by its number, (index << 4) | module; size in bytes. The flag is
    // true for a read by the program.
    int loadPeripheral(unsigned address, unsigned size, bool flag);
    int storePeripheral(unsigned address, unsigned size, unsigned value);
    // Takes the interrupt requests that are pending, bit n for module n, and returns the new ones.
    int pollForInterrupts(unsigned requests);

private:
    int executeJavaScript(const QString& text);

    std::unique_ptr<ESContext> m_context;
    QString m_fileName;
};
