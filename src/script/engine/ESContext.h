// One script world: its objects, its global names, and the machine that runs code in it. Make one, have
// ESLibrary fill it, install host objects, then eval source texts; all of them share the global object.
//
//     ESContext context;
//     ESLibrary::mkexec(nullptr, &context);
//     ESCompletion result = context.eval("1 + 2");
//
// A context belongs to one thread. Nothing that a script made is freed before the context is.
#pragma once

#include "script/engine/ESClass.h"
#include "script/engine/ESConversions.h"
#include "script/engine/ESException.h"
#include "script/engine/ESHeap.h"
#include "script/engine/ESObject.h"
#include "script/engine/ESRealm.h"
#include "script/engine/ESStringPool.h"
#include "script/engine/ESValue.h"
#include "script/engine/limits.h"

#include <QString>
#include <memory>
#include <set>
#include <tuple>
#include <vector>

class ESCode;
class ESMarker;
struct ESFrame;

// What came of an eval: a normal end with the value of the last statement, or a thrown value.
struct ESCompletion {
    enum Type { Normal = 0, Thrown = 4 };
    Type type = Normal;
    ESValue value;
    QString text; // of a thrown Error its message, of another thrown value its text
};

// Something in a source that is accepted and yet surely not what its author meant.
struct ESWarning {
    QString file; // as given to eval
    int line;
    QString text;
    bool operator==(const ESWarning&) const = default;
    bool operator<(const ESWarning& other) const
    {
        return std::tie(line, file, text) < std::tie(other.line, other.file, other.text);
    }
};

// The class of the objects that hold a function's variables.
class ESActivation : public ESClass {
public:
    ESActivation() : ESClass("activation", Access::Plain) {}
};

class ESContext : public ESConversions {
public:
    // How often carryOnExecuting is asked. A plain ESContext always goes on and is never asked.
    enum class Ask {
        EachInstruction, // before every instruction
        NowAndThen       // every ESLimits::HookStride jumps and calls; costs next to nothing
    };
    explicit ESContext(Ask ask = Ask::EachInstruction);
    virtual ~ESContext();
    ESContext(const ESContext&) = delete;
    ESContext& operator=(const ESContext&) = delete;

    // Makes the stack, the prototypes and, for null, a global object. The realm has the classes already, and
    // they put their members in afterwards.
    void begin(ESObject* global);

    // False ends all running code at once; the eval then completes normally, and stopped() tells.
    virtual bool carryOnExecuting();
    bool stopped() const { return m_stopped; }
    // For natives that loop over a length: asks as the machine does.
    bool keepGoing();

    // Compiles and runs one source text. Script exceptions become a completion; ESFatalError and
    // whatever host calls throw pass through. In every case the machine's state is afterwards what it was
    // before. The file name is for warnings only.
    ESCompletion eval(const QString& source, const QString& file = QString());
    // An eval on behalf of a native function that holds no values of its own meanwhile.
    ESCompletion evalInside(const QString& source, const QString& file = QString());
    // Runs code at top level and returns its value.
    ESValue exec(ESCode* code);
    // The warnings of all compilations since the last call, but for those that it had already.
    std::vector<ESWarning> takeWarnings();
    void addWarning(int line, const QString& text);

    // The instruction loop, for code whose frame is the newest one; the result is in A.
    void estmt(ESCode* code);

    // Calls a function object. The first form takes the top `argc` stack values for arguments, removes
    // them, and leaves the result in accumulator(); the second is for native callers.
    void call(ESObject* function, ESObject* self, int argc);
    void call(ESObject* function, ESObject* self, int argc, const ESValue* argv, ESValue* result);
    ESObject* construct(ESObject* function, int argc, const ESValue* argv);
    const ESValue& accumulator() const { return m_A; }

    // Throws ESException with a new object of the given error constructor, whose message is
    // "line N: TEXT" with the line of the instruction being run.
    [[noreturn]] void throwException(ESObject* errorConstructor, const QString& text);
    [[noreturn]] void throwError(const QString& text);
    [[noreturn]] void throwTypeError(const QString& text);
    [[noreturn]] void throwRangeError(const QString& text);
    [[noreturn]] void throwSyntaxError(int line, const QString& text);
    int errorLine() const;

    // Objects of this context's heap.
    ESObject* mkobj() { return m_heap.make(ESObject::Plain, nullptr, nullptr); }
    ESObject* mkobj(ESObject* prototype, ESClass* cls);
    ESObject* mkobj(ESObject* prototype, ESClass* cls, const ESValue& internal);
    ESObject* mkplain() { return m_heap.make(ESObject::Plain, objectPrototype(), objectClass()); }
    // A native function; the class gets its calls where there is no handler.
    ESNativeFunctionObject* mknative(ESObject* prototype, ESClass* cls, ESHandler handler, int formalCount);
    // A function object with its own `prototype` object.
    ESObject* mkfunction(ESCode* code, ESScope* scope);
    ESObject* newObject(ESObject* function, int argc, const ESValue* argv);
    ESArray* newArray(int length, const ESValue* values);

