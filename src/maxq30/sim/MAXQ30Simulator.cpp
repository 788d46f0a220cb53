#include "maxq30/sim/MAXQ30Simulator.h"

#include "maxq30/sim/MAXQ30SimulatorMemory.h"
#include "maxq30/sim/MAXQ30SimulatorRegisters.h"
#include "project/BuildSystem.h"
#include "project/MacroSystem.h"
#include "project/memorymap/MemoryMapOpenFiles.h"
#include "support/Bracket.h"
#include "support/HException.h"
#include "support/QTx.h"

#include <algorithm>

namespace {

constexpr char SettingMissing[] = "simulation filename project property not set";
constexpr int CapabilitySimulator = 0x200;

QString expanded(const QString& text)
{
    return MacroSystem::replaceMacros(macroSystem.globalMacros(true), text);
}

// What a segment has beyond the last address does not exist.
void addRange(TargetMemoryInterface& memory, const MemoryMapElement& segment)
{
    if (segment.size() == 0)
        return;
    uint32_t first = segment.address();
    memory.addressRanges().add(first, first + std::min(segment.size() - 1, UINT32_MAX - first), false);
}

} // namespace

MAXQSIMInterface* MAXQ30Simulator::m_simif = nullptr;
void* MAXQ30Simulator::m_handle = nullptr;

MAXQ30Simulator::MAXQ30Simulator(TargetInterfaceHelperFunctions* helpers)
    : SimulatedHMonitor("MAXQ30 Core Simulator", false, false, helpers)
{
}

MAXQ30Simulator::~MAXQ30Simulator()
{
    closeLibrary();
}

TargetMemoryInterface* MAXQ30Simulator::codeMemory()
{
    return m_codeMemory.get();
}

TargetMemoryInterface* MAXQ30Simulator::dataMemory()
{
    return m_dataMemory.get();
}

TargetRegisterInterface* MAXQ30Simulator::registers()
{
    return m_registers.get();
}

int MAXQ30Simulator::capabilities() const
{
    return SimulatedHMonitor::capabilities() | CapabilitySimulator;
}

QString MAXQ30Simulator::setting(const char* name) const
{
    return buildSystem ? propertyValue(buildSystem->findPropertyClass(QString::fromLatin1(name)), false)
                       : QString();
}

void MAXQ30Simulator::connect(bool)
{
    if (isConnected())
        disconnect();
    QString mapFile = memoryMapFile();
    MemoryMap* map = mapFile.isEmpty()
                         ? nullptr
                         : MemoryMapOpenFiles::getMemoryMapFile(mapFile, macroSystem.globalMacros(true));
    if (!map)
        throw HException("cannot load memory map file: " + mapFile);
    Bracket connecting([this] { disconnect(); });
    openLibrary();
    m_codeMemory = std::make_unique<MAXQ30CodeMemory>(m_simif);
    m_dataMemory = std::make_unique<MAXQ30DataMemory>(m_simif);
    m_registers = std::make_unique<MAXQ30SimulatorRegisters>(m_simif);
    const QList<MemoryMapElement*> segments = map->getSegments(true);
    for (const MemoryMapElement* segment : segments) {
        if (segment->addressSpace() == QLatin1String("CODE"))
            addRange(*m_codeMemory, *segment);
        else if (segment->addressSpace() == QLatin1String("DATA"))
            addRange(*m_dataMemory, *segment);
    }
    initialiseLibrary();
    SimulatedHMonitor::connect();
    askForCallbacks();
    for (const MemoryMapElement* segment : segments)
        if (segment->name() == QLatin1String("FLASH"))
            setExecutionCountRange(segment->address(), segment->size());
    connecting.dismiss();
}

void MAXQ30Simulator::openLibrary()
{
    QString file = expanded(setting("simulator_DLL_FileName"));
    if (file.isEmpty())
        throw HException(SettingMissing);
    if (m_handle)
        throw HException("another simulator is connected");
    m_handle = QTx::loadDLL(file);
    if (!m_handle) {
        HException failure("Cannot load " + file);
        failure.setHint(QTx::dllError().toStdString());
        throw failure;
    }
    m_ownsLibrary = true;
    auto make = reinterpret_cast<NewMAXQSIMInterface>(QTx::getDLLAddress(m_handle, "newMAXQSIMInterface"));
    if (!make)
        throw HException("Cannot find newMAXQSIMInterface");
    m_simif = make();
    if (!m_simif)
        throw HException("Cannot find newMAXQSIMInterface");
}

