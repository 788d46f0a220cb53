// Runs the scripts of this folder: what each prints stands at its end in a comment that begins with
// "expect". A failing script ends its output with "error: " and the message.
#include "ScriptFixture.h"

#include <QDir>
#include <QFile>
#include <gtest/gtest.h>

namespace {

class ScriptFile : public testing::TestWithParam<std::string> {};

TEST_P(ScriptFile, PrintsWhatItExpects)
{
    QFile file(QStringLiteral(QBURN_SOURCE_DIR "/tests/script/") + QString::fromStdString(GetParam()));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QString source = QString::fromUtf8(file.readAll());
    qsizetype start = source.indexOf(QLatin1String("/* expect\n"));
    ASSERT_GE(start, 0);
    QString expected = source.mid(start + 10);
    expected.truncate(expected.lastIndexOf(QLatin1String("*/")));

    ScriptWorld world;
    world.run(source);
    QStringList got = world.output().split('\n');
    QStringList want = expected.split('\n');
    for (qsizetype i = 0; i < std::max(got.size(), want.size()); ++i)
        EXPECT_EQ(got.value(i, QStringLiteral("(nothing)")).toStdString(),
                  want.value(i, QStringLiteral("(nothing)")).toStdString())
            << "output line " << i + 1;
}

std::vector<std::string> scripts()
{
    std::vector<std::string> names;
    for (const QString& name : QDir(QStringLiteral(QBURN_SOURCE_DIR "/tests/script")).entryList({"*.js"}, QDir::Files, QDir::Name))
        names.push_back(name.toStdString());
    return names;
}

INSTANTIATE_TEST_SUITE_P(Scripts, ScriptFile, testing::ValuesIn(scripts()), [](const auto& info) {
    return info.param.substr(0, info.param.find('.'));
});

} // namespace
