// Base of the classes that every context has: each puts its objects and functions in from a table of rows
// with handlers. A row without a handler throws Error "bad signature in builtin call" when it is called.
#pragma once

#include "script/engine/ESClass.h"
#include "script/engine/ESContext.h"
#include "script/engine/ESObject.h"
#include "script/engine/ESValue.h"
#include "script/native/Builtin.h"

class ESNative : public ESClass {
public:
    // Puts the class's objects and functions into the context.
    virtual void install(ESContext* context) = 0;

    void call(ESContext* context, ESObject* function, ESObject* self, int argc, ESValue* argv) override;
    ESObject* construct(ESContext* context, ESObject* function, int argc, ESValue* argv) override;

protected:
    explicit ESNative(const char* className, Access access = Access::Plain) : ESClass(className, access) {}

    // A row of a constructor, whose calls without `new` go to the handler; and one of a member.
    static constexpr Builtin constructorRow(const char* name, int argumentCount, ESHandler handler)
    {
        return {name, name, argumentCount, true, 0, handler};
    }
    static constexpr Builtin row(const char* name, const char* fullName, int argumentCount, ESHandler handler)
    {
        return {name, fullName, argumentCount, false, 1, handler};
    }

    // The members of a prototype: each row becomes a function of this class.
    template <size_t N> void installMembers(ESContext* context, ESObject* owner, const Builtin (&rows)[N])
    {
        owner->reserve(owner->slotCount() + uint32_t(N) + 2);
        for (const Builtin& row : rows)
            biinst(context, owner, row, context->functionPrototype(), this);
    }
    // A constructor as a global name.
    ESObject* installConstructor(ESContext* context, const Builtin& row, ESObject* prototype);
};
