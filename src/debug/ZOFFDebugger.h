// The debugger for programs whose symbols, types and lines come from a linked executable. It drives a
// monitor, stops at source statements, keeps the call frames, and serves the requests that a program
// makes through two words of its data memory. What depends on the processor is left to a derived class.
//
// Invariants: m_monitor is m_target seen as a monitor, null when it is none; a breakpoint of either list
// is known to the monitor; while m_ioEnabled the addresses of both words are good.
//
// The requests of a program are served in ZOFFDebuggerIO.cpp, runs, stops and breakpoints are in
// ZOFFDebuggerRun.cpp, disassembled text in ZOFFDebuggerDisassembly.cpp, and what this version cannot do in
// ZOFFDebuggerLater.cpp.
#pragma once

#include "debug/SymbolicDebuggerInterface.h"
#include "debug/evaluation/ExpressionContext.h"
#include "debug/monitor/HMonitor.h"
#include "debug/run/Frame.h"
#include "debug/run/ZOFFBreakpoint.h"
#include "debug/symbols/CodeCache.h"
#include "debug/symbols/DisassemblyText.h"

#include <list>
#include <memory>
#include <vector>

class DebuggerHelperFunctions;
class HException;
class SymbolicDebug;
class TargetMemoryInterface;
class TargetRegisterInterface;
class ZOFFInsn;
class ZOFFSymbol;
class ZOFFType;

class ZOFFDebugger : public SymbolicDebuggerInterface, private ControlWordWatcher {
public:
    // The helper is not owned.
    explicit ZOFFDebugger(DebuggerHelperFunctions* helper);
    ~ZOFFDebugger() override;

    void setTargetInterface(TargetInterface* target) override;
    void setTargetIOServer(TargetIOServer* server) override { m_server = server; }

    unsigned numcalls() const override { return unsigned(m_frames.size()); }
    Frame* getFrame(unsigned number) const override;

    QStringList getDisassemblyModes() override;
    void setDisassemblyMode(const QString& mode) override;
    QString getDisassemblyMode() override;
    void clearDisassemblyText() override;
    void getDisassemblyText(QStringList& lines) override;
    void moreDisassemblyText(bool up) override;
    int getDisassemblyLineNumber(uint32_t address) override;
    bool getDisassemblyLineAddress(int line, uint32_t& address) override;
    bool getSourceLocation(int disassemblyLine, Path& path, int& line) override;
    bool getAssemblyLocation(const Path& path, int line, int& disassemblyLine) override;
    void locateDisassembly(uint32_t address) override;
    void setDisassemblyExecution(bool on) override;

    bool locate(Frame* frame, QString& name, Path& path, QString& function, int& line,
                uint32_t& address) override;
    bool setNextStatement(Frame* frame, const Path& path, int line) override;

    QStringList executableNames() override;
    QStringList sourceFileNames(const QString& executable) override;
    QList<int> lineNumbers(const QString& executable, const Path& source) override;
    QStringList symbolNames(const QString& executable) override;

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
    void clearBreakpoint(DebuggerBreakpoint* breakpoint) override;
    bool canBreakAt(const QString& file, const Path& path, int line, DebuggerBreakpoint*& existing) override;

    unsigned getWordSizeInBytes() const override { return 4; }
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
    void stepinto(bool instruction) override { step(instruction, false); }
    void stepover(bool instruction) override { step(instruction, true); }
    void stepout(Frame* frame) override;
    bool isStopped() override;

    void getGlobalVariables(Frame* frame, VariableListBuilder* builder) override;
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

    void getLocateContext(ExpressionContext& context) override { context = m_context; }
    void locate() override;
    void locate(unsigned* registers) override;
    void locate(uint32_t pc) override;

    uint32_t addressSubtract(uint32_t address, uint32_t count) override;
    uint32_t addressAdd(uint32_t address, uint32_t count) override;

    // The executable that has an instruction at the address; the first one when none has, or the address
    // is 0. Null without executables.
    SymbolicDebug* symbols(uint32_t address) const;
    // A public symbol's value, of whichever executable resolves it first.
    bool getLinkerSymbolValue(const char* name, int64_t& value) const;
    // By the rules of the expression context: its source position, its frame, then public names and all.
    ZOFFSymbol* getSymbol(const char* name) const;
    ZOFFType* getNamedType(const char* name) const;
    ZOFFInsn* getInsnAt(uint32_t address) const;
    // What the stack pointer is off by at the current frame's pc.
    int getSPAdjustment() const;
    // Whether the innermost frame stands at the start of a statement.
    bool atStatement() const;
    // The range of code memory around an address; false outside.
    bool getAddressRange(uint32_t address, uint32_t& low, uint32_t& high) const;

