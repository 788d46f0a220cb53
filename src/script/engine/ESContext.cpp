// Making and ending a context, evaluation, and its objects. The machine is in ESMachine.cpp, calls in
// ESCalls.cpp, names and members in ESAccess.cpp, conversions in ESConversions.cpp.
#include "script/engine/ESContext.h"

#include "script/engine/ESCode.h"
#include "script/engine/ESCompiler.h"
#include "script/engine/ESFrame.h"
#include "script/engine/ESThread.h"
#include "script/native/ESNativeArray.h"
#include "script/native/ESNativeBoolean.h"
#include "script/native/ESNativeDate.h"
#include "script/native/ESNativeError.h"
#include "script/native/ESNativeFunction.h"
#include "script/native/ESNativeGlobal.h"
#include "script/native/ESNativeMath.h"
#include "script/native/ESNativeNumber.h"
#include "script/native/ESNativeObject.h"
#include "script/native/ESNativeString.h"

namespace {

// Variables of a function that are reached by name live in an object of this class.
class ESActivation : public ESClass {
public:
    ESActivation() : ESClass("activation", Access::Plain) {}
};

// Function code stays for the life of the process, and so does this vector.
std::vector<std::unique_ptr<ESCode>>& codeVector()
{
    static auto* m_codeVector = new std::vector<std::unique_ptr<ESCode>>;
    return *m_codeVector;
}

} // namespace

// Puts the machine's state back on every way out of an eval.
struct ESContext::StateGuard {
    explicit StateGuard(ESContext* c)
        : context(c), A(c->m_A), sp(c->m_sp), scope(c->m_scope), self(c->m_self), frames(c->m_frameCount),
          nativeLevel(c->m_nativeLevel), file(c->m_sourceFile)
    {
        ++c->m_evalDepth;
    }
    ~StateGuard()
    {
        context->m_A = A;
        context->m_sp = sp;
        context->m_scope = scope;
        context->m_self = self;
        context->m_frameCount = frames;
        context->m_nativeLevel = nativeLevel;
        context->m_sourceFile = file;
        --context->m_evalDepth;
    }
    StateGuard(const StateGuard&) = delete;
    StateGuard& operator=(const StateGuard&) = delete;

    ESContext* context;
    ESValue A;
    ESValue* sp;
    ESObject* scope;
    ESObject* self;
    int frames;
    int nativeLevel;
    QString file;
};

ESContext::ESContext(Ask ask) : m_ask(ask)
{
    internWellKnownStrings();
}

ESContext::~ESContext() = default;

void ESContext::mkexec(ESObject* global, ESContext* context)
{
    ESContext& c = *context;
    c.m_stack = std::make_unique<ESValue[]>(ESLimits::StackSlots + ESLimits::StackMargin);
    c.m_sp = c.m_stack.get();
    c.m_limit = c.m_sp + ESLimits::StackSlots;
    // Each frame lies on at least one stack slot, but for those of an eval.
    c.m_frames = std::make_unique<ESFrame[]>(ESLimits::StackSlots + ESLimits::NativeNesting + 2);

    auto objectClass = std::make_unique<ESNativeObject>();
    auto booleanClass = std::make_unique<ESNativeBoolean>();
    auto arrayClass = std::make_unique<ESNativeArray>();
    auto globalClass = std::make_unique<ESNativeGlobal>();
    auto numberClass = std::make_unique<ESNativeNumber>();
    auto mathClass = std::make_unique<ESNativeMath>();
    auto stringClass = std::make_unique<ESNativeString>();
    auto functionClass = std::make_unique<ESNativeFunction>();
    auto dateClass = std::make_unique<ESNativeDate>();
    c.m_errorClass = std::make_unique<ESNativeError>();
    c.m_rangeErrorClass = std::make_unique<ESNativeRangeError>();
    c.m_referenceErrorClass = std::make_unique<ESNativeReferenceError>();
    c.m_syntaxErrorClass = std::make_unique<ESNativeSyntaxError>();
    c.m_typeErrorClass = std::make_unique<ESNativeTypeError>();
    c.m_evalErrorClass = std::make_unique<ESNativeEvalError>();
    c.m_activationClass = std::make_unique<ESActivation>();

    // The text of a global object under conversion, and the receivers of calls on primitives, need no
    // more than an object.
    c.m_objectPrototype = c.mkobj(nullptr, objectClass.get());
    c.m_functionPrototype = c.mkobj(c.m_objectPrototype, functionClass.get());
    c.m_stringPrototype = c.mkobj(c.m_objectPrototype, stringClass.get(), ESValue(g_emptyString));
    c.m_numberPrototype = c.mkobj(c.m_objectPrototype, numberClass.get(), ESValue(0.0));
    c.m_booleanPrototype = c.mkobj(c.m_objectPrototype, booleanClass.get(), g_false);
    c.m_arrayPrototype = c.mkobj(c.m_objectPrototype, arrayClass.get());
    c.m_arrayPrototype->define(g_lengthString, ESProperty::DontEnum, ESValue(0.0));
    c.m_datePrototype = c.mkobj(c.m_objectPrototype, dateClass.get(), ESValue(NaN));
    c.m_global = global ? global : c.mkobj(c.m_objectPrototype, globalClass.get());
    c.m_global->value = ESValue(ESStringPool::intern("[object global]"));
    if (!c.m_global->cls)
        c.m_global->cls = globalClass.get();
    c.m_self = c.m_global;
    c.m_stringReceiver = c.mkobj(c.m_stringPrototype, stringClass.get());
    c.m_numberReceiver = c.mkobj(c.m_numberPrototype, numberClass.get());

    auto* object = objectClass.get();
    auto* boolean = booleanClass.get();
    auto* array = arrayClass.get();
    auto* number = numberClass.get();
    auto* math = mathClass.get();
    auto* string = stringClass.get();
    auto* function = functionClass.get();
    auto* date = dateClass.get();
    c.m_objectClass = std::move(objectClass);
    c.m_booleanClass = std::move(booleanClass);
    c.m_arrayClass = std::move(arrayClass);
    c.m_globalClass = std::move(globalClass);
    c.m_numberClass = std::move(numberClass);
    c.m_mathClass = std::move(mathClass);
    c.m_stringClass = std::move(stringClass);
    c.m_functionClass = std::move(functionClass);
    c.m_dateClass = std::move(dateClass);

    object->install(context);
    boolean->install(context);
    array->install(context);
    c.m_globalClass->install(context);
    c.m_errorClass->install(context);
    c.m_rangeErrorClass->install(context);
    c.m_referenceErrorClass->install(context);
    c.m_syntaxErrorClass->install(context);
    c.m_typeErrorClass->install(context);
    c.m_evalErrorClass->install(context);
    number->install(context);
    math->install(context);
    string->install(context);
    function->install(context);
    date->install(context);
}

