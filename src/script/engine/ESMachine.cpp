// The instruction loop. It runs the steps of ESThread; A, the stack pointer and the step pointer live in
// local variables, and are written back before anything that can call, throw or read the line. What is
// passed on by reference is a copy, ESValue(A), so that A itself can stay in registers.
#include "script/engine/ESCode.h"
#include "script/engine/ESCollector.h"
#include "script/engine/ESContext.h"
#include "script/engine/ESFrame.h"
#include "script/engine/ESSteps.h"
#include "script/engine/ESString.h"
#include "script/engine/ESThread.h"

#include <cassert>
#include <cmath>
#include <utility>

namespace {

// The own property, looked for first where this step found it the last time.
inline ESProperty* findCached(ESObject* object, ESString* name, uint32_t& cache)
{
    ESProperty* slots = object->slots();
    if (cache < object->slotCount() && slots[cache].nameIndex == uint32_t(name->index()))
        return slots + cache;
    if (!object->mayHave(name))
        return nullptr;
    ESProperty* found = object->search(name);
    if (found)
        cache = uint32_t(found - object->slots());
    return found;
}

inline bool truth(const ESValue& value)
{
    if (value.isBoolean())
        return value.bits();
    return value.isObject() || ESContext::toBoolean(ESValue(value));
}

// The element of an array at a key that is a whole number, or null when there is none.
inline ESValue* elementAt(ESObject* object, const ESValue& key)
{
    if (!key.isNumber() || !object->is(ESObject::Elements))
        return nullptr;
    auto* array = static_cast<ESArray*>(object);
    double number = key.number();
    // Out of range the conversion gives the lowest number, which is beyond the elements, too.
    auto index = uint64_t(int64_t(number));
    if (index >= array->count || double(index) != number)
        return nullptr;
    ESValue* element = array->elements + index;
    return element->type() != ESValue::Hole ? element : nullptr;
}

// The number of a case, or -1.
inline int smallKey(const ESValue& key)
{
    if (!key.isNumber())
        return -1;
    double number = key.number();
    if (!(number >= 0 && number < 65536))
        return -1;
    int index = int(number);
    return index == number ? index : -1;
}

inline double modulo(double left, double right)
{
    // Whole numbers divide much faster than fmod does; the sign is that of the left one, also of a zero.
    constexpr double Exact = 9007199254740992.0; // 2 to the 53
    double l = std::fabs(left);
    double r = std::fabs(right);
    if (l <= Exact && r >= 1 && r <= Exact) {
        auto dividend = uint64_t(l);
        auto divisor = uint64_t(r);
        if (double(dividend) == l && double(divisor) == r) {
            bool narrow = (dividend | divisor) >> 32 == 0;
            uint64_t rest = narrow ? uint32_t(dividend) % uint32_t(divisor) : dividend % divisor;
            return std::copysign(double(rest), left);
        }
    }
    return std::fmod(left, right);
}

} // namespace

// One run of a machine while it is going on. It is blind when a native function that another machine called
// has started it: what that native holds is not to be seen.
struct ESContext::Run {
    explicit Run(ESContext* context) : blind(!std::exchange(context->m_evalInside, false) && g_runs > 0)
    {
        ++g_runs;
        g_blindRuns += blind;
    }
    ~Run()
    {
        --g_runs;
        g_blindRuns -= blind;
    }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    bool blind;
    static inline int g_runs = 0;
    static inline int g_blindRuns = 0;
};

// Between two steps, with A and the stack pointer written back.
void ESContext::rest()
{
    if (ESCollector::wanted() && !Run::g_blindRuns)
        ESCollector::collect();
}

void ESContext::estmt(ESCode* code)
{
    assert(m_frameCount > 0 && m_frames[size_t(m_frameCount - 1)].code == code);
    Run running(this);
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
    const uint32_t lengthIndex = uint32_t(g_lengthString->index());
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
        if (--m_budget < 0) [[unlikely]]                                                                     \
            goto question;                                                                                   \
        DISPATCH();                                                                                          \
    } while (0)
