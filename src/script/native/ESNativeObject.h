// The constructor `Object`, and the members that every object inherits.
#pragma once

#include "script/engine/ESContext.h"
#include "script/engine/ESObject.h"
#include "script/engine/ESValue.h"
#include "script/native/ESNative.h"

class ESNativeObject : public ESNative {
public:
    ESNativeObject() : ESNative("Object") {}
    void install(ESContext* context) override;
    ESObject* construct(ESContext* context, ESObject* function, int argc, ESValue* argv) override;
};
