// The constructor `Error`, and its kinds.
#pragma once

#include "script/engine/ESContext.h"
#include "script/engine/ESObject.h"
#include "script/engine/ESRealm.h"
#include "script/engine/ESValue.h"
#include "script/native/ESNative.h"

class ESNativeError : public ESNative {
public:
    ESNativeError() : ESNativeError("Error", ESRealm::Error) {}
    void install(ESContext* context) override;
    ESObject* construct(ESContext* context, ESObject* function, int argc, ESValue* argv) override;

    // The members `name` and `message` of the prototype.
    virtual void installFunctions(ESContext* context);

    // The constructor, and the prototype of what it makes.
    ESObject* object() const { return m_object; }
    ESObject* prototype() const { return m_prototype; }

protected:
    ESNativeError(const char* name, ESRealm::Kind kind) : ESNative(name), m_kind(kind) {}

private:
    ESRealm::Kind m_kind;
    ESObject* m_object = nullptr;
    ESObject* m_prototype = nullptr;
};

#define ES_ERROR_KIND(kind)                                                                                  \
    class ESNative##kind : public ESNativeError {                                                            \
    public:                                                                                                  \
        ESNative##kind() : ESNativeError(#kind, ESRealm::kind) {}                                            \
    };
ES_ERROR_KIND(EvalError)
ES_ERROR_KIND(RangeError)
ES_ERROR_KIND(ReferenceError)
ES_ERROR_KIND(SyntaxError)
ES_ERROR_KIND(TypeError)
#undef ES_ERROR_KIND