#define SAVE() (frame->ip = ip, m_sp = sp)
#define PUSH(v) (*sp++ = A, A = (v))
#define POP() (A = *--sp)
#define REGISTER(n) registers[n]
#define GLOBAL(n) m_global->slots()[n]
#define ACTIVATION(n) m_scope->object->slots()[n]
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

question:
    SAVE();
    m_A = A;
    rest();
    if constexpr (Strict)
        m_budget = ESLimits::HookStride;
    else if (!askToGoOn())
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
    case ESValue::Object: A = A.object()->isCallable() ? g_functionString : g_objectString; break;
    default: A = g_stringString; break;
    }
    NEXT();

do_NEWOBJ:
    PUSH(ESValue(mkplain()));
    A.object()->reserve(uint32_t(ip->a));
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
    // The list of names that ENUM made; each is taken out.
    if (!A.isObject() || !A.object()->array())
        throw ESFatalError("tos isn't a property object");
    ESArray* names = A.object()->array();
    if (names->count) {
        A = names->elements[0];
        names->dropFirst();
        JUMP();
    }
    POP();
    NEXT();
}

do_WITH : {
    OBJECT(object, A);
    m_scope = m_heap.makeScope(m_scope, object);
    POP();
    NEXT();
}
do_ENDWITH:
    leaveScopes(m_scope->next);
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
    for (ESScope* cell = m_scope; cell; cell = cell->next) {
        ESObject* object = cell->object;
        if (object->prototype || object->is(ESObject::OwnPut))
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
    for (ESScope* cell = m_scope; cell; cell = cell->next) {
        ESObject* object = cell->object;
        if (object->prototype || object->is(ESObject::OwnPut))
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

// Members, elements and increments.

#define GET_NAMED(from_)                                                                                     \
    do {                                                                                                     \
        ESValue holder_ = (from_);                                                                           \
        if (holder_.isObject() && !holder_.object()->is(ESObject::OwnAccess)) [[likely]] {                   \
            ESObject* o_ = holder_.object();                                                                 \
            ESProperty* found_;                                                                              \
            do                                                                                               \
                found_ = findCached(o_, ip->u.name, ip->cache);                                              \
            while (!found_ && (o_ = o_->prototype));                                                         \
            A = found_ ? found_->value() : g_undefined;                                                      \
        } else {                                                                                             \
            SAVE();                                                                                          \
            A = memberOf(ESValue(holder_), ip->u.name);                                                      \
        }                                                                                                    \
    } while (0)

do_GETF:
    GET_NAMED(A);
    NEXT();
do_GETF_R:
    *sp++ = A;
    GET_NAMED(REGISTER(ip->c));
    NEXT();
do_GETF_T:
    *sp++ = A;
    GET_NAMED(ESValue(m_self));
    NEXT();

#define PUT_NAMED(into_, what_)                                                                              \
    do {                                                                                                     \
        ESObject* o_ = (into_);                                                                              \
        ESValue v_ = (what_);                                                                                \
        if (!o_->is(ESObject::OwnPut)) [[likely]] {                                                          \
            if (ESProperty* found_ = findCached(o_, ip->u.name, ip->cache)) {                                \
                if (!(found_->attributes & ESProperty::ReadOnly))                                            \
                    found_->setValue(v_);                                                                    \
            } else {                                                                                         \
                ip->cache = o_->append(ip->u.name, 0, ESValue(v_));                                          \
            }                                                                                                \
        } else {                                                                                             \
            SAVE();                                                                                          \
            o_->cls->put(this, o_, ip->u.name, ESValue(v_));                                                 \
        }                                                                                                    \
    } while (0)

do_PUTF : {
    OBJECT(object, A);
    PUT_NAMED(object, sp[-1]);
    sp -= 2;
    A = *sp;
    NEXT();
}
do_PUTF_R : {
    OBJECT(object, REGISTER(ip->c));
    PUT_NAMED(object, A);
    POP();
    NEXT();
}
do_PUTF_T:
    PUT_NAMED(m_self, A);
    POP();
    NEXT();

#define GET_ELEMENT(from_, at_)                                                                              \
    do {                                                                                                     \
        ESValue h_ = (from_);                                                                                \
        ESValue k_ = (at_);                                                                                  \
        ESValue* found_ = h_.isObject() ? elementAt(h_.object(), k_) : nullptr;                              \
        if (found_) {                                                                                        \
            A = *found_;                                                                                     \
        } else {                                                                                             \
            SAVE();                                                                                          \
            A = getByKey(ESValue(h_), ESValue(k_));                                                          \
        }                                                                                                    \
    } while (0)

do_GETX : {
    ESValue holder = *--sp;
    GET_ELEMENT(holder, A);
    NEXT();
}
do_GETX_R : {
    ESValue holder = A;
    GET_ELEMENT(holder, REGISTER(ip->c));
    NEXT();
}
do_GETX_RR:
    *sp++ = A;
    GET_ELEMENT(REGISTER(ip->a), REGISTER(ip->c));
    NEXT();

// An element that is there has been counted in `length`, if that is where arrays have it.
#define PUT_ELEMENT(into_, at_, what_)                                                                       \
    do {                                                                                                     \
        ESValue h_ = (into_);                                                                                \
        ESValue k_ = (at_);                                                                                  \
        ESValue v_ = (what_);                                                                                \
        ESValue* found_ = h_.isObject() ? elementAt(h_.object(), k_) : nullptr;                              \
        if (found_ && !v_.isUndefined() && h_.object()->slotCount() &&                                       \
            h_.object()->slots()[0].nameIndex == lengthIndex) {                                              \
            *found_ = v_;                                                                                    \
        } else {                                                                                             \
            SAVE();                                                                                          \
            putByKey(ESValue(h_), ESValue(k_), ESValue(v_));                                                 \
        }                                                                                                    \
    } while (0)

do_PUTX:
    PUT_ELEMENT(sp[-1], A, sp[-2]);
    sp -= 3;
    A = *sp;
    NEXT();
do_PUTX_RR:
    PUT_ELEMENT(REGISTER(ip->a), REGISTER(ip->c), A);
    POP();
    NEXT();

do_MEMBEROP : {
    ESValue holder = *--sp;
    ESValue right = *--sp;
    OBJECT(object, holder);
    SAVE();
    ESString* name = toName(ESValue(A));
    A = binary(ip->a, get(object, name), ESValue(right));
    put(object, name, ESValue(A));
    NEXT();
}

do_STEPX:
    SAVE();
    --sp;
    A = incrementMember(*sp, ESValue(A), ip->c, ip->b);
    NEXT();
do_STEPW:
    SAVE();
    A = incrementDynamic(A.string(), ip->c, ip->b);
    NEXT();

#define STEP_SLOT(slot)                                                                                      \
    do {                                                                                                     \
        ESValue old_ = (slot).value();                                                                       \
        if (!old_.isNumber()) [[unlikely]] {                                                                 \
            SAVE();                                                                                          \
            old_ = ESValue(ToNumber(ESValue(old_)));                                                         \
        }                                                                                                    \
        (slot).setValue(ESValue(old_.number() + ip->c));                                                     \
    } while (0)

do_STEP:
    SAVE();
    A = ESValue(ToNumber(ESValue(A)) + ip->c);
    NEXT();
do_STEPR:
    if (!REGISTER(ip->a).isNumber()) [[unlikely]] {
        SAVE();
        hardToNumber(REGISTER(ip->a));
    }
    REGISTER(ip->a) = ESValue(REGISTER(ip->a).number() + ip->c);
    NEXT();
do_STEPG:
    STEP_SLOT(GLOBAL(ip->a));
    NEXT();
do_STEPAM:
    STEP_SLOT(ACTIVATION(ip->a));
    NEXT();
do_STEPLM:
    STEP_SLOT(ACTIVATION(ip->a + frame->argc));
    NEXT();

do_DELETEW:
    *sp++ = A;
    A = ESValue::boolean(dynamicDelete(ip->u.name));
    NEXT();
do_DELETEX : {
    ESValue holder = *--sp;
    OBJECT(object, holder);
    SAVE();
    A = ESValue::boolean(deleteByKey(object, ESValue(A)));
    NEXT();
}

// The operators. Each is written once, as an expression of the numbers l and r, and expanded for all operand
// forms. Two numbers are handled on the spot; everything else goes to `binary`.

#define NUMBERS(op, left, right, expression, store)                                                          \
    do {                                                                                                     \
        ESValue left_ = (left);                                                                              \
        ESValue right_ = (right);                                                                            \
        ESValue result_;                                                                                     \
        if (left_.isNumber() && right_.isNumber()) [[likely]] {                                              \
            double l = left_.number();                                                                       \
            double r = right_.number();                                                                      \
            result_ = ESValue(double(expression));                                                           \
        } else {                                                                                             \
            SAVE();                                                                                          \
            result_ = binary(VM_##op, ESValue(left_), ESValue(right_));                                      \
        }                                                                                                    \
        store = result_;                                                                                     \
    } while (0)

#define ARITHMETIC(op, expression)                                                                           \
    do_##op##_S : NUMBERS(op, sp[-1], A, expression, A);                                                     \
    --sp;                                                                                                    \
    NEXT();                                                                                                  \
    do_##op##_R : NUMBERS(op, A, REGISTER(ip->a), expression, A);                                            \
    NEXT();                                                                                                  \
    do_##op##_K : NUMBERS(op, A, ESValue(ip->u.number), expression, A);                                      \
    NEXT();                                                                                                  \
    do_##op##_G : NUMBERS(op, A, GLOBAL(ip->a).value(), expression, A);                                      \
    NEXT();                                                                                                  \
    do_##op##_RR : * sp++ = A;                                                                               \
    NUMBERS(op, REGISTER(ip->a), REGISTER(ip->c), expression, A);                                            \
    NEXT();                                                                                                  \
    do_##op##_RK : * sp++ = A;                                                                               \
    NUMBERS(op, REGISTER(ip->a), ESValue(ip->u.number), expression, A);                                      \
    NEXT();                                                                                                  \
    do_##op##_RRP : NUMBERS(op, REGISTER(ip->a), REGISTER(ip->c), expression, REGISTER(ip->b));              \
    NEXT();                                                                                                  \
    do_##op##_RKP : NUMBERS(op, REGISTER(ip->a), ESValue(ip->u.number), expression, REGISTER(ip->b));        \
    NEXT();

    ARITHMETIC(ADD, l + r)
    ARITHMETIC(SUB, l - r)
    ARITHMETIC(MUL, l * r)
    ARITHMETIC(DIV, l / r)
    ARITHMETIC(MOD, modulo(l, r))
    ARITHMETIC(BITAND, toInt32(l) & toInt32(r))
    ARITHMETIC(BITOR, toInt32(l) | toInt32(r))
    ARITHMETIC(BITXOR, toInt32(l) ^ toInt32(r))
    ARITHMETIC(SHL, int32_t(toUint32(l) << (toUint32(r) & 31)))
    ARITHMETIC(SHR, toInt32(l) >> (toUint32(r) & 31))
    ARITHMETIC(USHR, toUint32(l) >> (toUint32(r) & 31))

    // Comparisons and the jump on their outcome. `otherwise` is the outcome for what is not two numbers.

#define TEST(left, right, expression, otherwise, drop)                                                       \
    do {                                                                                                     \
        ESValue left_ = (left);                                                                              \
        ESValue right_ = (right);                                                                            \
        bool outcome_;                                                                                       \
        if (left_.isNumber() && right_.isNumber()) [[likely]] {                                              \
            double l = left_.number();                                                                       \
            double r = right_.number();                                                                      \
            outcome_ = (expression);                                                                         \
        } else {                                                                                             \
            SAVE();                                                                                          \
            outcome_ = (otherwise);                                                                          \
        }                                                                                                    \
        drop;                                                                                                \
        if (outcome_)                                                                                        \
            JUMP();                                                                                          \
        NEXT();                                                                                              \
    } while (0)

#define NOTHING_DROPPED (void)0
#define COMPARE_JUMP(op, expression, otherwise)                                                              \
    do_##op##_S : TEST(sp[-1], A, expression, otherwise, (sp -= 2, A = *sp));                                \
    do_##op##_R : TEST(A, REGISTER(ip->c), expression, otherwise, POP());                                    \
    do_##op##_K : TEST(A, ESValue(ip->u.number), expression, otherwise, POP());                              \
    do_##op##_G : TEST(A, GLOBAL(ip->c).value(), expression, otherwise, POP());                              \
    do_##op##_RR : TEST(REGISTER(ip->b), REGISTER(ip->c), expression, otherwise, NOTHING_DROPPED);           \
    do_##op##_RK : TEST(REGISTER(ip->c), ESValue(ip->u.number), expression, otherwise, NOTHING_DROPPED);     \
    do_##op##_KR : TEST(ESValue(ip->u.number), REGISTER(ip->c), expression, otherwise, NOTHING_DROPPED);

    COMPARE_JUMP(JLT, l < r, less(ESValue(left_), ESValue(right_)))
    COMPARE_JUMP(JNLT, !(l < r), !less(ESValue(left_), ESValue(right_)))
    COMPARE_JUMP(JLE, l <= r, lessOrEqual(ESValue(left_), ESValue(right_)))
    COMPARE_JUMP(JNLE, !(l <= r), !lessOrEqual(ESValue(left_), ESValue(right_)))
    COMPARE_JUMP(JEQ, l == r, equal(ESValue(left_), ESValue(right_)))
    COMPARE_JUMP(JNEQ, l != r, !equal(ESValue(left_), ESValue(right_)))
    COMPARE_JUMP(JID, l == r, identical(ESValue(left_), ESValue(right_)))
    COMPARE_JUMP(JNID, l != r, !identical(ESValue(left_), ESValue(right_)))

#define COMPARE(op, outcome)                                                                                 \
    do_##op:                                                                                                 \
    {                                                                                                        \
        SAVE();                                                                                              \
        ESValue left = sp[-1];                                                                               \
        A = ESValue::boolean(outcome);                                                                       \
        --sp;                                                                                                \
        NEXT();                                                                                              \
    }

    COMPARE(LT, less(ESValue(left), ESValue(A)))
    COMPARE(LE, lessOrEqual(ESValue(left), ESValue(A)))
    COMPARE(EQ, equal(ESValue(left), ESValue(A)))
    COMPARE(NE, !equal(ESValue(left), ESValue(A)))
    COMPARE(IDENTITY, identical(ESValue(left), ESValue(A)))
    COMPARE(NONIDENTITY, !identical(ESValue(left), ESValue(A)))

do_LOGNOT:
    A = ESValue::boolean(!truth(A));
    NEXT();
do_BITNOT:
    SAVE();
    A = ESValue(double(~toInt32(ToNumber(ESValue(A)))));
    NEXT();
do_POS:
    SAVE();
    A = ESValue(ToNumber(ESValue(A)));
    NEXT();
do_NEG:
    SAVE();
    A = ESValue(-ToNumber(ESValue(A)));
    NEXT();

do_LOGAND:
    if (!truth(A))
        JUMP();
    POP();
    NEXT();
do_LOGOR:
    if (truth(A))
        JUMP();
    POP();
    NEXT();
do_J:
    JUMP();
do_JT : {
    bool taken = truth(A);
    POP();
    if (taken)
        JUMP();
    NEXT();
}
do_JF : {
    bool taken = !truth(A);
    POP();
    if (taken)
        JUMP();
    NEXT();
}
do_JT_R:
    if (truth(REGISTER(ip->c)))
        JUMP();
    NEXT();
do_JF_R:
    if (!truth(REGISTER(ip->c)))
        JUMP();
    NEXT();
do_JT_DROP:
    if (truth(A)) {
        sp -= 2;
        A = *sp;
        JUMP();
    }
    POP();
    NEXT();

do_CASE : {
    ESValue constant{ip->b, ip->u.bits};
    bool same = A.isNumber() ? constant.isNumber() && A.number() == constant.number()
                             : identical(ESValue(A), constant);
    if (same) {
        POP();
        JUMP();
    }
    NEXT();
}
do_SWITCH : {
    const std::vector<int32_t>& table = frame->thread->table(ip->c);
    int index = smallKey(A);
    if (index >= 0 && size_t(index) < table.size() && table[size_t(index)]) {
        POP();
        ip += table[size_t(index)];
    } else {
        ip += ip->a;
    }
    DISPATCH();
}

    // Calls and returns.

do_CALLW : {
    *sp++ = A;
    SAVE();
    ESValue value;
    ESObject* holder = dynamicGet(ip->u.name, value);
    if (holder->kind() == ESObject::Activation) [[unlikely]]
        static_cast<ESActivationObject*>(holder)->scope.captured = true;
    CALL(value, ip->a ? m_global : holder, ip->b);
}
do_CALLG:
    *sp++ = A;
    CALL(GLOBAL(ip->a).value(), m_global, ip->b);
do_CALLR:
    *sp++ = A;
    CALL(REGISTER(ip->a), m_global, ip->b);
do_CALLAM:
    *sp++ = A;
    CALL(ACTIVATION(ip->a).value(), m_global, ip->b);
do_CALLLM:
    *sp++ = A;
    CALL(ACTIVATION(ip->a + frame->argc).value(), m_global, ip->b);

do_CALLF_R:
    *sp++ = A;
    A = REGISTER(ip->c);
    goto do_CALLF;
do_CALLF_T:
    *sp++ = A;
    A = ESValue(m_self);
    goto do_CALLF;
do_CALLF : {
    ESValue holder = A;
    GET_NAMED(holder);
    if (holder.isObject()) [[likely]]
        CALL(A, holder.object(), ip->b);
    SAVE();
    CALL(A, receiver(ESValue(holder), A.isObject() ? A.object() : nullptr), ip->b);
}
do_CALLX : {
    ESValue holder = *--sp;
    GET_ELEMENT(holder, A);
    SAVE();
    CALL(A, receiver(ESValue(holder), A.isObject() ? A.object() : nullptr), ip->a);
}

do_NEW : {
    SAVE();
    if (!A.isObject() || !A.object()->isConstructor())
        throwTypeError(QStringLiteral("new must be given a constructor object"));
    ESObject* function = A.object();
    if (function->isNative()) {
        ESValue* argv = sp - ip->a;
        A = ESValue(construct(function, ip->a, argv));
        sp = argv;
        if (!Strict && m_stopped) [[unlikely]]
            goto stop;
        NEXT();
    }
    made = newInstance(function);
    CALL(A, made, ip->a);
}

call : {
    if (!callee.isObject() || !callee.object()->isCallable()) [[unlikely]] {
        SAVE();
        throwTypeError(QStringLiteral("not a function object"));
    }
    ESNativeFunctionObject* native = nativeFunction(callee.object());
    auto* function = static_cast<ESFunctionObject*>(callee.object());
    int formals = native ? native->formalCount : function->code->formalCount;
    if (argc < formals) {
        SAVE();
        checkSpace(formals - argc);
        for (; argc < formals; ++argc)
            *sp++ = g_undefined;
    }
    SAVE();
    if (native) {
        ESValue* argv = sp - argc;
        if (!argc)
            *sp = g_undefined;
        callNative(native, self, argc, argv);
        A = *argv;
        sp = argv;
        if (!Strict && m_stopped) [[unlikely]]
            goto stop;
        NEXT();
    }
    m_A = A;
    enter(function, function->code, function->scope, self, argc, false, made);
    made = nullptr;
    frame = &m_frames[size_t(m_frameCount - 1)];
    A = m_A;
    sp = m_sp;
    ip = frame->ip;
    registers = frame->registers;
    if (--m_budget < 0) [[unlikely]]
        goto question;
    DISPATCH();
}

do_RET_R:
    A = REGISTER(ip->a);
    goto leave;
do_RETU:
    A = g_undefined;
    goto leave;
do_RET:
    goto leave;

leave:
    sp = frame->base;
    if (m_scope != frame->scope)
        leaveScopes(frame->scope);
    m_scope = frame->callerScope;
    m_self = frame->callerSelf;
    if (frame->made) {
        frame->code->constructedProperties = frame->made->slotCount();
        if (!A.isObject())
            A = ESValue(frame->made);
    }
    --m_frameCount;
    if (frame->entry) {
        m_sp = sp;
        return A;
    }
    frame = &m_frames[size_t(m_frameCount - 1)];
    ip = frame->ip;
    registers = frame->registers;
    NEXT();

stop:
    return abandon(entry);
}

template ESValue ESContext::run<true>();
template ESValue ESContext::run<false>();
