// The vocabulary of a project's settings, the macros with which a node's texts are expanded, and the
// names of what a project's build produces. Nothing is built here.
#pragma once

#include "project/MacroSystem.h"
#include "project/PropertyClass.h"

#include <QMap>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

class ProjectElement;
class ProjectSystem;
struct BuildProperty;

class BuildSystem {
public:
    // What a build does with an element.
    enum BuildAction {
        NoAction = 0,
        ExcludedAction = 1,
        CompileC = 2,
        CompileCpp = 3,
        CompileForth = 5,
        CompileBasic = 6,
        Assemble = 7,
        ExternalBuild = 8,
        LinkExecutable = 10,
        MakeLibrary = 11,
        Stage = 12,
        Combine = 13
    };
    using Macros = MacroSystem::Macros;

    // The projects stay the caller's; they are told of this, for what templates expand.
    explicit BuildSystem(ProjectSystem& projects);
    BuildSystem(const BuildSystem&) = delete;
    BuildSystem& operator=(const BuildSystem&) = delete;
    virtual ~BuildSystem() = default;

    // By save name; null when there is none. Of the two classes of build_output_file_name this is the
    // one for executables.
    PropertyClass* findPropertyClass(const QString& saveName) const;
    // All classes of one page, in the order of their names.
    QList<PropertyClass*> pageClasses(const QString& page) const;

    // ProjectSystem::settingFor, with the macros of the node expanded.
    QString settingForExpanded(ProjectElement* element, const PropertyClass* propertyClass,
                               const QString& configuration);
    // The items of a list setting, each expanded, with `prefix` put in front.
    QStringList stringListSetting(const QString& prefix, ProjectElement* element,
                                  const PropertyClass* propertyClass, const QString& configuration);

    // The table for a node: system and global macros, the project's own, then
    //   ProjectNodeName, ProjectDir, ProjectName, Configuration, Platform,
    //   SolutionDir, SolutionName, SolutionFileName, SolutionPath, SolutionExt,
    //   InputDir, InputName, InputFileName, InputExt, InputPath, RelInputPath (of a file),
    //   OBJ, EXE, LIB (with their dot), PackageExt,
    //   IntDir, RootOutDir, OutDir, RootRelativeOutDir.
    // SolutionExt and InputExt come without the dot.
    virtual Macros macros(ProjectElement* node, const QString& configuration);
    QString replaceMacros(ProjectElement* node, const QString& text, const QString& configuration);
    QStringList replaceStringListMacros(ProjectElement* node, const QStringList& list,
                                        const QString& configuration);

    virtual BuildAction buildAction(ProjectElement* element, const QString& configuration) = 0;
    // The file that an action makes from an element; empty when it makes none. With `absolute` a
    // relative name stands behind the project directory.
    QString output(BuildAction action, ProjectElement* element, const QString& configuration, bool absolute);
    QString output(ProjectElement* element, const QString& configuration, bool absolute);

    // The first file of the element's project of that type ("Memory Map") which is not excluded from
    // the configuration; null when there is none.
    virtual ProjectElement* findFileOfType(ProjectElement* element, const QString& configuration,
                                           const QString& type) = 0;
    // The file for the link: one of that type in the project, else what the setting names. False when
    // there is none or it does not exist; `result` then still names the file that was looked for.
    virtual bool useMemoryMapFileForLink(ProjectElement* element, const QString& configuration,
                                         QString& result) = 0;
    virtual bool useSectionPlacementFileForLink(ProjectElement* element, const QString& configuration,
                                                QString& result) = 0;
    virtual bool useLinkerScriptFileForLink(ProjectElement* element, const QString& configuration,
                                            QString& result) = 0;

protected:
    PropertyClass* addPropertyClass(std::unique_ptr<PropertyClass> propertyClass);
    PropertyClass* addPropertyClass(const BuildProperty& row);
    template <typename Rows> void addPropertyClasses(const Rows& rows)
    {
        for (const auto& row : rows)
            addPropertyClass(row);
    }
    // With a table that was made before.
    QString expanded(const Macros& macros, ProjectElement* element, const PropertyClass* propertyClass,
                     const QString& configuration) const;
    ProjectSystem& projects() const { return m_projects; }

private:
    ProjectSystem& m_projects;
    std::vector<std::unique_ptr<PropertyClass>> m_owned;
    QMap<QString, PropertyClass*> m_classes;
    PropertyClass* m_intermediateDirectory;
    PropertyClass* m_outputDirectory;
    PropertyClass* m_rootOutputDirectory;
    PropertyClass* m_objectFileName;
    PropertyClass* m_executableFileName;
    PropertyClass* m_libraryFileName;
    PropertyClass* m_stageOutput;
    PropertyClass* m_combineOutput;
};

// Null until main makes it.
extern BuildSystem* buildSystem;
