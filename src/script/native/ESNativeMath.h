// The object `Math`.
#pragma once

#include "script/engine/ESContext.h"
#include "script/native/ESNative.h"

class ESNativeMath : public ESNative {
public:
    ESNativeMath() : ESNative("Math") {}
    void install(ESContext* context) override;
};
