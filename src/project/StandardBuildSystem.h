// The settings of compilers, linker, external builds and debugger, and what a project's type and its
// files' types make of a build.
#pragma once

#include "project/BuildSystem.h"
#include "project/PropertyClass.h"

class StandardBuildSystem : public BuildSystem {
public:
    // The names that `external_load_file_type` offers beside "Detect"; an empty list stands for those
    // of the load files that the tool reads.
    StandardBuildSystem(ProjectSystem& projects, const QStringList& loadFileTypes);

    BuildAction buildAction(ProjectElement* element, const QString& configuration) override;
    ProjectElement* findFileOfType(ProjectElement* element, const QString& configuration,
                                   const QString& type) override;
    bool useMemoryMapFileForLink(ProjectElement* element, const QString& configuration,
                                 QString& result) override;
    bool useSectionPlacementFileForLink(ProjectElement* element, const QString& configuration,
                                        QString& result) override;
    bool useLinkerScriptFileForLink(ProjectElement* element, const QString& configuration,
                                    QString& result) override;

    // The build of the element makes something that can be loaded into a target.
    bool canLoad(ProjectElement* element, const QString& configuration);
    // The element is a source that makes an object file.
    bool canCompile(ProjectElement* element, const QString& configuration);
    // A source whose object file is missing or older, or which is always compiled.
    bool mustCompile(ProjectElement* element, const QString& configuration);

private:
    bool useFileForLink(ProjectElement* element, const QString& configuration, const QString& type,
                        const PropertyClass* setting, QString& result);
    bool isSet(ProjectElement* element, const PropertyClass* setting, const QString& configuration) const;

    PropertyClass* m_excludeFromBuild;
    PropertyClass* m_alwaysRebuild;
    PropertyClass* m_memoryMapFile;
    PropertyClass* m_sectionPlacementFile;
};

// The settings of the ZOFF tool chain.
class ZOFFBuildSystem : public StandardBuildSystem {
public:
    ZOFFBuildSystem(ProjectSystem& projects, const QStringList& loadFileTypes);

    // Adds LibExt for a project: which build of the libraries fits its settings.
    Macros macros(ProjectElement* node, const QString& configuration) override;

private:
    PropertyClass* m_hardwareMultiplier;
    PropertyClass* m_doubleIsFloat;
};

// The settings of the one processor that the tool serves.
class MAXQ30BuildSystem : public ZOFFBuildSystem {
public:
    MAXQ30BuildSystem(ProjectSystem& projects, const QStringList& loadFileTypes);
};
