#include "script/native/Builtin.h"

#include "script/engine/ESClass.h"
#include "script/engine/ESObject.h"
#include "script/engine/ESStringPool.h"
#include "script/engine/ESValue.h"

namespace {

ESObject* makeFunction(ESContext* context, const Builtin& row, ESObject* prototype, ESClass* cls)
{
    ESNativeFunctionObject* function = context->mknative(prototype, cls, row.handler, row.argumentCount);
    function->value = ESValue(ESStringPool::intern(row.fullName));
    function->id = row.id;
    function->reserve(row.constructor ? 3 : 1);
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
    function->setFlag(ESObject::Constructor);
    function->define(g_prototypeString, ESProperty::DontEnum | ESProperty::DontDelete | ESProperty::ReadOnly,
                     ESValue(prototype));
    prototype->define(g_constructorString, ESProperty::DontEnum, ESValue(function));
    return function;
}
