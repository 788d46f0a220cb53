#include "script/native/Builtin.h"

namespace {

ESObject* makeFunction(ESContext* context, const Builtin& row, ESObject* prototype, ESClass* cls)
{
    ESObject* function = context->mkobj(prototype, context->mkclosure(row.argumentCount), nullptr, cls);
    function->value = ESValue(ESStringPool::intern(row.fullName));
    function->builtinId = row.id;
    function->call->handler = row.handler;
    function->properties.reserve(row.constructor ? 16 : 1);
    function->define(g_lengthString, ESProperty::DontEnum, ESValue(double(row.argumentCount)));
    return function;
}

} // namespace

ESObject* biinst(ESContext* context, ESObject* owner, const Builtin& row, ESObject* prototype, ESClass* cls)
{
    ESObject* function = makeFunction(context, row, prototype, cls);
    context->fvarinstant(owner, ESProperty::DontEnum, ESStringPool::intern(row.name), function);
    return function;
}

ESObject* mkbiobj(ESContext* context, const Builtin& row, ESObject* prototype, ESClass* cls)
{
    ESObject* function = makeFunction(context, row, context->functionPrototype(), cls);
    function->construct = function->call;
    function->define(g_prototypeString, ESProperty::DontEnum | ESProperty::DontDelete | ESProperty::ReadOnly,
                     ESValue(prototype));
    prototype->define(g_constructorString, ESProperty::DontEnum, ESValue(function));
    return function;
}
