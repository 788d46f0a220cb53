// Commands that show values and code, and those that change values.
#include "debug/SymbolicDebuggerInterface.h"
#include "debug/evaluation/DebugMarkerType.h"
#include "debug/evaluation/ExpressionContext.h"
#include "debug/run/Frame.h"
#include "driver/console/CommandArguments.h"
#include "driver/console/DebugCommands.h"
#include "driver/console/JavaScriptVariableView.h"
#include "driver/session/Loader.h"
#include "driver/session/TextVariableView.h"
#include "expression/ExpressionType.h"
#include "script/engine/ESContext.h"
#include "script/engine/ESStringPool.h"
#include "support/HException.h"
#include "zoff/ZOFFType.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace {

constexpr unsigned MaximumDump = 65'536; // bytes
constexpr int Radixes[] = {TextVariableView::CharacterRadix, 2, 8, 10, TextVariableView::UnsignedRadix, 16};

// What a format letter of print changes.
struct Format {
    const char* letter;
    int radix;               // 0 keeps it
    const char* floatFormat; // null keeps it
    bool strings;            // switches them on
};

constexpr Format Formats[] = {
    {"b", 2, nullptr, false},  {"c", TextVariableView::CharacterRadix, nullptr, false},
    {"d", 10, nullptr, false}, {"i", 10, nullptr, false},
    {"e", 10, "%e", false},    {"f", 10, "%f", false},
    {"g", 10, "%g", false},    {"o", 8, nullptr, false},
    {"p", 16, nullptr, false}, {"x", 16, nullptr, false},
    {"s", 0, nullptr, true},   {"u", TextVariableView::UnsignedRadix, nullptr, false},
};

constexpr double WholeNumbers = 9223372036854775808.0;

} // namespace

void DebugCommands::show(const TextVariableView& view) const
{
    show(view.text().split(u'\n'));
}

TextVariableView DebugCommands::displayView(int radix, bool followStrings,
                                            const QByteArray& floatFormat) const
{
    return TextVariableView(radix, m_printArrayLimit, false, true, true, followStrings, floatFormat, true,
                            false, true);
}

ESValue DebugCommands::print(Arguments& arguments)
{
    int radix = m_printRadix;
    QByteArray floatFormat = m_floatFormat;
    bool strings = m_printStrings;
    for (const Format& format : Formats)
        if (arguments.text(1) == QLatin1String(format.letter)) {
            radix = format.radix ? format.radix : radix;
            floatFormat = format.floatFormat ? QByteArray(format.floatFormat) : floatFormat;
            strings = strings || format.strings;
        }
    QString expression = arguments.text(0);
    TextVariableView view = displayView(radix, strings, floatFormat);
    debugger().evaluateExpression(m_view.context(), expression, expression, &view);
    show(view);
    return g_undefined;
}

ESValue DebugCommands::evaluate(Arguments& arguments)
{
    JavaScriptVariableView view;
    view.init(arguments.context());
    QString expression = arguments.text(0);
    debugger().evaluateExpression(m_view.context(), expression, expression, &view);
    return view.getESValue();
}

ESValue DebugCommands::printregisters(Arguments&)
{
    TextVariableView view(16, 0, false, true, true, false, m_floatFormat, true, true, true);
    debugger().getRegisters(m_view.frame(), &view);
    show(view);
    return g_undefined;
}

ESValue DebugCommands::printlocals(Arguments&)
{
    TextVariableView view = displayView(m_printRadix, m_printStrings, m_floatFormat);
    debugger().getLocalVariables(m_view.frame(), &view);
    show(view);
    return g_undefined;
}

ESValue DebugCommands::printglobals(Arguments&)
{
    TextVariableView view = displayView(m_printRadix, m_printStrings, m_floatFormat);
    debugger().getGlobalVariables(m_view.frame(), &view);
    show(view);
    return g_undefined;
}

