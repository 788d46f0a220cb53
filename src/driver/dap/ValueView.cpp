#include "driver/dap/ValueView.h"

#include "debug/SymbolicDebuggerInterface.h"
#include "debug/evaluation/DebugMarkerType.h"
#include "debug/run/Frame.h"
#include "driver/dap/DapContext.h"
#include "driver/dap/MemoryReference.h"
#include "driver/dap/RequestArguments.h"
#include "driver/dap/RequestFailure.h"
#include "driver/dap/limits.h"
#include "driver/session/TextVariableView.h"
#include "expression/ExpressionType.h"

#include <algorithm>

namespace {

constexpr int Decimal = 10;
constexpr int Hexadecimal = 16;
constexpr unsigned LogArrayLimit = 100; // elements of an array in a log message, and of one that is copied

int radix(const RequestArguments& arguments)
{
    return arguments.object("format").flag("hex", false) ? Hexadecimal : Decimal;
}

// The element's index of "name[3]", as it is shown below the array.
QString shownName(const QString& name, bool inArray)
{
    qsizetype bracket = inArray ? name.lastIndexOf(QLatin1Char('[')) : -1;
    return bracket < 0 ? name : name.mid(bracket);
}

QString memoryOf(const LevelBuilder::Item& item)
{
    if (item.target != 0)
        return MemoryReference::text(uint32_t(item.target));
    if (!item.place || !item.place->isMemory())
        return QString();
    uint32_t address = item.place->location();
    return item.place->kind == DebugMarkerType::Code ? MemoryReference::text(MemoryReference::Code, address)
                                                     : MemoryReference::text(address);
}

} // namespace

void ValueView::forget()
{
    m_containers.clear();
    m_paths.clear();
}

unsigned ValueView::frameNumber(const RequestArguments& arguments) const
{
    return arguments.has("frameId") ? m_context.frames.at(arguments.count("frameId")) : 0;
}

ExpressionContext ValueView::in(unsigned frame, bool readOnly) const
{
    ExpressionContext context;
    context.frame = m_context.debugger.getFrame(frame);
    context.readOnly = readOnly;
    if (context.frame) {
        QString name, function;
        int line = 0;
        uint32_t address = 0;
        m_context.debugger.locate(context.frame, name, context.file, function, line, address);
    }
    return context;
}

// --- Scopes and variables ---------------------------------------------------------------------

QJsonObject ValueView::scopes(const RequestArguments& arguments)
{
    unsigned frame = m_context.frames.at(arguments.count("frameId"));
    QJsonArray list;
    auto add = [&](const char* name, const char* hint, Container::Kind kind, bool expensive) {
        QJsonObject scope{{QStringLiteral("name"), QLatin1String(name)},
                          {QStringLiteral("variablesReference"), m_containers.add({kind, frame, QString()})},
                          {QStringLiteral("expensive"), expensive}};
        if (hint)
            scope.insert(QStringLiteral("presentationHint"), QLatin1String(hint));
        list.append(scope);
    };
    add("Locals", "locals", Container::Locals, false);
    add("Parameters", "arguments", Container::Parameters, false);
    add("Statics", nullptr, Container::Statics, true);
    add("Globals", nullptr, Container::Globals, true);
    // Those of a caller are found by a walk over the stack.
    add("Registers", "registers", Container::Registers, frame > 0);
    return {{QStringLiteral("scopes"), list}};
}

ValueView::Items ValueView::children(const Container& container, unsigned first, unsigned count,
                                     int radix) const
{
    SymbolicDebuggerInterface& debugger = m_context.debugger;
    Frame* frame = debugger.getFrame(container.frame);
    LevelBuilder level(container.kind == Container::Value, radix, first + count);
    switch (container.kind) {
    case Container::Locals: debugger.getLocalVariables(frame, &level); break;
    case Container::Parameters: debugger.getParameters(frame, &level); break;
    case Container::Statics: debugger.getStaticVariables(frame, &level); break;
    case Container::Globals: debugger.getGlobalVariables(frame, &level); break;
    case Container::Registers: debugger.getRegisters(frame, &level); break;
    case Container::Value: {
        ExpressionContext context = in(container.frame, true);
        if (container.shape != LevelBuilder::Array || first == 0) {
            debugger.evaluateExpression(context, container.path, container.path, &level);
            return level.items();
        }
        // A later page of an array: its elements alone are read.
        Items items;
        for (unsigned i = first; i < first + count; ++i) {
            LevelBuilder element(false, radix);
            QString path = QStringLiteral("(%1)[%2]").arg(container.path).arg(i);
            debugger.evaluateExpression(context, path, path, &element);
            items.insert(items.end(), element.items().begin(), element.items().end());
        }
        return items;
    }
    }
    Items items = level.items();
    if (container.kind == Container::Registers)
        for (LevelBuilder::Item& item : items) {
            QString flags = debugger.getRegisterFlags(item.name);
            if (flags.isEmpty())
                continue;
            item.shape = LevelBuilder::Struct;
            item.inside = QLatin1Char('(') + flags + QLatin1Char(')') + item.path;
        }
    return items;
}

