#include "support/QTx.h"
#include "support/Path.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

TEST(QTx, MakesMissingParents)
{
    TempDir dir;
    EXPECT_TRUE(Path::ensureDirExists(QString::fromStdString(dir / "x/y/z/file")));
    EXPECT_TRUE(QDir(QString::fromStdString(dir / "x/y/z")).exists());
    dir.write("plain", "");
    EXPECT_FALSE(QTx::makeDir(QString::fromStdString(dir / "plain/sub")));
    EXPECT_TRUE(QTx::userLocalAppDataDirectory("My Maker/X").endsWith("/.my_maker/x"));
}
