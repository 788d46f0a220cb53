#include "support/Path.h"

#include <gtest/gtest.h>

TEST(Path, NormalisesStepsButKeepsWhatIsNone)
{
    const std::pair<const char*, const char*> cases[] = {
        {"/a/b/../c", "/a/c"},
        {"/a/./b", "/a/b"},
        {"/a/b/.", "/a/b"},
        {"/a//b", "/a/b"},
        {"/a////b//c", "/a/b/c"},
        {"../a", "../a"},
        {"/.hidden/x", "/.hidden/x"},
        {"a.b/c.d", "a.b/c.d"},
        {"/a/../../b", "/../b"},
        {"/a/b/c/../../d", "/a/d"},
        {"./a", "./a"},
        {"/a/b//../c", "/a/c"},
        {"/a//../b", "/b"},
        {"a/../../b", "a/b"}, // the first step finds no slash before it and is a part for the second
        {"/a/...", "."},
        {"/.", ""},
    };
    for (auto [text, expected] : cases)
        EXPECT_EQ(Path(text).osPath(), expected) << text;
    EXPECT_EQ((Path("a") + "b").osPath(), "ab");
    EXPECT_TRUE(Path("/a/x/../b") == Path("/a/b"));
    // Quadratic work would take minutes here.
    EXPECT_EQ(Path("/a" + QString("/.").repeated(1000000)).osPath(), "/a");
    EXPECT_EQ(Path(QString("/a").repeated(1000000) + QString("/..").repeated(1000000)).osPath(), "");
    EXPECT_EQ(Path(QString(1000000, 'a') + QString("/..").repeated(1000000)).filePath().size(), 1000000);
}

TEST(Path, CopyKeepsItsTextWhenTheOriginalChanges)
{
    Path a("/tmp/one.hex");
    Path b = a;
    EXPECT_EQ(b.fileName(), QString("one.hex"));
    a.setPath("/tmp/two.tar.gz");
    EXPECT_EQ(b.osPath(), "/tmp/one.hex");
    EXPECT_EQ(a.fileName(), QString("two.tar.gz")); // the file info was dropped with the old text
    EXPECT_EQ(a.extension(true), QString("tar.gz"));
    EXPECT_EQ(a.extension(false), QString("gz"));
}

TEST(Path, RelativeWays)
{
    QString result;
    EXPECT_TRUE(Path::relativeDirPath("/a/b", "/a/c/d", result));
    EXPECT_EQ(result, QString("../c/d"));
    EXPECT_TRUE(Path::relativeDirPath("/a", "/a", result));
    EXPECT_EQ(result, QString());
    EXPECT_FALSE(Path::relativeDirPath("/a", "/b", result));
    EXPECT_EQ(Path::relativeFilePath("/a/b", "/a/x.c"), QString("../x.c"));
    EXPECT_EQ(Path::relativeFilePath("/a", "/a/x.c"), QString("x.c"));
    EXPECT_EQ(Path::relativeFilePath("/a", "/b/x.c"), QString("/b/x.c"));
    EXPECT_EQ(Path::relativeFilePath("/a/b", "x.c"), QString("x.c")); // a bare name lies in `from`
}
