#include "project/EnvironmentSettings.h"
#include "project/MacroSystem.h"
#include "project/PackageSystem.h"
#include "project/PropertyClass.h"
#include "project/PropertyValue.h"
#include "support/HException.h"
#include "support/Path.h"
#include "support/Failure.h"
#include "support/TempDir.h"

#include <QDir>

#include <fstream>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace {

std::string contents(const std::string& path)
{
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

} // namespace

TEST(Settings, EntriesSurviveTheFile)
{
    TempDir directory;
    std::string file = directory / "deep/settings.xml";
    Settings settings;
    settings.setPath(Path(file));
    settings.load();
    bool found = true;
    EXPECT_EQ(settings.readEntry("a", "otherwise", &found), "otherwise");
    EXPECT_FALSE(found);
    EXPECT_TRUE(settings.sync());
    EXPECT_FALSE(QDir(QString::fromStdString(directory / "deep")).exists())
        << "nothing changed, nothing written";
    const std::pair<const char*, const char*> entries[] = {{"plain", "v"},
                                                           {"markup", "a<b>&\"c'"},
                                                           {"key <&\">", "x"},
                                                           {"blanks", "  a  "},
                                                           {"only", "   "},
                                                           {"empty", ""},
                                                           {"lines", "\n\ta\r\nb\n"},
                                                           {"unicode", "caf\xc3\xa9 \xe2\x82\xac"},
                                                           {"bracket", "]]>"}};
    for (const auto& [key, value] : entries)
        settings.writeEntry(key, value);
    EXPECT_TRUE(settings.sync());
    Settings again;
    again.setPath(Path(file));
    again.load();
    for (const auto& [key, value] : entries) {
        EXPECT_EQ(again.readEntry(key, "?", &found), QString::fromUtf8(value)) << key;
        EXPECT_TRUE(found);
    }
    Settings one;
    one.setPath(Path(directory / "one.xml"));
    one.writeEntry("A/B", "1");
    ASSERT_TRUE(one.save());
    EXPECT_EQ(contents(directory / "one.xml"), "<!DOCTYPE Forgeline_Settings_File>\n<settings>\n"
                                               "  <setting name=\"A/B\">1</setting>\n</settings>\n");
}

TEST(Settings, ChangesOfTwoProcessesMerge)
{
    TempDir directory;
    Path file(directory / "settings.xml");
    Settings first, second;
    for (Settings* each : {&first, &second}) {
        each->setPath(file);
        each->load();
    }
    first.writeEntry("one", "1");
    first.writeEntry("both", "first");
    ASSERT_TRUE(first.sync());
    second.writeEntry("two", "2");
    second.writeEntry("both", "second");
    ASSERT_TRUE(second.sync());
    EXPECT_EQ(second.readEntry("one"), "1");
    first.removeEntry("one");
    ASSERT_TRUE(first.sync());
    Settings result;
    result.setPath(file);
    result.load();
    bool found = true;
    result.readEntry("one", "", &found);
    EXPECT_FALSE(found) << "removed by the one, unchanged by the other";
    EXPECT_EQ(result.readEntry("two"), "2");
    EXPECT_EQ(result.readEntry("both"), "second");
    // The other takes the removal over with its next change.
    second.writeEntry("three", "3");
    ASSERT_TRUE(second.sync());
    second.readEntry("one", "", &found);
    EXPECT_FALSE(found);
}

TEST(Settings, WritersAtTheSameMomentLoseNothing)
{
    TempDir directory;
    Path file(directory / "settings.xml");
    constexpr int Processes = 4, Entries = 20;
    for (int process = 0; process < Processes; ++process) {
        if (fork() == 0) {
            Settings settings;
            settings.setPath(file);
            settings.load();
            bool good = true;
            for (int i = 0; i < Entries; ++i) {
                settings.writeEntry(QStringLiteral("%1/%2").arg(process).arg(i), "x");
                good = settings.sync() && good;
            }
            _exit(good ? 0 : 1);
        }
    }
    for (int process = 0; process < Processes; ++process) {
        int status = -1;
        wait(&status);
        EXPECT_EQ(status, 0);
    }
    Settings result;
    result.setPath(file);
    result.load();
    for (int i = 0; i < Processes * Entries; ++i)
        EXPECT_EQ(result.readEntry(QStringLiteral("%1/%2").arg(i / Entries).arg(i % Entries)), "x") << i;
}

TEST(Settings, FilesOfAnotherKindAreIgnoredAndKept)
{
    TempDir directory;
    const std::string texts[] = {"<!DOCTYPE Other><settings><setting name=\"a\">1</setting></settings>",
                                 "<settings><setting name=\"a\">1</setting></settings>", "just text"};
    for (const std::string& text : texts) {
        std::string file = directory.write("settings.xml", text);
        Settings settings;
        settings.setPath(Path(file));
        settings.load();
        EXPECT_EQ(settings.readEntry("a", "none"), "none");
        settings.writeEntry("b", "1");
        EXPECT_FALSE(settings.sync());
        EXPECT_EQ(contents(file), text);
    }
    // A damaged file of ours is replaced.
    std::string file = directory.write("settings.xml", "<!DOCTYPE Forgeline_Settings_File><settings><set");
    Settings settings;
    settings.setPath(Path(file));
    settings.load();
    settings.writeEntry("b", "1");
    EXPECT_TRUE(settings.sync());
    EXPECT_NE(contents(file).find(">1</setting>"), std::string::npos);
}

