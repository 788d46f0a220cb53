// The load file model: types by name, lists, overlaps, contiguous sections, patches.
#include "loadfile/BinaryLoadFile.h"
#include "loadfile/FileInput.h"
#include "loadfile/LoadFileFactory.h"
#include "loadfile/LoadFileInterface.h"
#include "loadfile/LoadFileList.h"
#include "loadfile/LoadFileSection.h"
#include "support/HException.h"
#include "support/TempDir.h"
#include "support/Failure.h"

#include <cstring>

namespace {

// A load file made of the given ranges, each byte the number of its section.
class RangesLoadFile : public StandardLoadFile {
public:
    RangesLoadFile(std::initializer_list<std::pair<uint32_t, uint32_t>> ranges, bool works = true)
        : m_works(works)
    {
        for (auto [address, length] : ranges) {
            auto section = std::make_unique<ExpandingLoadFileSection>("", address);
            memset(section->expand(length), int(m_sections.sections().size()) + 1, length);
            m_sections.add(std::move(section));
        }
    }
    bool hasLoadAddress() const override { return true; }
    void setLoadAddress(unsigned long) override {}
    bool createLoadFileSections() override { return m_works; }
    bool m_works;
};

bool overlap(std::initializer_list<RangesLoadFile*> files)
{
    LoadFileList list;
    for (RangesLoadFile* file : files)
        list.add(file, "", false);
    return list.overlap();
}

} // namespace

TEST(LoadFileFactory, DetectsByEndingAlone)
{
    LoadFileFactory factory;
    const std::pair<const char*, const char*> cases[] = {
        {"a.bin", "bin"},   {"a.ROM", "bin"},   {"a.hex", "ihex"}, {"MyApp.HEX", "ihex"}, {"a.lst", "hex"},
        {"a.TXT", "tihex"}, {"a.srec", "srec"}, {"a.S19", "srec"}, {".hex", "ihex"},
    };
    for (auto [name, type] : cases)
        EXPECT_STREQ(factory.detect(name), type) << name;
    for (const char* name : {"MyApp.Hex", "a.hex.old", "hex", ""})
        EXPECT_EQ(factory.detect(name), nullptr) << name;
    EXPECT_EQ(factory.create("/dev/null", "elf"), nullptr);
}

TEST(LoadFileList, OverlapIsOneSharedAddress)
{
    RangesLoadFile low({{0, 0x100}}), touching({{0x100, 4}}), sharing({{0xFF, 1}}), empty({}),
        none({{0x80, 0}});
    RangesLoadFile itself({{0x400, 8}, {0x404, 8}}), top({{0xFFFFFFFF, 1}}), bottom({{0, 1}});
    EXPECT_FALSE(overlap({&itself}));
    EXPECT_FALSE(overlap({&low, &touching, &itself, &empty, &none}));
    EXPECT_TRUE(overlap({&touching, &low, &sharing}));
    EXPECT_FALSE(overlap({&top, &bottom}));
}

TEST(LoadFileList, SortsSectionsAndFiles)
{
    RangesLoadFile high({{0x300, 1}, {0x200, 1}}), low({{0x100, 1}}), empty({});
    LoadFileList list;
    list.add(&high, "high", false);
    list.add(&low, "low", false);
    list.add(&empty, "empty", false);
    list.sort();
    EXPECT_EQ(list.items()[0].name + list.items()[1].name + list.items()[2].name, "emptylowhigh");
    EXPECT_EQ(high.loadFileSections().firstSectionStartAddress(), 0x200u);
}

TEST(LoadFileInterface, MakeContiguousFillsGapsAndLaterWins)
{
    RangesLoadFile none({});
    none.makeContiguous(0xFF);
    EXPECT_TRUE(none.loadFileSections().sections().empty());

    RangesLoadFile file({{0x10, 2}, {0x20, 1}, {0x11, 1}});
    file.makeContiguous(0xFF);
    ASSERT_EQ(file.loadFileSections().sections().size(), 1u);
    const LoadFileSectionInterface& section = *file.loadFileSections().sections().front();
    EXPECT_EQ(section.name(), "Contiguous section");
    EXPECT_EQ(section.address(), 0x10u);
    ASSERT_EQ(section.length(), 0x11u);
    const unsigned char expected[] = {1, 3, 0xFF, 0xFF};
    EXPECT_EQ(memcmp(section.data(false), expected, 4), 0);
    EXPECT_EQ(section.data(false)[0x10], 2);
}

