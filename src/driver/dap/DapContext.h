// What all requests of one editor's session share.
#pragma once

#include "driver/dap/ClientFormat.h"
#include "driver/dap/References.h"
#include "driver/dap/SourceFiles.h"

#include <QJsonObject>

class Messages;
class SymbolicDebuggerInterface;

struct DapContext {
    DapContext(SymbolicDebuggerInterface& theDebugger, Messages& theMessages)
        : debugger(theDebugger), messages(theMessages), sources(theDebugger, client)
    {
    }

    SymbolicDebuggerInterface& debugger;
    Messages& messages;
    ClientFormat client;
    SourceFiles sources;
    // Numbers of the frames that the editor was told of, innermost 0.
    References<unsigned> frames;

    // A program has one thread.
    static constexpr int ThreadId = 1;
};
