#include "script/native/ESNativeString.h"

#include <algorithm>

namespace {

enum {
    Constructor,
    FromCharCode,
    ToString,
    ValueOf,
    CharAt,
    CharCodeAt,
    Concat,
    IndexOf,
    LastIndexOf,
    LocaleCompare,
    Match,
    Replace,
    Search,
    Slice,
    Split,
    Substring,
    ToLowerCase,
    ToLocaleLowerCase,
    ToUpperCase,
    ToLocaleUpperCase
};

constexpr Builtin constructorRow = {"String", "String", 1, true, Constructor};
constexpr Builtin fromCharCodeRow = {"fromCharCode", "String.fromCharCode", 0, false, FromCharCode};
constexpr Builtin members[] = {
    {"toString", "String.prototype.toString", 0, false, ToString},
    {"valueOf", "String.prototype.valueOf", 0, false, ValueOf},
    {"charAt", "String.prototype.charAt", 1, false, CharAt},
    {"charCodeAt", "String.prototype.charCodeAt", 1, false, CharCodeAt},
    {"concat", "String.prototype.concat", 0, false, Concat},
    {"indexOf", "String.prototype.indexOf", 2, false, IndexOf},
    {"lastIndexOf", "String.prototype.lastIndexOf", 2, false, LastIndexOf},
    {"localeCompare", "String.prototype.localeCompare", 1, false, LocaleCompare},
    {"match", "String.prototype.match", 1, false, Match},
    {"replace", "String.prototype.replace", 2, false, Replace},
    {"search", "String.prototype.search", 1, false, Search},
    {"slice", "String.prototype.slice", 2, false, Slice},
    {"split", "String.prototype.split", 2, false, Split},
    {"substring", "String.prototype.substring", 2, false, Substring},
    {"toLowerCase", "String.prototype.toLowerCase", 0, false, ToLowerCase},
    {"toLocaleLowerCase", "String.prototype.toLocaleLowerCase", 0, false, ToLocaleLowerCase},
    {"toUpperCase", "String.prototype.toUpperCase", 0, false, ToUpperCase},
    {"toLocaleUpperCase", "String.prototype.toLocaleUpperCase", 0, false, ToLocaleUpperCase},
};

// A position as an int: infinities are the ends of the integer range.
int position(ESContext* context, const ESValue& value, int missing)
{
    if (value.isUndefined())
        return missing;
    return int(std::clamp(context->toInteger(value), -2147483648.0, 2147483647.0));
}

} // namespace

ESNativeString::ESNativeString() : ESNative("String", Access::Own) {}

void ESNativeString::install(ESContext* context)
{
    ESObject* constructor = installConstructor(context, constructorRow, context->stringPrototype());
    biinst(context, constructor, fromCharCodeRow, context->functionPrototype(), this);
    installMembers(context, context->stringPrototype(), members);
}

ESValue ESNativeString::get(ESContext*, ESObject* object, ESString* name)
{
    // Functions of this class have a `length` of their own.
    if (name == g_lengthString && !object->call)
        return ESValue(object->value.isString() ? double(object->value.string()->length()) : 0.0);
    return ESContext::plainGet(object, name);
}

void ESNativeString::put(ESContext*, ESObject* object, ESString* name, const ESValue& value)
{
    if (name != g_lengthString || object->call)
        ESContext::plainPut(object, name, value);
}

ESValue ESNativeString::fromCharCode(ESContext* context, int argc, const ESValue* argv)
{
    if (argc == 1)
        return ESValue(ESStringPool::character(context->toUint16(argv[0])));
    QString text;
    for (int i = 0; i < argc; ++i)
        text += QChar(context->toUint16(argv[i]));
    return ESValue(ESStringPool::intern(text));
}

ESValue ESNativeString::match(ESContext* context, ESString* text, const ESValue& pattern)
{
    ESString* wanted = context->toEString(pattern);
    qsizetype at = text->text().indexOf(wanted->text());
    if (at < 0)
        return g_null;
    ESValue found(wanted);
    ESObject* array = context->newArray(1, &found);
    context->put(array, g_indexString, ESValue(double(at)));
    context->put(array, g_inputString, ESValue(text));
    return ESValue(array);
}

