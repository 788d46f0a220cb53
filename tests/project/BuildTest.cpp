#include "project/CachedTextFile.h"
#include "project/EnvironmentSettings.h"
#include "project/ProjectElement.h"
#include "project/PropertyClass.h"
#include "project/SolutionFixture.h"
#include "support/HException.h"

#include <QFile>

namespace {

class Build : public SolutionFixture {
protected:
    std::string macro(ProjectElement* node, const char* name, const char* configuration = "Debug")
    {
        return build.macros(node, configuration).value(name).toStdString();
    }
    std::string output(ProjectElement* element, bool absolute = false)
    {
        return build.output(element, "Debug", absolute).toStdString();
    }
};

} // namespace

TEST_F(Build, OutputNamesFollowTheProjectType)
{
    load(R"(<project Name="Blink"><configuration Name="Common" project_directory="app"/>
              <file file_name="m.c"/><file file_name="n.cpp"/><file file_name="r.txt"/><file file_name="x.c">
              <configuration Name="Debug" build_exclude_from_build="Yes"/></file></project>
            <project Name="Lib"><configuration Name="Common" project_type="Library"/></project>
            <project Name="Obj"><configuration Name="Common" project_type="Object file"/></project>
            <project Name="Ext"><configuration Name="Common" project_type="Externally Built Executable"
              external_build_file_name="/elsewhere/$(ProjectName).hex"/></project>
            <project Name="Stage"><configuration Name="Common" project_type="Staging"/>
              <folder Name="F"><file file_name="sub/r.txt"/></folder></project>
            <project Name="Comb"><configuration Name="Common" project_type="Combining" combine_output_filepath="all.bin"/>
              <file file_name="q.c"/></project>)");
    struct Case {
        ProjectElement* element;
        int action;
        std::string expected;
    };
    ProjectElement* app = project("Blink");
    auto in = [&](const char* name, const char* fileName) {
        return system.findFile(project(name), fileName);
    };
    const Case cases[] = {
        {app, 10, directory / "app/Debug/Blink.kvx"},
        {project("Lib"), 11, directory / "Debug/Lib.kva"},
        {project("Obj"), 0, ""},
        {project("Ext"), 8, "/elsewhere/Ext.hex"},
        {project("Stage"), 12, ""},
        {in("Stage", "r.txt"), 12, directory / "Debug/sub/r.txt"},
        {project("Comb"), 13, directory / "all.bin"},
        {in("Comb", "q.c"), 13, directory / "all.bin"},
        {in("Blink", "m.c"), 2, directory / "app/Debug/m.kvo"},
        {in("Blink", "n.cpp"), 3, directory / "app/Debug/n.kvo"},
        {in("Blink", "r.txt"), 0, ""},
        {in("Blink", "x.c"), 1, ""},
        {system.findFolder(project("Stage"), "F"), 0, ""},
        {system.solutionElement(), 0, ""},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(build.buildAction(each.element, "Debug"), each.action)
            << each.element->getName().toStdString();
        EXPECT_EQ(output(each.element, true), each.expected) << each.element->getName().toStdString();
    }
    EXPECT_EQ(output(app), "Debug/Blink.kvx");
    EXPECT_EQ(build.output(in("Blink", "x.c"), "Release", false), "Release/x.kvo");
    EXPECT_TRUE(build.canLoad(app, "Debug") && build.canLoad(project("Ext"), "Debug"));
    EXPECT_FALSE(build.canLoad(project("Lib"), "Debug"));
    EXPECT_TRUE(build.canCompile(in("Blink", "m.c"), "Debug"));
    EXPECT_FALSE(build.mustCompile(in("Blink", "x.c"), "Debug"));
    EXPECT_TRUE(build.mustCompile(in("Blink", "m.c"), "Debug"));
}

