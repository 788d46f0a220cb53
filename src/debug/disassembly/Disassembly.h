// The window of disassembled code, with its source lines and labels, around the address that was located
// last. Lines count from 0, addresses are in bytes.
//
// There are two modes: "Mixed" shows source lines and labels as far as the host asks for them, "Code" nothing
// but instructions. With execution marks on, an instruction that the program has executed has a "*" in front.
#pragma once

#include "debug/disassembly/DisassemblyText.h"
#include "support/Path.h"

#include <QStringList>

#include <cstdint>
#include <vector>

class CodeReader;
class DebuggerHelperFunctions;
class DebugProcessor;
class HMonitor;
class SymbolTables;

class Disassembly {
public:
    Disassembly(DebuggerHelperFunctions* helper, DebugProcessor& processor, const SymbolTables& tables,
                CodeReader& code)
        : m_helper(helper), m_processor(processor), m_tables(tables), m_code(code)
    {
    }
    void setMonitor(HMonitor* monitor) { m_monitor = monitor; }

    static QStringList modes();
    const QString& mode() const { return m_mode; }
    void setMode(const QString& mode); // throws HException for one that there is not
    void setExecutionMarks(bool on);

    void clear() { m_text.clear(); }
    // The program has run: what it has executed since is marked anew.
    void noteRun();

    // Empty lines without a target. A failure to read is displayed as an error, and leaves no line.
    QStringList lines();
    // Extends the window to lower or to higher addresses.
    void more(bool up);
    void locate(uint32_t address);

    // -1 and false stand for what is not in the window.
    int lineOf(uint32_t address);
    bool addressOf(int line, uint32_t& address);
    bool sourceOf(int line, Path& path, int& sourceLine);

private:
    class SourceListing;

    const DisassemblyInfo& shown();
    void generate(DisassemblyInfo& block);
    uint32_t addInstruction(DisassemblyInfo& block, uint32_t address, bool labels,
                            const std::vector<uint32_t>& executed);
    std::vector<uint32_t> executedAddresses() const;

    DebuggerHelperFunctions* m_helper;
    DebugProcessor& m_processor;
    const SymbolTables& m_tables;
    CodeReader& m_code;
    HMonitor* m_monitor = nullptr;
    DisassemblyText m_text;
    QString m_mode = modes().first();
    bool m_marks = false;
};
