#include "script/native/ESLibrary.h"

#include "script/engine/ESObject.h"
#include "script/engine/ESRealm.h"
#include "script/native/ESNative.h"
#include "script/native/ESNativeArray.h"
#include "script/native/ESNativeBoolean.h"
#include "script/native/ESNativeDate.h"
#include "script/native/ESNativeError.h"
#include "script/native/ESNativeFunction.h"
#include "script/native/ESNativeGlobal.h"
#include "script/native/ESNativeMath.h"
#include "script/native/ESNativeNumber.h"
#include "script/native/ESNativeObject.h"
#include "script/native/ESNativeString.h"

namespace {

template <typename Class> std::unique_ptr<ESNative> make()
{
    return std::make_unique<Class>();
}

// In the order of installation, which is that of the global object's slots.
constexpr struct {
    ESRealm::Kind kind;
    std::unique_ptr<ESNative> (*make)();
} KindTable[] = {
    {ESRealm::Object, make<ESNativeObject>},
    {ESRealm::Boolean, make<ESNativeBoolean>},
    {ESRealm::Array, make<ESNativeArray>},
    {ESRealm::Global, make<ESNativeGlobal>},
    {ESRealm::Error, make<ESNativeError>},
    {ESRealm::RangeError, make<ESNativeRangeError>},
    {ESRealm::ReferenceError, make<ESNativeReferenceError>},
    {ESRealm::SyntaxError, make<ESNativeSyntaxError>},
    {ESRealm::TypeError, make<ESNativeTypeError>},
    {ESRealm::EvalError, make<ESNativeEvalError>},
    {ESRealm::Number, make<ESNativeNumber>},
    {ESRealm::Math, make<ESNativeMath>},
    {ESRealm::String, make<ESNativeString>},
    {ESRealm::Function, make<ESNativeFunction>},
    {ESRealm::Date, make<ESNativeDate>},
};
static_assert(std::size(KindTable) == ESRealm::KindCount);

} // namespace

void ESLibrary::mkexec(ESObject* global, ESContext* context)
{
    std::vector<ESNative*> natives;
    for (const auto& row : KindTable) {
        std::unique_ptr<ESNative> native = row.make();
        natives.push_back(native.get());
        context->realm().adopt(row.kind, std::move(native));
    }
    context->begin(global);
    for (ESNative* native : natives)
        native->install(context);
}
