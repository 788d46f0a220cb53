// Runs the scripts of this folder: what each prints stands at its end in a comment that begins with
// "expect". A failing script ends its output with "error: " and the message.
#include "ScriptFixture.h"

#include <QDir>
#include <QFile>
#include <gtest/gtest.h>

#include <ostream>
#include <tuple>

namespace {

// Where a script's variables live decides which instructions the compiler chooses for them, so each
// script runs in every place: with global names, with a function's registers, with the slots of an
// activation that a closure holds, and with names that are looked for as the script runs.
struct Place {
    const char* name;
    const char* before;
    const char* after;
    friend void PrintTo(const Place& place, std::ostream* out) { *out << place.name; }
};

const Place g_places[] = {
    {"Globals", "", ""},
    {"Registers", "function place() {", "\n}\nplace();"},
    {"Activation", "function place() { function holder() { return eval('1'); }", "\nholder();\n}\nplace();"},
    {"Dynamic", "function place() { with ({}) {", "\n}\n}\nplace();"},
};

class ScriptFile : public testing::TestWithParam<std::tuple<std::string, Place>> {};

std::vector<std::string> scripts()
{
    std::vector<std::string> names;
    for (const QString& name :
         QDir(QStringLiteral(QBURN_SOURCE_DIR "/tests/script")).entryList({"*.js"}, QDir::Files, QDir::Name))
        names.push_back(name.toStdString());
    return names;
}

} // namespace

TEST_P(ScriptFile, PrintsWhatItExpects)
{
    const auto& [name, place] = GetParam();
    QFile file(QStringLiteral(QBURN_SOURCE_DIR "/tests/script/") + QString::fromStdString(name));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QString source = QString::fromUtf8(file.readAll());
    qsizetype start = source.indexOf(QLatin1String("/* expect\n"));
    ASSERT_GE(start, 0);
    QString expected = source.mid(start + 10);
    expected.truncate(expected.lastIndexOf(QLatin1String("*/")));

    ScriptWorld world;
    world.run(QLatin1String(place.before) + source + QLatin1String(place.after));
    QStringList got = world.output().split('\n');
    QStringList want = expected.split('\n');
    for (qsizetype i = 0; i < std::max(got.size(), want.size()); ++i)
        EXPECT_EQ(got.value(i, QStringLiteral("(nothing)")).toStdString(),
                  want.value(i, QStringLiteral("(nothing)")).toStdString())
            << "output line " << i + 1;
}

INSTANTIATE_TEST_SUITE_P(Scripts, ScriptFile,
                         testing::Combine(testing::ValuesIn(scripts()), testing::ValuesIn(g_places)),
                         [](const auto& info) {
                             const std::string& file = std::get<0>(info.param);
                             return file.substr(0, file.find('.')) + "In" + std::get<1>(info.param).name;
                         });