void MAXQ30Simulator::initialiseLibrary()
{
    QString parameter = setting("simulator_DLL_Parameter");
    QString romFile = setting("simulator_DLL_RomFileName");
    if (romFile.isEmpty())
        throw HException(SettingMissing);
    romFile = expanded(romFile);
    m_initialiseError.clear();
    if (m_simif->initialise(this, parameter.toLatin1().constData(), romFile.toLatin1().constData())) {
        auto runner = reinterpret_cast<RunnerOfMAXQSIM>(QTx::getDLLAddress(m_handle, "runnerOfMAXQSIM"));
        m_runner = runner ? runner(m_simif) : nullptr;
        return;
    }
    // What the library says of it helps more than the fixed text.
    HException failure("Cannot open utility ROM hex file " + romFile);
    failure.setHint(m_initialiseError.toStdString());
    throw failure;
}

// Callbacks behind the first six, which a library may offer.
void MAXQ30Simulator::askForCallbacks()
{
    auto extend =
        reinterpret_cast<ExtendMAXQSIMCallBacks>(QTx::getDLLAddress(m_handle, "extendMAXQSIMCallBacks"));
    if (!extend)
        return;
    unsigned features = MAXQSIM_LongDataAccesses;
    if (peripherals())
        features |= MAXQSIM_Peripherals;
    extend(m_simif, features);
}

void MAXQ30Simulator::closeLibrary()
{
    if (!m_ownsLibrary)
        return;
    if (m_simif) {
        m_simif->close();
        auto destroy =
            reinterpret_cast<DeleteMAXQSIMInterface>(QTx::getDLLAddress(m_handle, "deleteMAXQSIMInterface"));
        if (destroy)
            destroy(m_simif);
    }
    QTx::unloadDLL(m_handle);
    m_simif = nullptr;
    m_handle = nullptr;
    m_runner = nullptr;
    m_ownsLibrary = false;
}

void MAXQ30Simulator::disconnect()
{
    closeLibrary();
    m_registers.reset();
    m_codeMemory.reset();
    m_dataMemory.reset();
    SimulatedHMonitor::disconnect();
}

void MAXQ30Simulator::checkReset()
{
    m_simif->reset();
}

unsigned MAXQ30Simulator::singleStep()
{
    return m_simif->step();
}

void MAXQ30Simulator::onDataAccess(bool read, unsigned address, unsigned value, unsigned byteAccess)
{
    if (!read)
        dataWritten(address, value);
    if (mayMatchData(address)) [[unlikely]]
        matchDataBreakPoint(address, byteAccess ? 1 : 2, value, read);
}

void MAXQ30Simulator::onLongDataAccess(bool read, unsigned address, unsigned value)
{
    if (!read)
        dataWritten(address, value);
    if (mayMatchData(address)) [[unlikely]]
        matchDataBreakPoint(address, 4, value, read);
}

void MAXQ30Simulator::onDataError(bool read, unsigned address)
{
    setPendingError(read ? OutsideOnRead : OutsideOnWrite, address);
}

void MAXQ30Simulator::onDataAlignmentError(bool read, unsigned address)
{
    setPendingError(read ? UnalignedRead : UnalignedWrite, address);
}

void MAXQ30Simulator::onCodeError(unsigned address)
{
    setPendingError(OutsideOnFetch, address);
}

void MAXQ30Simulator::onInvalidInstruction(unsigned address)
{
    setPendingError(UnsupportedOpcode, address);
}

void MAXQ30Simulator::onMiscError(const char* text, unsigned address)
{
    setPendingError(MiscError, address, text);
    m_initialiseError = text;
}

unsigned MAXQ30Simulator::onPeripheralLoad(unsigned number, unsigned size)
{
    return peripherals() ? unsigned(peripherals()->loadPeripheral(number, size, true)) : 0;
}

void MAXQ30Simulator::onPeripheralStore(unsigned number, unsigned size, unsigned value)
{
    if (peripherals())
        peripherals()->storePeripheral(number, size, value);
}

unsigned MAXQ30Simulator::onPollForInterrupts(unsigned requests)
{
    return peripherals() ? unsigned(peripherals()->pollForInterrupts(requests)) : requests;
}
