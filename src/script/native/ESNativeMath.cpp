#include "script/native/ESNativeMath.h"

#include "script/engine/ESClass.h"
#include "script/engine/ESContext.h"
#include "script/engine/ESObject.h"
#include "script/engine/ESStringPool.h"
#include "script/engine/ESValue.h"
#include "script/native/Builtin.h"

#include <cmath>
#include <cstdlib>
#include <numbers>

namespace {

// The sign of a number as 1 or -1, also for the zeros.
double es_copysign(double number)
{
    return std::copysign(1.0, number);
}

ESValue maximum(const ESCall& call)
{
    double result = -Infinity;
    for (int i = 0; i < call.argc; ++i) {
        double x = call.context->ToNumber(call.argv[i]);
        if (std::isnan(x) || std::isnan(result))
            result = NaN;
        else if (x > result || (x == 0 && result == 0 && es_copysign(x) > es_copysign(result)))
            result = x;
    }
    return ESValue(result);
}

ESValue minimum(const ESCall& call)
{
    double result = Infinity;
    for (int i = 0; i < call.argc; ++i) {
        double x = call.context->ToNumber(call.argv[i]);
        if (std::isnan(x) || std::isnan(result))
            result = NaN;
        else if (x < result || (x == 0 && result == 0 && es_copysign(x) < es_copysign(result)))
            result = x;
    }
    return ESValue(result);
}

double rounded(double x)
{
    if (x >= -0.5 && (x < 0 || (x == 0 && std::signbit(x))))
        return -0.0;
    return std::floor(x + 0.5);
}

ESValue random(const ESCall&)
{
    return ESValue(std::rand() / (double(RAND_MAX) + 1));
}

template <double (*function)(double)> ESValue ofOne(const ESCall& call)
{
    return ESValue(function(call.context->ToNumber(call.argument(0))));
}

template <double (*function)(double, double)> ESValue ofTwo(const ESCall& call)
{
    double x = call.context->ToNumber(call.argument(0));
    return ESValue(function(x, call.context->ToNumber(call.argument(1))));
}

} // namespace

void ESNativeMath::install(ESContext* context)
{
    static constexpr Builtin MemberTable[] = {
        row("abs", "Math.abs", 1, ofOne<std::fabs>),
        row("acos", "Math.acos", 1, ofOne<std::acos>),
        row("asin", "Math.asin", 1, ofOne<std::asin>),
        row("atan", "Math.atan", 1, ofOne<std::atan>),
        row("cos", "Math.cos", 1, ofOne<std::cos>),
        row("exp", "Math.exp", 1, ofOne<std::exp>),
        row("log", "Math.log", 1, ofOne<std::log>),
        row("sin", "Math.sin", 1, ofOne<std::sin>),
        row("tan", "Math.tan", 1, ofOne<std::tan>),
        row("ceil", "Math.ceil", 1, ofOne<std::ceil>),
        row("floor", "Math.floor", 1, ofOne<std::floor>),
        row("atan2", "Math.atan2", 2, ofTwo<std::atan2>),
        row("pow", "Math.pow", 2, ofTwo<std::pow>),
        row("sqrt", "Math.sqrt", 1, ofOne<std::sqrt>),
        row("max", "Math.max", 0, maximum),
        row("min", "Math.min", 0, minimum),
        row("round", "Math.round", 1, ofOne<rounded>),
        row("random", "Math.random", 0, random),
    };
    ESObject* math = context->mkobj(context->objectPrototype(), this);
    context->valinstant(context->globalObject(), ESProperty::DontEnum, ESStringPool::intern("Math"), math);
    installMembers(context, math, MemberTable);
    const struct {
        const char* name;
        double value;
    } constants[] = {
        {"E", std::numbers::e},       {"LN10", std::log(10.0)},       {"LN2", std::log(2.0)},
        {"LOG2E", 1 / std::log(2.0)}, {"LOG10E", 1 / std::log(10.0)}, {"PI", std::numbers::pi},
        {"SQRT1_2", std::sqrt(0.5)},  {"SQRT2", std::numbers::sqrt2},
    };
    for (const auto& constant : constants)
        context->valinstant(math, ESProperty::ReadOnly | ESProperty::DontEnum | ESProperty::DontDelete,
                            ESStringPool::intern(constant.name), ESValue(constant.value));
}
