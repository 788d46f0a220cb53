#include "maxq30/jtag/MAXQ30JTAGTargetInterface.h"

#include "debug/monitor/HBreakpoint.h"
#include "maxq30/cpu/MAXQ30Registers.h"
#include "maxq30/jtag/JTAGFrames.h"
#include "maxq30/jtag/JTAGTrace.h"
#include "maxq30/jtag/LinkTimeout.h"
#include "maxq30/jtag/MAXQ30JTAGLoaderMemoryInterface.h"
#include "maxq30/jtag/MAXQ30JTAGMemoryInterface.h"
#include "maxq30/jtag/MAXQ30JTAGRegisters.h"
#include "project/PropertyClass.h"
#include "project/PropertyValue.h"
#include "script/engine/ESContext.h"
#include "script/engine/ESObject.h"
#include "script/engine/ESValue.h"
#include "script/native/Builtin.h"
#include "support/Bracket.h"
#include "support/HException.h"
#include "target/TargetRegisterInterface.h"
#include "target/download/TargetInterfaceHelperFunctions.h"
#include "target/memory/TargetMemoryInterface.h"

#include <QElapsedTimer>

namespace {

constexpr int Capabilities = 0x47F;
constexpr qint64 BootloaderTimeout = 2000; // milliseconds

enum Function {
    LoaderMasterEraseCommand = 20,
    LoaderRawCommand = 21,
};

constexpr Builtin Functions[] = {
    {"loaderMasterEraseCommand", "MAXQ30JTAGTargetInterface.prototype.loaderMasterEraseCommand", 0, false,
     LoaderMasterEraseCommand},
    {"loaderRawCommand", "MAXQ30JTAGTargetInterface.prototype.loaderRawCommand", 1, false, LoaderRawCommand},
};

} // namespace

MAXQ30JTAGTargetInterface::MAXQ30JTAGTargetInterface(const char* name,
                                                     TargetInterfaceHelperFunctions* helpers)
    : HMonitor(Capabilities, name, helpers),
      m_eraseTimeoutClass("eraseTimeout", PropertyClass::IntegerRange, "10000", QString(), "Connection",
                          "Erase Timeout", "The timeout period for an erase operation in milliseconds."),
      m_traceEnabledClass("traceEnabled", PropertyClass::Boolean, "false", QString(), "JTAG", "Enable Trace",
                          "Specifies whether JTAG trace output is enabled."),
      m_eraseTimeout(&m_eraseTimeoutClass), m_traceEnabled(&m_traceEnabledClass),
      m_codeMemory(std::make_unique<MAXQ30JTAGCodeMemoryInterface>(*this)),
      m_dataMemory(std::make_unique<MAXQ30JTAGDataMemoryInterface>(*this)),
      m_registers(std::make_unique<MAXQ30JTAGRegisters>(*this)), m_breakpoints(*m_dataMemory)
{
    static_assert(LoaderMasterEraseCommand == FirstFreeScriptId);
    m_eraseTimeoutClass.setRange(0, 100000);
    MAXQD_init(&m_driver);
}

MAXQ30JTAGTargetInterface::~MAXQ30JTAGTargetInterface()
{
    closeLink();
}

_maxqd_t* MAXQ30JTAGTargetInterface::driver()
{
    if (!m_driver.link)
        throw HException("Target is not connected");
    if (m_lost)
        throw HException("Target connection has been lost");
    return &m_driver;
}

void MAXQ30JTAGTargetInterface::closeLink()
{
    if (m_driver.link)
        m_driver.close(&m_driver);
}

int MAXQ30JTAGTargetInterface::checkedInteger(const PropertyValue& value)
{
    const PropertyClass* property = value.propertyClass();
    bool isNumber = false;
    QString text = value.toString().trimmed();
    int base = text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive) ? 16 : 10;
    int number = text.toInt(&isNumber, base);
    if (!isNumber || number < property->minimum() || number > property->maximum())
        throw HException(QStringLiteral("%1 must be a number from %2 to %3, not \"%4\"")
                             .arg(property->shortDescription())
                             .arg(property->minimum())
                             .arg(property->maximum())
                             .arg(text));
    return number;
}

void MAXQ30JTAGTargetInterface::checkSettings() const
{
    checkedInteger(m_eraseTimeout);
}

