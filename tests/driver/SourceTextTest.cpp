// Lines of source files that may be anything.
#include "driver/session/SourceText.h"
#include "support/Path.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

std::string line(SourceText& source, const std::string& path, int number)
{
    QString text = source.line(Path(path), number);
    return text.isNull() ? "none" : text.toStdString();
}

} // namespace

TEST(SourceText, LinesAsTheyAreOnDiskNow)
{
    TempDir directory;
    SourceText source;
    std::string file = directory.write("a.c", "one\r\n\n\xC3\xA9\nlast");
    EXPECT_EQ(source.lines(Path(file)), 4);
    EXPECT_EQ(line(source, file, 1), "one");
    EXPECT_EQ(line(source, file, 2), "");
    EXPECT_EQ(line(source, file, 3), "\xC3\xA9");
    EXPECT_EQ(line(source, file, 4), "last");
    for (int beyond : {0, -1, 5, 1 << 30})
        EXPECT_EQ(line(source, file, beyond), "none") << beyond;
    directory.write("a.c", "changed\n");
    EXPECT_EQ(source.lines(Path(file)), 1);
    EXPECT_EQ(line(source, file, 1), "changed");
    std::filesystem::remove(file);
    EXPECT_EQ(line(source, file, 1), "none");
    directory.write("a.c", "back\n");
    EXPECT_EQ(line(source, file, 1), "back");
}

TEST(SourceText, WhatIsNoSourceHasNoLines)
{
    TempDir directory;
    SourceText source;
    for (const std::string& name : {directory.path(), directory / "none.c", std::string("/dev/zero"),
                                    std::string("/dev/null"), directory.write("empty.c", "")}) {
        EXPECT_EQ(source.lines(Path(name)), 0) << name;
        EXPECT_EQ(line(source, name, 1), "none") << name;
    }
    std::string wide = directory.write("wide.c", std::string(10 << 20, 'x') + "\nnext\n");
    EXPECT_EQ(line(source, wide, 1).size(), 4096u) << "a long line is cut";
    EXPECT_EQ(line(source, wide, 2), "next");
    std::filesystem::resize_file(wide, 100 << 20);
    EXPECT_EQ(line(source, wide, 1), "none") << "larger than any source";
}
