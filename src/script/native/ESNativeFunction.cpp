#include "script/native/ESNativeFunction.h"

#include "script/engine/ESClass.h"
#include "script/engine/ESCompiler.h"
#include "script/engine/ESContext.h"
#include "script/engine/ESObject.h"
#include "script/engine/ESStringPool.h"
#include "script/engine/ESValue.h"
#include "script/native/Builtin.h"

#include <QStringList>

namespace {

// The last argument is the body, those before it are the parameters.
ESObject* compile(ESContext* context, int argc, const ESValue* argv)
{
    QStringList parameters;
    for (int i = 0; i + 1 < argc; ++i)
        parameters.append(context->toString(argv[i], 10));
    QString body = argc > 0 ? context->toString(argv[argc - 1], 10) : QString();
    return ESCompiler(context).parseFunction(parameters.join(QLatin1Char(',')), body);
}

ESValue toString(const ESCall&)
{
    return ESValue(ESStringPool::intern("<<function>>"));
}

} // namespace

void ESNativeFunction::install(ESContext* context)
{
    static constexpr Builtin Constructor = constructorRow("Function", 1, [](const ESCall& call) {
        return ESValue(compile(call.context, call.argc, call.argv));
    });
    static constexpr Builtin MemberTable[] = {row("toString", "Function.prototype.toString", 0, toString)};

    ESObject* prototype = context->functionPrototype();
    installConstructor(context, Constructor, prototype);
    installMembers(context, prototype, MemberTable);
    // It is a function itself, which takes anything and gives undefined.
    ESNativeFunctionObject* function = nativeFunction(prototype);
    function->handler = [](const ESCall&) { return g_undefined; };
    function->id = 1;
    function->value = ESValue(ESStringPool::intern("Function.prototype"));
}

ESObject* ESNativeFunction::construct(ESContext* context, ESObject*, int argc, ESValue* argv)
{
    return compile(context, argc, argv);
}
