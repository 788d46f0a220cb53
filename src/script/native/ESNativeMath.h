// The object `Math`.
#pragma once

#include "script/native/ESNative.h"

class ESNativeMath : public ESNative {
public:
    ESNativeMath();
    void install(ESContext* context) override;
    void call(ESContext* context, ESObject* function, ESObject* self, int argc, ESValue* argv) override;
};
