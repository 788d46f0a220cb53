// The constructor `Function`, which compiles text, and the class of all script functions.
#pragma once

#include "script/native/ESNative.h"

class ESNativeFunction : public ESNative {
public:
    ESNativeFunction();
    void install(ESContext* context) override;
    void call(ESContext* context, ESObject* function, ESObject* self, int argc, ESValue* argv) override;
    ESObject* construct(ESContext* context, ESObject* function, int argc, ESValue* argv) override;

private:
    ESObject* compile(ESContext* context, int argc, const ESValue* argv);
};
