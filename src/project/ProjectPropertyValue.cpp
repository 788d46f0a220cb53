#include "project/ProjectPropertyValue.h"

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
        projectSystem->setProperty(m_element, propertyClass()->saveName(), text, m_configuration);
        return;
    }
    bool isName = propertyClass() == projectSystem->properties()[ProjectProperties::NodeName];
    m_element->setAttribute(isName ? QStringLiteral("Name") : propertyClass()->saveName(), text);
    Q_EMIT projectSystem->propertiesChanged(m_element);
}

QString ProjectPropertyValue::propertyValue() const
{
    return propertyClass()->perConfiguration()
               ? projectSystem->settingFor(m_element, propertyClass(), m_configuration)
               : projectSystem->ownSetting(m_element, propertyClass());
}

PropertyInheritanceInformation ProjectPropertyValue::inheritanceInformation() const
{
    PropertyInheritanceInformation information;
    projectSystem->settingFor(m_element, propertyClass(), m_configuration, &information);
    return information;
}

bool ProjectPropertyValue::nonDefault() const
{
    return !inheritanceInformation().onlyDefault();
}
