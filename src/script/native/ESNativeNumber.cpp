#include "script/native/ESNativeNumber.h"

#include <charconv>
#include <cmath>

namespace {

enum { Constructor, ToString, ToFixed, ValueOf };

constexpr Builtin constructorRow = {"Number", "Number", 1, true, Constructor};
constexpr Builtin members[] = {
    {"toString", "Number.prototype.toString", 1, false, ToString},
    {"toFixed", "Number.prototype.toFixed", 1, false, ToFixed},
    {"valueOf", "Number.prototype.valueOf", 0, false, ValueOf},
};

} // namespace

ESNativeNumber::ESNativeNumber() : ESNative("Number") {}

void ESNativeNumber::install(ESContext* context)
{
    ESObject* constructor = installConstructor(context, constructorRow, context->numberPrototype());
    // So that a call can tell no argument from undefined.
    constructor->call->formalCount = 0;
    installMembers(context, context->numberPrototype(), members);
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

QString ESNativeNumber::toFixed(ESContext* context, const ESValue& number, const ESValue& digits)
{
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
    return QString::fromLatin1(buffer, qsizetype(result.ptr - buffer));
}

void ESNativeNumber::call(ESContext* context, ESObject* function, ESObject* self, int argc, ESValue* argv)
{
    ESValue argument = biarg(argc, argv, 0);
    switch (function->builtinId) {
    case Constructor: argv[0] = ESValue(argc > 0 ? context->ToNumber(argument) : 0.0); return;
    case ToString: {
        if (self->cls != this)
            context->throwTypeError(QStringLiteral("Number.prototype.toString called on non-Number object"));
        ESValue number = self->value;
        int radix = context->toInt32(argument);
        argv[0] = ESValue(ESStringPool::intern(context->toString(number, radix ? radix : 10)));
        return;
    }
    case ToFixed: argv[0] = ESValue(ESStringPool::intern(toFixed(context, self->value, argument))); return;
    case ValueOf:
        if (self->cls != this)
            context->throwTypeError(QStringLiteral("Number.prototype.valueOf called on non-Number object"));
        argv[0] = self->value;
        return;
    default: badCall(context);
    }
}

ESObject* ESNativeNumber::construct(ESContext* context, ESObject* function, int argc, ESValue* argv)
{
    if (function->builtinId != Constructor)
        return ESNative::construct(context, function, argc, argv);
    return context->mkobj(context->numberPrototype(), this,
                          ESValue(argc > 0 ? context->ToNumber(argv[0]) : 0.0));
}