// A script's number is assigned as an integer when it is one. A text is an expression.
ESValue DebugCommands::set(Arguments& arguments)
{
    QString expression = arguments.text(0);
    ExpressionContext context = m_view.context();
    ExpressionType place, value;
    debugger().evaluateExpression(context, expression, place);
    if (place.getType() != ExpressionType::Marker)
        throw HException(QLatin1String("cannot assign to ") + expression);
    ESValue given = arguments.value(1);
    if (isstr(given)) {
        debugger().evaluateExpression(context, arguments.text(1), value);
        value.evaluate();
    } else if (given.isBoolean()) {
        value = ExpressionType(ESContext::toBoolean(given));
    } else {
        double number = arguments.context()->ToNumber(given);
        bool whole = number == std::trunc(number) && std::abs(number) < WholeNumbers;
        value = whole ? ExpressionType((long long)(number), 8) : ExpressionType(number, 8);
    }
    if (value.getType() == ExpressionType::Float) {
        ExpressionType present = place;
        present.evaluate();
        if (present.getType() != ExpressionType::Float)
            throw HException(QStringLiteral("%1 is no integer").arg(value.getFloating()));
    }
    debugger().setExpression(context, expression, value);
    return g_undefined;
}

// The address that an expression names: of an object in memory or a function, or a number. `space` becomes
// "Code" for what lies in code memory.
uint64_t DebugCommands::addressOf(const QString& expression, QString& space) const
{
    ExpressionType value;
    debugger().evaluateExpression(m_view.context(), expression, value);
    auto* marker = dynamic_cast<DebugMarkerType*>(value.getMarker());
    if (marker && (marker->kind == DebugMarkerType::Code || (marker->type && marker->type->isFunction())))
        space = QStringLiteral("Code");
    if (marker && marker->isMemory())
        return marker->location();
    if (marker && marker->kind == DebugMarkerType::Constant)
        return marker->address + uint64_t(int64_t(marker->offset));
    value.evaluate();
    if (!value.isNumberType())
        throw HException(expression + QLatin1String(" is no address"));
    return value.getUInteger();
}

ESValue DebugCommands::dump(Arguments& arguments)
{
    QString space = QStringLiteral("Data");
    uint64_t address = isstr(arguments.value(0)) ? addressOf(arguments.text(0), space) : arguments.number(0);
    unsigned length = arguments.number(1, 16);
    if (length > MaximumDump)
        throw HException(QStringLiteral("%1 bytes are more than are shown at once").arg(length));
    QStringList lines;
    debugger().dumpMemory(space, uint32_t(address), length, lines);
    show(lines);
    return g_undefined;
}

ESValue DebugCommands::where(Arguments&)
{
    QStringList lines;
    unsigned calls = debugger().numcalls();
    for (unsigned number = 0; number < calls; ++number) {
        Frame* frame = debugger().getFrame(number);
        QString name, function;
        Path path;
        int line = 0;
        uint32_t address = 0;
        debugger().locate(frame, name, path, function, line, address);
        QString text = QString::number(number) + QLatin1String(") ");
        if (function.isEmpty()) {
            text += QLatin1String("???");
        } else {
            TextVariableView view(m_printRadix, 0, true, true, true, m_printStrings, m_floatFormat, true,
                                  false, false);
            debugger().getParameters(frame, &view);
            text += function + u'(' + view.text() + u')';
        }
        if (line > 0)
            text += u'\t' + path.osPathQString() + u':' + QString::number(line);
        lines.append(text);
    }
    show(lines);
    return g_undefined;
}

ESValue DebugCommands::locate(Arguments& arguments)
{
    debugger().locate();
    m_view.locate(arguments.number(0));
    return g_undefined;
}

ESValue DebugCommands::locatepc(Arguments& arguments)
{
    debugger().locate(arguments.number(0));
    m_view.locate(0);
    return g_undefined;
}

ESValue DebugCommands::locateregisters(Arguments& arguments)
{
    unsigned count = 0;
    std::unique_ptr<unsigned[]> words = arguments.context()->toWordArray(arguments.value(0), count);
    if (count < debugger().numRegisterWords())
        throw HException(QStringLiteral("%1 words are needed").arg(debugger().numRegisterWords()));
    debugger().locate(words.get());
    m_view.locate(0);
    return g_undefined;
}

