// The constructor `Array` and its objects, which keep their `length` above all indices.
#pragma once

#include "script/native/ESNative.h"

class ESNativeArray : public ESNative {
public:
    ESNativeArray();
    void install(ESContext* context) override;
    void put(ESContext* context, ESObject* array, ESString* name, const ESValue& value) override;
    void call(ESContext* context, ESObject* function, ESObject* self, int argc, ESValue* argv) override;
    ESObject* construct(ESContext* context, ESObject* function, int argc, ESValue* argv) override;

    // Stores by index; undefined deletes the element instead.
    static void arrayPut(ESContext* context, ESObject* array, unsigned index, const ESValue& value);
    // The elements as text. Throws ESFatalError "string too long".
    static QString join(ESContext* context, ESObject* array, const QString& separator);

private:
    static void setLength(ESContext* context, ESObject* array, const ESValue& value);
    ESObject* make(ESContext* context, int argc, const ESValue* argv);
    static ESValue concat(ESContext* context, ESObject* self, int argc, const ESValue* argv);
    static ESValue pop(ESContext* context, ESObject* self);
    static ESValue push(ESContext* context, ESObject* self, int argc, const ESValue* argv);
    static void reverse(ESContext* context, ESObject* self);
    static ESValue shift(ESContext* context, ESObject* self);
    static ESValue slice(ESContext* context, ESObject* self, const ESValue& start, const ESValue& end);
    static void sort(ESContext* context, ESObject* self, const ESValue& comparator);
};
