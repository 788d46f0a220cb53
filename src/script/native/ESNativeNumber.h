// The constructor `Number` and its wrapper objects.
#pragma once

#include "script/native/ESNative.h"

class ESNativeNumber : public ESNative {
public:
    ESNativeNumber();
    void install(ESContext* context) override;
    void call(ESContext* context, ESObject* function, ESObject* self, int argc, ESValue* argv) override;
    ESObject* construct(ESContext* context, ESObject* function, int argc, ESValue* argv) override;

private:
    static QString toFixed(ESContext* context, const ESValue& number, const ESValue& digits);
};
