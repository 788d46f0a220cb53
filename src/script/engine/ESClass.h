// The behaviour of a kind of objects. Each script function of a host class is an object whose class pointer
// leads to the host's instance; its row (see Builtin.h) has the handler of the call, or else `call` is
// overridden and selects the operation by the function's builtin id. The instance must outlive the contexts
// that it is installed in.
#pragma once

#include "script/engine/ESValue.h"

#include <cstdint>

class ESContext;
struct ESObject;
class ESString;

// One call of a native function.
struct ESCall {
    ESContext* context;
    ESObject* function;
    ESObject* self;
    int argc;
    ESValue* argv; // argv[0] exists even when argc is 0

    // The argument at an index, or undefined past the end.
    ESValue argument(int index) const { return index < argc ? argv[index] : g_undefined; }
};
// Carries out a native function and returns its result.
using ESHandler = ESValue (*)(const ESCall& call);

class ESClass {
public:
    explicit ESClass(const char* className) : m_className(className) {}
    virtual ~ESClass();
    ESClass(const ESClass&) = delete;
    ESClass& operator=(const ESClass&) = delete;

    // What Object.prototype.toString puts between "[object " and "]".
    const char* className() const { return m_className; }

    // The first property of that name on the object or its prototype chain, else undefined.
    virtual ESValue get(ESContext*, ESObject*, ESString* name);
    // Changes or adds an own property; a ReadOnly one is left as it is, without an error.
    virtual void put(ESContext*, ESObject*, ESString* name, const ESValue&);

    virtual bool canPut(ESContext*, ESObject*, ESString* name);
    virtual bool hasProperty(ESContext*, ESObject*, ESString* name);
    virtual bool deleteProperty(ESContext*, ESObject*, ESString* name);
    virtual void defaultValue(ESContext*, ESObject*, int hint, ESValue* result);

    // Carries out a native function whose row has no handler. The result goes to argv[0], which exists even
    // when argc is 0; arguments are read before it is written.
    virtual void call(ESContext*, ESObject* function, ESObject* self, int argc, ESValue* argv);
    // The object that `new function(...)` makes, or null to have a plain one made and `call`ed.
    virtual ESObject* construct(ESContext*, ESObject* function, int argc, ESValue* argv);

    // Which of get and put the machine may do itself, without a virtual call.
    enum class Access : uint8_t { Plain, Array, Own };
    Access access() const { return m_access; }

protected:
    ESClass(const char* className, Access access) : m_className(className), m_access(access) {}
    // The text must live as long as the class.
    void setClassName(const char* className) { m_className = className; }

private:
    const char* m_className;
    Access m_access = Access::Own;
};
