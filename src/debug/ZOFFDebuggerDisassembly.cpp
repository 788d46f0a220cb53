// The window of disassembled code with its source lines and labels.

#include "debug/DebuggerHelperFunctions.h"
#include "debug/ZOFFDebugger.h"
#include "debug/symbols/SymbolicDebug.h"
#include "support/HException.h"
#include "zoff/ZOFFSymbol.h"

#include <algorithm>

namespace {

constexpr int LinesWithoutTarget = 200;
constexpr int MaxSourceStep = 4; // lines that a block of source may skip
constexpr int MaxLinesWithoutHeader = 10;
constexpr int HeaderColumns = 60;
constexpr char HeaderTail[] = " --------------------------------------------------";

QString nameOf(const ZOFFSymbol* symbol)
{
    return symbol && symbol->name() ? QString::fromUtf8(symbol->name()->c_str()) : QString();
}

} // namespace

// Source lines in front of the statement at an address. A header says where a new stretch begins.
class ZOFFDebugger::SourceListing {
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

void ZOFFDebugger::generateDisassembly(DisassemblyInfo& block)
{
    bool showSource = m_helper->debuggerDisassemblyShowSource();
    bool showLabels = m_helper->debuggerDisassemblyShowLabels();
    SourceListing source(m_helper, block);
    try {
        setDisassembleRange(block.start, block.end - block.start);
        for (uint32_t address = block.start; address < block.end;) {
            SymbolicDebug* table = symbols(address);
            QString file;
            Path path;
            uint32_t start = 0, size = 0;
            if (showSource && table && table->sourceMap().AddressToRange(address, start, size) &&
                start == address)
                if (int line = getAddressLine(address, file, path); line > 0)
                    source.show(path, line);
            ZOFFSymbol* label = showLabels && table ? table->findFunctionSymbol(address, true) : nullptr;
            if (label)
                block.lines.append(nameOf(label) + QLatin1Char(':'));
            uint32_t length = 0, destination = 0;
            bool isJump = false;
            QString text = QLatin1String("    ") + disassemble(address, length, isJump, destination);
            if (isJump && showLabels && table)
                if (ZOFFSymbol* function = table->findFunctionSymbol(destination))
                    text += QLatin1String(" <") + nameOf(function) + QLatin1Char('>');
            int number = int(block.lines.size());
            block.addresses[number] = address;
            block.lineOfAddress[address] = number;
            block.lines.append(text);
            address += std::max(length, 1u);
        }
    } catch (const HException& failure) {
        m_helper->displayError(failure.text());
        block.lines.clear();
        block.addresses.clear();
        block.lineOfAddress.clear();
        block.sourceLines.clear();
    }
}

const DisassemblyInfo& ZOFFDebugger::shownBlock()
{
    return m_disassembly.block([this](DisassemblyInfo& block) { generateDisassembly(block); });
}

// The processor has one instruction set, so there is nothing to choose from.
QStringList ZOFFDebugger::getDisassemblyModes()
{
    return {};
}

void ZOFFDebugger::setDisassemblyMode(const QString& mode)
{
    if (!mode.isEmpty())
        throw HException(QLatin1String("unknown disassembly mode ") + mode);
}

QString ZOFFDebugger::getDisassemblyMode()
{
    return QString();
}

void ZOFFDebugger::clearDisassemblyText()
{
    m_disassembly.clear();
}

void ZOFFDebugger::getDisassemblyText(QStringList& lines)
{
    if (!m_target || !m_target->codeMemory())
        lines = QStringList(LinesWithoutTarget);
    else
        lines = shownBlock().lines;
}

void ZOFFDebugger::moreDisassemblyText(bool up)
{
    uint32_t low = 0, high = 0;
    if (getAddressRange(shownBlock().start, low, high))
        m_disassembly.more(up, low, high);
}

void ZOFFDebugger::locateDisassembly(uint32_t address)
{
    uint32_t low = 0, high = 0;
    if (getAddressRange(address, low, high))
        m_disassembly.locate(address, low, high);
}

int ZOFFDebugger::getDisassemblyLineNumber(uint32_t address)
{
    const DisassemblyInfo& block = shownBlock();
    auto found = block.lineOfAddress.find(address);
    return found == block.lineOfAddress.end() ? -1 : found->second;
}

bool ZOFFDebugger::getDisassemblyLineAddress(int line, uint32_t& address)
{
    const DisassemblyInfo& block = shownBlock();
    auto found = block.addresses.find(line);
    if (found == block.addresses.end())
        return false;
    address = found->second;
    return true;
}

bool ZOFFDebugger::getSourceLocation(int disassemblyLine, Path& path, int& line)
{
    uint32_t address = 0;
    const DisassemblyInfo& block = shownBlock();
    if (auto found = block.sourceLines.find(disassemblyLine); found != block.sourceLines.end()) {
        path = found->second.first;
        line = found->second.second;
        return true;
    }
    QString file;
    line = getDisassemblyLineAddress(disassemblyLine, address) ? getAddressLine(address, file, path) : -1;
    return line >= 0;
}

bool ZOFFDebugger::getAssemblyLocation(const Path& path, int line, int& disassemblyLine)
{
    QString file;
    int64_t address = getLineAddress(file, path, line);
    disassemblyLine = address < 0 ? -1 : getDisassemblyLineNumber(uint32_t(address));
    return disassemblyLine >= 0;
}
