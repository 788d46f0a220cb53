// Base of the classes that every context has. A function id that a class does not know is answered with
// an Error.
#pragma once

#include "script/native/Builtin.h"

class ESNative : public ESClass {
public:
    // Puts the class's objects and functions into the context.
    virtual void install(ESContext* context) = 0;

    void call(ESContext* context, ESObject* function, ESObject* self, int argc, ESValue* argv) override;
    ESObject* construct(ESContext* context, ESObject* function, int argc, ESValue* argv) override;

protected:
    explicit ESNative(const char* className, Access access = Access::Plain) : ESClass(className, access) {}

    [[noreturn]] static void badCall(ESContext* context);
    // The members of a prototype: each row becomes a function of this class.
    template <size_t N> void installMembers(ESContext* context, ESObject* owner, const Builtin (&rows)[N])
    {
        owner->properties.reserve(owner->properties.count() + uint32_t(N) + 2);
        for (const Builtin& row : rows)
            biinst(context, owner, row, context->functionPrototype(), this);
    }
    // A constructor as a global name.
    ESObject* installConstructor(ESContext* context, const Builtin& row, ESObject* prototype);
};
