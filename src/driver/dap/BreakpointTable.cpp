#include "driver/dap/BreakpointTable.h"

#include "debug/SymbolicDebuggerInterface.h"
#include "debug/evaluation/ExpressionContext.h"
#include "driver/dap/DapContext.h"
#include "driver/dap/MemoryReference.h"
#include "driver/dap/Messages.h"
#include "driver/dap/RequestArguments.h"
#include "driver/dap/RequestFailure.h"
#include "driver/dap/SourceFiles.h"
#include "driver/dap/limits.h"
#include "support/HException.h"
#include "support/Path.h"

#include <algorithm>

namespace {

struct KindRow {
    const char* key;    // of the thing in a list, beside "line"
    const char* reason; // of a stop
};
constexpr KindRow Kinds[] = {
    {"line", "breakpoint"},
    {"name", "function breakpoint"},
    {"instructionReference", "instruction breakpoint"},
    {"dataId", "data breakpoint"},
};

// An access type of the protocol, as the target's triggers name it.
QString triggerName(const QString& accessType)
{
    static constexpr struct {
        const char *access, *trigger;
    } Triggers[] = {{"read", "Read"}, {"write", "Write"}, {"readWrite", "Read/Write"}};
    for (const auto& [access, trigger] : Triggers)
        if (accessType == QLatin1String(access))
            return QLatin1String(trigger);
    throw RequestFailure(QStringLiteral("unknown access type \"%1\"").arg(accessType));
}

// The first line at or behind the wanted one that has code; 0 for none.
int lineWithCode(const QList<int>& lines, int wanted)
{
    int best = 0;
    for (int line : lines)
        if (line >= wanted && (best == 0 || line < best))
            best = line;
    return best;
}

} // namespace

QJsonObject BreakpointTable::setSource(const RequestArguments& arguments)
{
    RequestArguments source = arguments.object("source");
    QString path = source.text("path", QString());
    const SourceFiles::File* file = path.isEmpty() ? nullptr : m_context.sources.find(path);
    // A file without code keeps its list under the editor's name for it.
    QString group = file ? file->built.osPathQString() : QLatin1String("//") + path;
    return replace(Source, group, arguments.objects("breakpoints"));
}

QJsonObject BreakpointTable::setFunctions(const RequestArguments& arguments)
{
    return replace(Function, QString(), arguments.objects("breakpoints"));
}

QJsonObject BreakpointTable::setInstructions(const RequestArguments& arguments)
{
    return replace(Instruction, QString(), arguments.objects("breakpoints"));
}

QJsonObject BreakpointTable::setData(const RequestArguments& arguments)
{
    return replace(Data, QString(), arguments.objects("breakpoints"));
}

QJsonObject BreakpointTable::replace(Kind kind, const QString& group,
                                     const std::vector<RequestArguments>& wanted)
{
    if (wanted.size() > size_t(DapLimits::Breakpoints))
        throw RequestFailure("too many breakpoints");
    auto belongs = [&](const Breakpoint& entry) { return entry.kind == kind && entry.group == group; };
    for (Breakpoint& breakpoint : m_breakpoints)
        breakpoint.stale = belongs(breakpoint);
    for (const RequestArguments& entry : wanted) {
        auto same = std::find_if(m_breakpoints.begin(), m_breakpoints.end(), [&](const Breakpoint& old) {
            return old.stale && old.wanted == entry.json();
        });
        if (same != m_breakpoints.end()) {
            same->stale = false;
            m_breakpoints.splice(m_breakpoints.end(), m_breakpoints, same);
            continue;
        }
        Breakpoint added;
        added.id = ++m_lastId;
        added.kind = kind;
        added.group = group;
        prepare(added, entry);
        m_breakpoints.push_back(std::move(added));
    }
    // Places become free before others are asked for.
    bool freed = false;
    for (auto at = m_breakpoints.begin(); at != m_breakpoints.end();) {
        auto current = at++;
        if (!current->stale)
            continue;
        release(*current);
        m_breakpoints.erase(current);
        freed = true;
    }
    QJsonArray list;
    for (Breakpoint& breakpoint : m_breakpoints)
        if (belongs(breakpoint)) {
            install(breakpoint);
            list.append(description(breakpoint));
        }
    if (freed)
        install();
    return {{QStringLiteral("breakpoints"), list}};
}

