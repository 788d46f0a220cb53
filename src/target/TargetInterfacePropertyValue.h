// A target's own setting, which -setprop sets and -listprops shows. An empty stored text reads as the
// property's default.
#pragma once

#include "project/PropertyClass.h"
#include "project/PropertyValue.h"

class TargetInterfacePropertyValue : public PropertyValue {
public:
    explicit TargetInterfacePropertyValue(PropertyClass* property) : PropertyValue(property) {}

    void setPropertyValue(const QString& text) override { m_text = text; }
    QString propertyValue() const override
    {
        return m_text.isEmpty() ? propertyClass()->defaultValue() : m_text;
    }

private:
    QString m_text;
};
