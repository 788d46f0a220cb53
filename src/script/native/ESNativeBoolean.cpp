#include "script/native/ESNativeBoolean.h"

namespace {

enum { Constructor, ToString, ValueOf };

constexpr Builtin constructorRow = {"Boolean", "Boolean", 1, true, Constructor};
constexpr Builtin members[] = {
    {"toString", "Boolean.prototype.toString", 0, false, ToString},
    {"valueOf", "Boolean.prototype.valueOf", 0, false, ValueOf},
};

} // namespace

ESNativeBoolean::ESNativeBoolean() : ESNative("Boolean") {}

void ESNativeBoolean::install(ESContext* context)
{
    installConstructor(context, constructorRow, context->booleanPrototype());
    installMembers(context, context->booleanPrototype(), members);
}

void ESNativeBoolean::call(ESContext* context, ESObject* function, ESObject* self, int argc, ESValue* argv)
{
    int id = function->builtinId;
    if (id == Constructor) {
        argv[0] = ESValue::boolean(ESContext::toBoolean(biarg(argc, argv, 0)));
        return;
    }
    if (id != ToString && id != ValueOf)
        badCall(context);
    if (self->cls != this)
        context->throwTypeError(QStringLiteral("Boolean.prototype.toString called on non-Boolean object"));
    argv[0] = id == ToString ? ESValue(context->toEString(self->value)) : self->value;
}

ESObject* ESNativeBoolean::construct(ESContext* context, ESObject* function, int argc, ESValue* argv)
{
    if (function->builtinId != Constructor)
        return ESNative::construct(context, function, argc, argv);
    ESValue value = ESValue::boolean(ESContext::toBoolean(biarg(argc, argv, 0)));
    return context->mkobj(context->booleanPrototype(), this, value);
}