    // Make a property with the object's own `put` and give it the attributes.
    void valinstant(ESObject* object, unsigned attributes, ESString* name, const ESValue& value);
    void varinstant(ESObject* object, unsigned attributes, ESString* name, const ESValue& value);
    void fvarinstant(ESObject* object, unsigned attributes, ESString* name, ESObject* function);

    // Property access through the object's class.
    ESValue get(ESObject* object, ESString* name)
    {
        return object->is(ESObject::OwnAccess) ? object->cls->get(this, object, name)
                                               : plainGet(object, name);
    }
    void put(ESObject* object, ESString* name, const ESValue& value)
    {
        if (object->is(ESObject::OwnPut))
            object->cls->put(this, object, name, value);
        else
            plainPut(object, name, value);
    }
    ESValue getIndex(ESObject* object, unsigned index)
    {
        if (ESArray* array = object->array())
            if (ESValue* element = array->at(index))
                return *element;
        return object->is(ESObject::OwnAccess) ? getOwnIndex(object, index)
                                               : indexGet(object, index, nullptr);
    }
    void putIndex(ESObject* object, unsigned index, const ESValue& value)
    {
        if (object->kind() == ESObject::Array && index < 2147483647)
            putElement(static_cast<ESArray*>(object), index, value, nullptr);
        else
            put(object, ESStringPool::number(index), value);
    }
    // What arrays do for an element: `length` stays above it. The name may be null.
    static void putElement(ESArray* array, unsigned index, const ESValue& value, ESString* name);
    // What ESClass does itself.
    static ESValue plainGet(ESObject* object, ESString* name)
    {
        if (name->arrayIndex() >= 0) [[unlikely]]
            return indexGet(object, unsigned(name->arrayIndex()), name);
        for (; object; object = object->prototype)
            if (ESProperty* slot = object->find(name))
                return slot->value();
        return g_undefined;
    }
    // Looks an index up along the prototypes. A null name is looked for when it is needed.
    static ESValue indexGet(ESObject* object, unsigned index, ESString* name);
    static void plainPut(ESObject* object, ESString* name, const ESValue& value);

    // Tests and changes past the object's class.
    static bool hasProperty(ESObject* object, ESString* name);
    static bool hasOwnProperty(ESObject* object, ESString* name);
    // For a text that need be no name.
    static bool hasOwnKey(ESObject* object, ESString* text);
    static bool propertyIsEnumerable(ESObject* object, ESString* name);
    static bool deleteProperty(ESObject* object, ESString* name);
    static bool deleteProperty(ESObject* object, unsigned index);
    static bool isPrototypeOf(ESObject* object, const ESValue& value);

    // Names along the scope chain, the global object last. dynamicGet returns the object that held it.
    ESObject* dynamicGet(ESString* name, ESValue& value);
    void dynamicPut(ESString* name, const ESValue& value);
    bool dynamicDelete(ESString* name);

    // Arrays for host code. The to... forms raise "array argument expected" for another value.
    ESObject* fromByteArray(const unsigned char* data, unsigned count);
    ESObject* fromUint16Array(const unsigned short* data, unsigned count);
    ESObject* fromUint32Array(const unsigned long* data, unsigned count);
    ESObject* fromWordArray(const unsigned* data, unsigned count);
    std::unique_ptr<unsigned char[]> toByteArray(const ESValue& value, unsigned& count);
    std::unique_ptr<unsigned short[]> toUint16Array(const ESValue& value, unsigned& count);
    std::unique_ptr<unsigned long[]> toUint32Array(const ESValue& value, unsigned& count);
    std::unique_ptr<unsigned[]> toWordArray(const ESValue& value, unsigned& count);

    bool isarray(const ESValue& v) const { return isOf(v, ESRealm::Array); }
    bool isstrobj(const ESValue& v) const { return isOf(v, ESRealm::String); }
    bool isnumobj(const ESValue& v) const { return isOf(v, ESRealm::Number); }
    bool isboolobj(const ESValue& v) const { return isOf(v, ESRealm::Boolean); }
    bool isdateobj(const ESValue& v) const { return isOf(v, ESRealm::Date); }
    // An object of Error or one of its kinds.
    bool iserrorobj(const ESValue& v) const;

