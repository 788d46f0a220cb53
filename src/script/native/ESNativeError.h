// The constructor `Error`, and its kinds.
#pragma once

#include "script/native/ESNative.h"

class ESNativeError : public ESNative {
public:
    ESNativeError() : ESNativeError("Error") {}
    void install(ESContext* context) override;
    void call(ESContext* context, ESObject* function, ESObject* self, int argc, ESValue* argv) override;
    ESObject* construct(ESContext* context, ESObject* function, int argc, ESValue* argv) override;

    // The members `name` and `message` of the prototype.
    virtual void installFunctions(ESContext* context);

    // The constructor, and the prototype of what it makes.
    ESObject* object() const { return m_object; }
    ESObject* prototype() const { return m_prototype; }

protected:
    explicit ESNativeError(const char* kind) : ESNative(kind) {}

private:
    ESObject* m_object = nullptr;
    ESObject* m_prototype = nullptr;
};

#define ES_ERROR_KIND(kind)                                                                                  \
    class ESNative##kind : public ESNativeError {                                                            \
    public:                                                                                                  \
        ESNative##kind() : ESNativeError(#kind) {}                                                           \
    };
ES_ERROR_KIND(EvalError)
ES_ERROR_KIND(RangeError)
ES_ERROR_KIND(ReferenceError)
ES_ERROR_KIND(SyntaxError)
ES_ERROR_KIND(TypeError)
#undef ES_ERROR_KIND
