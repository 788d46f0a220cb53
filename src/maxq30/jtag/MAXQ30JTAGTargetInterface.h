// A MAXQ30 device behind a JTAG adapter, under its on-chip debug engine, under its ROM bootloader during a
// load, or running free. What carries the scans is a derived class's matter: it binds the driver record,
// opens the link and then calls connect() of this class.
//
// Faults of the link are thrown as HException by the driver. Every operation that needs the device throws
// "Target is not connected" while the link is closed.
//
// Breakpoints and register frames are in MAXQ30JTAGDebugRegisters.cpp.
#pragma once

#include "debug/monitor/HMonitor.h"
#include "maxq30/jtag/JTAGBreakpoints.h"
#include "maxq30/jtag/MAXQ30BootloaderInformation.h"
#include "maxq30/jtag/maxqd.h"
#include "project/PropertyClass.h"
#include "project/PropertyValue.h"
#include "script/engine/ESContext.h"
#include "script/engine/ESObject.h"
#include "script/engine/ESValue.h"
#include "target/TargetInterfacePropertyValue.h"
#include "target/TargetRegisterInterface.h"

#include <memory>
#include <vector>

class MAXQ30JTAGCodeMemoryInterface;
class MAXQ30JTAGDataMemoryInterface;
class MAXQ30JTAGLoaderMemoryInterface;
class MAXQ30JTAGRegisters;

class MAXQ30JTAGTargetInterface : public HMonitor {
public:
    // Registers of the debug engine, by their width in bits.
    enum DebugRegister8 { DebugControl = 1 };
    enum DebugRegister24 { CodeBreakpoint0 = 5 }; // to 8; a word address
    enum DebugRegister32 { DataBreakpoint0 = 9 }; // to 10; a byte address
    static constexpr uint32_t NoCodeBreakpoint = 0xFFFFFF;
    static constexpr uint32_t NoDataBreakpoint = 0xFFFFFFFF;
    static constexpr unsigned char EnableDebugEngine = 0x80;
    static constexpr unsigned char DisableDebugEngine = 0;

    MAXQ30JTAGTargetInterface(const char* name, TargetInterfaceHelperFunctions* helpers);
    ~MAXQ30JTAGTargetInterface() override;

    void call(ESContext* context, ESObject* function, ESObject* self, int argc, ESValue* argv) override;
    // Checks the scan chain of the open link; the device is left alone. When it fails the link stays open.
    void connect(bool reset) override;
    void disconnect() override;
    bool isConnected() const override { return m_connected; }
    // Asks the device, unless it is known to have stopped; a stop fetches the program counter. At one for
    // which the conditions of its breakpoint don't hold the program goes on, and has not stopped. In a debug
    // session a link that fails here is lost, and false.
    bool isStopped() override;
    bool canBeExternallyDisconnected() const override { return true; }
    bool hasBeenExternallyDisconnected() override { return m_lost; }
    // The bootloader's memory while a load runs.
    TargetMemoryInterface* codeMemory() override;
    TargetMemoryInterface* dataMemory() override;
    TargetRegisterInterface* registers() override;
    void reset(bool stop, bool loader) override;
    void go() override;
    void start(bool setPC, unsigned pc) override; // from the reset vector, whatever the arguments say
    void attach() override;
    void step() override; // comes back at once; isStopped() tells when it is done
    void stop() override;
    void clear() override;
    void loadBeginInitial() override;
    void loadEndFinal() override;
    // Adds loaderMasterEraseCommand() and loaderRawCommand(bytes).
    ESObject* installScriptObject(ESContext* context) override;
    bool loaderEraseAll() const override { return true; }
    void getProperties(PropertyValueList& list) override;

    void setDebugSession(bool on) override { m_session = on; }
    // From the reset vector the program runs at once; otherwise the CPU is stopped as it leaves reset, and
    // goes on from the given address.
    void startDebugging(bool setPC, unsigned pc, bool stop) override;
    // Four of code and two of data, of those that are enabled; see JTAGBreakpoints. While the program runs
    // they are written at once.
    bool setBreakpoint(HBreakpoint* breakpoint) override;
    bool removeBreakpoint(HBreakpoint* breakpoint) override;
    HBreakpoint* matched() override { return m_matched; }
    bool canChain() override { return false; }
    int numTriggers() override { return HBreakpoint::NumTriggers; }
    const char* getTrigger(int trigger) override { return HBreakpoint::triggerName(trigger); }
    int getWriteTriggerNumber() override { return HBreakpoint::Write; }
    void setTraceEnabled(bool on) override; // counts from the next connect
    int numBreakpoints() const { return int(m_breakpoints.count()); }
    // Writes all six breakpoint registers.
    void setBreakpoints();

    // Brackets every access to a memory. On a running target the outermost pair stops the program and lets
    // it go on; DebugAccess.h is the way to hold one. A failed begin leaves nothing to end. In a debug
    // session a program that is found at a breakpoint stays there, for isStopped() to tell.
    void beginDebugAccess();
    void endDebugAccess();
    int debugAccessDepth() const { return m_debugAccessDepth; }

