#include "debug/ZOFFDebugger.h"

#include "debug/DebuggerHelperFunctions.h"
#include "debug/symbols/SymbolicDebug.h"
#include "support/HException.h"
#include "target/TargetRegisterInterface.h"
#include "target/memory/TargetMemoryInterface.h"
#include "zoff/ZOFFInsn.h"
#include "zoff/ZOFFModule.h"
#include "zoff/ZOFFSymbol.h"
#include "zoff/ZOFFfiles.h"

#include <algorithm>

namespace {

constexpr int DefaultStackAdjust = 1;

const HString* interned(const Path& path)
{
    return HString::intern(path.osPath());
}

QString text(const HString* string)
{
    return QString::fromUtf8(string->c_str(), string->length());
}

} // namespace

SymbolicDebuggerInterface* debugger = nullptr;

ZOFFDebugger::ZOFFDebugger(DebuggerHelperFunctions* helper) : m_helper(helper) {}

ZOFFDebugger::~ZOFFDebugger()
{
    if (m_monitor && m_ioEnabled)
        m_monitor->watchControlWord(0, nullptr);
    for (SymbolicDebug* table : m_symbolTables)
        g_ZOFFfiles.release(table);
}

// --- The target -------------------------------------------------------------------------------

void ZOFFDebugger::setTargetInterface(TargetInterface* target)
{
    if (target == m_target)
        return;
    withdraw();
    m_frames.clear();
    m_context.frame = nullptr;
    m_codeBreakpoints.clear();
    m_dataBreakpoints.clear();
    m_disassembly.clear();
    m_codeCache.clear();
    m_target = target;
    m_monitor = dynamic_cast<HMonitor*>(target);
}

TargetInterface& ZOFFDebugger::checkedTarget() const
{
    if (!m_target)
        throw HException("No target selected");
    return *m_target;
}

HMonitor& ZOFFDebugger::monitor() const
{
    TargetInterface& target = checkedTarget();
    if (!m_monitor)
        throw HException(QStringLiteral("target \"%1\" cannot serve or debug a program").arg(target.name()));
    return *m_monitor;
}

void ZOFFDebugger::syncSettingsWithProject(ProjectElement* project, const QString& configuration)
{
    if (m_target)
        m_target->syncSettingsWithProject(project, configuration);
}

// --- Symbols ----------------------------------------------------------------------------------

std::list<SymbolicDebug*>::iterator ZOFFDebugger::findTable(const Path& path)
{
    Path wanted(path.osPath());
    return std::find_if(m_symbolTables.begin(), m_symbolTables.end(),
                        [&wanted](SymbolicDebug* table) { return table->path() == wanted; });
}

// Executables are linked to their addresses, so the address given plays no part.
void ZOFFDebugger::loadSymbols(const Path& path, unsigned)
{
    SymbolicDebug* table = g_ZOFFfiles.getSymbolicDebug(path);
    if (std::find(m_symbolTables.begin(), m_symbolTables.end(), table) != m_symbolTables.end()) {
        g_ZOFFfiles.release(table);
        return;
    }
    auto earlier = findTable(path);
    if (earlier == m_symbolTables.end()) {
        m_symbolTables.push_front(table);
        return;
    }
    SymbolicDebug* old = std::exchange(*earlier, table);
    m_frames.clear(); // they point into the old table
    m_context.frame = nullptr;
    g_ZOFFfiles.release(old);
}

void ZOFFDebugger::unloadSymbols(const Path& path)
{
    m_frames.clear();
    m_context.frame = nullptr;
    std::list<SymbolicDebug*> unloaded;
    if (path.isEmpty())
        unloaded.swap(m_symbolTables);
    else if (auto found = findTable(path); found != m_symbolTables.end())
        unloaded.splice(unloaded.begin(), m_symbolTables, found);
    for (SymbolicDebug* table : unloaded)
        g_ZOFFfiles.release(table);
}

SymbolicDebug* ZOFFDebugger::symbols(uint32_t address) const
{
    if (m_symbolTables.empty())
        return nullptr;
    if (address != 0)
        for (SymbolicDebug* table : m_symbolTables)
            if (table->GetInsn(address))
                return table;
    return m_symbolTables.front();
}

bool ZOFFDebugger::getLinkerSymbolValue(const char* name, int64_t& value) const
{
    for (SymbolicDebug* table : m_symbolTables)
        if (ZOFFSymbol* symbol = table->findGlobalSymbol(name)) {
            ZOFFEvaluation evaluation = symbol->evaluate();
            if (!evaluation.unresolved) {
                value = evaluation.value;
                return true;
            }
        }
    return false;
}

