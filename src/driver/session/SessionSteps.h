// What a session does before its program runs: carries out on the loader what the options ask for. The steps
// are called in the order in which they stand here; each throws HException with a text for the user.
#pragma once

#include <QString>
#include <QStringList>

class Loader;
class Options;
class ProjectElement;

class SessionSteps {
public:
    // Neither is owned. The options must stay as they are from the first step on.
    SessionSteps(Loader& loader, Options& options) : m_loader(loader), m_options(options) {}

    // The target with its properties.
    void selectTarget();
    // The solution's project with its configuration, and the load files.
    void selectFiles();
    // Download and verification on a connected target, which is reset for it. Also throws what the session's
    // face throws to end it.
    void load();

    // Erases all memory of a connected target.
    void erase();
    // What the session would do with its target, a line for each step.
    QStringList plan() const;

    // The selected project; null without a solution.
    ProjectElement* activeProject() const { return m_activeProject; }
    // Where the program begins, as the debugger takes it; empty when nobody says.
    QString entryPoint() const;

private:
    void applyPropertySetting(const QString& setting);
    void selectFileType();
    void selectProject();
    void collectLoadFiles();

    Loader& m_loader;
    Options& m_options;
    ProjectElement* m_activeProject = nullptr;
};
