// A temporary directory with the systems of a session around it.
#pragma once

#include "project/MAXQ30BuildSystem.h"
#include "project/MAXQ30ProjectSystem.h"
#include "project/MacroSystem.h"
#include "project/ProjectElement.h"
#include "project/PropertyClass.h"
#include "project/SolutionLoadError.h"
#include "project/StandardBuildSystem.h"
#include "project/StandardProjectSystem.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

class SolutionFixture : public testing::Test {
protected:
    static QString q(const std::string& text) { return QString::fromStdString(text); }

    // A solution file around what stands inside the element.
    std::string write(const char* name, const std::string& body)
    {
        return directory.write(name, "<!DOCTYPE Anvil_Project_File>\n<solution Name=\"S\" version=\"2\">\n" +
                                         body + "\n</solution>\n");
    }
    void load(const std::string& body) { system.loadSolution(q(write("s.kvp", body)), nullptr, nullptr); }
    // The text of the failure, or "loaded".
    std::string failure(const std::string& file)
    {
        try {
            system.loadSolution(q(file), nullptr, nullptr);
        } catch (const SolutionLoadError& e) {
            return e.message() +
                   (e.badXML() ? "|" + e.errorText().toStdString() + "|" + std::to_string(e.errorLine())
                               : std::string());
        }
        return "loaded";
    }
    ProjectElement* project(const char* name) { return system.findProject(nullptr, name); }
    ProjectElement* file(const char* name) { return system.findFile(system.solutionElement(), name); }
    std::string setting(ProjectElement* element, PropertyClass::Type type, const char* name,
                        const char* configuration)
    {
        PropertyClass wanted(name, type, QString("DEFAULT"), "", "", "", "");
        return system.settingFor(element, &wanted, configuration).toStdString();
    }
    std::string string(ProjectElement* element, const char* name, const char* configuration)
    {
        return setting(element, PropertyClass::String, name, configuration);
    }

    TempDir directory;
    MAXQ30ProjectSystem system{macroSystem};
    MAXQ30BuildSystem build{system, QStringList()};
};