// What is wrong with one breakpoint is told of that one.
void BreakpointTable::prepare(Breakpoint& breakpoint, const RequestArguments& wanted)
{
    breakpoint.wanted = wanted.json();
    try {
        breakpoint.condition = wanted.text("condition", QString()).trimmed();
        breakpoint.hitCondition = HitCondition(wanted.text("hitCondition", QString()));
        breakpoint.log = LogText(wanted.text("logMessage", QString()));
        locate(breakpoint, wanted);
    } catch (const HException& failure) {
        breakpoint.refusal = failure.text();
        breakpoint.final = true;
    }
}

void BreakpointTable::locate(Breakpoint& breakpoint, const RequestArguments& wanted)
{
    Place place;
    switch (breakpoint.kind) {
    case Source: {
        int line = m_context.client.lineFrom(wanted.count("line"));
        Path path(breakpoint.group);
        QString executable;
        for (const SourceFiles::File& file : m_context.sources.files())
            if (file.built == path) {
                if (int found = lineWithCode(m_context.debugger.lineNumbers(file.executable, path), line)) {
                    breakpoint.line = found;
                    break;
                }
            }
        int64_t address =
            breakpoint.line ? m_context.debugger.getLineAddress(executable, path, breakpoint.line) : -1;
        if (address < 0)
            throw RequestFailure("No code for breakpoint");
        place.address = uint32_t(address);
        break;
    }
    case Function: place.address = m_evaluators.function(wanted.text("name")); break;
    case Instruction:
        place.address =
            MemoryReference::code(wanted.text("instructionReference"), wanted.number("offset", 0));
        break;
    case Data:
        place.expression = wanted.text("dataId");
        place.trigger = triggerName(wanted.text("accessType", QStringLiteral("write")));
        break;
    }
    breakpoint.place = share(std::move(place));
}

std::shared_ptr<BreakpointTable::Place> BreakpointTable::share(Place place)
{
    for (const Breakpoint& other : m_breakpoints)
        if (other.place && other.place->address == place.address &&
            other.place->expression == place.expression && other.place->trigger == place.trigger)
            return other.place;
    return std::make_shared<Place>(std::move(place));
}

void BreakpointTable::install(Breakpoint& breakpoint)
{
    Place* place = breakpoint.place.get();
    if (breakpoint.final || !place)
        return;
    breakpoint.refusal.clear();
    if (place->installed)
        return;
    try {
        QString expression = place->expression;
        if (place->address)
            expression = QLatin1String("0x") + QString::number(*place->address, 16);
        // Without a trigger an address in code is that of one instruction.
        QString trigger = place->trigger;
        place->installed = m_context.debugger.setBreakpoint(ExpressionContext(), expression, trigger, 0,
                                                            false, false, QString(), QString());
        if (!place->installed)
            breakpoint.refusal = QStringLiteral("the target refuses the breakpoint");
    } catch (const HException& failure) {
        breakpoint.refusal = failure.text();
    }
}

void BreakpointTable::install()
{
    for (Breakpoint& breakpoint : m_breakpoints) {
        if (breakpoint.refusal.isEmpty() || breakpoint.final)
            continue;
        install(breakpoint);
        if (breakpoint.refusal.isEmpty())
            m_context.messages.event("breakpoint", {{QStringLiteral("reason"), QStringLiteral("changed")},
                                                    {QStringLiteral("breakpoint"), description(breakpoint)}});
    }
}

void BreakpointTable::release(Breakpoint& breakpoint)
{
    std::shared_ptr<Place> place = std::move(breakpoint.place);
    if (!place || place.use_count() > 1 || !place->installed)
        return;
    m_context.debugger.clearBreakpoint(place->installed);
    place->installed = nullptr;
}

void BreakpointTable::forgetInstalled()
{
    for (Breakpoint& breakpoint : m_breakpoints)
        if (breakpoint.place) {
            breakpoint.place->installed = nullptr;
            if (breakpoint.refusal.isEmpty())
                breakpoint.refusal = QStringLiteral("the program does not run");
        }
}