TEST_F(Build, MacrosOfANode)
{
    load(R"xml(<configuration Name="Common" macros="Who=solution;Only=outer" Platform="MAXQ30"/>
            <project Name="P"><configuration Name="Common" project_directory="app" macros="Who=project;Self=$(Who)"
              build_root_output_directory="out" build_output_directory="out/$(Configuration)/bin"/>
              <configuration Name="Flat" build_output_directory="" build_use_hardware_multiplier="Inline"
                double_is_float="Yes"/>
              <file file_name="sub/m.test.c"/></project>)xml");
    ProjectElement* p = project("P");
    ProjectElement* f = file("m.test.c");
    const std::tuple<ProjectElement*, const char*, std::string> cases[] = {
        {p, "Who", "project"}, // the inner entry of an accumulated list wins
        {p, "Only", "outer"},
        {p, "Self", "$(Who)"},
        {f, "ProjectNodeName", "m.test.c"},
        {f, "ProjectName", "P"},
        {f, "ProjectDir", directory / "app"},
        {p, "Configuration", "Debug"},
        {p, "Platform", "maxq30"},
        {p, "SolutionDir", directory.path()},
        {p, "SolutionName", "s"},
        {p, "SolutionFileName", "s.kvp"},
        {p, "SolutionPath", directory / "s.kvp"},
        {p, "SolutionExt", "kvp"},
        {f, "InputDir", directory / "app/sub"},
        {f, "InputName", "m.test"},
        {f, "InputFileName", "m.test.c"},
        {f, "InputExt", "c"},
        {f, "InputPath", directory / "app/sub/m.test.c"},
        {f, "RelInputPath", "sub/m.test.c"},
        {p, "InputPath", ""},
        {p, "OBJ", ".kvo"},
        {p, "EXE", ".kvx"},
        {p, "LIB", ".kva"},
        {p, "PackageExt", "kvq"},
        {p, "IntDir", "Debug"},
        {p, "RootOutDir", "out"},
        {p, "OutDir", "out/Debug/bin"},
        {p, "RootRelativeOutDir", "Debug/bin"},
        {p, "HostEXE", ""},
        {p, "LibExt", "_sd"},
        {f, "LibExt", ""},
    };
    for (const auto& [node, name, expected] : cases)
        EXPECT_EQ(macro(node, name), expected) << name;
    EXPECT_EQ(macro(p, "OutDir", "Flat"), ".");
    EXPECT_EQ(macro(p, "LibExt", "Flat"), "_hf");
}

TEST_F(Build, SettingsAreExpandedAndProjectMacrosBeatGlobalOnes)
{
    EnvironmentSettings settings;
    macroSystem.setSettings(&settings);
    macroSystem.setGlobalMacro("Out", "global");
    macroSystem.setGlobalMacro("Extra", "x");
    load(R"xml(<configuration Name="Common" debug_additional_load_files="sol.hex"/>
            <project Name="P"><configuration Name="Common" macros="Out=mine" build_output_file_name="$(Out)/$(Extra)$(EXE)"
             debug_additional_load_files="$(Out).hex;b\;c"/></project>)xml");
    ProjectElement* p = project("P");
    EXPECT_EQ(output(p), "mine/x.kvx");
    PropertyClass* more = build.findPropertyClass("debug_additional_load_files");
    ASSERT_TRUE(more);
    EXPECT_EQ(build.settingForExpanded(p, more, "Debug"), "mine.hex;b\\;c;sol.hex");
    EXPECT_EQ(build.stringListSetting("-l", p, more, "Debug"),
              (QStringList{"-lmine.hex", "-lb;c", "-lsol.hex"}));
    macroSystem.setSettings(nullptr);
}

