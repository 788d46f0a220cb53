// The table of the requests that the adapter knows: when each is allowed, what it does, and which capability
// an editor is told of because of it. What is not in the table is neither done nor announced.

#include "debug/SymbolicDebuggerInterface.h"
#include "driver/dap/Adapter.h"
#include "driver/dap/ClientFormat.h"
#include "driver/dap/RequestArguments.h"

#include <QJsonArray>

std::span<const Adapter::Row> Adapter::requests()
{
    using A = const RequestArguments&;
    constexpr unsigned Program = Configuring | Stopped | Running | Ended;
    constexpr unsigned Standing = Configuring | Stopped;
    static constexpr unsigned Any = Fresh | Ready | Program;
    static const Row rows[] = {
        {"initialize", Fresh, [](Adapter& a, A args) { return a.initialize(args); }, nullptr},
        {"launch", Ready, [](Adapter& a, A args) { return a.launch(args); }, nullptr},
        {"attach", Ready, [](Adapter& a, A args) { return a.attach(args); }, nullptr},
        {"configurationDone", Configuring, [](Adapter& a, A args) { return a.configurationDone(args); },
         "supportsConfigurationDoneRequest"},
        {"restart", Program, [](Adapter& a, A args) { return a.restart(args); }, "supportsRestartRequest"},
        {"disconnect", Any, [](Adapter& a, A args) { return a.disconnect(args); },
         "supportTerminateDebuggee"},
        {"terminate", Program, [](Adapter& a, A args) { return a.terminate(args); },
         "supportsTerminateRequest"},
        {"cancel", Any, [](Adapter& a, A args) { return a.cancelRequest(args); }, "supportsCancelRequest"},

        {"setBreakpoints", Program, [](Adapter& a, A args) { return a.m_breakpoints.setSource(args); },
         "supportsConditionalBreakpoints"},
        {"setFunctionBreakpoints", Program,
         [](Adapter& a, A args) { return a.m_breakpoints.setFunctions(args); },
         "supportsFunctionBreakpoints"},
        {"setInstructionBreakpoints", Program,
         [](Adapter& a, A args) { return a.m_breakpoints.setInstructions(args); },
         "supportsInstructionBreakpoints"},
        {"setDataBreakpoints", Program, [](Adapter& a, A args) { return a.m_breakpoints.setData(args); },
         "supportsDataBreakpoints"},
        {"dataBreakpointInfo", Standing, [](Adapter& a, A args) { return a.m_values.dataInfo(args); },
         "supportsDataBreakpointBytes"},
        {"setExceptionBreakpoints", Program, [](Adapter& a, A args) { return a.setExceptions(args); },
         nullptr},
        {"exceptionInfo", Stopped, [](Adapter& a, A args) { return a.exceptionInfo(args); },
         "supportsExceptionInfoRequest"},
        {"breakpointLocations", Program, [](Adapter& a, A args) { return a.m_breakpoints.locations(args); },
         "supportsBreakpointLocationsRequest"},

        {"continue", Stopped, [](Adapter& a, A args) { return a.go(args); }, nullptr},
        {"next", Stopped, [](Adapter& a, A args) { return a.step(args, true); },
         "supportsSteppingGranularity"},
        {"stepIn", Stopped, [](Adapter& a, A args) { return a.step(args, false); }, nullptr},
        {"stepOut", Stopped, [](Adapter& a, A args) { return a.stepOut(args); }, nullptr},
        {"pause", Stopped | Running, [](Adapter& a, A args) { return a.pause(args); }, nullptr},
        {"gotoTargets", Stopped, [](Adapter& a, A args) { return a.m_stack.gotoTargets(args); },
         "supportsGotoTargetsRequest"},
        {"goto", Stopped, [](Adapter& a, A args) { return a.jump(args); }, nullptr},

        {"threads", Ready | Program, [](Adapter& a, A args) { return a.threads(args); }, nullptr},
        {"stackTrace", Standing, [](Adapter& a, A args) { return a.m_stack.stackTrace(args); },
         "supportsDelayedStackTraceLoading"},
        {"loadedSources", Program, [](Adapter& a, A) { return a.m_stack.loadedSources(); },
         "supportsLoadedSourcesRequest"},
        {"scopes", Standing, [](Adapter& a, A args) { return a.m_values.scopes(args); }, nullptr},
        {"variables", Standing, [](Adapter& a, A args) { return a.m_values.variables(args); },
         "supportsValueFormattingOptions"},
        {"setVariable", Standing, [](Adapter& a, A args) { return a.m_values.setVariable(args); },
         "supportsSetVariable"},
        {"setExpression", Standing, [](Adapter& a, A args) { return a.m_values.setExpression(args); },
         "supportsSetExpression"},
        {"evaluate", Standing | Running, [](Adapter& a, A args) { return a.evaluate(args); },
         "supportsEvaluateForHovers"},
        {"completions", Standing, [](Adapter& a, A args) { return a.m_values.completions(args); },
         "supportsCompletionsRequest"},
        {"readMemory", Standing, [](Adapter& a, A args) { return a.m_memory.read(args); },
         "supportsReadMemoryRequest"},
        {"writeMemory", Standing, [](Adapter& a, A args) { return a.m_memory.write(args); },
         "supportsWriteMemoryRequest"},
        {"disassemble", Standing, [](Adapter& a, A args) { return a.m_memory.disassemble(args); },
         "supportsDisassembleRequest"},
    };
    return rows;
}

QJsonObject Adapter::initialize(const RequestArguments& arguments)
{
    m_context.client = ClientFormat(arguments);
    m_progress.setBars(m_context.client.progress());
    m_state = Ready;
    QJsonObject body;
    for (const Row& row : requests())
        if (row.capability)
            body.insert(QLatin1String(row.capability), true);
    // What requests above can do beside their first sense.
    for (const char* capability : {"supportsHitConditionalBreakpoints", "supportsLogPoints",
                                   "supportSuspendDebuggee", "supportsClipboardContext"})
        body.insert(QLatin1String(capability), true);
    return body;
}

QJsonObject Adapter::threads(const RequestArguments&)
{
    QJsonObject thread{{QStringLiteral("id"), DapContext::ThreadId},
                       {QStringLiteral("name"), QStringLiteral("program")}};
    return {{QStringLiteral("threads"), QJsonArray{thread}}};
}

// Work is cancelled while it goes on, and waiting requests are taken out of the queue; what comes to this
// point is done already.
QJsonObject Adapter::cancelRequest(const RequestArguments& arguments)
{
    if (arguments.has("requestId"))
        arguments.count("requestId");
    arguments.text("progressId", QString());
    return {};
}
