#include "script/native/ESNative.h"

#include "script/engine/ESContext.h"
#include "script/engine/ESObject.h"
#include "script/engine/ESStringPool.h"
#include "script/engine/ESValue.h"

void ESNative::call(ESContext* context, ESObject*, ESObject*, int, ESValue*)
{
    context->throwError(QStringLiteral("bad signature in builtin call"));
}

ESObject* ESNative::construct(ESContext* context, ESObject*, int, ESValue*)
{
    context->throwError(QStringLiteral("bad signature in builtin construct"));
}

ESObject* ESNative::installConstructor(ESContext* context, const Builtin& row, ESObject* prototype)
{
    ESObject* function = mkbiobj(context, row, prototype, this);
    context->fvarinstant(context->globalObject(), ESProperty::DontEnum, ESStringPool::intern(row.name),
                         function);
    return function;
}
