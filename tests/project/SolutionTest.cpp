#include "project/BuildSystem.h"
#include "project/MacroSystem.h"
#include "project/ProjectElement.h"
#include "project/ProjectProperties.h"
#include "project/ProjectPropertyValue.h"
#include "project/ProjectSystem.h"
#include "project/PropertyClass.h"
#include "project/PropertyInheritance.h"
#include "project/SolutionFixture.h"
#include "project/SolutionLoadError.h"

#include <QDir>

namespace {

class Solution : public SolutionFixture {};

} // namespace

TEST_F(Solution, SettingsComeFromTheNearestNode)
{
    load(R"(<configuration Name="Common" a="sol-common" l="1" e="full"/>
            <configuration Name="Base" b="sol-base" a="sol-base"/>
            <configuration Name="Debug" inherited_configurations="Base;Extra" d="sol-debug"/>
            <configuration Name="Extra" b="sol-extra" x="sol-extra"/>
            <project Name="P" a="attribute">
              <configuration Name="Common" l="2" b="proj-common" e=""/>
              <configuration Name="Base" p="proj-base"/>
              <configuration Name="Debug" p="proj-debug" l="3"/>
              <configuration Name="Ghost" a="never"/>
              <folder Name="F">
                <configuration Name="Debug" f="folder-debug"/>
                <configuration Name="Common" f="folder-common"/>
                <file file_name="x.c"><configuration Name="Debug" f="file-debug" l="4"/></file>
                <file file_name="y.c"/>
              </folder>
            </project>)");
    ProjectElement* x = file("x.c");
    ProjectElement* y = file("y.c");
    ProjectElement* p = project("P");
    ASSERT_TRUE(x && y && p);
    struct Case {
        ProjectElement* element;
        const char* name;
        const char* configuration;
        const char* expected;
    };
    const Case cases[] = {
        {y, "a", "Release", "sol-common"}, // seen by every file in every configuration
        {y, "a", "Debug", "sol-base"},     // an inherited configuration before Common, at one node
        {x, "f", "Debug", "file-debug"},
        {x, "f", "Release", "folder-common"},
        {y, "f", "Debug", "folder-debug"},
        {p, "p", "Debug", "proj-debug"}, // its own before the inherited
        {p, "p", "Extra", "DEFAULT"},
        {x, "b", "Debug", "proj-common"}, // any hit at a child beats the parent
        {p->parent(), "b", "Debug", "sol-base"},
        {x, "x", "Debug", "sol-extra"},
        {x, "d", "Release", "DEFAULT"},
        {x, "e", "Debug", ""}, // an empty text is a value
        {p, "a", "Ghost", "never"},
        {p, "a", "NoSuch", "sol-common"},
        {nullptr, "a", "Debug", "DEFAULT"},
    };
    for (const Case& each : cases)
        EXPECT_EQ(string(each.element, each.name, each.configuration), each.expected)
            << each.name << each.configuration;
    // A list adds up, the inner ones first.
    EXPECT_EQ(setting(x, PropertyClass::StringList, "l", "Debug"), "4;3;2;1");
    EXPECT_EQ(setting(x, PropertyClass::StringList, "l", "Common"), "2;1");
    EXPECT_EQ(setting(x, PropertyClass::StringList, "none", "Debug"), "DEFAULT");

    PropertyClass l("l", PropertyClass::StringList, QString(), "", "", "", "");
    PropertyClass none("none", PropertyClass::String, QString("?"), "", "", "", "");
    PropertyInheritanceInformation information;
    system.settingFor(x, &l, "Debug", &information);
    ASSERT_EQ(information.size(), 4);
    EXPECT_EQ(information[2].node, p);
    EXPECT_EQ(information[2].configuration, "Common");
    EXPECT_EQ(information[2].value, "2");
    EXPECT_EQ(system.configurationUsedFor(x, &l, "Release"), "Common");
    EXPECT_EQ(system.configurationUsedFor(x, &none, "Debug"), "");
    PropertyInheritanceInformation byDefault;
    system.settingFor(x, &none, "Debug", &byDefault);
    EXPECT_TRUE(byDefault.onlyDefault());
    EXPECT_EQ(byDefault[0].value, "?");
}