void MAXQ30JTAGTargetInterface::connect(bool)
{
    if (m_traceEnabled.toBool())
        JTAGTrace::install(&m_driver);
    _maxqd_t* maxqd = driver();
    maxqd->trst(maxqd);
    maxqd->shiftInIR(maxqd, maxqd::BypassInstruction);
    for (unsigned char sent : {0x5A, 0x42, 0x00, 0x7F}) {
        // The bypass register delays what it is sent by one bit.
        unsigned char back = maxqd->shiftInOutDR(maxqd, sent, nullptr);
        if (back >> 1 != sent)
            throw HException("The JTAG interface is not responding - "
                             "Check the JTAG connections and that the target is powered");
    }
    m_connected = true;
    m_lost = false;
}

void MAXQ30JTAGTargetInterface::disconnect()
{
    if (!m_connected)
        return;
    m_connected = false;
    m_bootloader.forget();
    m_loaderMemory.reset(); // a load that was abandoned
    m_registers->clear();
    leaveStop();
    m_debugAccessDepth = 0;
    m_lost = false;
    closeLink();
}

TargetMemoryInterface* MAXQ30JTAGTargetInterface::codeMemory()
{
    if (loadDepth() > 0 && m_loaderMemory)
        return m_loaderMemory.get();
    return m_codeMemory.get();
}

TargetMemoryInterface* MAXQ30JTAGTargetInterface::dataMemory()
{
    return m_dataMemory.get();
}

TargetRegisterInterface* MAXQ30JTAGTargetInterface::registers()
{
    return m_registers.get();
}

void MAXQ30JTAGTargetInterface::enterReset(unsigned char programmingBits)
{
    _maxqd_t* maxqd = driver();
    maxqd->setNRST(maxqd, 0);
    maxqd->trst(maxqd);
    maxqd->setSystemProgrammingBits(maxqd, programmingBits);
}

void MAXQ30JTAGTargetInterface::awaitBootloader()
{
    _maxqd_t* maxqd = driver();
    QElapsedTimer timer;
    timer.start();
    for (;;) {
        unsigned char status = 0;
        maxqd->shiftInOutDR(maxqd, 0, &status);
        if (status)
            return;
        if (timer.elapsed() > BootloaderTimeout)
            throw HException("Bootloader has not started");
    }
}

void MAXQ30JTAGTargetInterface::reset(bool stop, bool loader)
{
    _maxqd_t* maxqd = driver();
    leaveStop();
    m_stopped = stop;
    enterReset(loader ? maxqd::StartBootloader : maxqd::StartProgram);
    if (stop && !loader) {
        // Sent during reset, the CPU stops as it leaves it.
        maxqd->shiftInIR(maxqd, maxqd::ChannelInstruction);
        MAXQD_shiftInDR8(maxqd, jtag::StopCPU);
    }
    maxqd->setNRST(maxqd, 1);
    if (loader)
        awaitBootloader();
}

void MAXQ30JTAGTargetInterface::start(bool, unsigned)
{
    _maxqd_t* maxqd = driver();
    leaveStop();
    enterReset(maxqd::StartProgram);
    maxqd->shiftInIR(maxqd, maxqd::ChannelInstruction);
    maxqd->setNRST(maxqd, 1);
}

void MAXQ30JTAGTargetInterface::startDebugging(bool setPC, unsigned pc, bool stop)
{
    _maxqd_t* maxqd = driver();
    bool fromReset = !stop && (!setPC || pc == 0);
    leaveStop();
    enterReset(maxqd::StartProgram);
    maxqd->shiftInIR(maxqd, maxqd::ChannelInstruction);
    writeDebugRegister8(DebugControl, EnableDebugEngine);
    setBreakpoints();
    if (!fromReset)
        MAXQD_shiftInDR8(maxqd, jtag::StopCPU);
    maxqd->setNRST(maxqd, 1);
    if (fromReset)
        return;
    if (!pollStopped())
        throw HException("Cannot stop CPU");
    m_registers->clear();
    if (setPC)
        m_registers->setPC(pc);
    m_stopped = true;
    // The hardware would pass a breakpoint at the first instruction.
    m_matched = stop ? nullptr : m_breakpoints.codeAt(m_registers->getPC());
    if (stop || m_matched)
        return;
    noteValues();
    leaveStop();
    MAXQD_shiftInDR8(maxqd, jtag::Run);
}

