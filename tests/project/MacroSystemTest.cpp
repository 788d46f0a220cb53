#include "project/MacroSystem.h"
#include "project/EnvironmentSettings.h"
#include "support/HException.h"
#include "support/Path.h"
#include "support/Failure.h"
#include "support/TempDir.h"

#include <QLocale>

namespace {

std::string expand(const MacroSystem::Macros& macros, const char* text)
{
    return MacroSystem::replaceMacros(macros, QString::fromUtf8(text)).toStdString();
}

} // namespace

TEST(MacroSystem, Expansion)
{
    const MacroSystem::Macros macros{{"A", "1"}, {"B", "$(A)"}, {"C", ""}, {"x1", "found"}, {"Date", "mine"}};
    const std::pair<const char*, const char*> cases[] = {
        {"plain", "plain"},           {"", ""},
        {"$(A)$(A)-$(C)", "11-"},     {"$(B)", "$(A)"}, // a value is inserted as it stands
        {"$(Unknown)", "$(Unknown)"}, {"$(Unknown:x)", "x"},
        {"$(Unknown:)", ""},          {"$(Unknown:a:b)", "a:b"},
        {"$(A:never)", "1"},          {"$(U:$(A))", "1"},
        {"$(U:$(V:$(A)))", "1"},      {"$(U:$(V))", "$(V)"},
        {"$(U:f(x)y)", "f(x)y"},      {"$($(A))", "$($(A))"},
        {"cost: $5 $", "cost: $5 $"}, {"$(A", "(A"},
        {"a$(b$(A)", "a(b1"},         {"$()", "$()"},
        {"$(Date)", "mine"},
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(expand(macros, text), expected) << text;
}

TEST(MacroSystem, DateMacrosAreComputedThoughTheTableListsThem)
{
    for (const char* name :
         {"Date", "DateYear", "DateMonth", "DateDay", "Time", "TimeHour", "TimeMinute", "TimeSecond"})
        EXPECT_TRUE(macroSystem.systemMacros().contains(name)) << name;
    QString year = QLocale().toString(QDate::currentDate(), "yyyy");
    EXPECT_EQ(MacroSystem::replaceMacros(macroSystem.globalMacros(true), "$(DateYear)"), year);
    EXPECT_EQ(MacroSystem::replaceMacros({}, "$(DateYear)"), year);
    QString value;
    EXPECT_FALSE(MacroSystem::dynamicMacro("Dates", value));
    EXPECT_EQ(macroSystem.systemMacro("HostOS"), "solaris");
    EXPECT_EQ(macroSystem.systemMacro("HostDLL"), ".so_solaris_x86");
    EXPECT_EQ(macroSystem.systemMacro("NoSuch"), "");
}

TEST(MacroSystem, EndlessExpansionNamesTheMacro)
{
    const MacroSystem::Macros macros{
        {"v", "$(q:$(w)) $(w)"}, {"w", "$(q:$(v)) $(v)"}, {"big", QString(600000, 'x')}};
    auto failure = [&](const char* text) { return failureOf([&] { expand(macros, text); }); };
    EXPECT_EQ(failure("$(big)$(big)"), "macro $(big) expands to more than 1048576 characters");
    EXPECT_NE(failure("$(q:$(v)) $(v)").find("macro $("), std::string::npos);
    // Unclosed references: linear, and each loses its "$".
    std::string unclosed;
    for (int i = 0; i < 200000; ++i)
        unclosed += "$(";
    EXPECT_EQ(expand(macros, unclosed.c_str()), std::string(200000, '('));
}

TEST(MacroSystem, ListsAndTables)
{
    MacroSystem::Macros macros = MacroSystem::macrosFromStringList({"a=b=c", "d", "e=", "a=2"});
    EXPECT_EQ(macros, (MacroSystem::Macros{{"a", "2"}, {"d", ""}, {"e", ""}}));
    EXPECT_EQ(MacroSystem::macrosFromStringList({"a=b=c"}).value("a"), "b=c");
    MacroSystem::overwriteMacros(macros, {{"d", "1"}, {" f ", "3"}});
    EXPECT_EQ(MacroSystem::stringListFromMacros(macros), (QStringList{"f=3", "a=2", "d=1", "e="}));
    EXPECT_EQ(MacroSystem::stringListFromString("a;;b\\;c\\\\;", false), (QStringList{"a", "b;c\\"}));
    EXPECT_EQ(MacroSystem::stringListFromString("a;;b;", true), (QStringList{"a", "", "b", ""}));
    EXPECT_EQ(MacroSystem::stringListFromString("tail\\", false), QStringList{"tail\\"});
    const QStringList hard{"a;b", "\\", "c\\;", "\\\\;"};
    EXPECT_EQ(MacroSystem::stringListFromString(MacroSystem::stringFromStringList(hard)), hard);
}

TEST(MacroSystem, GlobalMacrosLiveInTheSettings)
{
    TempDir directory;
    EXPECT_THROW(macroSystem.setGlobalMacro("Mine", "1"), HException);
    macroSystem.setSystemMacroPath("TestSystem", Path("/a/../b"));
    {
        EnvironmentSettings settings;
        macroSystem.setSettings(&settings);
        settings.createEntries();
        macroSystem.setGlobalMacro("Mine", "x;y=z");
        macroSystem.setGlobalMacro("TestSystem", "over");
        macroSystem.setGlobalMacro("Gone", "1");
        macroSystem.setGlobalMacro("Gone", "");
        EXPECT_EQ(macroSystem.globalMacros(false),
                  (MacroSystem::Macros{{"Mine", "x;y=z"}, {"TestSystem", "over"}}));
    }
    EnvironmentSettings again;
    macroSystem.setSettings(&again);
    EXPECT_EQ(macroSystem.globalMacro("Mine"), "x;y=z");
    EXPECT_EQ(macroSystem.globalMacro("TestSystem"), "over");
    macroSystem.setSettings(nullptr);
    EXPECT_EQ(macroSystem.globalMacro("TestSystem"), "/b");
}
