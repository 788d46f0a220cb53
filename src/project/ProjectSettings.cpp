// How ProjectSystem finds a setting, and what the configurations of a solution are.
#include "project/MacroSystem.h"
#include "project/ProjectSystem.h"
#include "project/SolutionLoadError.h"
#include "support/PlatformConstants.h"

#include <QSet>

namespace {

const QString Common = QStringLiteral("Common");
const QString Hidden = QStringLiteral("hidden");

} // namespace

// A solution that says nothing about a configuration leaves it to the solution that imports it.
QStringList ProjectSystem::inheritanceOf(const ProjectElement* element, const QString& configuration) const
{
    for (const ProjectElement* solution = solutionContaining(element); solution;
         solution = solutionContaining(solution->parent()))
        if (solution->inheritance().knows(configuration))
            return solution->inheritance().of(configuration);
    return {};
}

template <typename Visit>
void ProjectSystem::walk(const ProjectElement* element, const QString& name, const QString& configuration,
                         Visit visit) const
{
    const bool common = configuration == Common;
    const QStringList inherited = common ? QStringList() : inheritanceOf(element, configuration);
    // A configuration may name Common among those that it inherits, to have it earlier than last.
    const bool commonIsPlaced = common || inherited.contains(Common);
    for (const ProjectElement* node = element; node; node = node->parent()) {
        if (node->configurations().empty())
            continue;
        auto look = [&](const QString& from) {
            const ProjectElement* place = node->configuration(from);
            if (!place)
                return false;
            auto found = place->attributes().constFind(name);
            return found != place->attributes().constEnd() && visit(node, from, found.value());
        };
        if (look(configuration))
            return;
        for (const QString& each : inherited)
            if (look(each))
                return;
        if (!commonIsPlaced && look(Common))
            return;
    }
}

QString ProjectSystem::settingFor(const ProjectElement* element, const PropertyClass* propertyClass,
                                  const QString& configuration,
                                  PropertyInheritanceInformation* information) const
{
    const bool accumulates = propertyClass->type() == PropertyClass::StringList;
    bool found = false;
    QString result;
    walk(element, propertyClass->saveName(), configuration,
         [&](const ProjectElement* node, const QString& from, const QString& text) {
             if (information)
                 information->append({node, from, text, false});
             if (found)
                 result.append(u';').append(text);
             else
                 result = text;
             found = true;
             return !accumulates;
         });
    if (found)
        return result;
    if (information)
        information->append({nullptr, QString(), propertyClass->defaultValue(), true});
    return propertyClass->defaultValue();
}

QString ProjectSystem::configurationUsedFor(const ProjectElement* element, const PropertyClass* propertyClass,
                                            const QString& configuration) const
{
    QString used;
    walk(element, propertyClass->saveName(), configuration,
         [&](const ProjectElement*, const QString& from, const QString&) {
             used = from;
             return true;
         });
    return used;
}

QString ProjectSystem::ownSetting(const ProjectElement* element, const PropertyClass* propertyClass) const
{
    const ProjectElement* solution = solutionContaining(element);
    switch (m_properties.idOf(propertyClass)) {
    case ProjectProperties::NodeName: return element->getName();
    case ProjectProperties::FullPath: return element->path().osPathQString();
    case ProjectProperties::RelativePath:
        return element->path().isEmpty()
                   ? QString()
                   : Path::relativeFilePath(getProjectDirectory(element), element->path().osPathQString());
    case ProjectProperties::FullProjectDirectory: return getProjectDirectory(element);
    case ProjectProperties::SolutionFileName: return solution ? solution->path().fileName() : QString();
    case ProjectProperties::DateCreated: return element->path().created().toString(Qt::ISODate);
    case ProjectProperties::DateModified: return element->path().lastModified().toString(Qt::ISODate);
    default: break;
    }
    return element->hasAttribute(propertyClass->saveName()) ? element->attribute(propertyClass->saveName())
                                                            : propertyClass->defaultValue();
}

void ProjectSystem::setProperty(ProjectElement* element, const QString& name, const QString& value,
                                const QString& configuration)
{
    element->makeConfiguration(configuration)->setAttribute(name, value);
    if (name == m_properties[ProjectProperties::ProjectDirectory]->saveName())
        updateFilePaths(element);
    Q_EMIT propertiesChanged(element);
}

void ProjectSystem::removeProperty(ProjectElement* element, const QString& name, const QString& configuration)
{
    ProjectElement* place = element->configuration(configuration);
    if (!place || !place->hasAttribute(name))
        return;
    place->removeAttribute(name);
    if (name == m_properties[ProjectProperties::ProjectDirectory]->saveName())
        updateFilePaths(element);
    Q_EMIT propertiesChanged(element);
}

QStringList ProjectSystem::getInheritedConfigurations(const ProjectElement* element,
                                                      const QString& configuration) const
{
    const ProjectElement* solution = solutionContaining(element);
    const ProjectElement* place = solution ? solution->configuration(configuration) : nullptr;
    return place ? MacroSystem::stringListFromString(
                       place->attribute(m_properties[ProjectProperties::InheritedConfigurations]->saveName()))
                 : QStringList();
}

void ProjectSystem::setInheritedConfigurations(ProjectElement* element, const QString& configuration,
                                               const QStringList& inherited)
{
    ProjectElement* solution = solutionContaining(element);
    if (!solution)
        return;
    setProperty(solution, m_properties[ProjectProperties::InheritedConfigurations]->saveName(),
                MacroSystem::stringFromStringList(inherited), configuration);
    solution->inheritance().set(configuration, getInheritedConfigurations(solution, configuration));
}

void ProjectSystem::updateInheritenceMap(ProjectElement* solution)
{
    solution->inheritance().clear();
    for (const auto& [name, configuration] : solution->configurations())
        if (configuration->hasAttribute(m_properties[ProjectProperties::InheritedConfigurations]->saveName()))
            solution->inheritance().set(name, getInheritedConfigurations(solution, name));
    for (const auto& child : solution->children())
        if (child->tag() == ProjectElement::Solution)
            updateInheritenceMap(child.get());
}

void ProjectSystem::configurations(const ProjectElement* element, QStringList& list, int mode) const
{
    // A configuration that is hidden at the solution stays so where a project only adds settings to it.
    QSet<QString> hidden;
    for (const ProjectElement* node = element; node; node = node->parent())
        for (const auto& [name, configuration] : node->configurations())
            if (configuration->hasAttribute(Hidden))
                hidden.insert(name);
    QSet<QString> listed(list.cbegin(), list.cend());
    for (const ProjectElement* node = element; node; node = node->parent()) {
        for (const auto& [name, configuration] : node->configurations()) {
            if (listed.contains(name))
                continue;
            bool wanted = mode & HiddenConfigurations;
            if (!hidden.contains(name))
                wanted = (mode & VisibleConfigurations) && name != Common &&
                         settingFor(element, m_properties[ProjectProperties::Platform], name) ==
                             QLatin1String(Get_PLATFORM());
            if (!wanted)
                continue;
            listed.insert(name);
            list.append(name);
        }
    }
}