TEST_F(Solution, ProjectPropertyValuesReadAndWriteOneConfiguration)
{
    load(R"(<configuration Name="Common" v="1"/><project Name="P"><file file_name="a/x.c"/></project>)");
    PropertyClass v("v", PropertyClass::Integer, QString("0"), "", "", "", "");
    int changes = 0;
    QObject::connect(&system, &ProjectSystem::propertiesChanged, [&] { ++changes; });
    ProjectElement* x = file("x.c");
    ProjectPropertyValue value(system, &v, "Debug", x);
    EXPECT_EQ(value.toInt(), 1);
    EXPECT_TRUE(value.inherited());
    EXPECT_TRUE(value.nonDefault());
    EXPECT_FALSE(x->isModified());
    value.setValue(7);
    EXPECT_EQ(value.toInt(), 7);
    EXPECT_FALSE(value.inherited());
    EXPECT_EQ(ProjectPropertyValue(system, &v, "Release", x).toInt(), 1);
    EXPECT_TRUE(x->configuration("Debug")->modified("v").isValid());
    system.removeProperty(x, "v", "Debug");
    EXPECT_EQ(value.toInt(), 1);
    EXPECT_EQ(changes, 2);
    const ProjectProperties& own = system.properties();
    auto read = [&](ProjectProperties::Id id) {
        return ProjectPropertyValue(system, own[id], "Debug", x).toString();
    };
    EXPECT_EQ(read(ProjectProperties::RelativePath), "a/x.c");
    EXPECT_EQ(read(ProjectProperties::FullPath), q(directory / "a/x.c"));
    EXPECT_EQ(read(ProjectProperties::NodeName), "x.c");
    EXPECT_EQ(read(ProjectProperties::SolutionFileName), "s.kvp");
    EXPECT_EQ(read(ProjectProperties::FileName), "a/x.c");
    x->startTransaction();
    ProjectPropertyValue(system, own[ProjectProperties::NodeName], "", x).setValue("other");
    EXPECT_EQ(x->getName(), "other");
    x->rollbackTransaction();
    EXPECT_EQ(x->getName(), "x.c");
}

TEST_F(Solution, ConfigurationsThatAUserSees)
{
    load(R"(<configuration Name="Common" Platform="MAXQ30"/>
            <configuration Name="Debug" inherited_configurations="Base"/>
            <configuration Name="Base" hidden="Yes"/>
            <configuration Name="Other" Platform="other"/>
            <project Name="P"><configuration Name="Base" x="1"/><configuration Name="Special"/></project>
            <project Name="Q"/>)");
    QStringList list;
    system.configurations(project("P"), list, ProjectSystem::VisibleConfigurations);
    EXPECT_EQ(list, (QStringList{"Special", "Debug"}));
    list.clear();
    system.configurations(project("Q"), list, ProjectSystem::HiddenConfigurations);
    EXPECT_EQ(list, QStringList{"Base"});
    EXPECT_EQ(system.platform(project("P")), "maxq30");
}

