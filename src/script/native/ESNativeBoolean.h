// The constructor `Boolean` and its wrapper objects.
#pragma once

#include "script/native/ESNative.h"

class ESNativeBoolean : public ESNative {
public:
    ESNativeBoolean() : ESNative("Boolean") {}
    void install(ESContext* context) override;
    ESObject* construct(ESContext* context, ESObject* function, int argc, ESValue* argv) override;
};