TEST_F(Build, TheVocabularyIsComplete)
{
    const std::tuple<const char*, PropertyClass::Type, const char*, const char*> rows[] = {
        {"build_intermediate_directory", PropertyClass::FileName, "Build", "$(Configuration)"},
        {"build_output_file_name", PropertyClass::FileName, "Linker", "$(OutDir)/$(ProjectName)$(EXE)"},
        {"link_standard_libraries_directory", PropertyClass::DirPath, "Linker", "$(BenchDir)/lib"},
        {"linker_output_format", PropertyClass::Enumeration, "Linker", "None"},
        {"external_load_file_type", PropertyClass::Enumeration, "External Build", "Detect"},
        {"arm_linker_jtag_pad_post_dr", PropertyClass::IntegerRange, "Debugger", "0"},
        {"debug_additional_load_files", PropertyClass::StringList, "Debugger", ""},
        {"linker_stack_size", PropertyClass::IntegerRange, "Linker", ""},
        {"simulator_DLL_FileName", PropertyClass::FileName, "Target", ""},
        {"property_groups_file_path", PropertyClass::ProjFileName, "Build", ""},
    };
    for (const auto& [name, type, page, otherwise] : rows) {
        PropertyClass* found = build.findPropertyClass(name);
        ASSERT_TRUE(found) << name;
        EXPECT_EQ(found->type(), type) << name;
        EXPECT_EQ(found->page(), page) << name;
        EXPECT_EQ(found->defaultValue(), otherwise) << name;
    }
    EXPECT_EQ(build.findPropertyClass("external_load_file_type")->enumerates(),
              (QStringList{"Detect", "kvx", "bin", "ihex", "hex", "tihex", "srec"}));
    EXPECT_EQ(build.findPropertyClass("arm_linker_jtag_pad_pre_ir")->maximum(), 1024);
    EXPECT_TRUE(build.findPropertyClass("build_action")->readOnly());
    EXPECT_EQ(build.findPropertyClass("no_such"), nullptr);
}

TEST_F(Build, FilesForTheLink)
{
    directory.write("app/map.xml", "");
    directory.write("board.xml", "");
    load(R"(<configuration Name="Common" linker_memory_map_file="$(SolutionDir)/board.xml"/>
            <project Name="ByFile"><configuration Name="Common" project_directory="app"/>
              <file file_name="none.xml"><configuration Name="Common" file_type="Memory Map" build_exclude_from_build="Yes"/></file>
              <folder Name="F"><file file_name="map.xml"><configuration Name="Common" file_type="Memory Map"/></file></folder>
              <file file_name="t.js" file_type="Target Script"/></project>
            <project Name="BySetting"/>
            <project Name="Missing"><configuration Name="Common" linker_memory_map_file="gone.xml"/></project>
            <project Name="Dir"><configuration Name="Common" linker_memory_map_file="."/></project>)");
    QString result;
    EXPECT_TRUE(build.useMemoryMapFileForLink(project("ByFile"), "Debug", result));
    EXPECT_EQ(result, q(directory / "app/map.xml"));
    EXPECT_TRUE(build.useMemoryMapFileForLink(project("BySetting"), "Debug", result));
    EXPECT_EQ(result, q(directory / "board.xml"));
    EXPECT_FALSE(build.useMemoryMapFileForLink(project("Missing"), "Debug", result));
    EXPECT_EQ(result, q(directory / "gone.xml")) << "still names what was looked for";
    EXPECT_FALSE(build.useMemoryMapFileForLink(project("Dir"), "Debug", result));
    EXPECT_FALSE(build.useSectionPlacementFileForLink(project("ByFile"), "Debug", result));
    EXPECT_TRUE(result.isEmpty());
    ProjectElement* script = build.findFileOfType(project("ByFile"), "Debug", "Target Script");
    ASSERT_TRUE(script);
    EXPECT_EQ(script->path().fileName(), "t.js");
    EXPECT_EQ(build.findFileOfType(project("ByFile"), "Debug", "Reset Script"), nullptr);
}

TEST_F(Build, CachedTextsFollowTheirFile)
{
    std::string file = directory.write("a.js", "one");
    QDateTime time;
    EXPECT_EQ(CachedTextFile::read(q(file), &time), "one");
    EXPECT_TRUE(time.isValid());
    directory.write("a.js", "two");
    {
        QFile changed(q(file));
        ASSERT_TRUE(changed.open(QIODevice::ReadWrite));
        changed.setFileTime(time.addSecs(10), QFileDevice::FileModificationTime);
    }
    EXPECT_EQ(CachedTextFile::read(q(file), nullptr), "two");
    EXPECT_THROW(CachedTextFile::read(q(directory / "none.js"), nullptr), HException);
    EXPECT_THROW(CachedTextFile::read(q(directory.path()), nullptr), HException);
}
