#include "script/native/ESNativeFunction.h"

#include "script/engine/ESCompiler.h"

#include <QStringList>

namespace {

enum { Constructor, ToString, Prototype };

constexpr Builtin constructorRow = {"Function", "Function", 1, true, Constructor};
constexpr Builtin members[] = {{"toString", "Function.prototype.toString", 0, false, ToString}};

} // namespace

ESNativeFunction::ESNativeFunction() : ESNative("Function") {}

void ESNativeFunction::install(ESContext* context)
{
    ESObject* prototype = context->functionPrototype();
    installConstructor(context, constructorRow, prototype);
    installMembers(context, prototype, members);
    // It is a function itself, which takes anything and gives undefined.
    prototype->call = context->mkclosure(0);
    prototype->builtinId = Prototype;
    prototype->value = ESValue(ESStringPool::intern("Function.prototype"));
}

// The last argument is the body, those before it are the parameters.
ESObject* ESNativeFunction::compile(ESContext* context, int argc, const ESValue* argv)
{
    QStringList parameters;
    for (int i = 0; i + 1 < argc; ++i)
        parameters.append(context->toString(argv[i], 10));
    QString body = argc > 0 ? context->toString(argv[argc - 1], 10) : QString();
    return ESCompiler(context).parseFunction(parameters.join(QLatin1Char(',')), body);
}

void ESNativeFunction::call(ESContext* context, ESObject* function, ESObject*, int argc, ESValue* argv)
{
    switch (function->builtinId) {
    case Constructor: argv[0] = ESValue(compile(context, argc, argv)); return;
    case ToString: argv[0] = ESValue(ESStringPool::intern("<<function>>")); return;
    case Prototype: argv[0] = g_undefined; return;
    default: badCall(context);
    }
}

ESObject* ESNativeFunction::construct(ESContext* context, ESObject* function, int argc, ESValue* argv)
{
    if (function->builtinId != Constructor)
        return ESNative::construct(context, function, argc, argv);
    return compile(context, argc, argv);
}
