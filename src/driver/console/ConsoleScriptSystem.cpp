#include "driver/console/ConsoleScriptSystem.h"

#include "driver/session/Interrupt.h"
#include "driver/session/SessionFace.h"
#include "script/engine/ESContext.h"
#include "script/engine/ESObject.h"
#include "script/engine/ESStringPool.h"
#include "script/engine/ESValue.h"
#include "script/host/HostEvaluation.h"
#include "script/native/Builtin.h"
#include "script/native/ESLibrary.h"
#include "support/HException.h"

namespace {

class ConsoleContext : public ESContext {
public:
    explicit ConsoleContext(ConsoleScriptSystem* system) : ESContext(Ask::NowAndThen), m_system(system) {}
    bool carryOnExecuting() override { return !m_system->stopRequested(); }

private:
    ConsoleScriptSystem* m_system;
};

struct Depth {
    explicit Depth(int& depth) : m_depth(depth) { ++m_depth; }
    ~Depth() { --m_depth; }
    int& m_depth;
};

// What a function writes, in UTF-8.
std::string written(ESContext* context, int argc, const ESValue* argv)
{
    return context->toString(biarg(argc, argv, 0)).toStdString();
}

} // namespace

ConsoleScriptSystem::ConsoleScriptSystem() : m_context(std::make_unique<ConsoleContext>(this))
{
    ESLibrary::mkexec(nullptr, m_context.get());
}

ConsoleScriptSystem::~ConsoleScriptSystem() = default;

bool ConsoleScriptSystem::defines(const QString& name) const
{
    return ESContext::hasProperty(m_context->globalObject(), ESStringPool::intern(name));
}

bool ConsoleScriptSystem::stopRequested() const
{
    return m_stopRequested || Interrupt::requested();
}

bool ConsoleScriptSystem::execute(const QString& text, bool)
{
    m_stopRequested = false;
    ESCompletion completion;
    {
        Depth depth(m_depth);
        completion = evaluateForHost(m_context.get(), text, m_sourceName);
    }
    Interrupt::check();
    if (m_context->stopped())
        throw HException("script stopped");
    if (completion.type == ESCompletion::Thrown) {
        if (m_context->iserrorobj(completion.value))
            throw HException(completion.text);
        throw HException(QLatin1String("uncaught exception - ") + completion.text);
    }
    return true;
}

ESObject* OutputObject::install(ESContext* context, const char* name, const char* path)
{
    ESObject* object = ESQObject::installScriptObject(context);
    biinst(context, object, {name, path, 1, false, FirstFreeId}, context->functionPrototype(), this);
    return object;
}

void OutputObject::call(ESContext* context, ESObject* function, ESObject* self, int argc, ESValue* argv)
{
    if (function->builtinId() != FirstFreeId) {
        ESQObject::call(context, function, self, argc, argv);
        return;
    }
    m_face.output(written(context, argc, argv) + m_end);
    argv[0] = g_undefined;
}

ESObject* Console::installScriptObject(ESContext* context)
{
    return install(context, "WriteLine", "Console.prototype.WriteLine");
}

ESObject* WScript::installScriptObject(ESContext* context)
{
    return install(context, "Echo", "WScript.prototype.Echo");
}
