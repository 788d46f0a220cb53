#include "script/native/ESNativeError.h"

#include "script/engine/ESClass.h"
#include "script/engine/ESContext.h"
#include "script/engine/ESObject.h"
#include "script/engine/ESRealm.h"
#include "script/engine/ESStringPool.h"
#include "script/engine/ESValue.h"

namespace {

ESValue make(const ESCall& call)
{
    return ESValue(call.function->cls->construct(call.context, call.function, call.argc, call.argv));
}

} // namespace

void ESNativeError::install(ESContext* context)
{
    ESRealm& realm = context->realm();
    bool base = m_kind == ESRealm::Error;
    m_prototype = context->mkobj(base ? context->objectPrototype() : realm.prototype(ESRealm::Error), this);
    m_object = installConstructor(context, constructorRow(className(), 1, make), m_prototype);
    realm.setPrototype(m_kind, m_prototype);
    realm.setConstructor(m_kind, m_object);
    installFunctions(context);
}

void ESNativeError::installFunctions(ESContext* context)
{
    context->valinstant(m_prototype, ESProperty::DontEnum, g_nameString,
                        ESValue(ESStringPool::intern(className())));
    context->valinstant(m_prototype, ESProperty::DontEnum, g_messageString, ESValue(g_emptyString));
}

ESObject* ESNativeError::construct(ESContext* context, ESObject*, int argc, ESValue* argv)
{
    ESObject* error = context->mkobj(m_prototype, this);
    ESValue message = biarg(argc, argv, 0);
    if (!message.isUndefined())
        context->put(error, g_messageString, message);
    return error;
}