QJsonObject ValueView::variables(const RequestArguments& arguments)
{
    int reference = arguments.count("variablesReference");
    Container container = m_containers.at(reference);
    QString filter = arguments.text("filter", QString());
    unsigned start = unsigned(arguments.count("start", 0));
    unsigned count = unsigned(arguments.count("count", 0));
    bool array = container.shape == LevelBuilder::Array;
    QJsonArray list;
    if (filter == QLatin1String(array ? "named" : "indexed"))
        return {{QStringLiteral("variables"), list}};
    if (count == 0 || count > unsigned(DapLimits::Children))
        count = DapLimits::Children;
    unsigned first = array ? std::min(start, container.count) : 0;
    unsigned wanted = array ? std::min(count, container.count - first) : count;
    // The prompt shows registers in hexadecimal, too.
    bool hexadecimal = container.kind == Container::Registers;
    Items items = children(container, first, wanted, hexadecimal ? Hexadecimal : radix(arguments));
    // What is not an array is read whole and told in part.
    size_t begin = array ? 0 : std::min<size_t>(start, items.size());
    size_t end = std::min<size_t>(begin + count, items.size());
    for (size_t i = begin; i < end; ++i) {
        QString name = shownName(items[i].name, array);
        QJsonObject variable = body(items[i], container.frame, "value");
        variable.insert(QStringLiteral("name"), name);
        variable.insert(QStringLiteral("evaluateName"), items[i].path);
        m_paths[{reference, name}] = items[i].path;
        list.append(variable);
    }
    return {{QStringLiteral("variables"), list}};
}

QJsonObject ValueView::body(const LevelBuilder::Item& item, unsigned frame, const char* key)
{
    QJsonObject body{{QLatin1String(key), item.value}, {QStringLiteral("type"), item.type}};
    int reference = 0;
    if (item.shape != LevelBuilder::Plain)
        reference =
            m_containers.add({Container::Value, frame, item.inside.isEmpty() ? item.path : item.inside,
                              item.shape, item.count});
    body.insert(QStringLiteral("variablesReference"), reference);
    if (item.shape == LevelBuilder::Array)
        body.insert(QStringLiteral("indexedVariables"), int(std::min(item.count, unsigned(INT_MAX))));
    QString memory = memoryOf(item);
    if (!memory.isEmpty())
        body.insert(QStringLiteral("memoryReference"), memory);
    return body;
}

// --- Expressions ------------------------------------------------------------------------------

LevelBuilder::Item ValueView::item(unsigned frame, const QString& expression, int radix, bool readOnly) const
{
    LevelBuilder level(false, radix);
    m_context.debugger.evaluateExpression(in(frame, readOnly), expression, expression, &level);
    if (level.items().empty())
        throw RequestFailure("the expression has no value");
    return level.items().front();
}

QJsonObject ValueView::evaluate(const RequestArguments& arguments)
{
    QString expression = arguments.text("expression");
    QString context = arguments.text("context", QString());
    bool mayAssign = context == QLatin1String("repl") || context.isEmpty();
    unsigned frame = frameNumber(arguments);
    if (context == QLatin1String("clipboard")) {
        TextVariableView whole(radix(arguments), LogArrayLimit, false, false, true, true, QByteArray(), true,
                               false, false);
        m_context.debugger.evaluateExpression(in(frame, true), expression, expression, &whole);
        return {{QStringLiteral("result"), whole.text()}, {QStringLiteral("variablesReference"), 0}};
    }
    return body(item(frame, expression, radix(arguments), !mayAssign), frame, "result");
}

QString ValueView::text(unsigned frame, const QString& expression) const
{
    TextVariableView view(Decimal, LogArrayLimit, false, false, true, true, QByteArray(), true, false, false);
    m_context.debugger.evaluateExpression(in(frame, true), expression, expression, &view);
    return view.text();
}

bool ValueView::truth(unsigned frame, const QString& expression) const
{
    ExpressionType value;
    m_context.debugger.evaluateExpression(in(frame, true), expression, value);
    value.evaluate();
    switch (value.getType()) {
    case ExpressionType::Boolean: return value.getBoolean();
    case ExpressionType::Signed:
    case ExpressionType::Unsigned: return value.getInteger() != 0;
    case ExpressionType::Float: return value.getFloating() != 0;
    default: throw RequestFailure("it is neither true nor false");
    }
}

uint32_t ValueView::codeAddress(const QString& name) const
{
    LevelBuilder::Item found = item(0, name, Hexadecimal, true);
    if (found.place && found.place->kind == DebugMarkerType::Constant)
        return uint32_t(found.place->address);
    if (found.place && found.place->kind == DebugMarkerType::Code)
        return found.place->location();
    throw RequestFailure(QStringLiteral("\"%1\" is no function").arg(name));
}

