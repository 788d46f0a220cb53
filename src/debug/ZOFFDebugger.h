// The debugger for programs whose symbols, types and lines come from a linked executable. It drives a
// monitor, stops at source statements, keeps the call frames, and serves the requests that a program
// makes through two words of its data memory. What depends on the processor is left to a derived class.
//
// The operations are forwards to the classes that do the work: symbols/SymbolTables, run/BreakpointList,
// run/RunControl with run/Stepper, run/CallFrames and run/ProgramRequests, disassembly/Disassembly,
// BreakpointExpressions. Expressions and displays are the base's, which is told here what a name, a register
// and a memory of the program are.
#pragma once

#include "debug/BreakpointExpressions.h"
#include "debug/SymbolicDebuggerInterface.h"
#include "debug/disassembly/Disassembly.h"
#include "debug/evaluation/ExpressionContext.h"
#include "debug/evaluation/ZOFFExpressionEvaluator.h"
#include "debug/monitor/DebugProcessor.h"
#include "debug/monitor/HMonitor.h"
#include "debug/run/BreakpointList.h"
#include "debug/run/CallFrames.h"
#include "debug/run/ProgramRequests.h"
#include "debug/run/RunControl.h"
#include "debug/run/Stepper.h"
#include "debug/run/ZOFFBreakpoint.h"
#include "debug/symbols/CodeReader.h"
#include "debug/symbols/SymbolTables.h"
#include "expression/MarkerType.h"
#include "support/Endian.h"
#include "support/Path.h"

#include <memory>
#include <vector>

class DebuggerHelperFunctions;
class ProjectElement;
class TargetMemoryInterface;
class TargetRegisterInterface;
class ZOFFInsn;
class ZOFFSymbol;
class ZOFFType;