TEST_F(Solution, InheritanceCyclesEnd)
{
    load(R"(<configuration Name="A" inherited_configurations="B;Common;A"/>
            <configuration Name="B" inherited_configurations="C"/>
            <configuration Name="C" inherited_configurations="A;D" c="from-c"/>
            <configuration Name="D" c="from-d"/><configuration Name="Common" l="once"/><project Name="P"/>)");
    EXPECT_EQ(system.solutionElement()->inheritance().of("A"), (QStringList{"B", "C", "D", "Common"}));
    EXPECT_EQ(string(project("P"), "c", "A"), "from-c");
    EXPECT_EQ(setting(project("P"), PropertyClass::StringList, "l", "A"), "once");
    EXPECT_EQ(system.getInheritedConfigurations(project("P"), "B"), QStringList{"C"});
    system.setInheritedConfigurations(project("P"), "B", {"D"});
    EXPECT_EQ(string(project("P"), "c", "A"), "from-d");
    system.closeSolution();
    std::string chain;
    const int length = 20'000; // a list for each configuration would take minutes
    for (int i = 0; i < length; ++i)
        chain += "<configuration Name=\"c" + std::to_string(i) + "\" inherited_configurations=\"c" +
                 std::to_string(i + 1) + "\"/>";
    load(chain + "<configuration Name=\"c" + std::to_string(length) + "\" c=\"far\"/><project Name=\"P\"/>");
    EXPECT_EQ(string(project("P"), "c", "c0"), "far");
    EXPECT_EQ(string(project("P"), "c", "c19999"), "far");
}

TEST_F(Solution, DependenciesAreOrderedAndCyclesCut)
{
    std::string chain;
    for (int i = 0; i < 3000; ++i) {
        std::string n = std::to_string(i);
        chain += "<project Name=\"c" + n + "\"><configuration Name=\"Common\" project_dependencies=\"c" +
                 std::to_string(i + 1) + "\"/></project>";
    }
    load(R"(<project Name="App"><configuration Name="Common" project_dependencies="Lib;Core;None"/></project>
            <project Name="Core"><configuration Name="Common" project_dependencies="App"/></project>
            <project Name="Lib"><configuration Name="Debug" project_dependencies="Core"/></project>)" +
         chain);
    auto order = [&](const char* start, const char* configuration) {
        QStringList names;
        for (ProjectElement* each : system.buildOrder(project(start), configuration))
            names.append(each->getName());
        return names.join(' ').toStdString();
    };
    EXPECT_EQ(order("App", "Debug"), "Core Lib App");
    EXPECT_EQ(order("App", "Release"), "Lib Core App");
    EXPECT_EQ(system.buildOrder(nullptr, "Debug").size(), 3003);
    EXPECT_TRUE(system.dependsOn(project("Lib"), project("App"), "Debug"));
    EXPECT_FALSE(system.dependsOn(project("Lib"), project("App"), "Release"));
    EXPECT_FALSE(system.directlyDependsOn(project("Lib"), project("App"), "Debug"));
    EXPECT_TRUE(system.dependsOn(project("c0"), project("c2999"), "Debug"));
}

TEST_F(Solution, LoadFailuresAreTold)
{
    const std::string type = "<!DOCTYPE Anvil_Project_File>";
    EXPECT_EQ(failure(directory / "none.kvp"), "none.kvp does not exist");
    EXPECT_EQ(failure(directory.path()),
              directory.path().substr(directory.path().rfind('/') + 1) + " cannot access");
    EXPECT_EQ(failure(directory.write("bad.kvp", type + "\n<solution>\n<project></solution>")),
              "bad XML file - bad.kvp|tagName mismatch|3");
    for (const char* text : {"<!DOCTYPE Forgeline_Settings_File><settings/>", "<solution/>", "", "no XML",
                             "<!DOCTYPE Anvil_Project_File><project/>", "<!DOCTYPE Anvil_Project_File>"})
        EXPECT_EQ(failure(directory.write("other.kvp", text)), "other.kvp not a solution file") << text;
    EXPECT_EQ(failure(write("self.kvp", "<import file_name=\"self.kvp\"/>")),
              "self.kvp solution already loaded");
    write("b.kvp", "<import file_name=\"sub/missing.kvp\"/>");
    EXPECT_EQ(failure(write("a.kvp", "<import file_name=\"b.kvp\"/>")), "missing.kvp does not exist");
    directory.write("c.kvp", type + "<solution><x y='1'/></solution>");
    EXPECT_EQ(failure(write("a.kvp", "<import file_name=\"c.kvp\"/>")), "bad XML file - c.kvp|bad tagName|1");
    std::string deep = type + "<solution>";
    for (int i = 0; i < 100000; ++i)
        deep += "<folder>";
    EXPECT_EQ(failure(directory.write("deep.kvp", deep)),
              "bad XML file - deep.kvp|elements nest more than 1000 deep|1");
    for (int i = 0; i < 103; ++i)
        write(("n" + std::to_string(i) + ".kvp").c_str(),
              "<import file_name=\"n" + std::to_string(i + 1) + ".kvp\"/>");
    EXPECT_EQ(failure(directory / "n0.kvp"), "n101.kvp is imported more than 100 deep");
    EXPECT_EQ(failure(write("t.kvp", "<project Name=\"P\" template_name=\"\"/>")),
              "no template for project P");
    EXPECT_EQ(failure(write("t.kvp", "<project Name=\"P\" template_name=\"T\"/>")),
              "t.kvp project template not found");
    EXPECT_FALSE(system.haveSolution());
    // A failure leaves nothing behind that would stand in the way.
    EXPECT_EQ(failure(write("good.kvp", "<project Name=\"P\"/>")), "loaded");
    EXPECT_EQ(failure(directory / "good.kvp"), "good.kvp solution already loaded");
    EXPECT_EQ(failure(directory / "b.kvp"), "b.kvp solution already loaded");
    EXPECT_TRUE(project("P"));
    system.closeSolution();
    EXPECT_EQ(failure(directory / "good.kvp"), "loaded");
}

