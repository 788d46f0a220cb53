// The order in which the projects of a solution need each other.
#include "project/MacroSystem.h"
#include "project/ProjectSystem.h"

#include <QSet>

#include <utility>
#include <vector>

QList<ProjectElement*> ProjectSystem::dependencies(ProjectElement* project,
                                                   const QString& configuration) const
{
    QList<ProjectElement*> list;
    const QString setting =
        settingFor(project, m_properties[ProjectProperties::ProjectDependencies], configuration);
    for (const QString& name : MacroSystem::stringListFromString(setting)) {
        ProjectElement* other = m_projects.value(name);
        if (other && other != project && !list.contains(other))
            list.append(other);
    }
    return list;
}

bool ProjectSystem::directlyDependsOn(ProjectElement* project, ProjectElement* other,
                                      const QString& configuration) const
{
    return dependencies(project, configuration).contains(other);
}

bool ProjectSystem::dependsOn(ProjectElement* project, ProjectElement* other,
                              const QString& configuration) const
{
    QSet<ProjectElement*> visited{project};
    QList<ProjectElement*> pending{project};
    while (!pending.isEmpty()) {
        for (ProjectElement* each : dependencies(pending.takeLast(), configuration)) {
            if (each == other)
                return true;
            if (!visited.contains(each)) {
                visited.insert(each);
                pending.append(each);
            }
        }
    }
    return false;
}

QList<ProjectElement*> ProjectSystem::buildOrder(ProjectElement* element, const QString& configuration) const
{
    ProjectElement* wanted = projectContaining(element);
    const QList<ProjectElement*> starts =
        wanted ? QList<ProjectElement*>{wanted} : solutionProjects(element).values();
    QList<ProjectElement*> order;
    QSet<ProjectElement*> visited;
    struct Step {
        ProjectElement* project;
        QList<ProjectElement*> needs;
        qsizetype next = 0;
    };
    std::vector<Step> path;
    auto enter = [&](ProjectElement* project) {
        if (visited.contains(project))
            return;
        visited.insert(project);
        path.push_back({project, dependencies(project, configuration)});
    };
    for (ProjectElement* start : starts) {
        enter(start);
        while (!path.empty()) {
            Step& step = path.back();
            if (step.next < step.needs.size()) {
                enter(step.needs[step.next++]);
            } else {
                order.append(step.project);
                path.pop_back();
            }
        }
    }
    return order;
}
