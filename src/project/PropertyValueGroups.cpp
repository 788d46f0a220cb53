#include "project/PropertyValueGroups.h"

#include "project/ProjectSystem.h"
#include "project/PropertyClass.h"
#include "project/xml/XMLNode.h"
#include "support/HException.h"

#include <QFile>
#include <QFileInfo>

PropertyValueGroupClass::PropertyValueGroupClass(const QString& name)
    : PropertyClass(name, Enumeration, QStringList(), QString(), QString(), QString(), QString())
{
}

void PropertyValueGroupClass::read(const XMLElement* group)
{
    setDescriptions(group->hasAttribute("page") ? group->attributeText("page") : QStringLiteral("General"),
                    group->attributeText("group"), group->attributeText("short"),
                    group->attributeText("long"));
    setDefault(group->attributeText("default"));
    m_entries.clear();
    QStringList names;
    for (const XMLElement* entry = group->firstElement(); entry; entry = entry->nextElement()) {
        if (!entry->isNamed("groupEntry"))
            continue;
        PropertyGroupEntry made{entry->attributeText("name"), {}};
        for (const XMLElement* each = entry->firstElement(); each; each = each->nextElement())
            if (each->isNamed("property"))
                made.settings.append({each->attributeText("name"), each->attributeText("value"),
                                      each->attributeText("configuration")});
        names.append(made.name);
        m_entries.append(made);
    }
    setEnumerates(names);
}

const PropertyGroupEntry* PropertyValueGroupClass::getGroupEntry(const QString& name) const
{
    for (const PropertyGroupEntry& entry : m_entries)
        if (entry.name == name)
            return &entry;
    return nullptr;
}

void PropertyValueGroups::setGroupFile(const QString& file)
{
    QString name = file.isEmpty() ? QStringLiteral("None") : file;
    if (name == m_file && isUpToDate())
        return;
    m_file = name;
    m_time = QDateTime();
    m_current.clear();
    if (m_file != QLatin1String("None"))
        read();
}

bool PropertyValueGroups::isUpToDate() const
{
    return m_file == QLatin1String("None") || QFileInfo(m_file).lastModified() == m_time;
}

void PropertyValueGroups::read()
{
    m_current.clear();
    m_time = QFileInfo(m_file).lastModified();
    PropertyValueGroupFile document;
    document.setFileMacros(m_macros.systemMacros());
    QByteArray macros =
        MacroSystem::stringFromStringList(MacroSystem::stringListFromMacros(m_macros.globalMacros(true)))
            .toUtf8();
    if (!document.load(QFile::encodeName(m_file).constData(), macros.constData(), true))
        throw HException(QStringLiteral("cannot load property groups file %1: line %2: %3")
                             .arg(m_file)
                             .arg(document.errorLine())
                             .arg(QString::fromUtf8(document.errorText())));
    if (!document.errors().isEmpty())
        throw HException(
            QStringLiteral("cannot load property groups file %1: %2").arg(m_file, document.errors().first()));
    // Groups may stand at any depth, as included files leave them.
    const XMLNode* node = document.root();
    while (node) {
        const XMLElement* element = node->asElement();
        bool isGroup = element && element->isNamed("group");
        if (isGroup) {
            QString name = element->attributeText("name");
            auto& made = m_classes[name];
            if (!made)
                made = std::make_unique<PropertyValueGroupClass>(name);
            made->read(element);
            m_current.append(name);
        }
        if (!isGroup && node->firstChild()) {
            node = node->firstChild();
            continue;
        }
        while (node && node != document.root() && !node->nextSibling())
            node = node->parent();
        node = node && node != document.root() ? node->nextSibling() : nullptr;
    }
}

PropertyValueGroupClass* PropertyValueGroups::getGroupClass(const QString& name)
{
    if (!isUpToDate())
        read();
    return m_current.contains(name) ? m_classes[name].get() : nullptr;
}

const PropertyGroupEntry* PropertyValueGroups::getGroupEntry(const QString& groupName,
                                                             const QString& entryName)
{
    const PropertyValueGroupClass* group = getGroupClass(groupName);
    return group ? group->getGroupEntry(entryName) : nullptr;
}

QString PropertyValueGroupValue::target(const PropertyGroupSetting& setting) const
{
    return setting.configuration.isEmpty() ? configuration() : setting.configuration;
}

void PropertyValueGroupValue::setPropertyValue(const QString& name)
{
    if (const PropertyGroupEntry* old = m_group->getGroupEntry(propertyValue()))
        for (const PropertyGroupSetting& setting : old->settings)
            projects().removeProperty(element(), setting.name, target(setting));
    ProjectPropertyValue::setPropertyValue(name);
    if (const PropertyGroupEntry* entry = m_group->getGroupEntry(name))
        for (const PropertyGroupSetting& setting : entry->settings)
            projects().setProperty(element(), setting.name, setting.value, target(setting));
}

QString PropertyValueGroupValue::getTaggedValue(const QString& name, const QString& configuration) const
{
    if (const PropertyGroupEntry* entry = m_group->getGroupEntry(propertyValue()))
        for (const PropertyGroupSetting& setting : entry->settings)
            if (setting.name == name &&
                (setting.configuration.isEmpty() || setting.configuration == configuration))
                return setting.value;
    return QString();
}

QStringList PropertyValueGroupValue::getTaggedNames(const QString& configuration) const
{
    QStringList names;
    if (const PropertyGroupEntry* entry = m_group->getGroupEntry(propertyValue()))
        for (const PropertyGroupSetting& setting : entry->settings)
            if (setting.configuration.isEmpty() || setting.configuration == configuration)
                names.append(setting.name);
    return names;
}
