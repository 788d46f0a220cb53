#include "project/PropertyClass.h"

#include "project/MacroSystem.h"
#include "project/xml/XMLNode.h"

#include <QHash>

namespace {

constexpr const char* TypeNames[] = {"Boolean", "Integer",        "IntegerHex",   "IntegerRange",
                                     "String",  "FileName",       "ProjFileName", "StringList",
                                     "DirPath", "DirPathList",    "Enumeration",  "Color",
                                     "Font",    "FixedPitchFont", "Custom"};
static_assert(std::size(TypeNames) == PropertyClass::Custom + 1);

QHash<QString, QString>& texts()
{
    static QHash<QString, QString> table;
    return table;
}

int integer(const QString& text)
{
    return text.toInt(nullptr, 0);
}

} // namespace

PropertyClass::PropertyClass(const QString& key, Type type) : m_saveName(key), m_type(type)
{
    auto text = [&](const char* part) { return texts().value(key + QLatin1Char('.') + QLatin1String(part)); };
    setDescriptions(text("page"), text("group"), text("short"), text("long"));
    m_default = text("default");
    m_enumerates = MacroSystem::stringListFromString(text("enumerates"));
    m_suffix = text("suffix");
    setRange(integer(text("minimum")), integer(text("maximum")));
}

PropertyClass::PropertyClass(const QString& saveName, Type type, const QString& defaultValue,
                             const QString& page, const QString& group, const QString& shortDescription,
                             const QString& longDescription)
    : m_saveName(saveName), m_type(type), m_default(defaultValue)
{
    setDescriptions(page, group, shortDescription, longDescription);
}

PropertyClass::PropertyClass(const QString& saveName, Type type, const QStringList& enumerates,
                             const QString& page, const QString& group, const QString& shortDescription,
                             const QString& longDescription)
    : m_saveName(saveName), m_type(type), m_default(enumerates.value(0)), m_enumerates(enumerates)
{
    setDescriptions(page, group, shortDescription, longDescription);
}

PropertyClass::PropertyClass(const XMLElement* element)
    : m_saveName(element->attributeText("name")), m_type(typeFromName(element->attributeText("type"))),
      m_default(element->attributeText("default")),
      m_specialValueText(element->attributeText("specialvalue")),
      m_enumerates(MacroSystem::stringListFromString(element->attributeText("enumeration")))
{
    setDescriptions(QString(), element->attributeText("group"), element->attributeText("short"),
                    element->attributeText("long"));
    setRange(integer(element->attributeText("minimum")), integer(element->attributeText("maximum")));
}

void PropertyClass::setDescriptions(const QString& page, const QString& group,
                                    const QString& shortDescription, const QString& longDescription)
{
    m_page = page;
    m_group = group;
    m_short = shortDescription;
    m_long = longDescription;
}

void PropertyClass::setText(const QString& key, const QString& text)
{
    texts().insert(key, text);
}

QStringList PropertyClass::enumerates() const
{
    if (m_type == Boolean && m_enumerates.isEmpty())
        return {QStringLiteral("No"), QStringLiteral("Yes")};
    return m_enumerates;
}

void PropertyClass::setRange(int minimum, int maximum)
{
    m_minimum = minimum;
    m_maximum = maximum;
}

PropertyClass::Type PropertyClass::typeFromName(const QString& name)
{
    for (int type = 0; type < Custom; ++type)
        if (name == QLatin1String(TypeNames[type]))
            return Type(type);
    return Custom;
}
