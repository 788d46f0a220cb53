#include "support/HByteStream.h"
#include "support/Failure.h"
#include "support/HException.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

TEST(HByteStream, ReadsWholeFilesAndSaysWhyNot)
{
    TempDir dir;
    std::string bytes(5000, 'x');
    bytes[4999] = 0;
    HFileInputByteStream stream(dir.write("f", bytes));
    EXPECT_EQ(stream.size(), 5000u);
    int count = 0;
    while (stream.get() >= 0)
        ++count;
    EXPECT_EQ(count, 5000);
    EXPECT_EQ(HFileInputByteStream(dir.write("empty", "")).get(), -1);
    auto textOf = [](const std::string& name) {
        return failureOf([&] { HFileInputByteStream stream(name); });
    };
    EXPECT_EQ(textOf(dir / "absent"), "can't open file " + dir / "absent");
    EXPECT_EQ(textOf(dir.path()), "can't read file " + dir.path());
    EXPECT_EQ(HException::count(), 0);
}
