// The target "MAXQ30 Core Simulator": the program runs inside this process, on a processor core that a
// simulator library brings. The project names the library (simulator_DLL_FileName), its parameter text
// and its ROM file; the memory map gives the ranges of memory. One simulator can be connected at a time.
#pragma once

#include "maxq30/sim/SimulatedHMonitor.h"
#include "sim/maxqsim.h"

class MAXQ30CodeMemory;
class MAXQ30DataMemory;
class MAXQ30SimulatorRegisters;

class MAXQ30Simulator : public SimulatedHMonitor, private MAXQSIMExtendedCallBacks {
public:
    explicit MAXQ30Simulator(TargetInterfaceHelperFunctions* helpers);
    ~MAXQ30Simulator() override;

    // Throws HException and leaves nothing behind when one of the parts is missing.
    void connect(bool reset) override;
    void disconnect() override;
    TargetMemoryInterface* codeMemory() override;
    TargetMemoryInterface* dataMemory() override;
    TargetRegisterInterface* registers() override;
    int capabilities() const override;

    void checkReset() override;
    void checkIRQ() override {} // the library delivers interrupts itself
    unsigned singleStep() override;
    MAXQSIMRunner* runner() override { return m_runner; }

private:
    void openLibrary();
    void initialiseLibrary();
    void askForCallbacks();
    void closeLibrary();
    QString setting(const char* name) const;

    // The library's callbacks.
    void onDataAccess(bool read, unsigned address, unsigned value, unsigned byteAccess) override;
    void onDataError(bool read, unsigned address) override;
    void onDataAlignmentError(bool read, unsigned address) override;
    void onCodeError(unsigned address) override;
    void onInvalidInstruction(unsigned address) override;
    void onMiscError(const char* text, unsigned address) override;
    void onLongDataAccess(bool read, unsigned address, unsigned value) override;
    unsigned onPeripheralLoad(unsigned number, unsigned size) override;
    void onPeripheralStore(unsigned number, unsigned size, unsigned value) override;
    unsigned onPollForInterrupts(unsigned requests) override;

    std::unique_ptr<MAXQ30SimulatorRegisters> m_registers;
    std::unique_ptr<MAXQ30CodeMemory> m_codeMemory;
    std::unique_ptr<MAXQ30DataMemory> m_dataMemory;
    bool m_ownsLibrary = false;        // the connection below is this target's
    MAXQSIMRunner* m_runner = nullptr; // the library's; null when it has none
    QByteArray m_initialiseError;

    static MAXQSIMInterface* m_simif;
    static void* m_handle;
};
