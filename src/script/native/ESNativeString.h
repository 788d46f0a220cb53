// The constructor `String` and its wrapper objects.
#pragma once

#include "script/engine/ESContext.h"
#include "script/engine/ESObject.h"
#include "script/engine/ESString.h"
#include "script/engine/ESValue.h"
#include "script/native/ESNative.h"

class ESNativeString : public ESNative {
public:
    ESNativeString() : ESNative("String", Access::Own) {}
    void install(ESContext* context) override;
    // `length` is the number of UTF-16 units, and can't be changed.
    ESValue get(ESContext* context, ESObject* object, ESString* name) override;
    void put(ESContext* context, ESObject* object, ESString* name, const ESValue& value) override;
    ESObject* construct(ESContext* context, ESObject* function, int argc, ESValue* argv) override;
};
