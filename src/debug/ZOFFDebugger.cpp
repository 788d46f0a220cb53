// The target, symbols, frames and lines. Runs and breakpoints are in ZOFFDebuggerRun.cpp, memories in
// ZOFFDebuggerMemory.cpp.
#include "debug/ZOFFDebugger.h"

#include "debug/monitor/DebuggerHelperFunctions.h"
#include "debug/run/Frame.h"
#include "debug/symbols/SymbolicDebug.h"
#include "expression/ParserException.h"
#include "support/Endian.h"
#include "support/HException.h"
#include "support/HString.h"
#include "support/Path.h"
#include "target/TargetInterface.h"
#include "target/TargetRegisterInterface.h"
#include "zoff/ZOFFInsn.h"
#include "zoff/ZOFFSymbol.h"

#include <exception>

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

ZOFFDebugger::ZOFFDebugger(DebuggerHelperFunctions* helper, unsigned wordSize, Endian::EndianType endian)
    : ZOFFExpressionEvaluator(wordSize, endian), m_helper(helper)
{
}

ZOFFDebugger::~ZOFFDebugger() = default;

// --- The target -------------------------------------------------------------------------------

void ZOFFDebugger::setTargetInterface(TargetInterface* target)
{
    if (target == m_target)
        return;
    auto* monitor = dynamic_cast<HMonitor*>(target);
    m_requests.setTarget(target, monitor);
    m_frames.clear();
    m_breakpoints.setMonitor(monitor);
    m_stepper.setMonitor(monitor);
    m_run.setMonitor(monitor);
    m_disassembly.clear();
    m_disassembly.setMonitor(monitor);
    m_code.setTarget(target);
    m_target = target;
    m_monitor = monitor;
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

void ZOFFDebugger::clear()
{
    // A link that fails on the way keeps nothing alive here, and no record of ours in the target.
    std::exception_ptr failure;
    auto attempt = [&failure](auto&& step) {
        try {
            step();
        } catch (const HException&) {
            if (!failure)
                failure = std::current_exception();
        }
    };
    if (m_target && m_target->isConnected()) {
        attempt([this] { m_requests.disable(); });
        attempt([this] { m_target->clear(); });
    } else {
        m_requests.withdraw();
        m_breakpoints.withdrawAll(); // it takes the records off its list before it finds the link closed
    }
    m_run.clear();
    m_frames.clear();
    m_breakpoints.forget();
    m_disassembly.clear();
    m_code.clear();
    if (failure)
        std::rethrow_exception(failure);
}

// --- Symbols ----------------------------------------------------------------------------------

// Executables are linked to their addresses, so the address given plays no part.
void ZOFFDebugger::loadSymbols(const Path& path, unsigned)
{
    if (SymbolTables::Reference earlier = m_tables.load(path))
        m_frames.clear(); // they point into the earlier one
    m_disassembly.clear();
}

void ZOFFDebugger::unloadSymbols(const Path& path)
{
    m_frames.clear();
    m_disassembly.clear();
    m_tables.unload(path);
}

bool ZOFFDebugger::getLinkerSymbolValue(const char* name, int64_t& value) const
{
    return m_tables.linkerSymbol(name, value);
}

ZOFFSymbol* ZOFFDebugger::getSymbol(const char* name) const
{
    const Frame* frame = contextFrame();
    SymbolicDebug* table = frame && frame->symbols() ? frame->symbols() : m_tables.at(0);
    if (!table)
        return nullptr;
    const HString* file = m_context.file.isEmpty() ? nullptr : interned(m_context.file);
    uint32_t address = 0;
    ZOFFSymbol* symbol = nullptr;
    if (frame)
        symbol = table->findLocalSymbol(name, frame->place());
    else if (file && m_context.line > 0 && table->sourceMap().SourceToAddress(file, m_context.line, address))
        symbol = table->findLocalSymbol(name, address);
    if (!symbol && file)
        symbol = table->findDeclaredSymbol(name, file, m_context.line);
    if (!symbol && file)
        symbol = table->findDeclaredSymbol(name, file, 0);
    if (!symbol)
        symbol = table->findGlobalSymbol(name);
    return symbol ? symbol : table->findModuleSymbol(name);
}

QStringList ZOFFDebugger::sourceFileNames(const QString& executable)
{
    return m_tables.sourceFileNames(executable);
}

QList<int> ZOFFDebugger::lineNumbers(const QString& executable, const Path& source)
{
    return m_tables.lineNumbers(executable, source);
}

int64_t ZOFFDebugger::getLineAddress(QString& file, const Path& path, int line)
{
    return m_tables.lineAddress(file, path, line);
}

int ZOFFDebugger::getAddressLine(uint32_t address, QString& file, Path& path)
{
    return m_tables.addressLine(address, file, path);
}

// --- Frames -----------------------------------------------------------------------------------

void ZOFFDebugger::getLocateContext(ExpressionContext& context)
{
    context = ExpressionContext();
    context.frame = m_frames.innermost();
}

void ZOFFDebugger::locate()
{
    m_frames.locate(checkedTarget().registers());
}

void ZOFFDebugger::locate(unsigned* registers)
{
    m_frames.locate(createRegisters(registers));
}

void ZOFFDebugger::locate(uint32_t pc)
{
    m_frames.locate(createRegisters(pc));
}

bool ZOFFDebugger::locate(Frame* frame, QString& name, Path& path, QString& function, int& line,
                          uint32_t& address)
{
    if (!frame)
        return false;
    address = frame->registers()->getPC();
    line = 0;
    function = QString();
    path = Path();
    SymbolicDebug* table = frame->symbols();
    if (!table)
        return false;
    name = table->path().osPathQString();
    uint32_t place = frame->place();
    const HString* source = nullptr;
    if (table->sourceMap().AddressToSource(place, source, line)) {
        name = text(source);
        path = Path(name);
    }
    ZOFFSymbol* symbol = table->findFunctionSymbol(place);
    if (!symbol)
        symbol = table->findClosestSymbol(place);
    if (symbol && symbol->name())
        function = text(symbol->name());
    return true;
}

bool ZOFFDebugger::setNextStatement(Frame*, const Path& path, int line)
{
    if (!m_frames.live() && m_target)
        locate();
    Frame* innermost = m_frames.innermost();
    uint32_t address = 0;
    if (!innermost || !innermost->symbols() ||
        !innermost->symbols()->sourceMap().SourceToAddress(interned(path), line, address))
        return false;
    innermost->registers()->setPC(address);
    return true;
}

int ZOFFDebugger::getSPAdjustment() const
{
    const Frame* frame = contextFrame();
    const ZOFFInsn* insn = frame ? getInsnAt(frame->place()) : nullptr;
    return insn && insn->stackAdjust() != DefaultStackAdjust ? insn->stackAdjust() : 0;
}

bool ZOFFDebugger::atStatement() const
{
    const Frame* innermost = m_frames.innermost();
    if (!innermost || !innermost->symbols())
        return false;
    uint32_t pc = innermost->registers()->getPC(), start = 0, length = 0;
    return innermost->symbols()->sourceMap().AddressToRange(pc, start, length) && start == pc;
}

void ZOFFDebugger::setRegister(Frame* frame, unsigned number, uint32_t value)
{
    if (!frame->live())
        throw ParserException("cannot change the register value in this context");
    frame->registers()->setValue(number, value);
}

// --- Disassembly ------------------------------------------------------------------------------

bool ZOFFDebugger::getDisassemblyLineAddress(int line, uint32_t& address)
{
    return m_disassembly.addressOf(line, address);
}

bool ZOFFDebugger::getSourceLocation(int disassemblyLine, Path& path, int& line)
{
    return m_disassembly.sourceOf(disassemblyLine, path, line);
}

bool ZOFFDebugger::getAssemblyLocation(const Path& path, int line, int& disassemblyLine)
{
    QString file;
    int64_t address = getLineAddress(file, path, line);
    disassemblyLine = address < 0 ? -1 : m_disassembly.lineOf(uint32_t(address));
    return disassemblyLine >= 0;
}

void ZOFFDebugger::setDisassembleRange(uint32_t start, const std::vector<unsigned char>& bytes)
{
    m_code.load(start, bytes);
}
