// The small value types: edge cases of each that a caller relies on.
#include "support/AddressRanges.h"
#include "support/Endian.h"
#include "support/HByteStream.h"
#include "support/HException.h"
#include "support/HString.h"
#include "support/Numbers.h"
#include "support/Path.h"
#include "support/Pool.h"
#include "support/QAzDate.h"
#include "support/QTx.h"
#include "support/TempDir.h"
#include "tests/support/Failure.h"

#include <cmath>
#include <limits>
#include <random>
#include <set>

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

TEST(QTx, MakesMissingParents)
{
    TempDir dir;
    EXPECT_TRUE(Path::ensureDirExists(QString::fromStdString(dir / "x/y/z/file")));
    EXPECT_TRUE(QDir(QString::fromStdString(dir / "x/y/z")).exists());
    dir.write("plain", "");
    EXPECT_FALSE(QTx::makeDir(QString::fromStdString(dir / "plain/sub")));
    EXPECT_TRUE(QTx::userLocalAppDataDirectory("My Maker/X").endsWith("/.my_maker/x"));
}

TEST(HString, EqualFinalTextsAreOneObject)
{
    EXPECT_EQ(HString::intern("Abc", 1 | 16), HString::intern("abc", 2));
    EXPECT_EQ(HString::intern("a\\b", 0 | 16), HString::intern("A/B"));
    EXPECT_EQ(HString::intern("a/b", 3 | 32), HString::intern("a\\b"));
    EXPECT_EQ(HString::intern(-42L), HString::intern("-42"));
    EXPECT_NE(HString::intern(std::string("a\0b", 3)), HString::intern("a"));
    const HString* first = HString::intern("serial one");
    EXPECT_LT(first->serial(), HString::intern("serial two")->serial());
    // Blocks of text are abandoned, not moved: earlier entries stay where they are.
    const char* text = first->c_str();
    for (int i = 0; i < 20000; ++i)
        HString::intern(std::string(size_t(i % 700), 'x') + std::to_string(i));
    EXPECT_EQ(HString::intern("serial one")->c_str(), text);
}

TEST(HString, LongEndsInCommonLeaveHashesApart)
{
    std::set<unsigned> hashes;
    for (int i = 0; i < 1000; ++i)
        hashes.insert(HString::intern(std::to_string(i) + std::string(40, '_'))->hash());
    EXPECT_GT(hashes.size(), 990u);
}

TEST(Pool, ReusesReleasedChunksAndCopesWithLargeRequests)
{
    Pool pool;
    char* a = static_cast<char*>(pool.allocate(3));
    char* b = static_cast<char*>(pool.allocate(8));
    EXPECT_EQ(b - a, 8);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(pool.allocate(1)) % 8, 0u);
    char* large = static_cast<char*>(pool.allocate(100000));
    large[99999] = 1;
    size_t held = pool.capacity();
    pool.clear();
    EXPECT_EQ(uint8_t(large[99999]), 0xFE);
    EXPECT_EQ(pool.allocate(100000), large); // first released chunk that fits
    EXPECT_LT(pool.capacity(), held);
    EXPECT_THROW(pool.allocate(std::numeric_limits<size_t>::max()), std::bad_alloc);
}

TEST(Numbers, TextToInteger)
{
    const std::pair<const char*, int64_t> cases[] = {
        {"-0x10", -16}, {"0b101", 5}, {"017", 15},
        {"0", 0},       {"", 0},      {"  +7", 7},
        {"0xFf", 255},  {"0x", 0},    {"-9223372036854775808", std::numeric_limits<int64_t>::min()},
    };
    for (auto [text, expected] : cases)
        EXPECT_EQ(fromStringToint64(text), expected) << text;
    EXPECT_EQ(fromStringTouint64("-1"), ~uint64_t(0));
    EXPECT_EQ(fromStringTouint64("0xffffffffffffffff1"), 0xfffffffffffffff1u); // wraps
}

TEST(Numbers, ToText)
{
    EXPECT_STREQ(toStringFromuint64(255, 16), "ff");
    EXPECT_STREQ(toStringFromuint64(~uint64_t(0), 2), std::string(64, '1').c_str());
    EXPECT_STREQ(toStringFromint64(std::numeric_limits<int64_t>::min(), 10), "-9223372036854775808");
    EXPECT_STREQ(toStringFromint64(-35, 36), "-z");
    EXPECT_STREQ(toStringFromuint64(7, 99), "7");
    EXPECT_STREQ(toStringFromDouble(0.5, "%g"), "0.5");
    EXPECT_STREQ(toStringFromDouble(NAN, "%g"), "NaN");
    EXPECT_STREQ(toStringFromDouble(-INFINITY, "%g"), "Inf");
    EXPECT_LT(strlen(toStringFromDouble(1e300, "%.5000f")), 1024u);
    EXPECT_EQ(toHexString(5, 0xF), QString("0x5"));
    EXPECT_EQ(toHexString(5, 0x10), QString("0x05"));
    EXPECT_EQ(toHexString(-1, -1), QString("0xffffffff"));
    EXPECT_EQ(toHexString(1, 0x10000000), QString("0x00000001"));
}