void MAXQ30JTAGTargetInterface::attach()
{
    _maxqd_t* maxqd = driver();
    maxqd->trst(maxqd);
    maxqd->setSystemProgrammingBits(maxqd, maxqd::StartProgram);
    maxqd->shiftInIR(maxqd, maxqd::ChannelInstruction);
    writeDebugRegister8(DebugControl, EnableDebugEngine);
    leaveStop();
    setBreakpoints();
}

// The program is no longer known to stand: nothing that was read of it holds.
void MAXQ30JTAGTargetInterface::leaveStop()
{
    m_stopped = false;
    m_stopAsked = false;
    m_stepping = false;
    m_matched = nullptr;
    m_codeMemory->forget();
    m_dataMemory->forget();
}

// Outside of a session nobody looks at memory while the program runs.
void MAXQ30JTAGTargetInterface::noteValues()
{
    if (m_session && m_stopped)
        m_breakpoints.noteValues();
}

void MAXQ30JTAGTargetInterface::stop()
{
    MAXQD_shiftInDR8(driver(), jtag::StopCPU);
    m_stopAsked = true;
}

void MAXQ30JTAGTargetInterface::step()
{
    _maxqd_t* maxqd = driver();
    leaveStop();
    m_stepping = true;
    MAXQD_shiftInDR8(maxqd, jtag::Step);
}

void MAXQ30JTAGTargetInterface::go()
{
    _maxqd_t* maxqd = driver();
    noteValues();
    leaveStop();
    setBreakpoints();
    MAXQD_shiftInDR8(maxqd, jtag::Run);
}

void MAXQ30JTAGTargetInterface::clear()
{
    m_breakpoints.clear();
    m_debugAccessDepth = 0;
    bool stopped = m_stopped;
    leaveStop();
    writeDebugRegister8(DebugControl, DisableDebugEngine);
    if (stopped)
        MAXQD_shiftInDR8(driver(), jtag::Run);
}

bool MAXQ30JTAGTargetInterface::pollStopped()
{
    _maxqd_t* maxqd = driver();
    unsigned char status = 0;
    MAXQD_shiftInDR8(maxqd, jtag::Poll);
    maxqd->shiftInOutDR(maxqd, 0, &status);
    return status != 0;
}

bool MAXQ30JTAGTargetInterface::isStopped()
{
    if (m_stopped)
        return true;
    if (!m_session)
        return findStop();
    if (m_lost)
        return false;
    try {
        driver();
        return findStop();
    } catch (const HException& failure) {
        // A link that has lost a byte has lost its place. It is told once, as the loss of the connection.
        m_lost = true;
        helpers()->message(failure.text());
        return false;
    }
}

bool MAXQ30JTAGTargetInterface::findStop()
{
    if (!pollStopped())
        return false;
    m_registers->clear();
    Bracket looking([this] { m_stopped = false; });
    m_stopped = true;
    bool asked = m_stopAsked || m_stepping;
    // One register is read sooner than the whole map, which a stop that is none does not need.
    if (!asked && m_breakpoints.mayPass() && passes(readRegister(MAXQ30Registers::IP) * 2)) {
        noteValues();
        leaveStop();
        MAXQD_shiftInDR8(driver(), jtag::Run); // the breakpoints are written
        return false;
    }
    uint32_t pc = m_registers->getPC();
    if (!m_stepping)
        m_matched = m_stopAsked ? m_breakpoints.codeAt(pc) : m_breakpoints.match(pc);
    if (m_matched && !m_breakpoints.holds(m_matched))
        m_matched = nullptr;
    looking.dismiss();
    return true;
}

// The breakpoint that has stopped the program lets it go on: its condition does not hold, or the hit is to be
// ignored.
bool MAXQ30JTAGTargetInterface::passes(uint32_t pc)
{
    HBreakpoint* breakpoint = m_breakpoints.match(pc);
    if (!breakpoint || (m_breakpoints.holds(breakpoint) && breakpoint->count == 0))
        return false;
    if (m_breakpoints.holds(breakpoint))
        --breakpoint->count;
    return true;
}

