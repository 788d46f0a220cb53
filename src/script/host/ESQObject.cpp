#include "script/host/ESQObject.h"

#include "script/engine/ESContext.h"
#include "script/engine/ESObject.h"
#include "script/engine/ESStringPool.h"
#include "script/engine/ESValue.h"
#include "script/native/Builtin.h"
#include "support/HException.h"

#include <QMetaProperty>
#include <QVariant>

namespace {

QMetaProperty findProperty(QObject* object, const QString& name)
{
    int index = object->metaObject()->indexOfProperty(name.toUtf8().constData());
    if (index < 0)
        throw HException(QStringLiteral("unknown property: ") + name);
    return object->metaObject()->property(index);
}

ESQObject* instance(const ESCall& call)
{
    return static_cast<ESQObject*>(call.function->cls);
}

constexpr Builtin RowTable[] = {
    {"SetProperty", "ESQObject.prototype.SetProperty", 2, false, 0,
     [](const ESCall& call) {
         ESQObject::setProperty(instance(call), call.context, call.argv);
         return call.argv[0];
     }},
    {"GetProperty", "ESQObject.prototype.GetProperty", 1, false, 1,
     [](const ESCall& call) {
         ESQObject::getProperty(instance(call), call.context, call.argv);
         return call.argv[0];
     }},
};

} // namespace

ESQObject::ESQObject() : ESClass("ESQObject") {}
ESQObject::~ESQObject() = default;

ESObject* ESQObject::installScriptObject(ESContext* context)
{
    setClassName(metaObject()->className());
    ESObject* object = context->mkobj(context->objectPrototype(), context->objectClass());
    context->valinstant(context->globalObject(), ESProperty::DontEnum, ESStringPool::intern(className()),
                        object);
    ESObject* prototype = context->functionPrototype();
    for (const Builtin& row : RowTable)
        biinst(context, object, row, prototype, this);
    return object;
}

void ESQObject::call(ESContext*, ESObject*, ESObject*, int, ESValue*) {}

void ESQObject::getProperty(QObject* object, ESContext* context, ESValue* argv)
{
    QString name = context->toString(argv[0], 10);
    QMetaProperty property = findProperty(object, name);
    QVariant value = property.read(object);
    auto string = [](const QString& text) { return ESValue(ESStringPool::text(text)); };
    if (property.isEnumType()) {
        argv[0] = string(QString::fromUtf8(property.enumerator().valueToKey(value.toInt())));
        return;
    }
    switch (value.typeId()) {
    case QMetaType::Int: argv[0] = ESValue(value.toInt()); break;
    case QMetaType::UInt: argv[0] = ESValue(value.toUInt()); break;
    case QMetaType::Bool: argv[0] = ESValue::boolean(value.toString() == QLatin1String("true")); break;
    case QMetaType::QStringList: argv[0] = string(value.toStringList().join(QLatin1Char('\n'))); break;
    default: argv[0] = string(value.toString()); break;
    }
}

void ESQObject::setProperty(QObject* object, ESContext* context, ESValue* argv)
{
    QString name = context->toString(argv[0], 10);
    QMetaProperty property = findProperty(object, name);
    ESValue given = argv[1];
    QVariant value;
    if (property.isEnumType()) {
        QString text = context->toString(given, 10);
        int number = property.enumerator().keyToValue(text.toUtf8().constData());
        const char* key = property.enumerator().valueToKey(number);
        if (!key || QString::fromUtf8(key) != text)
            throw HException(QStringLiteral("invalid enum value: ") + text);
        value = number;
    } else {
        switch (property.read(object).typeId()) {
        case QMetaType::Int: value = context->toInt32(given); break;
        case QMetaType::UInt: value = context->toUint32(given); break;
        case QMetaType::Bool: value = context->toString(given, 10) == QLatin1String("true") ? 1 : 0; break;
        case QMetaType::QStringList:
            value = context->toString(given, 10).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
            break;
        default: value = context->toString(given, 10); break;
        }
    }
    object->setProperty(name.toUtf8().constData(), value);
}
