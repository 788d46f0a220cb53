// The project systems in order of knowledge: a C tool chain with its build settings, the extensions of
// the ZOFF format, and the one processor that the tool serves.
#pragma once

#include "project/ProjectElement.h"
#include "project/ProjectSystem.h"

class StandardProjectSystem : public ProjectSystem {
public:
    using ProjectSystem::ProjectSystem;

    // Each appends the build settings of its tool.
    void appendCCompilerProperties(ProjectElement* element, PropertyClassList& list) override;
    void appendCppCompilerProperties(ProjectElement* element, PropertyClassList& list) override;
    void appendAssemblerProperties(ProjectElement* element, PropertyClassList& list) override;
    void appendLinkerProperties(ProjectElement* element, PropertyClassList& list) override;
    void appendArchiverProperties(ProjectElement* element, PropertyClassList& list) override;
    void appendTargetProperties(ProjectElement* element, PropertyClassList& list) override;
    // A new project is made for the platform of the tool.
    void appendDefaultProjectValues(ProjectElement* project) override;
    QString assemblyCodeFileExtension() const override { return QStringLiteral("s"); }
};

class ZOFFProjectSystem : public StandardProjectSystem {
public:
    using StandardProjectSystem::StandardProjectSystem;

    QString objectFileExtension() const override { return QStringLiteral("kvo"); }
    QString libraryFileExtension() const override { return QStringLiteral("kva"); }
    QString executableFileExtension() const override { return QStringLiteral("kvx"); }
};

class MAXQ30ProjectSystem : public ZOFFProjectSystem {
public:
    using ZOFFProjectSystem::ZOFFProjectSystem;

    // Adds the settings of the simulator and of the device's own scripts.
    void appendTargetProperties(ProjectElement* element, PropertyClassList& list) override;
};
