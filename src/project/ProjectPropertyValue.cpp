#include "project/ProjectPropertyValue.h"

#include "project/ProjectProperties.h"
#include "project/ProjectSystem.h"

bool ProjectPropertyValue::inherited() const
{
    const ProjectElement* place =
        propertyClass()->perConfiguration() ? m_element->configuration(m_configuration) : m_element;
    return !place || !place->hasAttribute(propertyClass()->saveName());
}

void ProjectPropertyValue::setPropertyValue(const QString& text)
{
    if (propertyClass()->perConfiguration()) {
        m_projects.setProperty(m_element, propertyClass()->saveName(), text, m_configuration);
        return;
    }
    bool isName = propertyClass() == m_projects.properties()[ProjectProperties::NodeName];
    m_element->setAttribute(isName ? QStringLiteral("Name") : propertyClass()->saveName(), text);
    Q_EMIT m_projects.propertiesChanged(m_element);
}

QString ProjectPropertyValue::propertyValue() const
{
    return propertyClass()->perConfiguration()
               ? m_projects.settingFor(m_element, propertyClass(), m_configuration)
               : m_projects.ownSetting(m_element, propertyClass());
}

PropertyInheritanceInformation ProjectPropertyValue::inheritanceInformation() const
{
    PropertyInheritanceInformation information;
    m_projects.settingFor(m_element, propertyClass(), m_configuration, &information);
    return information;
}

bool ProjectPropertyValue::nonDefault() const
{
    return !inheritanceInformation().onlyDefault();
}
