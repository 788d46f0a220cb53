// The settings that the solution tree itself knows.
#pragma once

#include "project/PropertyClass.h"

#include <memory>
#include <vector>

// Id, save name, type, title, default, flags.
#define PROJECT_PROPERTIES(X)                                                                                \
    X(DateCreated, "date_created", String, "Date Created", "", Derived)                                      \
    X(DateModified, "date_modified", String, "Date Modified", "", Derived)                                   \
    X(Platform, "Platform", String, "Platform", "", Setting)                                                 \
    X(FullPath, "full_path", String, "Full Path", "", Derived)                                               \
    X(RelativePath, "relative_path", String, "Relative Path", "", Derived)                                   \
    X(NodeName, "(Name)", String, "Name", "", OwnAttribute)                                                  \
    X(FileName, "file_name", String, "File Name", "", OwnAttribute)                                          \
    X(FileCodec, "file_codec", Enumeration, "File Encoding", "Default", Setting)                             \
    X(FileOpenWith, "file_open_with", Enumeration, "File Open Action", "Default", Setting)                   \
    X(FileType, "file_type", Enumeration, "File Type", "Default", Setting)                                   \
    X(Filter, "filter", StringList, "Filter", "", OwnAttribute)                                              \
    X(DynamicPath, "path", DirPath, "Dynamic Folder Directory", "", OwnAttribute)                            \
    X(ProjectType, "project_type", Enumeration, "Project Type", "Executable", Setting)                       \
    X(SolutionFileName, "name", String, "Solution File Name", "", Derived)                                   \
    X(ProjectDirectory, "project_directory", String, "Project Directory", "", Setting)                       \
    X(FullProjectDirectory, "full_project_directory", String, "Full Project Directory", "", Derived)         \
    X(ProjectDependencies, "project_dependencies", StringList, "Project Dependencies", "", Setting)          \
    X(Macros, "macros", StringList, "Project Macros", "", Setting)                                           \
    X(BatchBuildConfigurations, "batch_build_configurations", StringList, "Batch Build Configurations", "",  \
      Setting)                                                                                               \
    X(InheritedConfigurations, "inherited_configurations", StringList, "Inherited Configurations", "",       \
      Setting)

class ProjectProperties {
public:
    enum Id {
#define X(id, ...) id,
        PROJECT_PROPERTIES(X)
#undef X
            Count
    };
    // Setting: read from configuration elements. OwnAttribute: an attribute of the element itself.
    // Derived: computed, and read only.
    enum Storage { Setting, OwnAttribute, Derived };

    ProjectProperties();

    PropertyClass* operator[](Id id) const
    {
        return m_classes[id].get();
    }
    // By save name; null when there is none.
    PropertyClass* find(const QString& saveName) const;
    // The id of one of these classes; Count for any other class.
    Id idOf(const PropertyClass* propertyClass) const;

private:
    std::vector<std::unique_ptr<PropertyClass>> m_classes;
};
