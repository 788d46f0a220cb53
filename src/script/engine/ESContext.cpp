// Making and ending a context, evaluation, and its objects. The machine is in ESMachine.cpp, calls in
// ESCalls.cpp, names and members in ESAccess.cpp, conversions in ESConversions.cpp.
#include "script/engine/ESContext.h"

#include "script/engine/ESCode.h"
#include "script/engine/ESCollector.h"
#include "script/engine/ESCompiler.h"
#include "script/engine/ESFrame.h"
#include "script/engine/ESString.h"
#include "script/engine/ESThread.h"

#include <typeinfo>

namespace {

// Function code stays for the life of the process, and so does this vector.
std::vector<std::unique_ptr<ESCode>>& codeVector()
{
    static auto* g_codeVector = new std::vector<std::unique_ptr<ESCode>>;
    return *g_codeVector;
}

} // namespace

// Puts the machine's state back on every way out of an eval.
struct ESContext::StateGuard {
    explicit StateGuard(ESContext* c)
        : context(c), sp(c->m_sp), scope(c->m_scope), self(c->m_self), frames(c->m_frameCount),
          nativeLevel(c->m_nativeLevel), file(c->m_sourceFile)
    {
        ++c->m_evalDepth;
    }
    ~StateGuard()
    {
        context->m_A = g_undefined;
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
    ESValue* sp;
    ESScope* scope;
    ESObject* self;
    int frames;
    int nativeLevel;
    QString file;
};

ESContext::ESContext(Ask ask) : m_ask(ask)
{
    internWellKnownStrings();
    ESCollector::enter(this);
}

ESContext::~ESContext()
{
    ESCollector::leave(this);
}

void ESContext::begin(ESObject* global)
{
    m_strict = m_ask == Ask::EachInstruction && typeid(*this) != typeid(ESContext);
    m_stack = std::make_unique<ESValue[]>(ESLimits::StackSlots + ESLimits::StackMargin);
    m_sp = m_stack.get();
    m_limit = m_sp + ESLimits::StackSlots;
    // Each frame lies on at least one stack slot, but for those of an eval.
    m_frames = std::make_unique<ESFrame[]>(ESLimits::StackSlots + ESLimits::NativeNesting + 2);

    ESObject* root = mkobj(nullptr, m_realm.cls(ESRealm::Object));
    m_realm.setPrototype(ESRealm::Object, root);
    m_heap.setPlain(root, m_realm.cls(ESRealm::Object));
    m_realm.setPrototype(ESRealm::Function, mknative(root, m_realm.cls(ESRealm::Function), nullptr, 0));
    m_realm.setPrototype(ESRealm::Array, mkobj(root, m_realm.cls(ESRealm::Array)));
    const struct {
        ESRealm::Kind kind;
        ESValue internal;
    } prototypes[] = {
        {ESRealm::String, ESValue(g_emptyString)},
        {ESRealm::Number, ESValue(0.0)},
        {ESRealm::Boolean, g_false},
        {ESRealm::Date, ESValue(NaN)},
    };
    for (const auto& row : prototypes)
        m_realm.setPrototype(row.kind, mkobj(root, m_realm.cls(row.kind), row.internal));
    arrayPrototype()->define(g_lengthString, ESProperty::DontEnum, ESValue(0.0));

    m_global = global ? global : mkobj(root, nullptr, g_undefined);
    if (!m_global->cls)
        m_global->setClass(m_realm.cls(ESRealm::Global));
    m_global->setInternal(ESValue(ESStringPool::intern("[object global]")));
    m_global->setFlag(ESObject::Fixed);
    m_self = m_global;
    m_stringReceiver = mkobj(stringPrototype(), m_realm.cls(ESRealm::String), g_undefined);
    m_numberReceiver = mkobj(numberPrototype(), m_realm.cls(ESRealm::Number), g_undefined);
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
    bool inside = std::exchange(m_evalInside, false);
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
        m_evalInside = inside;
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

ESCompletion ESContext::evalInside(const QString& source, const QString& file)
{
    m_evalInside = true;
    return eval(source, file);
}

void ESContext::setMemoryLimit(size_t bytes)
{
    m_heap.setLimit(bytes);
    ESStringPool::setLimit(bytes);
}

void ESContext::mark(ESMarker& marker)
{
    for (ESValue* at = m_stack.get(); at != m_sp; ++at)
        marker.value(*at);
    marker.value(m_A);
    for (int i = 0; i < m_frameCount; ++i) {
        for (ESObject* object : {m_frames[size_t(i)].callerSelf, m_frames[size_t(i)].made})
            if (object)
                marker.object(object);
    }
    for (ESObject* object : {m_self, m_global, m_stringReceiver, m_numberReceiver})
        if (object)
            marker.object(object);
    for (int kind = 0; kind < ESRealm::KindCount; ++kind)
        if (ESObject* prototype = m_realm.prototype(ESRealm::Kind(kind)))
            marker.object(prototype);
    m_heap.markValues(marker);
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
    ESValue argument(ESStringPool::text(message));
    throw ESException(ESValue(construct(errorConstructor, 1, &argument)));
}

void ESContext::throwError(const QString& text)
{
    throwException(m_realm.constructor(ESRealm::Error), text);
}

void ESContext::throwTypeError(const QString& text)
{
    throwException(m_realm.constructor(ESRealm::TypeError), text);
}

void ESContext::throwRangeError(const QString& text)
{
    throwException(m_realm.constructor(ESRealm::RangeError), text);
}

void ESContext::throwSyntaxError(int line, const QString& text)
{
    // The line is the parser's, whatever script asked for the compilation.
    m_errorLine = line;
    int frames = std::exchange(m_frameCount, 0);
    try {
        throwException(m_realm.constructor(ESRealm::SyntaxError), text);
    } catch (...) {
        m_frameCount = frames;
        throw;
    }
}

bool ESContext::iserrorobj(const ESValue& v) const
{
    return v.isObject() && isPrototypeOf(m_realm.prototype(ESRealm::Error), v);
}

// Objects.

ESObject* ESContext::mkobj(ESObject* prototype, ESClass* cls)
{
    bool array = cls && cls->access() == ESClass::Access::Array;
    return m_heap.make(array ? ESObject::Array : ESObject::Plain, prototype, cls);
}

ESObject* ESContext::mkobj(ESObject* prototype, ESClass* cls, const ESValue& internal)
{
    ESObject* object = m_heap.make(ESObject::Boxed, prototype, cls);
    object->setInternal(internal);
    return object;
}

ESNativeFunctionObject* ESContext::mknative(ESObject* prototype, ESClass* cls, ESHandler handler,
                                            int formalCount)
{
    auto* function = static_cast<ESNativeFunctionObject*>(m_heap.make(ESObject::Native, prototype, cls));
    function->handler = handler;
    function->formalCount = formalCount;
    return function;
}

ESObject* ESContext::mkfunction(ESCode* code, ESScope* scope)
{
    auto* function =
        static_cast<ESFunctionObject*>(m_heap.make(ESObject::Function, functionPrototype(), functionClass()));
    function->code = code;
    function->scope = scope;
    for (; scope && !scope->captured; scope = scope->next)
        scope->captured = true;
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

ESArray* ESContext::newArray(int length, const ESValue* values)
{
    auto* array = static_cast<ESArray*>(m_heap.make(ESObject::Array, arrayPrototype(), arrayClass()));
    array->append(g_lengthString, ESProperty::DontEnum, ESValue(double(length)));
    array->fill(std::span(values, size_t(length)));
    return array;
}

void ESContext::valinstant(ESObject* object, unsigned attributes, ESString* name, const ESValue& value)
{
    put(object, name, value);
    ESArray* array = object->array();
    if (array && attributes && name->arrayIndex() >= 0 && array->at(unsigned(name->arrayIndex())))
        object->define(name, attributes, value);
    else if (ESProperty* slot = object->find(name))
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

// What the conversions ask for.

ESContext::Method ESContext::callMethod(ESObject* object, ESString* name, ESValue* result)
{
    ESValue method = get(object, name);
    if (!method.isObject() || !method.object()->isCallable())
        return Method::Missing;
    call(method.object(), object, 0, nullptr, result);
    return m_stopped ? Method::Stopped : Method::Called;
}

ESObject* ESContext::wrap(const ESValue& primitive)
{
    ESRealm::Kind kind = primitive.isBoolean()  ? ESRealm::Boolean
                         : primitive.isNumber() ? ESRealm::Number
                                                : ESRealm::String;
    return mkobj(m_realm.prototype(kind), m_realm.cls(kind), primitive);
}

bool ESContext::prefersText(const ESObject* object) const
{
    return object->cls == m_realm.cls(ESRealm::Date);
}
