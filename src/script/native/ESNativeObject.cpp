#include "script/native/ESNativeObject.h"

#include "script/engine/ESClass.h"
#include "script/engine/ESContext.h"
#include "script/engine/ESObject.h"
#include "script/engine/ESString.h"
#include "script/engine/ESStringPool.h"
#include "script/engine/ESValue.h"
#include "script/native/Builtin.h"

namespace {

ESValue make(const ESCall& call)
{
    return ESValue(call.context->newObject(call.function, call.argc, call.argv));
}

ESValue toString(const ESCall& call)
{
    QString name = QString::fromUtf8(call.self->cls->className());
    return ESValue(ESStringPool::text(QStringLiteral("[object %1]").arg(name)));
}

ESValue valueOf(const ESCall& call)
{
    return ESValue(call.self);
}

ESValue hasOwnProperty(const ESCall& call)
{
    return ESValue::boolean(ESContext::hasOwnKey(call.self, call.context->toEString(call.argument(0))));
}

ESValue isPrototypeOf(const ESCall& call)
{
    return ESValue::boolean(ESContext::isPrototypeOf(call.self, call.argument(0)));
}

ESValue propertyIsEnumerable(const ESCall& call)
{
    ESString* text = call.context->toEString(call.argument(0));
    if (!ESContext::hasOwnKey(call.self, text))
        return g_false;
    return ESValue::boolean(ESContext::propertyIsEnumerable(call.self, ESStringPool::name(text)));
}

} // namespace

void ESNativeObject::install(ESContext* context)
{
    static constexpr Builtin MemberTable[] = {
        row("toString", "Object.prototype.toString", 0, toString),
        row("toLocaleString", "Object.prototype.toLocaleString", 0, toString),
        row("valueOf", "Object.prototype.valueOf", 0, valueOf),
        row("hasOwnProperty", "Object.prototype.hasOwnProperty", 1, hasOwnProperty),
        row("isPrototypeOf", "Object.prototype.isPrototypeOf", 1, isPrototypeOf),
        row("propertyIsEnumerable", "Object.prototype.propertyIsEnumerable", 1, propertyIsEnumerable),
    };
    installConstructor(context, constructorRow("Object", 1, make), context->objectPrototype());
    installMembers(context, context->objectPrototype(), MemberTable);
}

ESObject* ESNativeObject::construct(ESContext* context, ESObject* function, int argc, ESValue* argv)
{
    return context->newObject(function, argc, argv);
}
