#include "script/native/ESNativeBoolean.h"

#include "script/engine/ESClass.h"
#include "script/engine/ESContext.h"
#include "script/engine/ESObject.h"
#include "script/engine/ESValue.h"
#include "script/native/Builtin.h"

namespace {

ESValue make(const ESCall& call)
{
    return ESValue::boolean(ESContext::toBoolean(call.argument(0)));
}

ESValue valueOf(const ESCall& call)
{
    if (!call.context->isboolobj(ESValue(call.self)))
        call.context->throwTypeError(
            QStringLiteral("Boolean.prototype.toString called on non-Boolean object"));
    return call.self->internal();
}

ESValue toString(const ESCall& call)
{
    return ESValue(call.context->toEString(valueOf(call)));
}

} // namespace

void ESNativeBoolean::install(ESContext* context)
{
    static constexpr Builtin MemberTable[] = {
        row("toString", "Boolean.prototype.toString", 0, toString),
        row("valueOf", "Boolean.prototype.valueOf", 0, valueOf),
    };
    installConstructor(context, constructorRow("Boolean", 1, make), context->booleanPrototype());
    installMembers(context, context->booleanPrototype(), MemberTable);
}

ESObject* ESNativeBoolean::construct(ESContext* context, ESObject*, int argc, ESValue* argv)
{
    ESValue value = ESValue::boolean(ESContext::toBoolean(biarg(argc, argv, 0)));
    return context->mkobj(context->booleanPrototype(), this, value);
}