class ZOFFDebugger : public SymbolicDebuggerInterface,
                     protected DebugProcessor,
                     protected ZOFFExpressionEvaluator {
public:
    // The helper is not owned. The word size, in bytes, and the byte order are those of expressions.
    ZOFFDebugger(DebuggerHelperFunctions* helper, unsigned wordSize, Endian::EndianType endian);
    ~ZOFFDebugger() override;

    void setTargetInterface(TargetInterface* target) override;
    void setTargetIOServer(TargetIOServer* server) override { m_requests.setServer(server); }
    void setHitListener(HitListener* listener) override { m_run.setHitListener(listener); }

    unsigned numcalls() override { return m_frames.count(); }
    Frame* getFrame(unsigned number) override { return m_frames.at(number); }

    QStringList getDisassemblyModes() override { return Disassembly::modes(); }
    void setDisassemblyMode(const QString& mode) override { m_disassembly.setMode(mode); }
    QString getDisassemblyMode() override { return m_disassembly.mode(); }
    void clearDisassemblyText() override { m_disassembly.clear(); }
    void getDisassemblyText(QStringList& lines) override { lines = m_disassembly.lines(); }
    void moreDisassemblyText(bool up) override { m_disassembly.more(up); }
    int getDisassemblyLineNumber(uint32_t address) override { return m_disassembly.lineOf(address); }
    bool getDisassemblyLineAddress(int line, uint32_t& address) override;
    bool getSourceLocation(int disassemblyLine, Path& path, int& line) override;
    bool getAssemblyLocation(const Path& path, int line, int& disassemblyLine) override;
    void locateDisassembly(uint32_t address) override { m_disassembly.locate(address); }
    QString instructionText(uint32_t address, uint32_t& length) override;
    void setDisassemblyExecution(bool on) override { m_disassembly.setExecutionMarks(on); }

    bool locate(Frame* frame, QString& name, Path& path, QString& function, int& line,
                uint32_t& address) override;
    bool setNextStatement(Frame* frame, const Path& path, int line) override;

    QStringList executableNames() override { return m_tables.executableNames(); }
    QStringList sourceFileNames(const QString& executable) override;
    QList<int> lineNumbers(const QString& executable, const Path& source) override;
    QStringList symbolNames(const QString& executable) override { return m_tables.symbolNames(executable); }

    // Throws what the target failed with, but forgets everything in any case.
    void clear() override;

    QStringList getBreakTriggers() override;
    QStringList getBreakActions() override;
    QList<bool> getHardwareBreakPoints() override;
    DebuggerBreakpoint* setBreakpoint(const QString& file, const Path& path, int line, int count,
                                      bool counted, bool temporary, const QString& limit,
                                      const QString& action) override;
    DebuggerBreakpoint* setBreakpoint(const ExpressionContext& context, const QString& expression,
                                      const QString& trigger, int count, bool counted, bool temporary,
                                      const QString& limit, const QString& action) override;
    void clearBreakpoint(DebuggerBreakpoint* breakpoint) override { m_breakpoints.remove(breakpoint); }
    bool canBreakAt(const QString& file, const Path& path, int line, DebuggerBreakpoint*& existing) override;
    void setBreakpointEnabled(DebuggerBreakpoint* breakpoint, bool on) override;
    void chainFrom(DebuggerBreakpoint* breakpoint, DebuggerBreakpoint* from) override;

    unsigned getWordSizeInBytes() const override { return wordSize(); }
    QString formatPC(uint32_t address) const override { return formatAddress(address); }
    int64_t getLineAddress(QString& file, const Path& path, int line) override;
    int getAddressLine(uint32_t address, QString& file, Path& path) override;
    DebuggerBreakpoint* lastMatchedBreakpoint() override;
    QString lastMatchedException() override;

    void resetExecutionCount() override;
    void setExecutionCountEnabled(bool on) override;
    bool getExecutionCountEnabled() override;
    void iterateExecutionCount() override;
    bool getExecutionCount(unsigned& address, unsigned& count, unsigned& other) override;
    void resetTrace() override;
    void setTraceEnabled(bool on) override;
    bool getTraceEnabled() override;
    void iterateTrace() override;
    bool getTrace(unsigned& address, unsigned& data, unsigned& cycles) override;
    void syncSettingsWithProject(ProjectElement* project, const QString& configuration) override;

    void start(const QString& entry, bool stop) override;
    void attach() override;
    void go() override;
    void stop() override;
    void stepinto(bool instruction) override;
    void stepover(bool instruction) override;
    void stepout(Frame* frame) override;
    bool isStopped() override;

    void getGlobalVariables(Frame* frame, VariableListBuilder* builder) override;
    void getStaticVariables(Frame* frame, VariableListBuilder* builder) override;
    void getLocalVariables(Frame* frame, VariableListBuilder* builder) override;
    void getParameters(Frame* frame, VariableListBuilder* builder) override;
    void evaluateExpression(const ExpressionContext& context, const QString& expression, const QString& name,
                            VariableListBuilder* builder) override;
    void evaluateExpression(const ExpressionContext& context, const QString& expression,
                            ExpressionType& value) override;
    void setExpression(const ExpressionContext& context, const QString& expression,
                       const ExpressionType& value) override;

    uint32_t getMemoryRange(const QString& space, uint32_t address) override;
    void dumpMemory(const QString& space, uint32_t address, unsigned count, QStringList& lines) override;
    unsigned setMemory(const QString& space, uint32_t address, unsigned count,
                       const unsigned char* bytes) override;
    unsigned getMemory(const QString& space, uint32_t address, unsigned count, unsigned char* bytes) override;

    void loadSymbols(const Path& path, unsigned address) override;
    void unloadSymbols(const Path& path) override;

    QStringList getExceptionClasses() override;
    QList<NamedFlag> getExceptionTypes(int exceptionClass) override;
    bool targetHasExceptionClass(int exceptionClass) override;
    void setExceptionEnabled(const QString& name, bool on) override;

    void getLocateContext(ExpressionContext& context) override;
    void locate() override;
    void locate(unsigned* registers) override;
    void locate(uint32_t pc) override;

    uint32_t addressSubtract(uint32_t address, uint32_t count) override;
    uint32_t addressAdd(uint32_t address, uint32_t count) override;

    const SymbolTables& tables() const { return m_tables; }
    bool getLinkerSymbolValue(const char* name, int64_t& value) const;
    // By the rules of the expression context: the scopes around its frame's place, what its file declares,
    // public names, and all names.
    ZOFFSymbol* getSymbol(const char* name) const override;
    ZOFFType* getNamedType(const char* name) const override { return m_tables.namedType(name); }
    ZOFFInsn* getInsnAt(uint32_t address) const { return m_tables.insnAt(address); }
    // What the stack pointer is off by at the context's frame.
    int getSPAdjustment() const override;
    // Whether the innermost frame stands at the start of a statement.
    bool atStatement() const;

    bool debugIOEnabled() const { return m_requests.enabled(); }

    // Code as it was read before, else from the target.
    void setDisassembleRange(uint32_t start, uint32_t size) { m_code.load(start, size); }
    void setDisassembleRange(uint32_t start, const std::vector<unsigned char>& bytes);
    uint16_t peekPC(uint32_t address) { return m_code.word(address); }

    // The base form, by address; null when the monitor refuses.
    ZOFFBreakpoint* setBreakpoint(uint32_t address, bool temporary, bool counted, int count, int limit,
                                  const QString& action);

    // A range that does not exist is neither read nor written. Returns the number of bytes.
    unsigned readMemory(unsigned address, unsigned count, unsigned char* bytes) override;
    unsigned writeMemory(unsigned address, unsigned count, const unsigned char* bytes) override;
    unsigned readCodeMemory(unsigned address, unsigned count, unsigned char* bytes) override;
    unsigned writeCodeMemory(unsigned address, unsigned count, const unsigned char* bytes) override;
    unsigned readEepromMemory(unsigned address, unsigned count, unsigned char* bytes) override;
    unsigned writeEepromMemory(unsigned address, unsigned count, const unsigned char* bytes) override;
    // Peripherals are no memory here: nothing is moved.
    unsigned readPeripheralMemory(unsigned, unsigned, unsigned char*) override { return 0; }
    unsigned writePeripheralMemory(unsigned, unsigned, const unsigned char*) override { return 0; }

    // Throws ParserException in a frame whose registers are not the target's.
    void setRegister(Frame* frame, unsigned number, uint32_t value);

protected:
    // Of the context's frame. Throw ParserException when there is none.
    uint64_t getRegister(unsigned number) override;
    void setRegister(unsigned number, uint64_t value) override;
    uint32_t getSPValue(int registerNumber) override
    {
        return uint32_t(getRegister(unsigned(registerNumber)));
    }
    // Throws ParserException where the context refuses it.
    ExpressionType assign(MarkerType* marker, const ExpressionType& value) override;
    // Expressions are about the frame from here on.
    void setContext(const ExpressionContext& context);

    TargetInterface* target() const { return m_target; }
    TargetInterface& checkedTarget() const; // throws HException when there is none
    HMonitor& monitor() const;              // throws HException for a target that cannot stop
    QString formatAddress(uint32_t address) const;

private:
    Frame* contextFrame() const;
    void setFrame(Frame* frame);

    DebuggerHelperFunctions* m_helper;
    TargetInterface* m_target = nullptr;
    HMonitor* m_monitor = nullptr; // the target seen as one; null when it is none
    SymbolTables m_tables;
    CodeReader m_code;
    BreakpointList m_breakpoints;
    CallFrames m_frames{*this, m_tables};
    ProgramRequests m_requests{m_helper, *this, m_tables};
    Stepper m_stepper{*this, m_tables, m_breakpoints};
    RunControl m_run{m_helper, *this, m_breakpoints, m_frames, m_stepper, m_requests};
    Disassembly m_disassembly{m_helper, *this, m_tables, m_code};
    BreakpointExpressions m_breakpointExpressions{*this, m_tables};
    ExpressionContext m_context; // of the last evaluation; its frame may be gone
};