TEST(LoadFileInterface, FailedSectionsAreTriedAgain)
{
    RangesLoadFile file({{0, 1}}, false);
    EXPECT_EQ(failureOf([&] { file.loadFileSections(); }), "cannot read sections from load file");
    file.m_works = true;
    EXPECT_EQ(file.loadFileSections().length(), 1u);
}

TEST(LoadFileSection, PatchComesAndGoes)
{
    RangesLoadFile file({{0, 2}});
    LoadFileSectionInterface& section = *file.loadFileSections().sections().front();
    const unsigned char* plain = section.data(false);
    EXPECT_EQ(section.data(true), plain);
    section.createPatch()[0] = 9;
    EXPECT_EQ(section.data(true)[0], 9);
    EXPECT_EQ(section.data(false)[0], 1);
    EXPECT_EQ(section.createPatch()[0], 9); // not made anew
    file.clearPatches();
    EXPECT_EQ(section.data(true), plain);
}

TEST(LoadFileSection, EqualityLooksAtRangeAndBytes)
{
    unsigned char a[] = {1, 2}, b[] = {1, 2}, c[] = {1, 3};
    StandardLoadFileSection one("x", 4, 2, a), same("y", 4, 2, b), other("x", 4, 2, c), moved("x", 5, 2, a);
    StandardLoadFileSection bare("x", 4, 2, nullptr), bareToo("x", 4, 2, nullptr);
    EXPECT_TRUE(one == same);
    EXPECT_FALSE(one == other);
    EXPECT_FALSE(one == moved);
    EXPECT_FALSE(one == bare);
    EXPECT_TRUE(bare == bareToo);
}

TEST(BinaryLoadFile, OneSectionAtTheAddressToldLast)
{
    TempDir dir;
    BinaryLoadFile file(dir.write("a.bin", "abc").c_str());
    EXPECT_FALSE(file.hasLoadAddress());
    file.setLoadAddress(0x100);
    const LoadFileSectionInterface* section = file.loadFileSections().sections().front().get();
    EXPECT_EQ(section->name(), "data");
    EXPECT_EQ(section->address(), 0x100u);
    file.setLoadAddress(0x100); // the same address keeps the sections
    EXPECT_EQ(file.loadFileSections().sections().front().get(), section);
    file.setLoadAddress(0xFFFFFFFD);
    EXPECT_EQ(file.loadFileSections().firstSectionStartAddress(), 0xFFFFFFFDu);
    file.setLoadAddress(0xFFFFFFFE);
    EXPECT_EQ(failureOf([&] { file.loadFileSections(); }), "data beyond the end of the address space");
    EXPECT_EQ(BinaryLoadFile(dir.write("empty.bin", "").c_str()).loadFileSections().sections().size(), 1u);
}

TEST(FileInput, SaysWhatCannotBeRead)
{
    TempDir dir;
    auto hintOf = [](const char* name) {
        try {
            BinaryLoadFile file(name);
        } catch (const HException& e) {
            return e.message() + "|" + e.hint();
        }
        return std::string();
    };
    EXPECT_EQ(hintOf((dir / "absent").c_str()),
              "cannot open " + dir / "absent" + "|No such file or directory");
    EXPECT_EQ(hintOf(dir.path().c_str()), "cannot read " + dir.path() + "|Is a directory");
    // A sparse file of 2 GiB is refused before anything is read.
    std::string huge = dir.write("huge.bin", "");
    std::filesystem::resize_file(huge, uint64_t(2) << 30);
    EXPECT_EQ(hintOf(huge.c_str()), "cannot read " + huge + "|The file is larger than 1 GiB");
}