ESValue DebugCommands::setmode(Arguments& arguments)
{
    QString mode = arguments.text(0);
    if (mode != QLatin1String("source") && mode != QLatin1String("disassembly"))
        throw HException(QStringLiteral("unknown mode \"%1\" (use \"source\" or \"disassembly\")").arg(mode));
    m_view.setSourceMode(mode == QLatin1String("source"));
    m_view.showCode(0, 0);
    return g_undefined;
}

ESValue DebugCommands::getfilename(Arguments&)
{
    return ESValue(ESStringPool::intern(m_view.path().osPathQString()));
}

ESValue DebugCommands::getlinenumber(Arguments&)
{
    return ESValue(double(m_view.line()));
}

ESValue DebugCommands::list(Arguments& arguments)
{
    m_view.showCode(arguments.number(0), arguments.number(1));
    return g_undefined;
}

ESValue DebugCommands::setprintradix(Arguments& arguments)
{
    int radix = int(arguments.number(0));
    if (std::find(std::begin(Radixes), std::end(Radixes), radix) == std::end(Radixes))
        throw HException(QStringLiteral("unknown radix %1 (use 2, 8, 10 or 16)").arg(radix));
    m_printRadix = radix;
    return g_undefined;
}

ESValue DebugCommands::setprintarray(Arguments& arguments)
{
    m_printArrayLimit = arguments.number(0);
    return g_undefined;
}

ESValue DebugCommands::setprintstring(Arguments& arguments)
{
    m_printStrings = arguments.boolean(0);
    return g_undefined;
}

ESValue DebugCommands::trace(Arguments& arguments)
{
    debugger().setTraceEnabled(arguments.boolean(0, true));
    return g_undefined;
}

// "LINE:\tTEXT" for the statement at an address, empty when it is that of `place`, which it becomes.
QString DebugCommands::sourceAt(uint32_t address, QString& place) const
{
    QString executable;
    Path path;
    int line = debugger().getAddressLine(address, executable, path);
    if (line <= 0)
        return QString();
    QString found = path.fileName() + u':' + QString::number(line);
    if (found == place)
        return QString();
    place = found;
    Loader& loader = m_run.loader();
    return found + u'\t' + loader.sourceText().line(loader.getDebugSourcePath(path), line);
}

// Empty where there is no code.
QString DebugCommands::instructionAt(uint32_t address) const
{
    debugger().locateDisassembly(address);
    QStringList text;
    debugger().getDisassemblyText(text);
    return text.value(debugger().getDisassemblyLineNumber(address));
}

ESValue DebugCommands::showtrace(Arguments& arguments)
{
    struct Entry {
        unsigned address, data, cycles;
    };
    std::vector<Entry> entries;
    Entry entry{};
    for (debugger().iterateTrace(); debugger().getTrace(entry.address, entry.data, entry.cycles);)
        entries.push_back(entry);
    size_t wanted = std::min<size_t>(arguments.number(0, 16), entries.size());
    QStringList lines;
    QString place;
    for (auto shown = entries.end() - ptrdiff_t(wanted); shown != entries.end(); ++shown) {
        lines.append(sourceAt(shown->address, place));
        QString instruction = instructionAt(shown->address);
        if (instruction.isEmpty()) // an access that a breakpoint has recorded
            instruction = QStringLiteral("    0x%1 0x%2").arg(shown->address, 0, 16).arg(shown->data, 0, 16);
        lines.append(u'\t' + instruction);
    }
    show(lines);
    return g_undefined;
}

// A line counts as often as the most frequent of its instructions.
ESValue DebugCommands::showcounts(Arguments&)
{
    struct Line {
        unsigned count = 0;
        uint32_t address = 0;
    };
    std::map<std::pair<QString, int>, Line> counts;
    unsigned address = 0, count = 0, other = 0;
    QString executable;
    for (debugger().iterateExecutionCount(); debugger().getExecutionCount(address, count, other);) {
        Path path;
        int line = debugger().getAddressLine(address, executable, path);
        if (line <= 0)
            continue;
        Line& total = counts[{path.osPathQString(), line}];
        if (count > total.count)
            total = {count, address};
    }
    QStringList lines;
    for (const auto& [place, total] : counts) {
        QString seen;
        lines.append(QString::number(total.count) + u'\t' + sourceAt(total.address, seen));
    }
    show(lines);
    return g_undefined;
}
