#include "script/native/ESNativeError.h"

void ESNativeError::install(ESContext* context)
{
    ESNativeError* base = context->error();
    m_prototype = context->mkobj(base == this ? context->objectPrototype() : base->prototype(), this);
    m_object = installConstructor(context, {className(), className(), 1, true, 0}, m_prototype);
    installFunctions(context);
}

void ESNativeError::installFunctions(ESContext* context)
{
    context->valinstant(m_prototype, ESProperty::DontEnum, g_nameString,
                        ESValue(ESStringPool::intern(className())));
    context->valinstant(m_prototype, ESProperty::DontEnum, g_messageString, ESValue(g_emptyString));
}

void ESNativeError::call(ESContext* context, ESObject* function, ESObject*, int argc, ESValue* argv)
{
    if (function->builtinId != 0)
        badCall(context);
    argv[0] = ESValue(construct(context, function, argc, argv));
}

ESObject* ESNativeError::construct(ESContext* context, ESObject* function, int argc, ESValue* argv)
{
    if (function->builtinId != 0)
        return ESNative::construct(context, function, argc, argv);
    ESObject* error = context->mkobj(m_prototype, this);
    ESValue message = biarg(argc, argv, 0);
    if (!message.isUndefined())
        context->put(error, g_messageString, message);
    return error;
}
