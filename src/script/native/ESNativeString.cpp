#include "script/native/ESNativeString.h"

#include "script/engine/ESClass.h"
#include "script/engine/ESException.h"
#include "script/engine/ESStringPool.h"
#include "script/engine/limits.h"
#include "script/native/Builtin.h"

#include <algorithm>

namespace {

// A position as an int: infinities are the ends of the integer range.
int position(ESContext* context, const ESValue& value, int missing)
{
    if (value.isUndefined())
        return missing;
    return int(std::clamp(context->toInteger(value), -2147483648.0, 2147483647.0));
}

// The text of a receiver. It may be an object that serves all primitive strings, so the text is taken at
// once.
ESString* subjectOf(const ESCall& call)
{
    if (call.context->isstrobj(ESValue(call.self)))
        return call.self->internal().string();
    return call.context->toEString(ESValue(call.self));
}

ESValue made(QStringView text)
{
    return ESValue(ESStringPool::text(text));
}

ESValue fromCharCode(const ESCall& call)
{
    if (call.argc == 1)
        return ESValue(ESStringPool::character(call.context->toUint16(call.argv[0])));
    QString text;
    for (int i = 0; i < call.argc; ++i)
        text += QChar(call.context->toUint16(call.argv[i]));
    return made(text);
}

template <const char* text> ESValue ownValue(const ESCall& call)
{
    if (!call.context->isstrobj(ESValue(call.self)))
        call.context->throwTypeError(QLatin1String(text));
    return call.self->internal();
}

constexpr char NoStringForToString[] = "String.prototype.toString called on non-String object";
constexpr char NoStringForValueOf[] = "String.prototype.valueOf called on non-String object";

ESValue charAt(const ESCall& call)
{
    ESString* subject = subjectOf(call);
    double at = call.context->toInteger(call.argument(0));
    bool inside = at >= 0 && at < subject->length();
    return ESValue(inside ? ESStringPool::character(subject->unit(int(at))) : g_emptyString);
}

ESValue charCodeAt(const ESCall& call)
{
    ESString* subject = subjectOf(call);
    double at = call.context->toInteger(call.argument(0));
    bool inside = at >= 0 && at < subject->length();
    return ESValue(inside ? double(subject->unit(int(at))) : NaN);
}

ESValue concat(const ESCall& call)
{
    ESString* subject = subjectOf(call);
    for (int i = 0; i < call.argc; ++i)
        subject = ESStringPool::concat(subject, call.context->toEString(call.argv[i]));
    return ESValue(subject);
}

ESValue indexOf(const ESCall& call)
{
    ESString* subject = subjectOf(call);
    ESString* wanted = call.context->toEString(call.argument(0));
    int from = std::max(0, position(call.context, call.argument(1), 0));
    const int length = subject->length();
    if (from > length)
        return ESValue(wanted->length() ? -1.0 : length);
    return ESValue(double(subject->view().indexOf(wanted->view(), from)));
}

ESValue lastIndexOf(const ESCall& call)
{
    ESString* subject = subjectOf(call);
    ESString* wanted = call.context->toEString(call.argument(0));
    int from = std::max(0, position(call.context, call.argument(1), 2147483647));
    int last = subject->length() - wanted->length();
    if (last < 0)
        return ESValue(-1.0);
    return ESValue(double(subject->view().lastIndexOf(wanted->view(), std::min(from, last))));
}

ESValue localeCompare(const ESCall& call)
{
    QString text = subjectOf(call)->text();
    return ESValue(double(text.localeAwareCompare(call.context->toString(call.argument(0)))));
}

ESValue search(const ESCall& call)
{
    ESString* subject = subjectOf(call);
    ESString* wanted = call.context->toEString(call.argument(0));
    return ESValue(double(subject->view().indexOf(wanted->view())));
}

ESValue slice(const ESCall& call)
{
    ESString* subject = subjectOf(call);
    const int64_t length = subject->length();
    auto fromEnd = [length](int at) {
        return std::clamp(at < 0 ? at + length : int64_t(at), int64_t(0), length);
    };
    int64_t start = fromEnd(position(call.context, call.argument(0), 0));
    int64_t end = fromEnd(position(call.context, call.argument(1), int(length)));
    return ESValue(ESStringPool::part(subject, int(start), int(std::max(int64_t(0), end - start))));
}

ESValue substring(const ESCall& call)
{
    ESString* subject = subjectOf(call);
    const int length = subject->length();
    int start = std::clamp(position(call.context, call.argument(0), 0), 0, length);
    int end = std::clamp(position(call.context, call.argument(1), length), 0, length);
    if (start > end)
        std::swap(start, end);
    return ESValue(ESStringPool::part(subject, start, end - start));
}

ESValue toLowerCase(const ESCall& call)
{
    return made(subjectOf(call)->text().toLower());
}

ESValue toUpperCase(const ESCall& call)
{
    return made(subjectOf(call)->text().toUpper());
}

ESValue match(const ESCall& call)
{
    ESContext* context = call.context;
    ESString* text = subjectOf(call);
    ESString* wanted = context->toEString(call.argument(0));
    qsizetype at = text->view().indexOf(wanted->view());
    if (at < 0)
        return g_null;
    ESValue found(wanted);
    ESObject* array = context->newArray(1, &found);
    context->put(array, g_indexString, ESValue(double(at)));
    context->put(array, g_inputString, ESValue(text));
    return ESValue(array);
}

ESValue replace(const ESCall& call)
{
    ESContext* context = call.context;
    ESString* subject = subjectOf(call);
    const QString text = subject->text();
    QString wanted = context->toString(call.argument(0));
    ESValue replacement = call.argument(1);
    qsizetype at = text.indexOf(wanted);
    bool function = replacement.isObject() && replacement.object()->isCallable();
    QString form = function ? QString() : context->toString(replacement);
    if (at < 0)
        return ESValue(subject);
    QString inserted;
    if (function) {
        ESValue arguments[] = {made(wanted), ESValue(double(at)), ESValue(subject)};
        ESValue result;
        context->call(replacement.object(), context->globalObject(), 3, arguments, &result);
        inserted = context->toString(result);
    } else {
        for (qsizetype i = 0; i < form.size(); ++i) {
            QChar next = i + 1 < form.size() ? form[i + 1] : QChar();
            if (form[i] == '$' && (next == '$' || next == '&')) {
                inserted += next == '$' ? QStringLiteral("$") : wanted;
                ++i;
            } else {
                inserted += form[i];
            }
            if (inserted.size() > ESLimits::StringLength)
                throw ESFatalError("string too long");
        }
    }
    return made(text.left(at) + inserted + text.mid(at + wanted.size()));
}

ESValue split(const ESCall& call)
{
    ESContext* context = call.context;
    ESString* subject = subjectOf(call);
    ESValue separator = call.argument(0);
    ESValue limit = call.argument(1);
    uint32_t most = limit.isUndefined() ? 0xFFFFFFFFu : context->toUint32(limit);
    ESString* wanted = separator.isUndefined() ? g_emptyString : context->toEString(separator);
    ESArray* array = context->newArray(0, nullptr);
    auto add = [&](ESString* piece) { array->insert(array->count, ESValue(piece)); };

    const int length = subject->length();
    if (separator.isUndefined()) {
        if (most)
            add(subject);
    } else if (!wanted->length()) {
        for (int i = 0; i < length && array->count < most; ++i)
            add(ESStringPool::character(subject->unit(i)));
    } else {
        int start = 0;
        while (array->count < most) {
            qsizetype at = subject->view().indexOf(wanted->view(), start);
            add(ESStringPool::part(subject, start, int(at < 0 ? length : at) - start));
            if (at < 0)
                break;
            start = int(at) + wanted->length();
        }
    }
    array->slot(0).setValue(ESValue(double(array->count)));
    return ESValue(array);
}

} // namespace

