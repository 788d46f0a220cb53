#include "script/BuiltinScript.h"

#include "script/Builtin.h"

#include <cstdio>
#include <vector>

namespace {

enum { Echo = 1 };

} // namespace

void BuiltinScript::install(ESContext* context, int argc, char** argv)
{
    ESObject* script = context->mkobj(context->objectPrototype(), context->objectClass());
    for (const char* name : {"Script", "WScript"})
        context->valinstant(context->globalObject(), ESProperty::DontEnum, ESStringPool::intern(name), script);
    biinst(context, script, {"Echo", "Script.prototype.Echo", 0, false, Echo}, context->functionPrototype(), this);

    std::vector<ESValue> values;
    for (int i = 0; i < argc; ++i)
        values.push_back(ESValue(ESStringPool::intern(QString::fromUtf8(argv[i]))));
    m_arguments = context->newArray(argc, values.data());
    context->valinstant(script, ESProperty::DontEnum, ESStringPool::intern("Arguments"), m_arguments);
}

void BuiltinScript::call(ESContext* context, ESObject* function, ESObject*, int, ESValue* argv)
{
    if (function->builtinId != Echo)
        context->throwError(QStringLiteral("bad signature in BuiltinScript::call"));
    QByteArray text = context->toString(argv[0], 10).toUtf8();
    std::fwrite(text.constData(), 1, size_t(text.size()), stdout);
    std::fflush(stdout);
    argv[0] = g_undefined;
}