TEST_F(Solution, ImportedSolutionsBringTheirProjects)
{
    macroSystem.setSystemMacro("LibDir", q(directory / "lib"));
    write("lib/lib.kvp", R"(<configuration Name="Debug" inherited_configurations="Own" where="lib"/>
        <configuration Name="Own" o="own"/><project Name="L"><file file_name="l.c"/></project><project Name="P"/>)");
    load(R"xml(<configuration Name="Common" all="outer"/><project Name="P"/>
            <import file_name="$(LibDir)/lib.kvp"/>)xml");
    EXPECT_EQ(system.solutionProjects(nullptr).keys(), (QStringList{"L", "P"}));
    ProjectElement* l = project("L");
    EXPECT_EQ(project("P")->parent(), system.solutionElement()) << "the first of two counts";
    ASSERT_TRUE(l);
    EXPECT_EQ(string(l, "o", "Debug"), "own");
    EXPECT_EQ(string(l, "all", "Debug"), "outer");
    EXPECT_EQ(file("l.c")->path().osPathQString(), q(directory / "lib/l.c"));
    EXPECT_EQ(l->parent()->attribute("file_name"), "$(LibDir)/lib.kvp");
    EXPECT_EQ(system.findProject(system.solutionElement(), "l"), nullptr);
}

TEST_F(Solution, FilesAreFoundWhereTheProjectDirectoryIs)
{
    load(R"(<project Name="P"><configuration Name="Common" project_directory="src/../app"/>
            <folder Name="F"><file file_name="a.c"/><file file_name="b.x" Name="Map">
            <configuration Name="Common" file_type="Memory Map"/></file></folder>
            <file file_name="/abs/c.S"/><file/></project>)");
    ProjectElement* p = project("P");
    EXPECT_EQ(system.getProjectDirectory(p), q(directory / "app"));
    EXPECT_EQ(file("a.c")->path().osPathQString(), q(directory / "app/a.c"));
    EXPECT_EQ(system.findAbsoluteFile(p, q(directory / "app/x/../a.c")), file("a.c"));
    EXPECT_EQ(system.findRelativeFile(p, "./a.c"), file("a.c"));
    EXPECT_EQ(system.findFolder(p, "F")->children().size(), 2u);
    EXPECT_EQ(system.getFileType(file("a.c")), "C");
    EXPECT_EQ(system.getFileType(file("Map")), "Memory Map");
    EXPECT_EQ(system.getFileType(file("c.S")), "Assembly");
    EXPECT_EQ(system.sourceFiles(p).size(), 4);
    EXPECT_EQ(p->children().back()->getName(), "<NULL>");
    EXPECT_EQ(system.findByName(p, "Map"), file("Map"));
    system.setProperty(p, "project_directory", "/moved", "Common");
    EXPECT_EQ(file("a.c")->path().osPathQString(), "/moved/a.c");
}

