// The constructor `Boolean` and its wrapper objects.
#pragma once

#include "script/native/ESNative.h"

class ESNativeBoolean : public ESNative {
public:
    ESNativeBoolean();
    void install(ESContext* context) override;
    void call(ESContext* context, ESObject* function, ESObject* self, int argc, ESValue* argv) override;
    ESObject* construct(ESContext* context, ESObject* function, int argc, ESValue* argv) override;
};