    // Finds the two words of the program and begins to serve it; without them it runs unserved.
    void enableDebugIO();
    // Tells the program that nobody serves it any more. Does nothing while debug I/O is off.
    void disableDebugIO();
    bool debugIOEnabled() const { return m_ioEnabled; }
    // Carries out the request that the program has made; false when there is none.
    bool handleDebugIO(int& operation);

    // Code as the last setDisassembleRange() read it, else from the target.
    void setDisassembleRange(uint32_t start, uint32_t size);
    void setDisassembleRange(uint32_t start, std::vector<unsigned char> bytes);
    uint16_t peekPC(uint32_t address);

    ZOFFBreakpoint* findBreakpoint(const HBreakpoint* record) const;
    // Null removes all temporary ones.
    void removeTempBreakpoint(const HBreakpoint* record);
    // The base form, by address; null when the monitor refuses.
    ZOFFBreakpoint* setBreakpoint(uint32_t address, bool temporary, bool counted, int count, int limit,
                                  const QString& action);
    void chainFrom(DebuggerBreakpoint* breakpoint, DebuggerBreakpoint* from);

    // A range that does not exist is neither read nor written; the answer is the number of bytes.
    unsigned readMemory(uint32_t address, unsigned count, unsigned char* bytes);
    unsigned writeMemory(uint32_t address, unsigned count, const unsigned char* bytes);
    unsigned readCodeMemory(uint32_t address, unsigned count, unsigned char* bytes);
    unsigned writeCodeMemory(uint32_t address, unsigned count, const unsigned char* bytes);

    // Throws HException in a frame whose registers are not the target's.
    void setRegister(Frame* frame, unsigned number, uint32_t value);

protected:
    // The processor.
    virtual uint32_t getEntryPoint() const = 0;
    // Puts the calls behind the given innermost frame, which it takes over, into frames().
    virtual void generateBackTrace(std::unique_ptr<Frame> innermost) = 0;
    // Where a temporary breakpoint ends one step of the range. Null registers are not read.
    virtual uint32_t nextInstruction(TargetRegisterInterface* registers, bool stepOver, uint32_t start,
                                     uint32_t length) = 0;
    // Owned by the caller; null when the processor has no such form.
    virtual TargetRegisterInterface* createRegisters(unsigned* block) = 0;
    virtual TargetRegisterInterface* createRegisters(uint32_t pc) = 0;
    virtual int registerNameToNumber(const char* name) = 0;
    virtual QString registerNumberToName(unsigned number) = 0;
    virtual TargetMemoryInterface* getMemorySegment(const QString& name) const = 0;
    virtual void initialiseDebugOperation(uint32_t controlWord) = 0;
    virtual bool debugOperationUsesBreakpoint() const = 0;
    // One line of disassembly, its length in bytes, and where it jumps to.
    virtual QString disassemble(uint32_t address, uint32_t& length, bool& isJump, uint32_t& target) = 0;

    TargetInterface* target() const { return m_target; }
    TargetInterface& checkedTarget() const; // throws HException when there is none
    HMonitor& monitor() const;              // the same, for a target that cannot stop
    std::vector<std::unique_ptr<Frame>>& frames() { return m_frames; }
    QString formatAddress(uint32_t address) const;

private:
    class SourceListing;
    using Breakpoints = std::list<std::unique_ptr<ZOFFBreakpoint>>;

    void generateDisassembly(DisassemblyInfo& block);
    const DisassemblyInfo& shownBlock();
    void controlWordWritten() override;
    int controlWord();
    bool pollRequest(int& operation);
    void serve(int operation);
    void carryOut(int operation);
    void noteLink(const HException* failure);
    void withdraw();
    void step(bool instruction, bool over);
    void handleBreakpoint();
    bool continueStep(ZOFFBreakpoint* breakpoint);
    void locateFrom(TargetRegisterInterface* registers, bool live);
    void removeFromMonitor(Breakpoints& list, Breakpoints::iterator at);
    SymbolicDebug* table(const QString& executable) const;
    std::list<SymbolicDebug*>::iterator findTable(const Path& path);
    unsigned transfer(TargetMemoryInterface* memory, uint32_t address, unsigned count, unsigned char* to,
                      const unsigned char* from);

    DebuggerHelperFunctions* m_helper;
    std::vector<std::unique_ptr<Frame>> m_frames; // innermost first
    Breakpoints m_codeBreakpoints;
    Breakpoints m_dataBreakpoints;
    std::list<SymbolicDebug*> m_symbolTables; // references to the cache of open files
    bool m_stopped = false;
    ExpressionContext m_context;
    bool m_ioEnabled = false;
    uint32_t m_commWord = 0;
    uint32_t m_controlWord = 0;
    bool m_serving = false;    // while a request is looked for and carried out
    bool m_linkFailed = false; // at the last poll
    DisassemblyText m_disassembly;
    CodeCache m_codeCache;
    TargetInterface* m_target = nullptr;
    HMonitor* m_monitor = nullptr;
    TargetIOServer* m_server = nullptr;
};
