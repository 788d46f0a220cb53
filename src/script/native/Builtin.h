// Rows of native functions, and what makes function objects of them. A host object is a plain object with
// one row for each of its functions:
//
//     ESObject* object = context->mkobj(context->objectPrototype(), context->objectClass());
//     context->valinstant(context->globalObject(), ESProperty::DontEnum, ESStringPool::intern("Lamp"),
//                         object);
//     biinst(context, object, {"on", "Lamp.prototype.on", 1, false, 0, turnOn}, context->functionPrototype(),
//            this);
//
// A row's handler carries the call out; call.function->cls is the instance that was given last. A row without
// a handler has its calls arrive in `call` of that instance, with the row's id in function->builtinId().
#pragma once

#include "script/engine/ESClass.h"
#include "script/engine/ESContext.h"
#include "script/engine/ESObject.h"
#include "script/engine/ESValue.h"

struct Builtin {
    const char* name;     // as a property
    const char* fullName; // qualified: the function object's internal value
    int argumentCount;    // its `length`; a call with fewer finds undefined in the missing slots
    bool constructor;
    int id; // 0 and up
    ESHandler handler = nullptr;
};

// A function object as a DontEnum property of the owner. Returns the function.
ESObject* biinst(ESContext* context, ESObject* owner, const Builtin& row, ESObject* prototype, ESClass* cls);
// A constructor, linked with the prototype of what it constructs; no property of anything yet.
ESObject* mkbiobj(ESContext* context, const Builtin& row, ESObject* prototype, ESClass* cls);

inline ESValue biarg(int argc, const ESValue* argv, unsigned index)
{
    return index < unsigned(argc) ? argv[index] : g_undefined;
}
