// The constructor `Function`, which compiles text, and the class of all script functions.
#pragma once

#include "script/engine/ESContext.h"
#include "script/engine/ESObject.h"
#include "script/engine/ESValue.h"
#include "script/native/ESNative.h"

class ESNativeFunction : public ESNative {
public:
    ESNativeFunction() : ESNative("Function") {}
    void install(ESContext* context) override;
    ESObject* construct(ESContext* context, ESObject* function, int argc, ESValue* argv) override;
};