    // Sends the request; 754 bytes of answer are then to be read.
    void readRegisterMap();
    uint32_t readRegister(unsigned short number);
    void writeRegister(unsigned short number, unsigned long value);

    void writeDebugRegister8(DebugRegister8 which, uint8_t value);
    void writeDebugRegister24(DebugRegister24 which, uint32_t value);
    void writeDebugRegister32(DebugRegister32 which, uint32_t value);
    uint8_t readDebugRegister8(DebugRegister8 which);
    uint32_t readDebugRegister24(DebugRegister24 which);
    uint32_t readDebugRegister32(DebugRegister32 which);

    // Runs the project's erase script, with the erase time-out on the link. Throws "no erase script
    // specified" when there is none.
    bool executeEraseScript();

    // What the last load's bootloader reported, as the properties show it.
    QString supportedCommands() const { return m_bootloader.text("supportedCommands"); }
    QString codeSize() const { return m_bootloader.text("codeSize"); }
    QString dataSize() const { return m_bootloader.text("dataSize"); }
    QString fixedCodeLength() const { return m_bootloader.text("fixedCodeLength"); }
    QString fixedDataLength() const { return m_bootloader.text("fixedDataLength"); }
    QString romVersion() const { return m_bootloader.text("romVersion"); }
    QString variableLengthLoad() const { return m_bootloader.text("variableLengthLoad"); }
    QString variableLengthDump() const { return m_bootloader.text("variableLengthDump"); }
    QString variableLengthCRC() const { return m_bootloader.text("variableLengthCRC"); }
    QString variableLengthVerify() const { return m_bootloader.text("variableLengthVerify"); }
    QString variableLengthLoadAndVerify() const { return m_bootloader.text("variableLengthLoadAndVerify"); }
    QString variableLengthErase() const { return m_bootloader.text("variableLengthErase"); }
    QString fixedLengthLoad() const { return m_bootloader.text("fixedLengthLoad"); }
    QString fixedLengthDump() const { return m_bootloader.text("fixedLengthDump"); }
    QString fixedLengthCRC() const { return m_bootloader.text("fixedLengthCRC"); }
    QString fixedLengthVerify() const { return m_bootloader.text("fixedLengthVerify"); }
    QString fixedLengthLoadAndVerify() const { return m_bootloader.text("fixedLengthLoadAndVerify"); }
    QString fixedLengthErase() const { return m_bootloader.text("fixedLengthErase"); }
    QString supported(int family) const { return m_bootloader.supported(family); }

    // What is read from memory stays as it is until the program goes on: in a debug session, while the
    // program is known to stand, outside of a load.
    bool memoryStandsStill() const { return m_session && m_stopped && !m_loaderMemory; }
    // For the memories and registers of this target: the open driver record; throws while it is closed.
    _maxqd_t* driver();
    // Asserts reset and chooses what starts at its release, which is the caller's to do.
    void enterReset(unsigned char programmingBits);
    // Waits until the bootloader answers, at most 2 seconds.
    void awaitBootloader();
    // Tells the user of something that the session goes on without.
    void warn(const QString& text) { helpers()->error(text); }

protected:
    // What a derived class binds and opens; initialised to a closed record.
    _maxqd_t m_driver;
    // Closes what a failed connect left open.
    void closeLink();
    // The value of a number with a range; throws HException that names the property when the text is no
    // such number.
    static int checkedInteger(const PropertyValue& value);
    // Checks the settings, before anything is opened.
    void checkSettings() const;

private:
    void loaderCommand(const unsigned char* bytes, unsigned count);
    bool pollStopped();
    bool findStop();
    bool passes(uint32_t pc);
    bool atBreakpoint();
    void leaveStop();
    void noteValues();
    void writeDebugRegister(unsigned which, uint32_t value, unsigned bytes);
    uint32_t readDebugRegister(unsigned which, unsigned bytes);
    void breakpointsChanged();

    PropertyClass m_eraseTimeoutClass;
    PropertyClass m_traceEnabledClass;
    TargetInterfacePropertyValue m_eraseTimeout;
    TargetInterfacePropertyValue m_traceEnabled;
    bool m_connected = false;
    bool m_stopped = false;   // the CPU is known to be stopped in the debug engine
    bool m_stopAsked = false; // by stop() or by a step: no breakpoint's doing
    bool m_stepping = false;
    bool m_session = false; // a debugger looks at the program
    bool m_lost = false;    // the link failed in a session
    int m_debugAccessDepth = 0;
    bool m_wasStopped = false; // when the depth left 0
    std::unique_ptr<MAXQ30JTAGCodeMemoryInterface> m_codeMemory;
    std::unique_ptr<MAXQ30JTAGDataMemoryInterface> m_dataMemory;
    std::unique_ptr<MAXQ30JTAGLoaderMemoryInterface> m_loaderMemory; // null outside a load
    std::unique_ptr<MAXQ30JTAGRegisters> m_registers;
    JTAGBreakpoints m_breakpoints;
    HBreakpoint* m_matched = nullptr;
    MAXQ30BootloaderInformation m_bootloader;
};
