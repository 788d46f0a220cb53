// A view of one setting of one project element for one configuration.
#pragma once

#include "project/PropertyClass.h"
#include "project/PropertyInheritance.h"
#include "project/PropertyValue.h"

class ProjectElement;
class ProjectSystem;

class ProjectPropertyValue : public PropertyValue {
public:
    // Neither the projects nor the element is owned.
    ProjectPropertyValue(ProjectSystem& projects, PropertyClass* propertyClass, const QString& configuration,
                         ProjectElement* element)
        : PropertyValue(propertyClass), m_projects(projects), m_configuration(configuration),
          m_element(element)
    {
    }

    // The element's configuration does not hold the setting itself.
    bool inherited() const override;
    // Makes the configuration element when it is missing. A class that is not per configuration goes
    // to the element itself.
    void setPropertyValue(const QString& text) override;
    QString propertyValue() const override;

    PropertyInheritanceInformation inheritanceInformation() const;
    // Some node on the way up holds the setting.
    bool nonDefault() const;

    const QString& configuration() const { return m_configuration; }
    ProjectElement* element() const { return m_element; }

protected:
    ProjectSystem& projects() const { return m_projects; }

private:
    ProjectSystem& m_projects;
    QString m_configuration;
    ProjectElement* m_element;
};