void ESNativeString::install(ESContext* context)
{
    static constexpr Builtin FromCharCode = row("fromCharCode", "String.fromCharCode", 0, fromCharCode);
    static constexpr Builtin MemberTable[] = {
        row("toString", "String.prototype.toString", 0, ownValue<NoStringForToString>),
        row("valueOf", "String.prototype.valueOf", 0, ownValue<NoStringForValueOf>),
        row("charAt", "String.prototype.charAt", 1, charAt),
        row("charCodeAt", "String.prototype.charCodeAt", 1, charCodeAt),
        row("concat", "String.prototype.concat", 0, concat),
        row("indexOf", "String.prototype.indexOf", 2, indexOf),
        row("lastIndexOf", "String.prototype.lastIndexOf", 2, lastIndexOf),
        row("localeCompare", "String.prototype.localeCompare", 1, localeCompare),
        row("match", "String.prototype.match", 1, match),
        row("replace", "String.prototype.replace", 2, replace),
        row("search", "String.prototype.search", 1, search),
        row("slice", "String.prototype.slice", 2, slice),
        row("split", "String.prototype.split", 2, split),
        row("substring", "String.prototype.substring", 2, substring),
        row("toLowerCase", "String.prototype.toLowerCase", 0, toLowerCase),
        row("toLocaleLowerCase", "String.prototype.toLocaleLowerCase", 0, toLowerCase),
        row("toUpperCase", "String.prototype.toUpperCase", 0, toUpperCase),
        row("toLocaleUpperCase", "String.prototype.toLocaleUpperCase", 0, toUpperCase),
    };
    static constexpr ESHandler Make = [](const ESCall& call) {
        return ESValue(call.context->toEString(call.argument(0)));
    };
    ESObject* constructor =
        installConstructor(context, constructorRow("String", 1, Make), context->stringPrototype());
    biinst(context, constructor, FromCharCode, context->functionPrototype(), this);
    installMembers(context, context->stringPrototype(), MemberTable);
}

ESValue ESNativeString::get(ESContext*, ESObject* object, ESString* name)
{
    // Functions of this class have a `length` of their own.
    if (name == g_lengthString && !object->isCallable())
        return ESValue(object->internal().isString() ? double(object->internal().string()->length()) : 0.0);
    return ESContext::plainGet(object, name);
}

void ESNativeString::put(ESContext*, ESObject* object, ESString* name, const ESValue& value)
{
    if (name != g_lengthString || object->isCallable())
        ESContext::plainPut(object, name, value);
}

ESObject* ESNativeString::construct(ESContext* context, ESObject*, int argc, ESValue* argv)
{
    return context->mkobj(context->stringPrototype(), this,
                          ESValue(context->toEString(biarg(argc, argv, 0))));
}
