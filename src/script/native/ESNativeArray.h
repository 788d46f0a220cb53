// The constructor `Array` and its objects, which keep their `length` above all indices.
#pragma once

#include "script/engine/ESClass.h"
#include "script/engine/ESContext.h"
#include "script/engine/ESObject.h"
#include "script/engine/ESString.h"
#include "script/engine/ESValue.h"
#include "script/native/ESNative.h"

class ESNativeArray : public ESNative {
public:
    ESNativeArray();
    void install(ESContext* context) override;
    void put(ESContext* context, ESObject* array, ESString* name, const ESValue& value) override;
    ESObject* construct(ESContext* context, ESObject* function, int argc, ESValue* argv) override;

    // Stores by index; undefined deletes the element instead.
    static void arrayPut(ESContext* context, ESObject* array, unsigned index, const ESValue& value);
    // The elements as text. Throws ESFatalError "string too long".
    static QString join(ESContext* context, ESObject* array, const QString& separator);

private:
    static void setLength(ESContext* context, ESObject* array, const ESValue& value);
    static ESObject* make(ESContext* context, int argc, const ESValue* argv);
    static ESValue toString(const ESCall& call);
    static ESValue concat(const ESCall& call);
    static ESValue pop(const ESCall& call);
    static ESValue push(const ESCall& call);
    static ESValue reverse(const ESCall& call);
    static ESValue shift(const ESCall& call);
    static ESValue slice(const ESCall& call);
    static ESValue sort(const ESCall& call);
};
