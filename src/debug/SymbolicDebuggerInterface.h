// The debugger as the session sees it: symbols and lines of the loaded executables, run control with
// breakpoints and steps, call frames, values, and the service of a program's requests to its host.
//
// A session is loadSymbols(), setTargetInterface(), start(), then isStopped() as a poll after each of
// go() and the steps; clear() ends it. Addresses are byte addresses of the target. Lookups return null,
// false or -1 and do not throw; what the target does may throw HException.
#pragma once

#include "support/Path.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <utility>

class DebuggerBreakpoint;
class Frame;
class HitListener;
class ProjectElement;
class TargetIOServer;
class TargetInterface;
class VariableListBuilder;
class ExpressionType;
struct ExpressionContext;

class SymbolicDebuggerInterface {
public:
    // A name and whether it is on or in use.
    using NamedFlag = std::pair<QString, bool>;

    SymbolicDebuggerInterface() = default;
    virtual ~SymbolicDebuggerInterface() = default;
    SymbolicDebuggerInterface(const SymbolicDebuggerInterface&) = delete;
    SymbolicDebuggerInterface& operator=(const SymbolicDebuggerInterface&) = delete;

    // Not owned; null when all breakpoints stop.
    virtual void setHitListener(HitListener* listener) = 0;

    // Neither is owned. The target must be an HMonitor, and both must stay until others are set.
    virtual void setTargetInterface(TargetInterface* target) = 0;
    virtual void setTargetIOServer(TargetIOServer* server) = 0;

    // The calls of the last stop or locate(), innermost first. Null for a number beyond. Those behind the
    // innermost are looked for on the stack when the first of them is asked for, and by numcalls().
    virtual unsigned numcalls() = 0;
    virtual Frame* getFrame(unsigned number) = 0;

    // The window of disassembled code, around the address last located. Lines count from 0. -1 and false
    // stand for what is not in it.
    virtual QStringList getDisassemblyModes() = 0;
    virtual void setDisassemblyMode(const QString& mode) = 0;
    virtual QString getDisassemblyMode() = 0;
    virtual void clearDisassemblyText() = 0;
    virtual void getDisassemblyText(QStringList& lines) = 0;
    virtual void moreDisassemblyText(bool up) = 0;
    virtual int getDisassemblyLineNumber(uint32_t address) = 0;
    virtual bool getDisassemblyLineAddress(int line, uint32_t& address) = 0;
    virtual bool getSourceLocation(int disassemblyLine, Path& path, int& line) = 0;
    virtual bool getAssemblyLocation(const Path& path, int line, int& disassemblyLine) = 0;
    virtual void locateDisassembly(uint32_t address) = 0;
    // One instruction, and its length in bytes; a null text and 0 where no code memory is.
    virtual QString instructionText(uint32_t address, uint32_t& length) = 0;
    virtual void setDisassemblyExecution(bool on) = 0;

    // Where a frame stands: the source file's name, its path and the line, or without a known line the
    // executable's name, no path and 0; the name of the function (null when there is none) and the pc.
    // Callers are looked up where their call is. False when no executable covers the pc.
    virtual bool locate(Frame* frame, QString& name, Path& path, QString& function, int& line,
                        uint32_t& address) = 0;
    // Sets the pc of the innermost frame to a line's address; false when the line has no code.
    virtual bool setNextStatement(Frame* frame, const Path& path, int line) = 0;

    virtual QStringList executableNames() = 0;
    virtual QStringList sourceFileNames(const QString& executable) = 0;
    virtual QList<int> lineNumbers(const QString& executable, const Path& source) = 0;
    virtual QStringList symbolNames(const QString& executable) = 0;

    // Ends a session: withdraws from the program's requests, clears the target, forgets frames,
    // breakpoints and cached code. Symbols stay.
    virtual void clear() = 0;

    virtual QStringList getBreakTriggers() = 0;
    virtual QStringList getBreakActions() = 0;
    virtual QList<bool> getHardwareBreakPoints() = 0; // in use or not
    // A source position. `count` matches are ignored; with `counted` the limit text is the number of hits.
    // A null file stands for every executable. Throws DebuggerBreakpointFailure.
    virtual DebuggerBreakpoint* setBreakpoint(const QString& file, const Path& path, int line, int count,
                                              bool counted, bool temporary, const QString& limit,
                                              const QString& action) = 0;
    // An address, an access, or conditions of one. An empty trigger stands for what suits the place; without
    // a frame in the context, that of a program that stands is seen. Throws DebuggerBreakpointFailure.
    virtual DebuggerBreakpoint* setBreakpoint(const ExpressionContext& context, const QString& expression,
                                              const QString& trigger, int count, bool counted, bool temporary,
                                              const QString& limit, const QString& action) = 0;
    // What is not in the list is ignored.
    virtual void clearBreakpoint(DebuggerBreakpoint* breakpoint) = 0;
    // Whether a line has code; `existing` is the breakpoint that stands there, or null.
    virtual bool canBreakAt(const QString& file, const Path& path, int line,
                            DebuggerBreakpoint*& existing) = 0;
    // One that is not enabled matches nothing. Throws DebuggerBreakpointFailure when the target has no room
    // for it.
    virtual void setBreakpointEnabled(DebuggerBreakpoint* breakpoint, bool on) = 0;
    // The breakpoint matches nothing until `from` has matched; null takes the chain off, and so does the end
    // of `from`. Throws DebuggerBreakpointFailure "Chaining not supported".
    virtual void chainFrom(DebuggerBreakpoint* breakpoint, DebuggerBreakpoint* from) = 0;