    ESRealm& realm() { return m_realm; }
    ESHeap& heap() { return m_heap; }
    // What the context's objects may take together with all strings; ESLimits::MemoryBytes if nothing is set.
    // Beyond that a script ends in ESFatalError "out of memory".
    void setMemoryLimit(size_t bytes);
    // For the collector: marks what the context leads to; and asks at the next jump or call of a script.
    void mark(ESMarker& marker);
    void hurry() { m_budget = 0; }
    ESObject* globalObject() const { return m_global; }
    ESObject* objectPrototype() const { return m_realm.prototype(ESRealm::Object); }
    ESObject* functionPrototype() const { return m_realm.prototype(ESRealm::Function); }
    ESObject* stringPrototype() const { return m_realm.prototype(ESRealm::String); }
    ESObject* numberPrototype() const { return m_realm.prototype(ESRealm::Number); }
    ESObject* booleanPrototype() const { return m_realm.prototype(ESRealm::Boolean); }
    ESObject* arrayPrototype() const { return m_realm.prototype(ESRealm::Array); }
    ESObject* datePrototype() const { return m_realm.prototype(ESRealm::Date); }
    ESClass* objectClass() const { return m_realm.cls(ESRealm::Object); }
    ESClass* functionClass() const { return m_realm.cls(ESRealm::Function); }
    ESClass* arrayClass() const { return m_realm.cls(ESRealm::Array); }

    // All functions ever compiled, for the whole process; CLOSURE carries the index.
    static int registerFunctionCode(std::unique_ptr<ESCode> code);
    static ESCode* functionCode(int index);
    // Frees it, for a process that goes through many contexts. No context may be alive.
    static void forgetFunctionCode();

protected:
    Method callMethod(ESObject* object, ESString* name, ESValue* result) override;
    ESObject* wrap(const ESValue& primitive) override;
    bool isGlobal(const ESObject* object) const override { return object == m_global; }
    bool prefersText(const ESObject* object) const override;
    [[noreturn]] void typeError(const QString& text) override { throwTypeError(text); }

private:
    bool isOf(const ESValue& v, ESRealm::Kind kind) const
    {
        return v.isObject() && v.object()->cls == m_realm.cls(kind);
    }
    struct StateGuard;
    struct Run;
    void rest();
    struct NativeLevel;
    template <bool Strict> ESValue run();
    bool strict() const { return m_strict; }
    bool askToGoOn();
    ESValue abandon(int entry);
    void enter(ESObject* function, ESCode* code, ESScope* scope, ESObject* self, int argc, bool entry,
               ESObject* made = nullptr);
    void callNative(ESNativeFunctionObject* function, ESObject* self, int argc, ESValue* argv)
    {
        if (function->handler)
            argv[0] = function->handler({this, function, self, argc, argv});
        else
            function->cls->call(this, function, self, argc, argv);
    }
    ESObject* makeArguments(ESObject* function, const ESValue* argv, int argc);
    ESObject* receiver(const ESValue& value, ESObject* function);
    ESValue memberOf(const ESValue& value, ESString* name);
    void leaveScopes(ESScope* outside);
    void pushActivation(ESCode* code, const ESValue* argv, int argc);
    ESValue getOwnIndex(ESObject* object, unsigned index);
    void padArguments(int formalCount, int& argc);
    void checkSpace(int slots) const;
    ESObject* newInstance(ESObject* function);
    ESObject* enumerate(ESObject* object);
    ESValue getByKey(const ESValue& object, const ESValue& key);
    void putByKey(const ESValue& object, const ESValue& key, const ESValue& value);
    bool deleteByKey(ESObject* object, const ESValue& key);
    ESValue incrementMember(const ESValue& object, const ESValue& key, int delta, bool post);
    ESValue incrementDynamic(ESString* name, int delta, bool post);
    ESObject* callee(const ESValue& value);
    template <typename Out> std::unique_ptr<Out[]> toBuffer(const ESValue& value, unsigned& count);
    template <typename In> ESObject* fromBuffer(const In* data, unsigned count);

    ESHeap m_heap;
    ESRealm m_realm;
    ESValue m_A;
    std::unique_ptr<ESValue[]> m_stack;
    ESValue* m_sp = nullptr;    // next free slot
    ESValue* m_limit = nullptr; // behind the last usable slot
    ESScope* m_scope = nullptr;
    ESObject* m_global = nullptr;
    // Receivers for native methods of strings and numbers that are called on a primitive.
    ESObject* m_stringReceiver = nullptr;
    ESObject* m_numberReceiver = nullptr;
    ESObject* m_self = nullptr;

    // Frames of the running functions, oldest first; a frame's first slot is that of its arguments.
    std::unique_ptr<ESFrame[]> m_frames;
    int m_frameCount = 0;
    int m_nativeLevel = 0;
    bool m_evalInside = false;
    int m_budget = ESLimits::HookStride;
    Ask m_ask;
    bool m_strict = false; // asked before every instruction; a plain context never is
    bool m_stopped = false;
    int m_evalDepth = 0;
    int m_errorLine = 0; // of the last compile error; a running frame knows its own

    // Variables of a function that are reached by name live in an object of this class.
    ESActivation m_activationClass;

    QString m_sourceFile;
    std::vector<ESWarning> m_warnings; // not taken yet
    std::set<ESWarning> m_warned;
};
