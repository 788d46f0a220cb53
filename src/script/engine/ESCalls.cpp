// Calls of functions and constructors, from native code and from the machine.
#include "script/engine/ESCode.h"
#include "script/engine/ESContext.h"
#include "script/engine/ESFrame.h"
#include "script/engine/ESThread.h"

#include <algorithm>

// One native caller above the machine while it is alive.
struct ESContext::NativeLevel {
    explicit NativeLevel(ESContext* c) : context(c)
    {
        if (c->m_nativeLevel >= ESLimits::NativeNesting)
            throw ESFatalError("virtual machine stack too small");
        ++c->m_nativeLevel;
    }
    ~NativeLevel() { --context->m_nativeLevel; }
    NativeLevel(const NativeLevel&) = delete;
    NativeLevel& operator=(const NativeLevel&) = delete;
    ESContext* context;
};

void ESContext::checkSpace(int slots) const
{
    if (m_limit - m_sp < slots)
        throw ESFatalError("virtual machine stack too small");
}

void ESContext::padArguments(int formalCount, int& argc)
{
    checkSpace(std::max(0, formalCount - argc));
    for (; argc < formalCount; ++argc)
        *m_sp++ = g_undefined;
}

// Makes the frame of a script function, whose arguments are the top `argc` stack values and at least as
// many as it has parameters.
void ESContext::enter(ESObject* function, ESCode* code, ESScope* scope, ESObject* self, int argc, bool entry,
                      ESObject* made)
{
    ESThread& thread = code->thread();
    int formals = code->formalCount;
    checkSpace(thread.stackNeed() + (argc > formals ? formals : 0));

    ESFrame& frame = m_frames[size_t(m_frameCount++)];
    frame.ip = thread.steps();
    frame.base = m_sp - argc;
    frame.registers = frame.base;
    frame.thread = &thread;
    frame.callerScope = m_scope;
    frame.scope = scope;
    frame.callerSelf = m_self;
    frame.made = made;
    frame.code = code;
    frame.argc = argc;
    frame.entry = entry;

    m_scope = scope;
    m_self = self;
    if (code->needsFrame) {
        pushActivation(code, frame.base, argc);
    } else {
        if (argc > formals) {
            // Parameters and locals lie side by side; surplus arguments stay below.
            frame.registers = m_sp;
            m_sp = std::copy_n(frame.base, formals, m_sp);
        }
        m_sp = std::fill_n(m_sp, code->localCount, g_undefined);
    }
    if (code->needsArguments) {
        *m_sp++ = m_A;
        m_A = ESValue(makeArguments(function, frame.base, argc));
    }
}

// An activation object has the parameters, a nameless slot for each surplus argument, and the locals.
void ESContext::pushActivation(ESCode* code, const ESValue* argv, int argc)
{
    auto* activation =
        static_cast<ESActivationObject*>(m_heap.make(ESObject::Activation, nullptr, &m_activationClass));
    const ESThread& thread = code->thread();
    activation->fillSlots(thread.parameterSlots(), std::span(argv, size_t(argc)), thread.localSlots(),
                          thread.names());
    activation->scope = {m_scope, activation, false};
    m_scope = &activation->scope;
}

// Gives the links of the scope chain back that the running function made, but for those that somebody keeps.
void ESContext::leaveScopes(ESScope* outside)
{
    while (m_scope != outside) {
        ESScope* link = m_scope;
        m_scope = link->next;
        if (!link->captured)
            m_heap.freeScope(link);
    }
}

ESObject* ESContext::makeArguments(ESObject* function, const ESValue* argv, int argc)
{
    auto* object = static_cast<ESArray*>(m_heap.make(ESObject::Arguments, objectPrototype(), objectClass()));
    object->reserve(2);
    object->append(g_lengthString, ESProperty::DontEnum, ESValue(double(argc)));
    object->append(g_calleeString, ESProperty::DontEnum, function ? ESValue(function) : g_undefined);
    object->fill(std::span(argv, size_t(argc)));
    return object;
}

// Ends all frames of one run of the machine.
ESValue ESContext::abandon(int entry)
{
    const ESFrame& frame = m_frames[size_t(entry)];
    m_sp = frame.base;
    m_scope = frame.callerScope;
    m_self = frame.callerSelf;
    m_frameCount = entry;
    m_stopped = true;
    return g_undefined;
}

void ESContext::call(ESObject* function, ESObject* self, int argc)
{
    if (m_sp > m_limit)
        throw ESFatalError("virtual machine stack too small");
    if (!function || !function->isCallable())
        throwTypeError(QStringLiteral("can only call function objects"));
    NativeLevel level(this);
    if (ESNativeFunctionObject* native = nativeFunction(function)) {
        padArguments(native->formalCount, argc);
        ESValue* argv = m_sp - argc;
        if (!argc)
            *argv = g_undefined;
        callNative(native, self, argc, argv);
        m_A = *argv;
        m_sp = argv;
        return;
    }
    auto* script = static_cast<ESFunctionObject*>(function);
    padArguments(script->code->formalCount, argc);
    if (m_stopped) {
        m_sp -= argc;
        m_A = g_undefined;
        return;
    }
    enter(function, script->code, script->scope, self, argc, true);
    estmt(script->code);
}

void ESContext::call(ESObject* function, ESObject* self, int argc, const ESValue* argv, ESValue* result)
{
    if (!m_evalDepth && !m_frameCount)
        m_stopped = false;
    checkSpace(argc + 1);
    ESValue* const sp = m_sp;
    const ESValue saved = m_A;
    ESScope* const scope = m_scope;
    ESObject* const running = m_self;
    const int frames = m_frameCount;
    try {
        *m_sp++ = saved;
        m_sp = std::copy_n(argv, argc, m_sp);
        call(function, self, argc);
    } catch (...) {
        // The caller may be a host that goes on.
        m_sp = sp;
        m_A = saved;
        m_scope = scope;
        m_self = running;
        m_frameCount = frames;
        throw;
    }
    *result = m_A;
    m_A = saved;
    m_sp = sp;
}

// The object that a script constructor is called on: of the kind that its `prototype` says, with room
// for as many properties as the one before it got.
ESObject* ESContext::newInstance(ESObject* function)
{
    ESValue prototype = get(function, g_prototypeString);
    ESObject* object = m_heap.make(
        ESObject::Plain, prototype.isObject() ? prototype.object() : objectPrototype(), objectClass());
    if (function->kind() == ESObject::Function)
        object->reserve(static_cast<ESFunctionObject*>(function)->code->constructedProperties);
    return object;
}

ESObject* ESContext::construct(ESObject* function, int argc, const ESValue* argv)
{
    if (function->isNative() && function->cls) {
        // Natives may write to their first argument.
        checkSpace(argc + 1);
        ESValue* arguments = m_sp;
        m_sp = std::copy_n(argv, argc, m_sp);
        if (!argc)
            *arguments = g_undefined;
        ESObject* made = function->cls->construct(this, function, argc, arguments);
        m_sp = arguments;
        if (made)
            return made;
    }
    if (!function->isConstructor())
        throwError((function->internal().isString() ? toString(function->internal()) : QString()) +
                   QStringLiteral(" failed to generate an object"));
    ESObject* object = newInstance(function);
    ESValue result;
    call(function, object, argc, argv, &result);
    return result.isObject() ? result.object() : object;
}
