// The script object "Debug": what a script or a line at the prompt can do with the program under the
// debugger. Every command is a row of a table with its name, number, arguments, the state in which it works,
// and a line of help.
//
// Commands throw HException with a text for the user: "not stopped", "already stopped", and what the debugger
// or an expression failed with.
#pragma once

#include "driver/console/CodeView.h"
#include "driver/console/NumberedBreakpoints.h"
#include "script/engine/ESClass.h"

#include <QByteArray>
#include <QStringList>

#include <span>

class TextVariableView;

class DebugCommands : public ESClass {
public:
    // The state of the program in which a command works.
    enum class State { Any, Stopped, Running };
    class Arguments;
    struct Command {
        int number;
        const char* name;
        const char* arguments; // as help shows them
        State state;
        ESValue (DebugCommands::*handler)(Arguments&);
        const char* help;
    };

    // The run is not owned and must outlive this.
    explicit DebugCommands(ProgramRun& run);

    static std::span<const Command> commands();
    // Makes the global object "Debug".
    ESObject* installScriptObject(ESContext* context);
    void call(ESContext* context, ESObject* function, ESObject* self, int argc, ESValue* argv) override;

    // To be told of stops.
    CodeView& view() { return m_view; }
    // Forgets all breakpoints, as the debugger does when it is cleared.
    void clear() { m_breakpoints.clear(); }

private:
    struct Options;
    SymbolicDebuggerInterface& debugger() const { return m_run.debugger(); }
    void checkStateForCommand(const Command& command) const;
    void show(const QStringList& lines) const;
    void show(const TextVariableView& view) const;
    TextVariableView displayView(int radix, bool followStrings, const QByteArray& floatFormat) const;
    // Lets the program go on.
    template <typename Resume> ESValue resume(Resume&& action);
    ESValue remember(DebuggerBreakpoint* breakpoint, const Arguments& arguments, unsigned optional,
                     bool byExpression, const QString& text, int line);
    const NumberedBreakpoints::Info& knownBreakpoint(unsigned number) const;
    Path sourceFile(const QString& given) const;
    uint64_t addressOf(const QString& expression, QString& space) const;
    QString instructionAt(uint32_t address) const;
    QString sourceAt(uint32_t address, QString& place) const;

    ESValue breakexpr(Arguments& arguments);
    ESValue breakline(Arguments& arguments);
    ESValue breaknow(Arguments& arguments);
    ESValue deletebreak(Arguments& arguments);
    ESValue chainbreak(Arguments& arguments);
    ESValue showbreak(Arguments& arguments);
    ESValue enablebreak(Arguments& arguments);
    ESValue showexceptions(Arguments& arguments);
    ESValue enableexception(Arguments& arguments);
    ESValue lastexception(Arguments& arguments);
    ESValue stepinto(Arguments& arguments);
    ESValue stepover(Arguments& arguments);
    ESValue go(Arguments& arguments);
    ESValue stepout(Arguments& arguments);
    ESValue wait(Arguments& arguments);
    ESValue setnext(Arguments& arguments);
    ESValue quit(Arguments& arguments);
    ESValue exit(Arguments& arguments);
    ESValue assertion(Arguments& arguments);
    ESValue evaluate(Arguments& arguments);
    ESValue set(Arguments& arguments);
    ESValue print(Arguments& arguments);
    ESValue printregisters(Arguments& arguments);
    ESValue printlocals(Arguments& arguments);
    ESValue printglobals(Arguments& arguments);
    ESValue dump(Arguments& arguments);
    ESValue where(Arguments& arguments);
    ESValue locate(Arguments& arguments);
    ESValue locatepc(Arguments& arguments);
    ESValue locateregisters(Arguments& arguments);
    ESValue setmode(Arguments& arguments);
    ESValue getfilename(Arguments& arguments);
    ESValue getlinenumber(Arguments& arguments);
    ESValue list(Arguments& arguments);
    ESValue setprintradix(Arguments& arguments);
    ESValue setprintarray(Arguments& arguments);
    ESValue setprintstring(Arguments& arguments);
    ESValue echo(Arguments& arguments);
    ESValue trace(Arguments& arguments);
    ESValue showtrace(Arguments& arguments);
    ESValue showcounts(Arguments& arguments);
    ESValue help(Arguments& arguments);

    ProgramRun& m_run;
    CodeView m_view;
    NumberedBreakpoints m_breakpoints;
    int m_printRadix = 16;
    unsigned m_printArrayLimit = 32;
    bool m_printStrings = true;
    QByteArray m_floatFormat = "%g";
};