void BreakpointTable::removeAll()
{
    for (Breakpoint& breakpoint : m_breakpoints)
        release(breakpoint);
    m_breakpoints.clear();
}

// --- Hits -------------------------------------------------------------------------------------

void BreakpointTable::forgetStop()
{
    m_stopReason = nullptr;
    m_stopIds = QJsonArray();
}

// Whether a hit counts, which one that cannot be told of does.
bool BreakpointTable::counts(Breakpoint& breakpoint)
{
    try {
        if (!breakpoint.condition.isEmpty() && !m_evaluators.truth(breakpoint.condition))
            return false;
    } catch (const HException& failure) {
        m_context.messages.output(
            "important",
            QStringLiteral("the condition \"%1\" fails: %2\n").arg(breakpoint.condition, failure.text()));
    }
    return breakpoint.hitCondition.holds(++breakpoint.hits);
}

bool BreakpointTable::hit(const DebuggerBreakpoint* matched)
{
    forgetStop();
    for (Breakpoint& breakpoint : m_breakpoints) {
        if (!breakpoint.place || !matched || breakpoint.place->installed != matched || !counts(breakpoint))
            continue;
        if (!breakpoint.log.isEmpty()) {
            QString text = breakpoint.log.expanded([this](const QString& expression) {
                try {
                    return m_evaluators.text(expression);
                } catch (const HException& failure) {
                    return QLatin1Char('<') + failure.text() + QLatin1Char('>');
                }
            });
            m_context.messages.output("console", text + QLatin1Char('\n'));
            continue;
        }
        m_stopIds.append(breakpoint.id);
        m_stopReason = Kinds[breakpoint.kind].reason;
    }
    return m_stopReason;
}

bool BreakpointTable::hitAt(uint32_t address)
{
    forgetStop();
    for (const Breakpoint& breakpoint : m_breakpoints)
        if (breakpoint.place && breakpoint.place->installed && breakpoint.place->address == address)
            return hit(breakpoint.place->installed);
    return false;
}

// --- What the editor is told ------------------------------------------------------------------

QJsonObject BreakpointTable::description(const Breakpoint& breakpoint) const
{
    bool verified = breakpoint.refusal.isEmpty();
    QJsonObject body{{QStringLiteral("id"), breakpoint.id}, {QStringLiteral("verified"), verified}};
    if (!verified) {
        body.insert(QStringLiteral("message"), breakpoint.refusal);
        body.insert(QStringLiteral("reason"), QLatin1String(breakpoint.final ? "failed" : "pending"));
    }
    if (breakpoint.place && breakpoint.place->address) {
        uint32_t address = *breakpoint.place->address;
        body.insert(QStringLiteral("instructionReference"), MemoryReference::text(address));
        QString executable;
        Path path;
        int line = m_context.debugger.getAddressLine(address, executable, path);
        if (breakpoint.kind == Source)
            line = breakpoint.line, path = Path(breakpoint.group);
        if (line > 0) {
            body.insert(QStringLiteral("line"), m_context.client.line(line));
            body.insert(QStringLiteral("source"), m_context.sources.source(path));
        }
    } else if (breakpoint.kind == Source && breakpoint.wanted.contains(QLatin1String("line"))) {
        body.insert(QStringLiteral("line"), breakpoint.wanted.value(QLatin1String("line")).toInt());
    }
    return body;
}

QJsonObject BreakpointTable::locations(const RequestArguments& arguments) const
{
    QJsonArray list;
    const SourceFiles::File* file =
        m_context.sources.find(arguments.object("source").text("path", QString()));
    int first = m_context.client.lineFrom(arguments.count("line"));
    int last = m_context.client.lineFrom(arguments.count("endLine", arguments.count("line")));
    if (file) {
        QList<int> lines = m_context.debugger.lineNumbers(file->executable, file->built);
        std::sort(lines.begin(), lines.end());
        lines.erase(std::unique(lines.begin(), lines.end()), lines.end());
        for (int line : std::as_const(lines))
            if (line >= first && line <= last)
                list.append(QJsonObject{{QStringLiteral("line"), m_context.client.line(line)}});
    }
    return {{QStringLiteral("breakpoints"), list}};
}