ZOFFSymbol* ZOFFDebugger::getSymbol(const char* name) const
{
    Frame* frame = m_context.frame;
    SymbolicDebug* table = frame && frame->symbols() ? frame->symbols() : symbols(0);
    if (!table)
        return nullptr;
    ZOFFSymbol* symbol = nullptr;
    if (!m_context.file.isEmpty()) {
        const HString* file = interned(m_context.file);
        uint32_t address = 0;
        if (table->sourceMap().SourceToAddress(file, m_context.line, address))
            symbol = table->findScopedSymbol(name, address);
        else
            symbol = table->findDeclaredSymbol(name, file, m_context.line);
        if (!symbol)
            symbol = table->findDeclaredSymbol(name, file, 0);
    }
    if (!symbol && frame)
        symbol = table->findScopedSymbol(name, frame->registers()->getPC());
    if (!symbol)
        symbol = table->findGlobalSymbol(name);
    return symbol ? symbol : table->findModuleSymbol(name);
}

ZOFFType* ZOFFDebugger::getNamedType(const char* name) const
{
    for (SymbolicDebug* table : m_symbolTables)
        if (ZOFFType* type = table->findNamedType(name))
            return type;
    return nullptr;
}

ZOFFInsn* ZOFFDebugger::getInsnAt(uint32_t address) const
{
    for (SymbolicDebug* table : m_symbolTables)
        if (ZOFFInsn* insn = table->GetInsn(address))
            return insn;
    return nullptr;
}

SymbolicDebug* ZOFFDebugger::table(const QString& executable) const
{
    for (SymbolicDebug* table : m_symbolTables)
        if (table->path().osPathQString() == executable)
            return table;
    return nullptr;
}

QStringList ZOFFDebugger::executableNames()
{
    QStringList names;
    for (SymbolicDebug* table : m_symbolTables)
        names.append(table->path().osPathQString());
    return names;
}

QStringList ZOFFDebugger::sourceFileNames(const QString& executable)
{
    QStringList names;
    if (SymbolicDebug* found = table(executable))
        for (auto& [file, lines] : found->sourceMap().files())
            names.append(text(file));
    return names;
}

QList<int> ZOFFDebugger::lineNumbers(const QString& executable, const Path& source)
{
    QList<int> numbers;
    SymbolicDebug* found = table(executable);
    const SourceAddressMapping::Lines* lines =
        found ? found->sourceMap().getLineNumbers(interned(source)) : nullptr;
    if (lines)
        for (uint32_t line : *lines)
            numbers.append(int(line));
    return numbers;
}

QStringList ZOFFDebugger::symbolNames(const QString& executable)
{
    QStringList names;
    if (SymbolicDebug* found = table(executable))
        for (const ZOFFSymbol* symbol : found->module()->allSymbols())
            if (symbol->name())
                names.append(text(symbol->name()));
    return names;
}

// --- Lines ------------------------------------------------------------------------------------

int64_t ZOFFDebugger::getLineAddress(QString& file, const Path& path, int line)
{
    const HString* source = interned(path);
    for (SymbolicDebug* table : m_symbolTables) {
        uint32_t address = 0;
        QString name = table->path().osPathQString();
        if ((file.isEmpty() || file == name) && table->sourceMap().SourceToAddress(source, line, address)) {
            file = name;
            return address;
        }
    }
    return -1;
}

int ZOFFDebugger::getAddressLine(uint32_t address, QString& file, Path& path)
{
    for (SymbolicDebug* table : m_symbolTables) {
        const HString* source = nullptr;
        int line = 0;
        if (table->sourceMap().AddressToSource(address, source, line)) {
            file = table->path().osPathQString();
            path = Path(text(source));
            return line;
        }
    }
    return -1;
}

// --- Frames -----------------------------------------------------------------------------------

Frame* ZOFFDebugger::getFrame(unsigned number) const
{
    return number < m_frames.size() ? m_frames[number].get() : nullptr;
}

void ZOFFDebugger::locateFrom(TargetRegisterInterface* registers, bool live)
{
    m_frames.clear();
    m_context.frame = nullptr;
    if (!registers)
        return;
    auto innermost = std::make_unique<Frame>(symbols(registers->getPC()), registers, live);
    generateBackTrace(std::move(innermost));
    m_context.frame = getFrame(0);
}

void ZOFFDebugger::locate()
{
    locateFrom(checkedTarget().registers(), true);
}

void ZOFFDebugger::locate(unsigned* registers)
{
    locateFrom(createRegisters(registers), false);
}

void ZOFFDebugger::locate(uint32_t pc)
{
    locateFrom(createRegisters(pc), false);
}

bool ZOFFDebugger::locate(Frame* frame, QString& name, Path& path, QString& function, int& line,
                          uint32_t& address)
{
    if (!frame)
        return false;
    address = frame->registers()->getPC();
    line = 0;
    function = QString();
    SymbolicDebug* table = frame->symbols();
    if (!table)
        return false;
    path = table->path();
    name = path.osPathQString();
    const HString* source = nullptr;
    if (table->sourceMap().AddressToSource(address, source, line)) {
        name = text(source);
        path = Path(name);
    }
    ZOFFSymbol* symbol = table->findFunctionSymbol(address);
    if (!symbol)
        symbol = table->findClosestSymbol(address);
    if (symbol && symbol->name())
        function = text(symbol->name());
    return true;
}

