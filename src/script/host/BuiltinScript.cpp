#include "script/host/BuiltinScript.h"

#include "script/engine/ESContext.h"
#include "script/engine/ESObject.h"
#include "script/engine/ESStringPool.h"
#include "script/engine/ESValue.h"
#include "script/native/Builtin.h"
#include "support/HException.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>
#include <vector>

namespace {

enum { Echo = 1 };

} // namespace

void BuiltinScript::install(ESContext* context, int argc, char** argv)
{
    ESObject* script = context->mkobj(context->objectPrototype(), context->objectClass());
    for (const char* name : {"Script", "WScript"})
        context->valinstant(context->globalObject(), ESProperty::DontEnum, ESStringPool::intern(name),
                            script);
    biinst(context, script, {"Echo", "Script.prototype.Echo", 0, false, Echo}, context->functionPrototype(),
           this);

    std::vector<ESValue> values;
    for (int i = 0; i < argc; ++i)
        values.push_back(ESValue(ESStringPool::intern(QString::fromUtf8(argv[i]))));
    m_arguments = context->newArray(argc, values.data());
    context->valinstant(script, ESProperty::DontEnum, ESStringPool::intern("Arguments"), m_arguments);
}

void BuiltinScript::call(ESContext* context, ESObject* function, ESObject*, int, ESValue* argv)
{
    if (function->builtinId() != Echo)
        context->throwError(QStringLiteral("bad signature in BuiltinScript::call"));
    QByteArray text = context->toString(argv[0], 10).toUtf8();
    argv[0] = g_undefined;
    // A script that writes for ever would not notice a closed pipe or a full disk; told once, it ends.
    size_t size = size_t(text.size());
    bool written = std::fwrite(text.constData(), 1, size, stdout) == size && std::fflush(stdout) == 0;
    if (!written && !std::exchange(m_failed, true))
        throw HException(std::string("cannot write to standard output: ") + std::strerror(errno));
}