TEST_F(Solution, DynamicFoldersTakeFilesFromTheirDirectory)
{
    for (const char* name : {"src/b.c", "src/a.c", "src/x.h", "src/n.txt", "src/k.c"})
        directory.write(name, "");
    load(R"(<project Name="P"><folder Name="D" path="src" filter="c;n.*"><file file_name="src/k.c">
            <configuration Name="Common" q="1"/></file></folder><folder Name="E" path="nowhere"/></project>)");
    QStringList names;
    for (ProjectElement* each : system.sourceFiles(project("P")))
        names.append(each->getName());
    EXPECT_EQ(names, (QStringList{"k.c", "a.c", "b.c", "n.txt"}));
    EXPECT_EQ(string(file("k.c"), "q", "Debug"), "1");
    EXPECT_EQ(system.getFileType(file("a.c")), "C");
}

TEST_F(Solution, WhatIsSavedLoadsTheSame)
{
    directory.write("src/a.c", "");
    write("lib.kvp", "<project Name=\"L\"/>");
    load(R"(<configuration Name="Common" a="x&lt;&quot;y"/><import file_name="lib.kvp"/>
            <project Name="P"><configuration Name="Debug" b="2"/><folder Name="D" path="src"/>
            <file file_name="z.c"><configuration Name="Debug" c="3"/></file></project>)");
    system.setProperty(project("P"), "new", "value", "Debug");
    system.save();
    system.closeSolution();
    EXPECT_EQ(failure(directory / "s.kvp"), "loaded");
    EXPECT_EQ(string(project("P"), "a", "Debug"), "x<\"y");
    EXPECT_EQ(string(project("P"), "new", "Debug"), "value");
    EXPECT_EQ(string(file("z.c"), "c", "Debug"), "3");
    EXPECT_EQ(system.findFolder(project("P"), "D")->children().size(), 1u)
        << "generated files were not saved";
    EXPECT_TRUE(project("L"));
}

TEST_F(Solution, NewSolutionsAndProjects)
{
    ProjectElement* solution = system.createSolution(q(directory / "new.kvp"));
    ProjectElement* p = system.createProject(solution, "P", "Library");
    EXPECT_EQ(build.buildAction(p, "Debug"), BuildSystem::MakeLibrary);
    solution->makeConfiguration("Debug");
    QStringList list;
    system.configurations(p, list, ProjectSystem::VisibleConfigurations);
    EXPECT_EQ(list, QStringList{"Debug"});
    PropertyClassList classes;
    system.applicableSettingsFor(p, classes);
    for (const char* name : {"target_erase_script", "linker_memory_map_file", "c_additional_options"})
        EXPECT_TRUE(classes.contains(build.findPropertyClass(name))) << name;
    EXPECT_FALSE(classes.contains(build.findPropertyClass("cpp_enable_rtti")));
    system.save();
    system.closeSolution();
    EXPECT_EQ(failure(directory / "new.kvp"), "loaded");
}

TEST_F(Solution, HandlersMayOfferAnotherFile)
{
    struct Handler : ProjectFileNotFoundErrorHandler {
        QString fileNotFound(const QString& file) override
        {
            asked.append(file);
            return offer;
        }
        QStringList asked;
        QString offer;
    } handler;
    std::string file = write("real.kvp", "<project Name=\"P\"/>");
    EXPECT_THROW(system.loadSolution("/gone.kvp", &handler, nullptr), SolutionLoadError);
    handler.offer = q(file);
    system.loadSolution("/gone.kvp", &handler, nullptr);
    EXPECT_EQ(handler.asked, (QStringList{"/gone.kvp", "/gone.kvp"}));
    EXPECT_EQ(system.solutionFilePath(), q(file));
}
