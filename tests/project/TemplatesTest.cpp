#include "project/BuildSystem.h"
#include "project/MacroSystem.h"
#include "project/ProjectElement.h"
#include "project/ProjectSystem.h"
#include "project/ProjectTemplates.h"
#include "project/PropertyValueGroups.h"
#include "project/SolutionFixture.h"
#include "project/SolutionLoadError.h"
#include "support/HException.h"

#include <QFile>

namespace {

class Templates : public SolutionFixture {
protected:
    ~Templates() override { templatesFile.clear(); }
    void writeTemplates(const std::string& body)
    {
        templatesFile = q(directory.write("templates.xml", "<projects>" + body + "</projects>"));
    }
};

const char* const GroupFile = R"(<groups><if Big="1"><group name="Never"/></if>
    <group name="Core" default="Small" short="Core size" group="CPU">
      <groupEntry name="Small"><property name="a" value="1"/><property name="d" value="2" configuration="Debug"/></groupEntry>
      <groupEntry name="Large"><property name="a" value="9"/><property name="e" value="3"/></groupEntry>
    </group></groups>)";

} // namespace

TEST_F(Templates, AProjectIsFilledFromItsTemplate)
{
    directory.write("src/a.c", "");
    directory.write("more.xml",
                    R"(<projects><configuration name="Base" hidden="Yes"><property name="b" value="shared"/>
        </configuration></projects>)");
    writeTemplates(R"xml(<include filename="more.xml" no_root="1"/>
        <configuration name="Debug" inherited_configurations="Base" Platform="MAXQ30"/>
        <project name="Program" project_type="Library" configurations="Base;Debug;Plain">
          <property name="p" value="$(ProjectName)"/><property name="q" value="$(ProjectName)" expand="yes"/>
          <property name="r" value="debug" configuration="Debug"/><property name="mine" value="template"/>
          <configuration name="Debug"><property name="s" value="inner"/></configuration>
          <folder name="Source" filter="c" source="src"/>
          <folder name="Start"><file source="$(ProjectDir)/crt0.s" expand="yes" name="Startup"><property name="t" value="file"/></file></folder>
        </project>)xml");
    load(R"(<project Name="P" template_name="Program"><configuration Name="Common" mine="kept"/></project>)");
    ProjectElement* p = project("P");
    EXPECT_FALSE(p->hasAttribute("template_name"));
    EXPECT_EQ(build.buildAction(p, "Debug"), BuildSystem::MakeLibrary);
    const std::tuple<const char*, const char*, const char*> settings[] = {
        {"p", "Debug", "$(ProjectName)"}, {"q", "Debug", "P"},     {"r", "Debug", "debug"},
        {"r", "Plain", "DEFAULT"},        {"s", "Debug", "inner"}, {"mine", "Debug", "kept"},
        {"b", "Debug", "shared"}};
    for (const auto& [name, configuration, expected] : settings)
        EXPECT_EQ(string(p, name, configuration), expected) << name;
    QStringList list;
    system.configurations(p, list, ProjectSystem::VisibleConfigurations);
    EXPECT_EQ(list, QStringList{"Debug"});
    EXPECT_EQ(string(file("Startup"), "t", "Debug"), "file");
    EXPECT_EQ(file("Startup")->path().osPathQString(), q(directory / "crt0.s"));
    EXPECT_TRUE(file("a.c")) << "a folder with a source is a dynamic one";
}

