#include "script/native/ESNativeNumber.h"

#include "script/engine/ESClass.h"
#include "script/engine/ESContext.h"
#include "script/engine/ESObject.h"
#include "script/engine/ESStringPool.h"
#include "script/engine/ESValue.h"
#include "script/native/Builtin.h"

#include <charconv>
#include <cmath>

namespace {

double numberOf(const ESCall& call)
{
    return call.argc > 0 ? call.context->ToNumber(call.argv[0]) : 0.0;
}

ESValue make(const ESCall& call)
{
    return ESValue(numberOf(call));
}

ESValue toString(const ESCall& call)
{
    if (!call.context->isnumobj(ESValue(call.self)))
        call.context->throwTypeError(QStringLiteral("Number.prototype.toString called on non-Number object"));
    ESValue number = call.self->internal();
    int radix = call.context->toInt32(call.argument(0));
    return ESValue(number.isNumber() ? ESContext::numberToEString(number.number(), radix ? radix : 10)
                                     : call.context->toEString(number));
}

ESValue toFixed(const ESCall& call)
{
    ESContext* context = call.context;
    ESValue number = call.self->internal();
    ESValue digits = call.argument(0);
    double precision = digits.isUndefined() ? 0 : context->toInteger(digits);
    if (precision < 0 || precision > 20)
        context->throwRangeError(QStringLiteral("fraction digits should 0 through 20"));
    // As printf's %f, but with a point in every locale.
    char buffer[512];
    double value = context->ToNumber(number);
    if (std::isnan(value))
        value = std::fabs(value);
    auto result =
        std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed, int(precision));
    return ESValue(ESStringPool::text(buffer, int(result.ptr - buffer)));
}

ESValue valueOf(const ESCall& call)
{
    if (!call.context->isnumobj(ESValue(call.self)))
        call.context->throwTypeError(QStringLiteral("Number.prototype.valueOf called on non-Number object"));
    return call.self->internal();
}

} // namespace

void ESNativeNumber::install(ESContext* context)
{
    static constexpr Builtin MemberTable[] = {
        row("toString", "Number.prototype.toString", 1, toString),
        row("toFixed", "Number.prototype.toFixed", 1, toFixed),
        row("valueOf", "Number.prototype.valueOf", 0, valueOf),
    };
    ESObject* constructor =
        installConstructor(context, constructorRow("Number", 1, make), context->numberPrototype());
    // So that a call can tell no argument from undefined.
    nativeFunction(constructor)->formalCount = 0;
    installMembers(context, context->numberPrototype(), MemberTable);
    constexpr struct {
        const char* name;
        double value;
    } constants[] = {
        {"MAX_VALUE", std::numeric_limits<double>::max()},
        {"MIN_VALUE", std::numeric_limits<double>::denorm_min()},
        {"NaN", NaN},
        {"NEGATIVE_INFINITY", -Infinity},
        {"POSITIVE_INFINITY", Infinity},
    };
    for (const auto& constant : constants)
        context->valinstant(constructor, ESProperty::ReadOnly | ESProperty::DontEnum | ESProperty::DontDelete,
                            ESStringPool::intern(constant.name), ESValue(constant.value));
}

ESObject* ESNativeNumber::construct(ESContext* context, ESObject* function, int argc, ESValue* argv)
{
    double number = numberOf({context, function, nullptr, argc, argv});
    return context->mkobj(context->numberPrototype(), this, ESValue(number));
}
