#include "debug/disassembly/Disassembly.h"

#include "debug/monitor/DebugProcessor.h"
#include "debug/monitor/DebuggerHelperFunctions.h"
#include "debug/monitor/HMonitor.h"
#include "debug/symbols/CodeReader.h"
#include "debug/symbols/SymbolTables.h"
#include "debug/symbols/SymbolicDebug.h"
#include "support/HException.h"
#include "support/Path.h"
#include "zoff/ZOFFSymbol.h"

#include <algorithm>

namespace {

constexpr int LinesWithoutTarget = 200;
constexpr int MaxSourceStep = 4; // lines that a block of source may skip
constexpr int MaxLinesWithoutHeader = 10;
constexpr int HeaderColumns = 60;
constexpr char HeaderTail[] = " --------------------------------------------------";
constexpr char MixedMode[] = "Mixed";
constexpr char CodeMode[] = "Code";
constexpr char Indent[] = "    ";
constexpr char ExecutedIndent[] = "  * ";

QString nameOf(const ZOFFSymbol* symbol)
{
    return symbol && symbol->name() ? QString::fromUtf8(symbol->name()->c_str()) : QString();
}

} // namespace

// Source lines in front of the statement at an address. A header says where a new stretch begins.
class Disassembly::SourceListing {
public:
    SourceListing(DebuggerHelperFunctions* helper, DisassemblyInfo& block) : m_helper(helper), m_block(block)
    {
    }

    void show(const Path& file, int line)
    {
        bool newStretch =
            file != m_file || line - int64_t(m_line) > MaxSourceStep || m_shown >= MaxLinesWithoutHeader;
        if (newStretch) {
            QString header = QLatin1String("--- ") + file.baseName() + QLatin1String(" -- ") +
                             QString::number(line) + QLatin1String(HeaderTail);
            m_block.lines.append(header.left(HeaderColumns));
            m_shown = 0;
        }
        int first = newStretch || line <= m_line ? line : m_line + 1;
        for (int64_t shown = first; shown <= line; ++shown) { // a line may be the largest int
            m_block.sourceLines[int(m_block.lines.size())] = {file, int(shown)};
            m_block.lines.append(
                m_helper->getDebugSourceText(m_helper->getDebugSourcePath(file), int(shown)).simplified());
            ++m_shown;
        }
        m_file = file;
        m_line = line;
    }

private:
    DebuggerHelperFunctions* m_helper;
    DisassemblyInfo& m_block;
    Path m_file;
    int m_line = 0;
    int m_shown = 0; // since the latest header
};

QStringList Disassembly::modes()
{
    return {QLatin1String(MixedMode), QLatin1String(CodeMode)};
}

void Disassembly::setMode(const QString& mode)
{
    if (!modes().contains(mode))
        throw HException(QLatin1String("unknown disassembly mode ") + mode);
    if (mode != m_mode)
        clear();
    m_mode = mode;
}

void Disassembly::setExecutionMarks(bool on)
{
    if (on != m_marks)
        clear();
    m_marks = on;
}

void Disassembly::noteRun()
{
    if (m_marks)
        clear();
}

// In ascending order.
std::vector<uint32_t> Disassembly::executedAddresses() const
{
    std::vector<uint32_t> addresses;
    if (!m_marks || !m_monitor)
        return addresses;
    unsigned address = 0, count = 0, other = 0;
    m_monitor->iterateExecutionCount();
    while (m_monitor->getNextExecutionCount(address, count, other))
        addresses.push_back(address);
    std::sort(addresses.begin(), addresses.end());
    return addresses;
}

void Disassembly::generate(DisassemblyInfo& block)
{
    bool mixed = m_mode == QLatin1String(MixedMode);
    bool showSource = mixed && m_helper->debuggerDisassemblyShowSource();
    bool showLabels = mixed && m_helper->debuggerDisassemblyShowLabels();
    SourceListing source(m_helper, block);
    try {
        std::vector<uint32_t> executed = executedAddresses();
        m_code.load(block.start, block.end - block.start);
        for (uint32_t address = block.start; address < block.end;) {
            SymbolicDebug* table = m_tables.at(address);
            QString file;
            Path path;
            uint32_t start = 0, size = 0;
            if (showSource && table && table->sourceMap().AddressToRange(address, start, size) &&
                start == address)
                if (int line = m_tables.addressLine(address, file, path); line > 0)
                    source.show(path, line);
            address += addInstruction(block, address, showLabels && table, executed);
        }
    } catch (const HException& failure) {
        m_helper->displayError(failure.text());
        DisassemblyInfo empty;
        empty.start = block.start;
        empty.end = block.end;
        block = empty;
    }
}

// Returns its length.
uint32_t Disassembly::addInstruction(DisassemblyInfo& block, uint32_t address, bool labels,
                                     const std::vector<uint32_t>& executed)
{
    const SymbolicDebug* table = labels ? m_tables.at(address) : nullptr;
    if (const ZOFFSymbol* label = table ? table->findFunctionSymbol(address, true) : nullptr)
        block.lines.append(nameOf(label) + QLatin1Char(':'));
    uint32_t length = 0, destination = 0;
    bool isJump = false;
    bool marked = std::binary_search(executed.begin(), executed.end(), address);
    QString text = QLatin1String(marked ? ExecutedIndent : Indent) +
                   m_processor.disassemble(address, length, isJump, destination);
    if (isJump && table)
        if (const ZOFFSymbol* function = table->findFunctionSymbol(destination))
            text += QLatin1String(" <") + nameOf(function) + QLatin1Char('>');
    int number = int(block.lines.size());
    block.addresses[number] = address;
    block.lineOfAddress[address] = number;
    block.lines.append(text);
    return std::max(length, 1u);
}

const DisassemblyInfo& Disassembly::shown()
{
    return m_text.block([this](DisassemblyInfo& block) { generate(block); });
}

QStringList Disassembly::lines()
{
    return m_code.hasMemory() ? shown().lines : QStringList(LinesWithoutTarget);
}

void Disassembly::more(bool up)
{
    uint32_t low = 0, high = 0;
    if (m_code.hasMemory() && m_code.range(shown().start, low, high))
        m_text.more(up, low, high);
}

void Disassembly::locate(uint32_t address)
{
    uint32_t low = 0, high = 0;
    if (m_code.range(address, low, high))
        m_text.locate(address, low, high);
}

int Disassembly::lineOf(uint32_t address)
{
    const DisassemblyInfo& block = shown();
    auto found = block.lineOfAddress.find(address);
    return found == block.lineOfAddress.end() ? -1 : found->second;
}

bool Disassembly::addressOf(int line, uint32_t& address)
{
    const DisassemblyInfo& block = shown();
    auto found = block.addresses.find(line);
    if (found == block.addresses.end())
        return false;
    address = found->second;
    return true;
}

bool Disassembly::sourceOf(int line, Path& path, int& sourceLine)
{
    const DisassemblyInfo& block = shown();
    if (auto found = block.sourceLines.find(line); found != block.sourceLines.end()) {
        path = found->second.first;
        sourceLine = found->second.second;
        return true;
    }
    uint32_t address = 0;
    QString file;
    sourceLine = addressOf(line, address) ? m_tables.addressLine(address, file, path) : -1;
    return sourceLine >= 0;
}