bool ESContext::carryOnExecuting()
{
    return true;
}

bool ESContext::askToGoOn()
{
    m_budget = ESLimits::HookStride;
    if (m_stopped)
        return false;
    if (m_ask == Ask::NowAndThen && !carryOnExecuting())
        m_stopped = true;
    return !m_stopped;
}

bool ESContext::keepGoing()
{
    if (strict())
        return carryOnExecuting();
    return --m_budget >= 0 || askToGoOn();
}

ESCompletion ESContext::eval(const QString& source, const QString& file)
{
    if (m_nativeLevel >= ESLimits::NativeNesting)
        throw ESFatalError("virtual machine stack too small");
    StateGuard guard(this);
    ++m_nativeLevel;
    if (m_evalDepth == 1)
        m_stopped = false;
    if (!file.isNull())
        m_sourceFile = file;
    ESCompletion completion;
    try {
        std::unique_ptr<ESCode> code;
        {
            ESCompiler compiler(this);
            compiler.setSource(source);
            code = compiler.parse();
        }
        completion.value = exec(code.get());
    } catch (const ESException& exception) {
        completion.type = ESCompletion::Thrown;
        completion.value = exception.value();
        try {
            ESValue shown = completion.value;
            if (iserrorobj(shown))
                shown = get(shown.object(), g_messageString);
            completion.text = toString(shown);
        } catch (const ESException&) {
            // A value whose own conversion fails has no text.
        }
    } catch (const std::bad_alloc&) {
        throw ESFatalError("out of memory");
    }
    return completion;
}

ESValue ESContext::exec(ESCode* code)
{
    enter(nullptr, code, m_scope, m_self, 0, true);
    estmt(code);
    return m_A;
}

std::vector<ESWarning> ESContext::takeWarnings()
{
    return std::exchange(m_warnings, {});
}

void ESContext::addWarning(int line, const QString& text)
{
    ESWarning warning{m_sourceFile, line, text};
    if (m_warned.insert(warning).second)
        m_warnings.push_back(warning);
}

int ESContext::registerFunctionCode(std::unique_ptr<ESCode> code)
{
    codeVector().push_back(std::move(code));
    return int(codeVector().size()) - 1;
}

ESCode* ESContext::functionCode(int index)
{
    return codeVector()[size_t(index)].get();
}

void ESContext::forgetFunctionCode()
{
    codeVector().clear();
}

// Failures.

int ESContext::errorLine() const
{
    if (!m_frameCount)
        return m_errorLine;
    const ESFrame& frame = m_frames[size_t(m_frameCount - 1)];
    return frame.thread->line(frame.ip);
}

void ESContext::throwException(ESObject* errorConstructor, const QString& text)
{
    QString message = QStringLiteral("line %1: ").arg(errorLine()) + text;
    ESValue argument(ESStringPool::intern(message));
    throw ESException(ESValue(construct(errorConstructor, 1, &argument)));
}