// The variable as it stands in memory afterwards.
QJsonObject ValueView::assigned(unsigned frame, const QString& path, const RequestArguments& arguments)
{
    LevelBuilder::Item before = item(frame, path, Decimal, true);
    if (!before.place || before.place->kind == DebugMarkerType::Constant)
        throw RequestFailure("it cannot be changed");
    if (before.shape == LevelBuilder::Struct || before.shape == LevelBuilder::Array)
        throw RequestFailure("only a single value can be changed");
    QString value = arguments.text("value");
    LevelBuilder level(false, Decimal);
    m_context.debugger.evaluateExpression(in(frame, false), QStringLiteral("%1 = (%2)").arg(path, value),
                                          path, &level);
    return body(item(frame, path, radix(arguments), true), frame, "value");
}

QString ValueView::childPath(int reference, const QString& name)
{
    auto found = m_paths.find({reference, name});
    if (found != m_paths.end())
        return found->second;
    const Container& container = m_containers.at(reference);
    bool array = container.shape == LevelBuilder::Array;
    if (array && name.startsWith(QLatin1Char('[')))
        return QLatin1Char('(') + container.path + QLatin1Char(')') + name;
    for (const LevelBuilder::Item& child : children(container, 0, DapLimits::Children, Decimal))
        if (shownName(child.name, array) == name)
            return child.path;
    throw RequestFailure(QStringLiteral("there is no \"%1\"").arg(name));
}

QJsonObject ValueView::setVariable(const RequestArguments& arguments)
{
    int reference = arguments.count("variablesReference");
    unsigned frame = m_containers.at(reference).frame;
    return assigned(frame, childPath(reference, arguments.text("name")), arguments);
}

QJsonObject ValueView::setExpression(const RequestArguments& arguments)
{
    return assigned(frameNumber(arguments), arguments.text("expression"), arguments);
}

// --- Data breakpoints and completions ---------------------------------------------------------

QJsonObject ValueView::dataInfo(const RequestArguments& arguments)
{
    QString name = arguments.text("name");
    unsigned bytes = unsigned(arguments.count("bytes", 0));
    QString dataId, description;
    auto watch = [&](uint32_t address, unsigned size) {
        // An address with a size means one thing in every frame.
        dataId = QStringLiteral("(char[%1])0x%2").arg(size).arg(address, 0, 16);
        description = QStringLiteral("%1 (%2 bytes at 0x%3)").arg(name).arg(size).arg(address, 0, 16);
    };
    if (arguments.flag("asAddress", false)) {
        watch(MemoryReference(name, 0).address, std::max(bytes, 1u));
    } else {
        unsigned frame = 0;
        QString path = name;
        if (arguments.has("variablesReference")) {
            int reference = arguments.count("variablesReference");
            frame = m_containers.at(reference).frame;
            path = childPath(reference, name);
        } else {
            frame = frameNumber(arguments);
        }
        LevelBuilder::Item found = item(frame, path, Decimal, true);
        if (found.place && found.place->kind == DebugMarkerType::Data)
            watch(found.place->location(), bytes > 0 ? bytes : std::max(found.place->sizeInBytes, 1u));
        else if (found.place && found.place->kind == DebugMarkerType::Register)
            dataId = QLatin1Char('@') + found.place->getValueAsString(), description = dataId;
    }
    if (dataId.isEmpty())
        return {{QStringLiteral("dataId"), QJsonValue::Null},
                {QStringLiteral("description"), QStringLiteral("\"%1\" is not in data memory").arg(name)}};
    QJsonArray access;
    const QStringList triggers = m_context.debugger.getBreakTriggers();
    for (const auto& [trigger, type] :
         {std::pair("Read", "read"), std::pair("Write", "write"), std::pair("Read/Write", "readWrite")})
        if (triggers.contains(QLatin1String(trigger)))
            access.append(QLatin1String(type));
    return {{QStringLiteral("dataId"), dataId},
            {QStringLiteral("description"), description},
            {QStringLiteral("accessTypes"), access},
            {QStringLiteral("canPersist"), false}};
}

QJsonObject ValueView::completions(const RequestArguments& arguments)
{
    QString typed = arguments.text("text");
    int column = arguments.count("column") - m_context.client.firstColumn();
    qsizetype end = std::clamp<qsizetype>(column, 0, typed.size());
    qsizetype begin = end;
    while (begin > 0 && (typed[begin - 1].isLetterOrNumber() || typed[begin - 1] == QLatin1Char('_')))
        --begin;
    QString prefix = typed.mid(begin, end - begin);
    QStringList names;
    const QStringList executables = m_context.debugger.executableNames();
    for (const QString& executable : executables)
        names += m_context.debugger.symbolNames(executable);
    unsigned frame = frameNumber(arguments);
    for (auto kind : {Container::Locals, Container::Parameters})
        for (const LevelBuilder::Item& local : children({kind, frame, QString()}, 0, 0, Decimal))
            names.append(local.name);
    names.sort();
    names.removeDuplicates();
    QJsonArray targets;
    for (const QString& name : std::as_const(names)) {
        if (!name.startsWith(prefix) || prefix.isEmpty())
            continue;
        if (targets.size() == DapLimits::Completions)
            break;
        targets.append(QJsonObject{{QStringLiteral("label"), name},
                                   {QStringLiteral("start"), int(begin) + m_context.client.firstColumn()},
                                   {QStringLiteral("length"), int(prefix.size())}});
    }
    return {{QStringLiteral("targets"), targets}};
}
