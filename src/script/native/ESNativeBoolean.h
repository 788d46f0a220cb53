// The constructor `Boolean` and its wrapper objects.
#pragma once

#include "script/engine/ESContext.h"
#include "script/engine/ESObject.h"
#include "script/engine/ESValue.h"
#include "script/native/ESNative.h"

class ESNativeBoolean : public ESNative {
public:
    ESNativeBoolean() : ESNative("Boolean") {}
    void install(ESContext* context) override;
    ESObject* construct(ESContext* context, ESObject* function, int argc, ESValue* argv) override;
};
