#include "script/native/ESNativeGlobal.h"

#include "script/engine/ESClass.h"
#include "script/engine/ESContext.h"
#include "script/engine/ESNumberText.h"
#include "script/engine/ESObject.h"
#include "script/engine/ESRealm.h"
#include "script/engine/ESStringPool.h"
#include "script/engine/ESValue.h"
#include "script/engine/limits.h"
#include "script/native/Builtin.h"

#include <QFile>
#include <cmath>

namespace {

int digitOf(QChar c)
{
    char16_t u = c.unicode();
    if (u >= '0' && u <= '9')
        return u - '0';
    if (u >= 'a' && u <= 'z')
        return u - 'a' + 10;
    if (u >= 'A' && u <= 'Z')
        return u - 'A' + 10;
    return 99;
}

// The number that the text starts with; NaN when it starts with none.
double parseInt(const QString& source, int radix)
{
    QString text = source.trimmed();
    int at = 0;
    double sign = 1;
    if (at < text.size() && (text[at] == '-' || text[at] == '+'))
        sign = text[at++] == '-' ? -1 : 1;
    if (radix != 0 && (radix < 2 || radix > 36))
        return NaN;
    bool prefix = QStringView(text).mid(at).startsWith(u"0x", Qt::CaseInsensitive);
    if (prefix && (radix == 0 || radix == 16)) {
        at += 2;
        radix = 16;
    }
    if (radix == 0)
        radix = 10;
    int start = at;
    while (at < text.size() && digitOf(text[at]) < radix)
        ++at;
    if (at == start)
        return NaN;
    double value = 0;
    if (radix == 10) {
        decimalToNumber(QStringView(text).mid(start, at - start), value);
        return sign * value;
    }
    for (int i = start; i < at; ++i)
        value = value * radix + digitOf(text[i]);
    return sign * value;
}

double parseFloat(const QString& source)
{
    QString text = source.trimmed();
    auto isDigit = [&](int at) { return at < text.size() && digitOf(text[at]) < 10; };
    bool negative = text.startsWith('-');
    const int start = negative || text.startsWith('+') ? 1 : 0;
    if (QStringView(text).mid(start).startsWith(u"Infinity"))
        return negative ? -Infinity : Infinity;
    int at = start;
    while (isDigit(at))
        ++at;
    if (at < text.size() && text[at] == '.')
        for (++at; isDigit(at);)
            ++at;
    if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
        int exponent = at + 1;
        if (exponent < text.size() && (text[exponent] == '-' || text[exponent] == '+'))
            ++exponent;
        if (isDigit(exponent))
            for (at = exponent; isDigit(at);)
                ++at;
    }
    double value;
    if (!decimalToNumber(QStringView(text).mid(start, at - start), value))
        return NaN;
    return negative ? -value : value;
}

ESValue eval(const ESCall& call)
{
    ESValue argument = call.argument(0);
    if (!argument.isString())
        return argument;
    ESCompletion completion = call.context->evalInside(call.context->toString(argument));
    return completion.type == ESCompletion::Normal ? completion.value : g_undefined;
}

ESValue parseIntCall(const ESCall& call)
{
    QString text = call.context->toString(call.argument(0));
    return ESValue(parseInt(text, call.context->toInt32(call.argument(1))));
}

ESValue parseFloatCall(const ESCall& call)
{
    return ESValue(parseFloat(call.context->toString(call.argument(0))));
}

ESValue isNaNCall(const ESCall& call)
{
    return ESValue::boolean(std::isnan(call.context->ToNumber(call.argument(0))));
}

ESValue isFiniteCall(const ESCall& call)
{
    return ESValue::boolean(std::isfinite(call.context->ToNumber(call.argument(0))));
}

ESValue load(const ESCall& call)
{
    QString name = call.context->toString(call.argument(0), 10);
    return ESValue::boolean(ESNativeGlobal::of(call.context)->load(call.context, name));
}

} // namespace

ESNativeGlobal* ESNativeGlobal::of(ESContext* context)
{
    return static_cast<ESNativeGlobal*>(context->realm().cls(ESRealm::Global));
}

void ESNativeGlobal::install(ESContext* context)
{
    ESObject* global = context->globalObject();
    constexpr unsigned attributes = ESProperty::DontEnum | ESProperty::DontDelete;
    context->valinstant(global, attributes, ESStringPool::intern("NaN"), ESValue(NaN));
    context->valinstant(global, attributes, ESStringPool::intern("Infinity"), ESValue(Infinity));
    context->valinstant(global, attributes, g_undefinedString, g_undefined);
    static constexpr Builtin MemberTable[] = {
        row("eval", "eval", 1, eval),
        row("parseInt", "parseInt", 2, parseIntCall),
        row("parseFloat", "parseFloat", 1, parseFloatCall),
        row("isNaN", "isNaN", 1, isNaNCall),
        row("isFinite", "isFinite", 1, isFiniteCall),
        row("load", "load", 1, ::load),
    };
    installMembers(context, global, MemberTable);
}

bool ESNativeGlobal::evalFromFile(ESContext* context, const QString& name)
{
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    QByteArray bytes = file.read(ESLimits::StringLength + 1);
    file.close();
    context->evalInside(QString::fromUtf8(bytes), name);
    return true;
}

bool ESNativeGlobal::load(ESContext* context, const QString& name)
{
    if (evalFromFile(context, name))
        return true;
    // By index: a loaded script may add to the path.
    for (qsizetype i = 0; i < m_loadPath.size(); ++i)
        if (evalFromFile(context, m_loadPath[i] + QLatin1Char('/') + name))
            return true;
    return false;
}
