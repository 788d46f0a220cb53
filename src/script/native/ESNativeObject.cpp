#include "script/native/ESNativeObject.h"

namespace {

enum { Constructor, ToString, ToLocaleString, ValueOf, HasOwnProperty, IsPrototypeOf, PropertyIsEnumerable };

constexpr Builtin constructorRow = {"Object", "Object", 1, true, Constructor};
constexpr Builtin members[] = {
    {"toString", "Object.prototype.toString", 0, false, ToString},
    {"toLocaleString", "Object.prototype.toLocaleString", 0, false, ToLocaleString},
    {"valueOf", "Object.prototype.valueOf", 0, false, ValueOf},
    {"hasOwnProperty", "Object.prototype.hasOwnProperty", 1, false, HasOwnProperty},
    {"isPrototypeOf", "Object.prototype.isPrototypeOf", 1, false, IsPrototypeOf},
    {"propertyIsEnumerable", "Object.prototype.propertyIsEnumerable", 1, false, PropertyIsEnumerable},
};

} // namespace

ESNativeObject::ESNativeObject() : ESNative("Object") {}

void ESNativeObject::install(ESContext* context)
{
    installConstructor(context, constructorRow, context->objectPrototype());
    installMembers(context, context->objectPrototype(), members);
}

void ESNativeObject::call(ESContext* context, ESObject* function, ESObject* self, int argc, ESValue* argv)
{
    ESValue argument = biarg(argc, argv, 0);
    switch (function->builtinId) {
    case Constructor: argv[0] = ESValue(context->newObject(function, argc, argv)); return;
    case ToString:
    case ToLocaleString: {
        QString text = QStringLiteral("[object %1]").arg(QString::fromUtf8(self->cls->className()));
        argv[0] = ESValue(ESStringPool::intern(text));
        return;
    }
    case ValueOf: argv[0] = ESValue(self); return;
    case HasOwnProperty:
        argv[0] = ESValue::boolean(ESContext::hasOwnProperty(self, context->toEString(argument)));
        return;
    case IsPrototypeOf: argv[0] = ESValue::boolean(ESContext::isPrototypeOf(self, argument)); return;
    case PropertyIsEnumerable:
        argv[0] = ESValue::boolean(ESContext::propertyIsEnumerable(self, context->toEString(argument)));
        return;
    default: badCall(context);
    }
}

ESObject* ESNativeObject::construct(ESContext* context, ESObject* function, int argc, ESValue* argv)
{
    if (function->builtinId != Constructor)
        return ESNative::construct(context, function, argc, argv);
    return context->newObject(function, argc, argv);
}
