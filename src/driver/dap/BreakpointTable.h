// The breakpoints that the editor wants, of all four kinds, and which of them the target carries out.
//
// An editor sends the whole list of a file or a kind each time. What it wants as before keeps its number and
// its count of hits, and costs nothing. Breakpoints on one address share the target's means. What the target
// refuses is tried again whenever a place may have become free, and the editor is told when it succeeds.
#pragma once

#include "driver/dap/HitCondition.h"
#include "driver/dap/LogText.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QString>

#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <optional>

class RequestArguments;
class DebuggerBreakpoint;
struct DapContext;

class BreakpointTable {
public:
    // Evaluate what stands in conditions, log messages and function breakpoints, in the innermost frame. They
    // throw HException.
    struct Evaluators {
        std::function<bool(const QString& expression)> truth;
        std::function<QString(const QString& expression)> text;
        std::function<uint32_t(const QString& name)> function; // its address
    };
    BreakpointTable(DapContext& context, Evaluators evaluators)
        : m_context(context), m_evaluators(std::move(evaluators))
    {
    }

    // The bodies of the responses.
    QJsonObject setSource(const RequestArguments& arguments);
    QJsonObject setFunctions(const RequestArguments& arguments);
    QJsonObject setInstructions(const RequestArguments& arguments);
    QJsonObject setData(const RequestArguments& arguments);
    QJsonObject locations(const RequestArguments& arguments) const;

    // The program has come to a breakpoint: counts the hit, writes log messages. Returns whether it stops.
    bool hit(const DebuggerBreakpoint* matched);
    // A breakpoint stands at the address where the program is to begin, and stops it there.
    bool hitAt(uint32_t address);
    // Why the last hit() has stopped the program, as a reason of a "stopped" event and the breakpoints'
    // numbers; null and empty when it did not.
    const char* stopReason() const { return m_stopReason; }
    const QJsonArray& stopIds() const { return m_stopIds; }
    void forgetStop();

    // The debugger has forgotten its breakpoints.
    void forgetInstalled();
    // Tries what is not installed.
    void install();
    void removeAll();

private:
    enum Kind { Source, Function, Instruction, Data };
    // What the target is asked for: a code address, or an expression with a trigger.
    struct Place {
        DebuggerBreakpoint* installed = nullptr;
        std::optional<uint32_t> address;
        QString expression;
        QString trigger;
    };
    struct Breakpoint {
        int id = 0;
        Kind kind = Source;
        QString group; // the built path of a source file; empty for other kinds
        QJsonObject wanted;
        QString condition;
        HitCondition hitCondition;
        LogText log;
        uint64_t hits = 0;
        int line = 0; // where it stands, for Source
        std::shared_ptr<Place> place;
        QString refusal;    // why it is not installed; empty when it is
        bool final = false; // the target need not be asked again
        bool stale = false; // not in the list that is being set
    };
    using Breakpoints = std::list<Breakpoint>;

    QJsonObject replace(Kind kind, const QString& group, const std::vector<RequestArguments>& wanted);
    void prepare(Breakpoint& breakpoint, const RequestArguments& wanted);
    void locate(Breakpoint& breakpoint, const RequestArguments& wanted);
    std::shared_ptr<Place> share(Place place);
    void install(Breakpoint& breakpoint);
    void release(Breakpoint& breakpoint);
    bool counts(Breakpoint& breakpoint);
    QJsonObject description(const Breakpoint& breakpoint) const;

    DapContext& m_context;
    Evaluators m_evaluators;
    Breakpoints m_breakpoints;
    int m_lastId = 0;
    const char* m_stopReason = nullptr;
    QJsonArray m_stopIds;
};
