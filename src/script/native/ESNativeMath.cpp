#include "script/native/ESNativeMath.h"

#include <cmath>
#include <cstdlib>
#include <numbers>

namespace {

enum {
    Abs = 1,
    Acos,
    Asin,
    Atan,
    Cos,
    Exp,
    Log,
    Sin,
    Tan,
    Ceil,
    Floor,
    Atan2,
    Pow,
    Sqrt,
    Max,
    Min,
    Round,
    Random
};

constexpr Builtin members[] = {
    {"abs", "Math.abs", 1, false, Abs},       {"acos", "Math.acos", 1, false, Acos},
    {"asin", "Math.asin", 1, false, Asin},    {"atan", "Math.atan", 1, false, Atan},
    {"cos", "Math.cos", 1, false, Cos},       {"exp", "Math.exp", 1, false, Exp},
    {"log", "Math.log", 1, false, Log},       {"sin", "Math.sin", 1, false, Sin},
    {"tan", "Math.tan", 1, false, Tan},       {"ceil", "Math.ceil", 1, false, Ceil},
    {"floor", "Math.floor", 1, false, Floor}, {"atan2", "Math.atan2", 2, false, Atan2},
    {"pow", "Math.pow", 2, false, Pow},       {"sqrt", "Math.sqrt", 1, false, Sqrt},
    {"max", "Math.max", 0, false, Max},       {"min", "Math.min", 0, false, Min},
    {"round", "Math.round", 1, false, Round}, {"random", "Math.random", 0, false, Random},
};

// The sign of a number as 1 or -1, also for the zeros.
double es_copysign(double number)
{
    return std::copysign(1.0, number);
}

double maximum(ESContext* context, int argc, const ESValue* argv)
{
    double result = -Infinity;
    for (int i = 0; i < argc; ++i) {
        double x = context->ToNumber(argv[i]);
        if (std::isnan(x) || std::isnan(result))
            result = NaN;
        else if (x > result || (x == 0 && result == 0 && es_copysign(x) > es_copysign(result)))
            result = x;
    }
    return result;
}

double minimum(ESContext* context, int argc, const ESValue* argv)
{
    double result = Infinity;
    for (int i = 0; i < argc; ++i) {
        double x = context->ToNumber(argv[i]);
        if (std::isnan(x) || std::isnan(result))
            result = NaN;
        else if (x < result || (x == 0 && result == 0 && es_copysign(x) < es_copysign(result)))
            result = x;
    }
    return result;
}

double rounded(double x)
{
    if (x >= -0.5 && (x < 0 || (x == 0 && std::signbit(x))))
        return -0.0;
    return std::floor(x + 0.5);
}

} // namespace

ESNativeMath::ESNativeMath() : ESNative("Math") {}

void ESNativeMath::install(ESContext* context)
{
    ESObject* math = context->mkobj(context->objectPrototype(), this);
    context->valinstant(context->globalObject(), ESProperty::DontEnum, ESStringPool::intern("Math"), math);
    installMembers(context, math, members);
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

void ESNativeMath::call(ESContext* context, ESObject* function, ESObject*, int argc, ESValue* argv)
{
    int id = function->builtinId;
    if (id < Abs || id > Random)
        badCall(context);
    if (id == Max || id == Min) {
        argv[0] = ESValue(id == Max ? maximum(context, argc, argv) : minimum(context, argc, argv));
        return;
    }
    double x = id == Random ? 0 : context->ToNumber(biarg(argc, argv, 0));
    double y = id == Atan2 || id == Pow ? context->ToNumber(biarg(argc, argv, 1)) : 0;
    switch (id) {
    case Abs: x = std::fabs(x); break;
    case Acos: x = std::acos(x); break;
    case Asin: x = std::asin(x); break;
    case Atan: x = std::atan(x); break;
    case Cos: x = std::cos(x); break;
    case Exp: x = std::exp(x); break;
    case Log: x = std::log(x); break;
    case Sin: x = std::sin(x); break;
    case Tan: x = std::tan(x); break;
    case Ceil: x = std::ceil(x); break;
    case Floor: x = std::floor(x); break;
    case Atan2: x = std::atan2(x, y); break;
    case Pow: x = std::pow(x, y); break;
    case Sqrt: x = std::sqrt(x); break;
    case Round: x = rounded(x); break;
    default: x = std::rand() / (double(RAND_MAX) + 1); break;
    }
    argv[0] = ESValue(x);
}