ESValue ESNativeString::replace(ESContext* context, const QString& text, const ESValue& pattern,
                                const ESValue& replacement)
{
    QString wanted = context->toString(pattern);
    qsizetype at = text.indexOf(wanted);
    bool function = replacement.isObject() && replacement.object()->call;
    QString form = function ? QString() : context->toString(replacement);
    if (at < 0)
        return ESValue(ESStringPool::intern(text));
    QString inserted;
    if (function) {
        ESValue arguments[] = {ESValue(ESStringPool::intern(wanted)), ESValue(double(at)),
                               ESValue(ESStringPool::intern(text))};
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
    return ESValue(ESStringPool::intern(text.left(at) + inserted + text.mid(at + wanted.size())));
}

ESValue ESNativeString::split(ESContext* context, const QString& text, const ESValue& separator,
                              const ESValue& limit)
{
    uint32_t most = limit.isUndefined() ? 0xFFFFFFFFu : context->toUint32(limit);
    QString wanted = separator.isUndefined() ? QString() : context->toString(separator);
    ESObject* array = context->newArray(0, nullptr);
    unsigned count = 0;
    auto add = [&](QStringView piece) {
        if (count < most)
            context->put(array, ESStringPool::number(count++), ESValue(ESStringPool::intern(piece)));
    };
    if (separator.isUndefined()) {
        add(text);
    } else if (wanted.isEmpty()) {
        for (qsizetype i = 0; i < text.size() && count < most; ++i)
            add(QStringView(text).mid(i, 1));
    } else {
        qsizetype start = 0;
        for (qsizetype at; count < most && (at = text.indexOf(wanted, start)) >= 0;
             start = at + wanted.size())
            add(QStringView(text).mid(start, at - start));
        add(QStringView(text).mid(start));
    }
    return ESValue(array);
}

void ESNativeString::call(ESContext* context, ESObject* function, ESObject* self, int argc, ESValue* argv)
{
    ESValue first = biarg(argc, argv, 0);
    ESValue second = biarg(argc, argv, 1);
    int id = function->builtinId;
    switch (id) {
    case Constructor: argv[0] = ESValue(context->toEString(first)); return;
    case FromCharCode: argv[0] = fromCharCode(context, argc, argv); return;
    case ToString:
    case ValueOf:
        if (self->cls != this)
            context->throwTypeError(
                QStringLiteral("String.prototype.%1 called on non-String object")
                    .arg(id == ToString ? QStringLiteral("toString") : QStringLiteral("valueOf")));
        argv[0] = self->value;
        return;
    default: break;
    }
    if (id < Constructor || id > ToLocaleUpperCase)
        badCall(context);

    // The receiver may be one that serves all primitive strings, so its text is taken at once.
    ESString* subject = self->cls == this ? self->value.string() : context->toEString(ESValue(self));
    const int length = subject->length();
    if (id == CharAt || id == CharCodeAt) {
        double at = context->toInteger(first);
        bool inside = at >= 0 && at < length;
        if (id == CharAt)
            argv[0] = ESValue(inside ? ESStringPool::character(subject->unit(int(at))) : g_emptyString);
        else
            argv[0] = ESValue(inside ? double(subject->unit(int(at))) : NaN);
        return;
    }
    const QString text = subject->text();
    switch (id) {
    case Concat: {
        for (int i = 0; i < argc; ++i)
            subject = ESStringPool::concat(subject, context->toEString(argv[i]));
        argv[0] = ESValue(subject);
        return;
    }
    case IndexOf: {
        QString wanted = context->toString(first);
        int from = std::max(0, position(context, second, 0));
        argv[0] = ESValue(from <= length     ? double(text.indexOf(wanted, from))
                          : wanted.isEmpty() ? length
                                             : -1.0);
        return;
    }
    case LastIndexOf: {
        QString wanted = context->toString(first);
        int from = std::max(0, position(context, second, 2147483647));
        int last = length - int(wanted.size());
        argv[0] = ESValue(last < 0 ? -1.0 : double(text.lastIndexOf(wanted, std::min(from, last))));
        return;
    }
    case LocaleCompare: argv[0] = ESValue(double(text.localeAwareCompare(context->toString(first)))); return;
    case Match: argv[0] = match(context, subject, first); return;
    case Replace: argv[0] = replace(context, text, first, second); return;
    case Search: argv[0] = ESValue(double(text.indexOf(context->toString(first)))); return;
    case Slice: {
        auto fromEnd = [length](int at) {
            return int(std::clamp(at < 0 ? int64_t(at) + length : at, int64_t(0), int64_t(length)));
        };
        int start = fromEnd(position(context, first, 0));
        int end = fromEnd(position(context, second, length));
        argv[0] = ESValue(ESStringPool::intern(QStringView(text).mid(start, std::max(0, end - start))));
        return;
    }
    case Split: argv[0] = split(context, text, first, second); return;
    case Substring: {
        int start = std::clamp(position(context, first, 0), 0, length);
        int end = std::clamp(position(context, second, length), 0, length);
        if (start > end)
            std::swap(start, end);
        argv[0] = ESValue(ESStringPool::intern(QStringView(text).mid(start, end - start)));
        return;
    }
    case ToLowerCase:
    case ToLocaleLowerCase: argv[0] = ESValue(ESStringPool::intern(text.toLower())); return;
    default: argv[0] = ESValue(ESStringPool::intern(text.toUpper())); return;
    }
}

ESObject* ESNativeString::construct(ESContext* context, ESObject* function, int argc, ESValue* argv)
{
    if (function->builtinId != Constructor)
        return ESNative::construct(context, function, argc, argv);
    return context->mkobj(context->stringPrototype(), this,
                          ESValue(context->toEString(biarg(argc, argv, 0))));
}
