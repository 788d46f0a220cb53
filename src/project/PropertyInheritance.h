// Where the value of a setting came from: one item for each place that supplied a part of it, nearest
// first.
#pragma once

#include <QList>
#include <QString>

class ProjectElement;

struct PropertyInheritanceItem {
    const ProjectElement* node; // null for the default
    QString configuration;
    QString value;
    bool isDefault;
};

class PropertyInheritanceInformation : public QList<PropertyInheritanceItem> {
public:
    // No node of the solution holds the setting.
    bool onlyDefault() const { return size() == 1 && first().isDefault; }
};
