// The instruction loop. It runs the steps of ESThread; A, the stack pointer and the step pointer live in
// local variables, and are written back before anything that can call, throw or read the line. What is
// passed on by reference is a copy, ESValue(A), so that A itself can stay in registers.
#include "script/engine/ESCode.h"
#include "script/engine/ESContext.h"
#include "script/engine/ESFrame.h"
#include "script/engine/ESThread.h"

#include <cassert>
#include <cmath>
#include <typeinfo>

namespace {

// The own property, looked for first where this step found it the last time.
inline ESProperty* findCached(ESObject* object, ESString* name, uint32_t& cache)
{
    ESProperty* data = object->properties.data();
    if (cache < object->properties.count() && data[cache].name == name)
        return data + cache;
    if (!(object->names & name->nameBit()))
        return nullptr;
    ESProperty* found = object->search(name);
    if (found)
        cache = uint32_t(found - data);
    return found;
}

inline bool truth(const ESValue& value)
{
    if (value.isBoolean())
        return value.bits();
    return value.isObject() || ESContext::toBoolean(ESValue(value));
}

// The number as a key below the table of number strings, or -1.
inline int smallKey(const ESValue& key)
{
    if (!key.isNumber())
        return -1;
    double number = key.number();
    if (!(number >= 0 && number < ESLimits::NumberStrings))
        return -1;
    int index = int(number);
    return index == number ? index : -1;
}

// An element of an array is most often one slot behind the one of its index, since `length` comes first.
inline ESProperty* elementSlot(ESObject* object, ESString* name, int index)
{
    uint32_t guess = uint32_t(index) + 1;
    if (guess < object->properties.count() && object->properties.data()[guess].name == name)
        return object->properties.data() + guess;
    return object->find(name);
}

inline double modulo(double left, double right)
{
    // Whole numbers of 32 bits divide much faster than fmod does; the sign of a -0 stays.
    if (left >= 0 && left <= 4294967295.0 && right >= 1 && right <= 4294967295.0) {
        uint32_t l = uint32_t(left);
        uint32_t r = uint32_t(right);
        if (l == left && r == right)
            return std::copysign(double(l % r), left);
    }
    return std::fmod(left, right);
}

} // namespace

bool ESContext::strict() const
{
    return m_ask == Ask::EachInstruction && typeid(*this) != typeid(ESContext);
}

void ESContext::estmt(ESCode* code)
{
    assert(m_frameCount > 0 && m_frames[size_t(m_frameCount - 1)].code == code);
    m_A = strict() ? run<true>() : run<false>();
}