    virtual unsigned getAddressSizeInBytes() const = 0;
    virtual unsigned getWordSizeInBytes() const = 0;
    virtual QString formatPC(uint32_t address) const = 0;
    // The address of a line and the executable that has it; -1 when none has.
    virtual int64_t getLineAddress(QString& file, const Path& path, int line) = 0;
    // The line of an address, with the executable and the source; -1 when there is none.
    virtual int getAddressLine(uint32_t address, QString& file, Path& path) = 0;
    virtual DebuggerBreakpoint* lastMatchedBreakpoint() = 0;
    virtual QString lastMatchedException() = 0;

    // Execution counts and trace are the monitor's; without a target they do nothing.
    virtual void resetExecutionCount() = 0;
    virtual void setExecutionCountEnabled(bool on) = 0;
    virtual bool getExecutionCountEnabled() = 0;
    virtual void iterateExecutionCount() = 0;
    virtual bool getExecutionCount(unsigned& address, unsigned& count, unsigned& other) = 0;
    virtual void resetTrace() = 0;
    virtual void setTraceEnabled(bool on) = 0;
    virtual bool getTraceEnabled() = 0;
    virtual void iterateTrace() = 0;
    virtual bool getTrace(unsigned& address, unsigned& data, unsigned& cycles) = 0;
    virtual bool canAccessInterruptsEnables() = 0;
    virtual void setInterruptsEnabled(bool on) = 0;
    virtual bool getInterruptsEnabled() = 0;
    virtual void syncSettingsWithProject(ProjectElement* project, const QString& configuration) = 0;

    // Runs the program from an entry point: "0x" and hexadecimal digits, or a symbol; an empty text is
    // the processor's own. A symbol that is not there is displayed as an error and the processor's own is
    // taken. With `stop` the program stays at its first instruction.
    virtual void start(const QString& entry, bool stop) = 0;
    virtual void attach() = 0;
    virtual void go() = 0;
    // Asks the target; isStopped() finds that it has stopped.
    virtual void stop() = 0;
    // A step of one statement, or of one instruction with `instruction`; over steps over calls.
    virtual void stepinto(bool instruction) = 0;
    virtual void stepover(bool instruction) = 0;
    // Until the given frame, a caller, is the innermost one. Throws HException "no calling frame" for null.
    virtual void stepout(Frame* frame) = 0;
    // The poll that drives a session: serves requests, and notices stops. A link that fails is
    // displayed as an error, once, and the next poll tries again; so is a request that cannot be carried
    // out, and gets an error for an answer.
    virtual bool isStopped() = 0;

    virtual void getGlobalVariables(Frame* frame, VariableListBuilder* builder) = 0;
    // Those that only the file of the frame's pc knows.
    virtual void getStaticVariables(Frame* frame, VariableListBuilder* builder) = 0;
    virtual void getLocalVariables(Frame* frame, VariableListBuilder* builder) = 0;
    virtual void getParameters(Frame* frame, VariableListBuilder* builder) = 0;
    virtual void getRegisters(Frame* frame, VariableListBuilder* builder) = 0;
    virtual unsigned getRegisterNumber(const QString& name) = 0;
    // The type to cast a register to whose bits have names, as an expression writes it; empty for others.
    virtual QString getRegisterFlags(const QString& name) const = 0;
    // Both return true also for a register that is not there, and then change nothing.
    virtual bool getRegisterValue(Frame* frame, unsigned number, uint64_t& value) = 0;
    virtual bool setRegisterValue(Frame* frame, unsigned number, uint64_t value) = 0;
    virtual void evaluateExpression(const ExpressionContext& context, const QString& expression,
                                    const QString& name, VariableListBuilder* builder) = 0;
    virtual void evaluateExpression(const ExpressionContext& context, const QString& expression,
                                    ExpressionType& value) = 0;
    virtual void setExpression(const ExpressionContext& context, const QString& expression,
                               const ExpressionType& value) = 0;

    virtual QStringList getMemorySpaces() = 0;
    // Bytes from the address to the end of its range; 0 outside.
    virtual uint32_t getMemoryRange(const QString& space, uint32_t address) = 0;
    virtual void dumpMemory(const QString& space, uint32_t address, unsigned count, QStringList& lines) = 0;
    // Return how many bytes were moved: all, or 0 when the range does not exist.
    virtual unsigned setMemory(const QString& space, uint32_t address, unsigned count,
                               const unsigned char* bytes) = 0;
    virtual unsigned getMemory(const QString& space, uint32_t address, unsigned count,
                               unsigned char* bytes) = 0;

    // An executable at its own addresses; a file that changed replaces its earlier state. Throws
    // HException for a file that cannot be read.
    virtual void loadSymbols(const Path& path, unsigned address) = 0;
    virtual void unloadSymbols(const Path& path) = 0; // an empty path unloads all

    // Errors of the program that can stop it: one class of them, by name.
    virtual QStringList getExceptionClasses() = 0;
    virtual QList<NamedFlag> getExceptionTypes(int exceptionClass) = 0;
    virtual bool targetHasExceptionClass(int exceptionClass) = 0;
    virtual void setExceptionEnabled(const QString& name, bool on) = 0;

    virtual void getLocateContext(ExpressionContext& context) = 0;
    // Finds the call frames from the target's registers, from a pc alone, or from a block of registers.
    virtual void locate() = 0;
    // The block has numRegisterWords() words, in the order of the named registers.
    virtual void locate(unsigned* registers) = 0;
    virtual unsigned numRegisterWords() const = 0;
    virtual void locate(uint32_t pc) = 0;

    // Saturate at the ends of the range of code memory around the address.
    virtual uint32_t addressSubtract(uint32_t address, uint32_t count) = 0;
    virtual uint32_t addressAdd(uint32_t address, uint32_t count) = 0;
};

// The debugger of this process; null until main makes it.
extern SymbolicDebuggerInterface* debugger;