void ESContext::throwError(const QString& text)
{
    throwException(m_errorClass->object(), text);
}

void ESContext::throwTypeError(const QString& text)
{
    throwException(m_typeErrorClass->object(), text);
}

void ESContext::throwRangeError(const QString& text)
{
    throwException(m_rangeErrorClass->object(), text);
}

void ESContext::throwSyntaxError(int line, const QString& text)
{
    // The line is the parser's, whatever script asked for the compilation.
    m_errorLine = line;
    int frames = std::exchange(m_frameCount, 0);
    try {
        throwException(m_syntaxErrorClass->object(), text);
    } catch (...) {
        m_frameCount = frames;
        throw;
    }
}

bool ESContext::iserrorobj(const ESValue& v) const
{
    return v.isObject() && isPrototypeOf(m_errorClass->prototype(), v);
}

// Objects.

void ESContext::addChunk()
{
    m_chunks.push_back(std::make_unique<ESObject[]>(ESLimits::ObjectChunk));
    for (int i = ESLimits::ObjectChunk; i-- > 0;) {
        ESObject& object = m_chunks.back()[size_t(i)];
        object.allObjects = std::exchange(m_allObjects, &object);
        object.nextFree = std::exchange(m_freeObjects, &object);
    }
}

ESObject* ESContext::mkobj()
{
    if (!m_freeObjects) [[unlikely]]
        addChunk();
    ESObject* object = m_freeObjects;
    m_freeObjects = object->nextFree;
    object->nextFree = nullptr;
    return object;
}

ESObject* ESContext::mkobj(ESObject* prototype, ESClass* cls)
{
    ESObject* object = mkobj();
    object->prototype = prototype;
    object->cls = cls;
    return object;
}

ESObject* ESContext::mkobj(ESObject* prototype, ESClass* cls, const ESValue& internal)
{
    ESObject* object = mkobj(prototype, cls);
    object->value = internal;
    return object;
}

ESObject* ESContext::mkobj(ESObject* prototype, ESClosure* call, ESClosure* construct, ESClass* cls)
{
    ESObject* object = mkobj(prototype, cls);
    object->call = call;
    object->construct = construct;
    return object;
}

ESClosure* ESContext::mkclosure(int formalCount)
{
    if (!m_closuresLeft) {
        m_closureChunks.push_back(std::make_unique<ESClosure[]>(ESLimits::ObjectChunk));
        m_closuresLeft = ESLimits::ObjectChunk;
    }
    ESClosure* closure = &m_closureChunks.back()[size_t(--m_closuresLeft)];
    closure->formalCount = formalCount;
    return closure;
}

ESObject* ESContext::mkfunction(ESCode* code, ESObject* scope)
{
    ESClosure* closure = mkclosure(code->formalCount);
    closure->localCount = code->localCount;
    closure->code = code;
    closure->scope = scope;
    ESObject* function = mkobj(m_functionPrototype, closure, closure, m_functionClass.get());
    ESObject* prototype = mkplain();
    prototype->properties.reserve(1);
    prototype->append(g_constructorString, ESProperty::DontEnum, ESValue(function));
    function->properties.reserve(2);
    function->append(g_lengthString, ESProperty::DontEnum, ESValue(double(code->formalCount)));
    function->append(g_prototypeString, ESProperty::DontEnum, ESValue(prototype));
    return function;
}

ESObject* ESContext::newObject(ESObject*, int argc, const ESValue* argv)
{
    ESValue value = argc > 0 ? argv[0] : g_undefined;
    switch (value.type()) {
    case ESValue::Undefined:
    case ESValue::Null: return mkplain();
    case ESValue::Boolean:
    case ESValue::Number:
    case ESValue::Text:
    case ESValue::String: return ToObject(value);
    case ESValue::Object: return value.object();
    default: throw ESFatalError("unknown type in Object constructor");
    }
}

ESObject* ESContext::newArray(int length, const ESValue* values)
{
    ESObject* array = mkobj(m_arrayPrototype, m_arrayClass.get());
    array->properties.reserve(uint32_t(length) + 1);
    array->append(g_lengthString, ESProperty::DontEnum, ESValue(double(length)));
    for (int i = 0; i < length; ++i)
        array->append(ESStringPool::number(i), 0, values[i]);
    return array;
}

void ESContext::valinstant(ESObject* object, unsigned attributes, ESString* name, const ESValue& value)
{
    put(object, name, value);
    if (ESProperty* slot = object->find(name))
        slot->attributes = uint8_t(attributes);
}

void ESContext::varinstant(ESObject* object, unsigned attributes, ESString* name, const ESValue& value)
{
    valinstant(object, attributes, name, value);
}

void ESContext::fvarinstant(ESObject* object, unsigned attributes, ESString* name, ESObject* function)
{
    valinstant(object, attributes, name, ESValue(function));
}