template <bool Strict> ESValue ESContext::run()
{
#define ES_LABEL(name) &&do_##name,
    static const void* const labels[] = {ES_STEPS(ES_LABEL)};
#undef ES_LABEL

    const int entry = m_frameCount - 1;
    ESFrame* frame = &m_frames[size_t(entry)];
    ESStep* ip = frame->ip;
    ESValue* registers = frame->registers;
    ESValue* sp = m_sp;
    ESValue A = m_A;
    // The operands of a call on its way to `call`.
    ESValue callee;
    ESObject* self = nullptr;
    ESObject* made = nullptr;
    int argc = 0;

#define DISPATCH()                                                                                           \
    do {                                                                                                     \
        if constexpr (Strict) {                                                                              \
            frame->ip = ip;                                                                                  \
            if (!carryOnExecuting())                                                                         \
                goto stop;                                                                                   \
        }                                                                                                    \
        goto* labels[ip->op];                                                                                \
    } while (0)
#define NEXT()                                                                                               \
    do {                                                                                                     \
        ++ip;                                                                                                \
        DISPATCH();                                                                                          \
    } while (0)
#define JUMP()                                                                                               \
    do {                                                                                                     \
        ip += ip->a;                                                                                         \
        if constexpr (!Strict)                                                                               \
            if (--m_budget < 0) [[unlikely]]                                                                 \
                goto question;                                                                               \
        DISPATCH();                                                                                          \
    } while (0)
#define SAVE() (frame->ip = ip, m_sp = sp)
#define PUSH(v) (*sp++ = A, A = (v))
#define POP() (A = *--sp)
#define REGISTER(n) registers[n]
#define GLOBAL(n) m_global->properties.data()[n]
#define ACTIVATION(n) m_scope->value.object()->properties.data()[n]
#define CALL(fn_, self_, count_)                                                                             \
    do {                                                                                                     \
        callee = (fn_);                                                                                      \
        self = (self_);                                                                                      \
        argc = (count_);                                                                                     \
        goto call;                                                                                           \
    } while (0)
// The object that a member is looked up in; a primitive is converted.
#define OBJECT(var, v)                                                                                       \
    ESObject* var;                                                                                           \
    do {                                                                                                     \
        ESValue object_ = (v);                                                                               \
        if (object_.isObject()) [[likely]] {                                                                 \
            var = object_.object();                                                                          \
        } else {                                                                                             \
            SAVE();                                                                                          \
            var = ToObject(ESValue(object_));                                                                \
        }                                                                                                    \
    } while (0)

    DISPATCH();

    [[maybe_unused]] question : SAVE();
    if (!askToGoOn())
        goto stop;
    DISPATCH();

do_CONST:
    PUSH((ESValue{ip->b, ip->u.bits}));
    NEXT();
do_THIS:
    PUSH(ESValue(m_self));
    NEXT();
do_DROP:
    POP();
    NEXT();
do_DUP:
    *sp++ = A;
    NEXT();
do_VOID:
    A = g_undefined;
    NEXT();

do_TYPEOF:
    switch (A.type()) {
    case ESValue::Undefined: A = g_undefinedString; break;
    case ESValue::Null: A = g_objectString; break;
    case ESValue::Boolean: A = g_booleanString; break;
    case ESValue::Number: A = g_numberString; break;
    case ESValue::Object: A = A.object()->call ? g_functionString : g_objectString; break;
    default: A = g_stringString; break;
    }
    NEXT();

do_NEWOBJ:
    PUSH(ESValue(mkplain()));
    A.object()->properties.reserve(uint32_t(ip->a));
    NEXT();
do_CLOSURE:
    PUSH(ESValue(mkfunction(ip->u.code, m_scope)));
    NEXT();

do_INITF : {
    ESObject* object = (--sp)->object();
    object->define(ip->u.name, 0, ESValue(A));
    A = ESValue(object);
    NEXT();
}

do_MKARRAY : {
    *sp++ = A;
    sp -= ip->a;
    ESObject* array = newArray(ip->a, sp);
    A = ESValue(array);
    NEXT();
}

do_ENUM : {
    OBJECT(object, A);
    SAVE();
    A = ESValue(enumerate(object));
    NEXT();
}

do_NEXT : {
    if (!A.isObject())
        throw ESFatalError("tos isn't a property object");
    // The object is one that ENUM made: `index` and `length` come first, then the names.
    ESPropertyArray& names = A.object()->properties;
    double index = names[0].value().number();
    if (index < names[1].value().number()) {
        names[0].setValue(ESValue(index + 1));
        A = names[uint32_t(index) + 2].value();
        JUMP();
    }
    POP();
    NEXT();
}

do_WITH : {
    OBJECT(object, A);
    ESObject* cell = mkobj();
    cell->prototype = m_scope;
    cell->value = ESValue(object);
    m_scope = cell;
    POP();
    NEXT();
}
do_ENDWITH:
    m_scope = m_scope->prototype;
    NEXT();

    // Variables.

do_GETR:
    PUSH(REGISTER(ip->a));
    NEXT();
do_GETG:
    PUSH(GLOBAL(ip->a).value());
    NEXT();
do_GETAM:
    PUSH(ACTIVATION(ip->a).value());
    NEXT();
do_GETLM:
    PUSH(ACTIVATION(ip->a + frame->argc).value());
    NEXT();
do_PUTR:
    REGISTER(ip->a) = A;
    POP();
    NEXT();
do_PUTG:
    GLOBAL(ip->a).setValue(A);
    POP();
    NEXT();
do_PUTAM:
    ACTIVATION(ip->a).setValue(A);
    POP();
    NEXT();
do_PUTLM:
    ACTIVATION(ip->a + frame->argc).setValue(A);
    POP();
    NEXT();
do_STORER:
    REGISTER(ip->a) = A;
    NEXT();
do_STOREG:
    GLOBAL(ip->a).setValue(A);
    NEXT();
do_MOVE:
    REGISTER(ip->a) = REGISTER(ip->c);
    NEXT();
do_SETR:
    REGISTER(ip->a) = ESValue{ip->b, ip->u.bits};
    NEXT();

do_GETW : {
    *sp++ = A;
    for (ESObject* cell = m_scope; cell; cell = cell->prototype) {
        ESObject* object = cell->value.object();
        if (object->prototype || object->cls->access() != ESClass::Access::Plain)
            break;
        if (ESProperty* found = findCached(object, ip->u.name, ip->cache)) {
            A = found->value();
            NEXT();
        }
    }
    SAVE();
    ESValue value;
    dynamicGet(ip->u.name, value);
    A = value;
    NEXT();
}

do_PUTW : {
    for (ESObject* cell = m_scope; cell; cell = cell->prototype) {
        ESObject* object = cell->value.object();
        if (object->prototype || object->cls->access() != ESClass::Access::Plain)
            break;
        if (ESProperty* found = findCached(object, ip->u.name, ip->cache)) {
            if (!(found->attributes & ESProperty::ReadOnly))
                found->setValue(A);
            POP();
            NEXT();
        }
    }
    SAVE();
    dynamicPut(ip->u.name, ESValue(A));
    POP();
    NEXT();
}

#include "script/engine/ESMembers.inc"

#include "script/engine/ESArithmetic.inc"

#include "script/engine/ESInvocations.inc"

stop:
    return abandon(entry);
}

template ESValue ESContext::run<true>();
template ESValue ESContext::run<false>();