bool ZOFFDebugger::setNextStatement(Frame*, const Path& path, int line)
{
    Frame* innermost = getFrame(0);
    uint32_t address = 0;
    if (!innermost || !innermost->symbols() ||
        !innermost->symbols()->sourceMap().SourceToAddress(interned(path), line, address))
        return false;
    innermost->registers()->setPC(address);
    return true;
}

int ZOFFDebugger::getSPAdjustment() const
{
    if (!m_context.frame)
        return 0;
    const ZOFFInsn* insn = getInsnAt(m_context.frame->registers()->getPC());
    return insn && insn->stackAdjust() != DefaultStackAdjust ? insn->stackAdjust() : 0;
}

void ZOFFDebugger::setRegister(Frame* frame, unsigned number, uint32_t value)
{
    if (!frame->live())
        throw HException("cannot change the register value in this context");
    frame->registers()->setValue(number, value);
}

// --- Memory -----------------------------------------------------------------------------------

unsigned ZOFFDebugger::transfer(TargetMemoryInterface* memory, uint32_t address, unsigned count,
                                unsigned char* to, const unsigned char* from)
{
    if (!memory || count == 0 ||
        (!memory->addressRanges().isEmpty() && !memory->memoryExists(address, count)))
        return 0;
    if (to)
        memory->peekBytes(address, count, to);
    else
        memory->pokeBytes(address, count, from);
    return count;
}

unsigned ZOFFDebugger::readMemory(uint32_t address, unsigned count, unsigned char* bytes)
{
    return transfer(checkedTarget().dataMemory(), address, count, bytes, nullptr);
}

unsigned ZOFFDebugger::writeMemory(uint32_t address, unsigned count, const unsigned char* bytes)
{
    return transfer(checkedTarget().dataMemory(), address, count, nullptr, bytes);
}

unsigned ZOFFDebugger::readCodeMemory(uint32_t address, unsigned count, unsigned char* bytes)
{
    return transfer(checkedTarget().codeMemory(), address, count, bytes, nullptr);
}

unsigned ZOFFDebugger::writeCodeMemory(uint32_t address, unsigned count, const unsigned char* bytes)
{
    return transfer(checkedTarget().codeMemory(), address, count, nullptr, bytes);
}

unsigned ZOFFDebugger::getMemory(const QString& space, uint32_t address, unsigned count, unsigned char* bytes)
{
    return transfer(getMemorySegment(space), address, count, bytes, nullptr);
}

unsigned ZOFFDebugger::setMemory(const QString& space, uint32_t address, unsigned count,
                                 const unsigned char* bytes)
{
    return transfer(getMemorySegment(space), address, count, nullptr, bytes);
}

uint32_t ZOFFDebugger::getMemoryRange(const QString& space, uint32_t address)
{
    TargetMemoryInterface* memory = getMemorySegment(space);
    const AddressRange* range = memory ? memory->addressRanges().find(address) : nullptr;
    return range ? range->high - address + 1 : 0;
}

bool ZOFFDebugger::getAddressRange(uint32_t address, uint32_t& low, uint32_t& high) const
{
    TargetMemoryInterface* memory = m_target ? m_target->codeMemory() : nullptr;
    const AddressRange* range = memory ? memory->addressRanges().find(address) : nullptr;
    if (!range)
        return false;
    low = range->low;
    high = range->high;
    return true;
}

uint32_t ZOFFDebugger::addressAdd(uint32_t address, uint32_t count)
{
    uint32_t low = 0, high = 0;
    if (!getAddressRange(address, low, high))
        return address;
    return high - address < count ? high : address + count;
}

uint32_t ZOFFDebugger::addressSubtract(uint32_t address, uint32_t count)
{
    uint32_t low = 0, high = 0;
    if (!getAddressRange(address, low, high))
        return address;
    return address - low < count ? low : address - count;
}

QString ZOFFDebugger::formatAddress(uint32_t address) const
{
    return QString::asprintf("%0*x", int(2 * getAddressSizeInBytes()), address);
}

void ZOFFDebugger::setDisassembleRange(uint32_t start, uint32_t size)
{
    // How long a statement is tells the executable, which may claim more than any memory has.
    TargetMemoryInterface* code = checkedTarget().codeMemory();
    if (!code || (!code->addressRanges().isEmpty() && !code->memoryExists(start, size)))
        throw HException(QStringLiteral("no code memory at 0x%1, %2 bytes").arg(start, 0, 16).arg(size));
    m_codeCache.load(code, start, size);
}

void ZOFFDebugger::setDisassembleRange(uint32_t start, std::vector<unsigned char> bytes)
{
    m_codeCache.load(start, std::move(bytes));
}

uint16_t ZOFFDebugger::peekPC(uint32_t address)
{
    uint16_t word = 0;
    if (!m_codeCache.word(address, word)) {
        unsigned char bytes[2] = {};
        readCodeMemory(address, sizeof bytes, bytes);
        word = uint16_t(bytes[0] | bytes[1] << 8);
    }
    return word;
}