TEST(Settings, SavingWhereNothingCanBeWrittenIsSilent)
{
    TempDir directory;
    directory.write("plain", "");
    Settings settings;
    settings.setPath(Path(directory / "plain/settings.xml"));
    settings.load();
    settings.writeEntry("a", "1");
    EXPECT_FALSE(settings.sync());
    EXPECT_FALSE(settings.save());
    EXPECT_EQ(settings.readEntry("a"), "1");
    setenv("HOME", (directory / "plain").c_str(), 1);
    {
        EnvironmentSettings environmentSettings;
        environmentSettings.createEntries();
        environmentSettings.findProperty("Environment/Size Display Unit")->setValue(2);
    }
    EXPECT_EQ(contents(directory / "plain"), "");
}

TEST(EnvironmentSettings, EntriesLiveInTheUserFile)
{
    TempDir directory;
    PropertyClass custom("Environment/Custom", PropertyClass::Integer, QString("5"), "", "", "", "");
    {
        EnvironmentSettings settings;
        settings.createEntries();
        PropertyValue* unit = settings.findProperty("Environment/Size Display Unit");
        ASSERT_TRUE(unit);
        EXPECT_EQ(unit->toInt(), 0);
        EXPECT_TRUE(unit->inherited());
        unit->setValue(1);
        EXPECT_FALSE(unit->inherited());
        EXPECT_GT(settings.findProperty("Environment/Debugger/Maximum Backtrace Calls")->toInt(), 0);
        EXPECT_EQ(settings.findProperty("Environment/Nothing"), nullptr);
        EXPECT_EQ(settings.readSetting(&custom), "5");
        settings.writeSetting(&custom, "6");
    }
    EXPECT_NE(contents(directory / "home/.forgeline/maxq30/settings.xml").find(">6</setting>"),
              std::string::npos);
    EnvironmentSettings settings;
    settings.createEntries();
    EXPECT_EQ(settings.findProperty("Environment/Size Display Unit")->toInt(), 1);
    EXPECT_EQ(settings.readSetting(&custom), "6");
    settings.removeSetting(&custom);
    EXPECT_EQ(settings.readSetting(&custom), "5");
    // A transient value is kept apart from what the user chose.
    EnvironmentPropertyValue state(&custom, &settings.transientSettings());
    state.setTransient(true);
    settings.registerProperty("Environment/Custom", &state);
    settings.writeSetting(&custom, "7");
    EXPECT_EQ(state.toInt(), 7);
    EXPECT_EQ(settings.userSettings().readEntry("Environment/Custom", "none"), "none");
}

TEST(PackageSystem, DirectoriesAndTheirFiles)
{
    TempDir directory;
    setupDefaultSystemMacros(macroSystem, "/opt/../bench");
    EXPECT_EQ(macroSystem.systemMacro("BenchDir"), "/bench");
    EXPECT_EQ(macroSystem.systemMacro("BenchUserDir"),
              QString::fromStdString(directory / "home/.forgeline/maxq30"));
    EXPECT_EQ(macroSystem.systemMacro("BenchMajorVersion"), "2");
    std::string targets = directory / "home/.forgeline/maxq30/packages/targets";
    std::string kept = directory.write("home/.forgeline/maxq30/packages/targets/frequencies.xml", "mine");
    PackageSystem::setupPackageMacros(macroSystem, "$(BenchUserDir)/packages");
    PackageSystem::createPackageFiles(macroSystem);
    EXPECT_EQ(macroSystem.systemMacro("TargetsDir").toStdString(), targets);
    EXPECT_TRUE(macroSystem.systemMacro("SamplesDir").endsWith("/packages/samples"));
    EXPECT_EQ(contents(kept), "mine");
    EXPECT_EQ(
        contents(targets + "/project_templates.xml"),
        "<!DOCTYPE Project_Templates_File>\n<projects>\n"
        "  <include filename=\"$(BenchDir)/targets/project_templates.xml\" no_root=\"1\" />\n</projects>\n");
    std::filesystem::remove(kept);
    PackageSystem::setupPackageMacros(macroSystem, "$(BenchUserDir)/packages");
    PackageSystem::createPackageFiles(macroSystem);
    EXPECT_EQ(contents(kept),
              "<envelope>\n  <include filename=\"$(BenchDir)/targets/frequencies.xml\" />\n</envelope>\n");
    std::string plain = directory.write("plain", "");
    PackageSystem::setupPackageMacros(macroSystem, QString::fromStdString(plain));
    EXPECT_EQ(failureOf([] { PackageSystem::createPackageFiles(macroSystem); }),
              "cannot create " + plain + "/targets/frequencies.xml");
}
