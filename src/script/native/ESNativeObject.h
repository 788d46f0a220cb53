// The constructor `Object`, and the members that every object inherits.
#pragma once

#include "script/native/ESNative.h"

class ESNativeObject : public ESNative {
public:
    ESNativeObject();
    void install(ESContext* context) override;
    void call(ESContext* context, ESObject* function, ESObject* self, int argc, ESValue* argv) override;
    ESObject* construct(ESContext* context, ESObject* function, int argc, ESValue* argv) override;
};
