// The kinds of objects that one context has: the class and the prototype of each, and the constructors of
// its errors. The engine knows the kinds; what they can do is put in from above, by ESLibrary::mkexec.
#pragma once

#include "script/engine/ESClass.h"

#include <array>
#include <cassert>
#include <memory>
#include <utility>

struct ESObject;

class ESRealm {
public:
    // In the order in which they are installed.
    enum Kind {
        Object,
        Boolean,
        Array,
        Global,
        Error,
        RangeError,
        ReferenceError,
        SyntaxError,
        TypeError,
        EvalError,
        Number,
        Math,
        String,
        Function,
        Date,
        KindCount
    };

    // Takes the class of a kind over.
    void adopt(Kind kind, std::unique_ptr<ESClass> cls) { m_kinds[kind].cls = std::move(cls); }
    void setPrototype(Kind kind, ESObject* prototype) { m_kinds[kind].prototype = prototype; }
    void setConstructor(Kind kind, ESObject* constructor) { m_kinds[kind].constructor = constructor; }

    ESClass* cls(Kind kind) const
    {
        assert(m_kinds[kind].cls && "the kind's class was never adopted");
        return m_kinds[kind].cls.get();
    }
    // Of `Math` and the global object there is none.
    ESObject* prototype(Kind kind) const { return m_kinds[kind].prototype; }
    // Of an error kind.
    ESObject* constructor(Kind kind) const { return m_kinds[kind].constructor; }

private:
    struct Member {
        std::unique_ptr<ESClass> cls;
        ESObject* prototype = nullptr;
        ESObject* constructor = nullptr;
    };
    std::array<Member, KindCount> m_kinds;
};