// Of a program that was stopped for an access of memory: whether it stands where it would have stopped by
// itself, or has done so between the latest poll and the access.
bool MAXQ30JTAGTargetInterface::atBreakpoint()
{
    if (m_breakpoints.hasCode() && m_breakpoints.codeAt(readRegister(MAXQ30Registers::IP) * 2))
        return true;
    return m_breakpoints.dataChanged();
}

void MAXQ30JTAGTargetInterface::beginDebugAccess()
{
    _maxqd_t* maxqd = driver();
    if (m_debugAccessDepth++ > 0)
        return;
    m_wasStopped = m_stopped;
    if (m_stopped)
        return;
    Bracket depth([this] { m_debugAccessDepth = 0; });
    MAXQD_shiftInDR8(maxqd, jtag::StopCPU);
    if (!pollStopped())
        throw HException("Cannot stop CPU");
    if (m_session && atBreakpoint())
        m_wasStopped = true;
    depth.dismiss();
}

void MAXQ30JTAGTargetInterface::endDebugAccess()
{
    if (m_debugAccessDepth == 0) // the access was given up meanwhile
        return;
    if (--m_debugAccessDepth == 0 && !m_wasStopped)
        MAXQD_shiftInDR8(driver(), jtag::Run);
}

void MAXQ30JTAGTargetInterface::loadBeginInitial()
{
    m_loaderMemory.reset(); // of a load that was abandoned
    m_loaderMemory = std::make_unique<MAXQ30JTAGLoaderMemoryInterface>(*this, *m_codeMemory);
    setDeviceId(m_loaderMemory->deviceId());
    m_bootloader.set(m_loaderMemory->report());
}

void MAXQ30JTAGTargetInterface::loadEndFinal()
{
    // Gone in every case: what could not be flushed is not tried again.
    if (auto memory = std::move(m_loaderMemory))
        memory->finish();
}

bool MAXQ30JTAGTargetInterface::executeEraseScript()
{
    LinkTimeout timeout(driver(), unsigned(checkedInteger(m_eraseTimeout)));
    if (executeScript("target_erase_script", "Executing erase script ", false))
        return true;
    HException failure("no erase script specified");
    if (project())
        failure.setHint("The project's property target_erase_script is empty.");
    else
        failure.setHint("Erasing takes the script in the property target_erase_script of a project; "
                        "name it with -solution, -project and -config.");
    throw failure;
}

ESObject* MAXQ30JTAGTargetInterface::installScriptObject(ESContext* context)
{
    ESObject* object = HMonitor::installScriptObject(context);
    for (const Builtin& row : Functions)
        biinst(context, object, row, context->functionPrototype(), this);
    return object;
}

void MAXQ30JTAGTargetInterface::call(ESContext* context, ESObject* function, ESObject* self, int argc,
                                     ESValue* argv)
{
    switch (function->builtinId()) {
    case LoaderMasterEraseCommand: {
        const unsigned char command[] = {jtag::MasterErase, 0};
        loaderCommand(command, sizeof command);
        break;
    }
    case LoaderRawCommand: {
        unsigned count = 0;
        auto bytes = context->toByteArray(biarg(argc, argv, 0), count);
        driver();
        if (count > 0)
            loaderCommand(bytes.get(), count);
        break;
    }
    default: HMonitor::call(context, function, self, argc, argv); return;
    }
    argv[0] = g_undefined;
}

// Outside a load nobody knows whether there is a bootloader to ask what it refused.
void MAXQ30JTAGTargetInterface::loaderCommand(const unsigned char* bytes, unsigned count)
{
    _maxqd_t* maxqd = driver();
    if (m_loaderMemory)
        m_loaderMemory->command(bytes, count);
    else
        maxqd->loaderWrite(maxqd, bytes, count);
}

void MAXQ30JTAGTargetInterface::setTraceEnabled(bool on)
{
    m_traceEnabled.setValue(on);
}

void MAXQ30JTAGTargetInterface::getProperties(PropertyValueList& list)
{
    list.appendUnique(&m_eraseTimeout);
    if (isConnected() && m_bootloader.known())
        m_bootloader.getProperties(list);
    list.appendUnique(&m_traceEnabled);
    HMonitor::getProperties(list);
}