TEST(Endian, NumbersAndBitFieldsInBothOrders)
{
    const uint8_t bytes[] = {1, 2, 3, 4, 5, 6, 7, 8};
    EXPECT_EQ(Endian::unpackNumber(bytes, 0, 4, Endian::Big), 0x01020304u);
    EXPECT_EQ(Endian::unpackNumber(bytes, 0, 4, Endian::Little), 0x04030201u);
    EXPECT_EQ(Endian::unpackNumber(bytes, 2, 3, Endian::Big), 0x030405u);
    EXPECT_EQ(Endian::unpackUINT64(bytes, 0, Endian::Big), 0x0102030405060708u);

    // A field of 5 bits at bit 3, counted from either end of a 16-bit number.
    uint8_t word[] = {0, 0};
    Endian::packBitField(word, 0, 0x15, 2, 3, 5, Endian::Little, true);
    EXPECT_EQ(Endian::unpackUINT16(word, 0, Endian::Little), 0x15 << 3);
    EXPECT_EQ(Endian::unpackBitField(word, 0, 2, 3, 5, Endian::Little, true), 0x15u);
    Endian::packBitField(word, 0, 0x1F, 2, 3, 5, Endian::Little, false);
    EXPECT_EQ(Endian::unpackUINT16(word, 0, Endian::Little), 0x15 << 3 | 0x1F << 8);
    EXPECT_EQ(Endian::unpackBitField(word, 0, 2, 19, 5, Endian::Little, false), 0x1Fu); // modulo 16
    EXPECT_EQ(Endian::unpackBitField(word, 0, 2, 14, 5, Endian::Little, false), 0u);    // outside
}

TEST(AddressRanges, MergesNeighboursOfOneTypeOnly)
{
    AddressRanges merged;
    merged.add(0x10, 0x1F, true);
    merged.add(0x20, 0x2F, true);
    EXPECT_EQ(merged.count(), 1u);
    merged.add(0x30, 0x3F, AddressRange::ReadOnly, true);
    EXPECT_EQ(merged.count(), 2u);
    merged.add(0xFFFFFFF0, 0xFFFFFFFF, true);
    merged.add(0, 1, true);
    EXPECT_EQ(merged.count(), 4u);
    merged.add(2, 0xFFFFFFEF, true); // joins everything of its type
    EXPECT_EQ(merged.count(), 2u);
    EXPECT_EQ(merged.find(0x35, 0x36)->type, AddressRange::ReadWrite);

    AddressRanges apart;
    apart.add(0x1F, 0x10, false); // the wrong order is put right
    apart.add(0x20, 0x2F, false);
    EXPECT_EQ(apart.count(), 2u);
    EXPECT_EQ(apart.find(0x1F, 0x20), nullptr);
    EXPECT_TRUE(apart.isSubsetOf(merged));
    EXPECT_FALSE(merged.isSubsetOf(apart));
}

// The fast searches against a plain walk over the list.
TEST(AddressRanges, SearchesAgreeWithAWalk)
{
    std::mt19937 random(7);
    for (int round = 0; round < 200; ++round) {
        AddressRanges set;
        std::vector<bool> covered(300);
        bool merge = round & 1;
        for (int i = 0; i < 12; ++i) {
            uint32_t low = random() % 250;
            uint32_t high = low + random() % 40;
            set.add(low, high, merge);
            std::fill(covered.begin() + low, covered.begin() + high + 1, true);
        }
        if (merge) {
            int64_t last = -2;
            for (const AddressRange& range : set) {
                ASSERT_GT(int64_t(range.low), last + 1); // apart from each other
                last = range.high;
            }
        }
        for (uint32_t a = 0; a < 300; ++a) {
            ASSERT_EQ(set.find(a) != nullptr, bool(covered[a]));
            uint32_t b = a + random() % 20;
            bool whole = std::any_of(set.begin(), set.end(), [&](const auto& r) { return r.contains(a, b); });
            ASSERT_EQ(set.find(a, b) != nullptr, whole);
            bool touched = false;
            for (uint32_t i = a; i <= b && i < 300; ++i)
                touched |= covered[i];
            ASSERT_EQ(set.isOccludedBy(a, b), touched);
        }
    }
}

TEST(QAzDate, DayNumbersThereAndBack)
{
    EXPECT_EQ(QAzDate(2000, 1, 1).julianDayNumber(), 2451545);
    for (long day : {2451545L, 2451604L, 2440588L, 2299161L, 2816788L, 1721426L}) {
        QAzDate date = QAzDate::gregorianDate(double(day));
        EXPECT_EQ(date.julianDayNumber(), day);
        EXPECT_EQ(date.toJulianDay(), day); // the date class agrees
    }
    EXPECT_FALSE(QAzDate::gregorianDate(1e300).isValid());
}

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