TEST_F(Templates, MissingAndDamagedTemplateFiles)
{
    const char* body = "<project Name=\"P\" template_name=\"T\"/>";
    templatesFile = q(directory / "none.xml");
    EXPECT_EQ(failure(write("s.kvp", body)), "s.kvp project template not found");
    writeTemplates("<include filename=\"not-installed.xml\" no_root=\"1\"/>");
    try {
        load(body);
        FAIL() << "loaded";
    } catch (const SolutionLoadError& e) {
        EXPECT_EQ(e.message(), "s.kvp project template not found");
        EXPECT_NE(e.hint().find("couldn't read " + (directory / "not-installed.xml")), std::string::npos);
    }
    writeTemplates("<broken>");
    EXPECT_EQ(failure(write("s.kvp", body)), "bad XML file - templates.xml|tagName mismatch|1");
    EXPECT_FALSE(system.haveSolution());
    struct Handler : TemplateNotFoundErrorHandler {
        QString templateNotFound(const QString&) override { return "Other"; }
    } handler;
    writeTemplates("<project name=\"Other\"><property name=\"x\" value=\"1\"/></project>");
    system.loadSolution(q(write("s.kvp", body)), nullptr, &handler);
    EXPECT_EQ(string(project("P"), "x", "Common"), "1");
    templatesFile.clear();
    macroSystem.setSystemMacro("TargetsDir", "/targets");
    EXPECT_EQ(projectTemplatesFile(macroSystem), "/targets/project_templates.xml");
    ProjectTemplates templates(system);
    templates.loadTemplates(q(directory / "templates.xml"));
    EXPECT_EQ(templates.listTemplates(), QStringList{"Other"});
    EXPECT_EQ(templates.findConfiguration("Other"), nullptr);
}

TEST_F(Templates, AGroupEntryStandsForManySettings)
{
    std::string groupFile = directory.write("groups.xml", GroupFile);
    load("<project Name=\"P\"/>");
    ProjectElement* p = project("P");
    PropertyValueGroups groups(macroSystem);
    EXPECT_EQ(groups.groupFile(), "None");
    groups.setGroupFile(q(groupFile));
    PropertyValueGroupClass* core = groups.getGroupClass("Core");
    ASSERT_TRUE(core);
    EXPECT_EQ(core->page(), "General");
    EXPECT_EQ(core->enumerates(), (QStringList{"Small", "Large"}));
    EXPECT_EQ(groups.getGroupClass("Never"), nullptr);
    EXPECT_EQ(groups.getGroupEntry("Core", "Large")->settings.size(), 2);
    EXPECT_EQ(groups.getGroupEntry("Core", "None"), nullptr);
    PropertyValueGroupValue value(system, core, "Common", p);
    value.setPropertyValue("Small");
    EXPECT_EQ(string(p, "a", "Release"), "1");
    EXPECT_EQ(string(p, "d", "Debug"), "2");
    EXPECT_EQ(string(p, "d", "Release"), "DEFAULT");
    EXPECT_EQ(value.getTaggedValue("d", "Debug"), "2");
    EXPECT_TRUE(value.getTaggedValue("d", "Release").isNull());
    EXPECT_EQ(value.getTaggedNames("Release"), QStringList{"a"});
    value.setValue("Large");
    EXPECT_EQ(string(p, "a", "Release"), "9");
    EXPECT_EQ(string(p, "d", "Debug"), "DEFAULT") << "what the old entry set is gone";
    EXPECT_EQ(value.toInt(), 1);
    // The file is read again when it changed; classes stay.
    directory.write("groups.xml",
                    "<groups><group name=\"Core\"><groupEntry name=\"Tiny\"/></group></groups>");
    {
        QFile changed(q(groupFile));
        ASSERT_TRUE(changed.open(QIODevice::ReadWrite));
        changed.setFileTime(QDateTime::currentDateTime().addSecs(60), QFileDevice::FileModificationTime);
    }
    EXPECT_FALSE(groups.isUpToDate());
    EXPECT_EQ(groups.getGroupClass("Core"), core);
    EXPECT_EQ(core->enumerates(), QStringList{"Tiny"});
    EXPECT_THROW(groups.setGroupFile(q(directory / "none.xml")), HException);
    EXPECT_THROW(groups.setGroupFile(q(directory.write("bad.xml", "<groups><if/></groups>"))), HException);
}

TEST_F(Templates, ATemplateMayChooseGroupEntries)
{
    directory.write("groups.xml", GroupFile);
    writeTemplates(
        R"xml(<project name="T"><propertygroup name="Core" value="Large"/><propertygroup name="Free" value="v"/>
        <property name="property_groups_file_path" value="$(SolutionDir)/groups.xml"/></project>)xml");
    load("<project Name=\"P\" template_name=\"T\"/>");
    EXPECT_EQ(string(project("P"), "Core", "Debug"), "Large");
    EXPECT_EQ(string(project("P"), "e", "Debug"), "3");
    EXPECT_EQ(string(project("P"), "Free", "Debug"), "v");
}
