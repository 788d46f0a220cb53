#include "project/PropertyValue.h"

#include "project/MacroSystem.h"
#include "support/Numbers.h"

#include <QtGlobal>

namespace {

bool parseInteger(const QString& text, int& value)
{
    bool ok = false;
    qlonglong number = text.toLongLong(&ok, 0);
    if (!ok || number < INT32_MIN || number > qlonglong(UINT32_MAX))
        return false;
    value = int(uint32_t(number));
    return true;
}

} // namespace

bool PropertyValue::readOnly() const
{
    return m_readOnly || (m_class && m_class->readOnly());
}

bool PropertyValue::toBool() const
{
    QString text = propertyValue();
    QString lower = text.toLower();
    if (lower == QLatin1String("true") || lower == QLatin1String("yes") || lower == QLatin1String("1"))
        return true;
    QStringList texts = enumerates();
    return texts.size() > 1 && text == texts[1];
}

int PropertyValue::toInt() const
{
    QString text = propertyValue();
    if (type() == PropertyClass::Enumeration) {
        qsizetype position = enumerates().indexOf(text);
        if (position >= 0)
            return int(position);
    }
    int value = 0;
    return parseInteger(text, value) ? value : 0;
}

QStringList PropertyValue::toStringList(bool keepEmpty) const
{
    return MacroSystem::stringListFromString(propertyValue(), keepEmpty);
}

PropertyColor PropertyValue::toColor() const
{
    QString text = propertyValue();
    bool ok = text.size() == 7 && text[0] == u'#';
    uint value = ok ? text.mid(1).toUInt(&ok, 16) : 0;
    if (!ok)
        return {};
    return {uint8_t(value >> 16), uint8_t(value >> 8), uint8_t(value)};
}

PropertyFont PropertyValue::toFont(const PropertyFont& otherwise) const
{
    QStringList parts = propertyValue().split(u',');
    if (parts.size() != 4 || parts[0].isEmpty())
        return otherwise;
    return {parts[0], parts[1].toInt(), parts[2] == QLatin1String("1"), parts[3] == QLatin1String("1")};
}

QRect PropertyValue::toRect() const
{
    QStringList parts = propertyValue().split(u',');
    if (parts.size() != 4)
        return {};
    return {parts[0].toInt(), parts[1].toInt(), parts[2].toInt(), parts[3].toInt()};
}

void PropertyValue::setValue(int value)
{
    switch (type()) {
    case PropertyClass::Integer:
    case PropertyClass::IntegerRange: setPropertyValue(QString::number(value)); return;
    case PropertyClass::IntegerHex: setPropertyValue(toHexString(value, value)); return;
    case PropertyClass::Enumeration: {
        QStringList texts = enumerates();
        if (value < 0 || value >= texts.size())
            qWarning("PropertyValue::setValue(int): Setting an enumeration to a value which isn't in its "
                     "enumerates");
        else
            setPropertyValue(texts[value]);
        return;
    }
    default: qWarning("PropertyValue::setValue(int): Setting a non-integer property");
    }
}

void PropertyValue::setValue(bool value)
{
    if (type() != PropertyClass::Boolean)
        qWarning("PropertyValue::setValue(int): Setting a non-Boolean property");
    else
        setPropertyValue(enumerates().value(value ? 1 : 0));
}

void PropertyValue::setValue(const QStringList& list)
{
    setPropertyValue(MacroSystem::stringFromStringList(list));
}

void PropertyValue::setValue(const PropertyColor& color)
{
    setPropertyValue(QString::asprintf("#%02x%02x%02x", color.red, color.green, color.blue));
}

void PropertyValue::setValue(const PropertyFont& font)
{
    setPropertyValue(QStringLiteral("%1,%2,%3,%4")
                         .arg(font.family)
                         .arg(font.points)
                         .arg(int(font.bold))
                         .arg(int(font.italic)));
}

void PropertyValue::setValue(const QRect& rect)
{
    setPropertyValue(
        QStringLiteral("%1,%2,%3,%4").arg(rect.x()).arg(rect.y()).arg(rect.width()).arg(rect.height()));
}

void PropertyValue::setToDefault()
{
    setPropertyValue(m_class ? m_class->defaultValue() : QString());
}

PropertyValueList::~PropertyValueList()
{
    if (m_owning)
        qDeleteAll(*this);
}

PropertyValue* PropertyValueList::find(const PropertyClass* propertyClass) const
{
    for (PropertyValue* value : *this)
        if (value->propertyClass() == propertyClass)
            return value;
    return nullptr;
}

bool PropertyValueList::appendUnique(PropertyValue* value)
{
    if (!value || !value->propertyClass()) {
        qWarning("Bad property value in PropertyValueList::appendUnique");
        return false;
    }
    if (find(value->propertyClass()))
        return false;
    append(value);
    return true;
}
