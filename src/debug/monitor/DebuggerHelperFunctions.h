// What the debugger asks of its host: how disassembly is shown, where errors go, and the text of source
// files. The session implements it.
#pragma once

#include <QString>

class Path;

class DebuggerHelperFunctions {
public:
    virtual bool debuggerDisassemblyShowAddresses() = 0;
    virtual bool debuggerDisassemblyShowLabels() = 0;
    virtual bool debuggerDisassemblyShowSource() = 0;
    // Whether a step of one instruction is left to the target, instead of a breakpoint behind it.
    virtual bool debuggerUseHardwareStep() = 0;
    // A failure that does not end what the debugger does.
    virtual void displayError(const QString& text) = 0;
    // Where a source file that the executable names is found here.
    virtual Path getDebugSourcePath(const Path& path) = 0;
    // The text of a line, counted from 1; null when there is none.
    virtual QString getDebugSourceText(const Path& path, int line) = 0;

protected:
    ~DebuggerHelperFunctions() = default;
};
