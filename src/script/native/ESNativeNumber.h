// The constructor `Number` and its wrapper objects.
#pragma once

#include "script/native/ESNative.h"

class ESNativeNumber : public ESNative {
public:
    ESNativeNumber() : ESNative("Number") {}
    void install(ESContext* context) override;
    ESObject* construct(ESContext* context, ESObject* function, int argc, ESValue* argv) override;
};
