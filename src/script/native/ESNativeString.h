// The constructor `String` and its wrapper objects.
#pragma once

#include "script/native/ESNative.h"

class ESNativeString : public ESNative {
public:
    ESNativeString();
    void install(ESContext* context) override;
    // `length` is the number of UTF-16 units, and can't be changed.
    ESValue get(ESContext* context, ESObject* object, ESString* name) override;
    void put(ESContext* context, ESObject* object, ESString* name, const ESValue& value) override;
    void call(ESContext* context, ESObject* function, ESObject* self, int argc, ESValue* argv) override;
    ESObject* construct(ESContext* context, ESObject* function, int argc, ESValue* argv) override;

private:
    static ESValue fromCharCode(ESContext* context, int argc, const ESValue* argv);
    static ESValue match(ESContext* context, ESString* text, const ESValue& pattern);
    static ESValue replace(ESContext* context, const QString& text, const ESValue& pattern,
                           const ESValue& replacement);
    static ESValue split(ESContext* context, const QString& text, const ESValue& separator,
                         const ESValue& limit);
};
