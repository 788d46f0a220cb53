// The download engine against a memory that notes every call.
#include "loadfile/LoadFileSections.h"
#include "project/PropertyValue.h"
#include "support/Failure.h"
#include "target/FakeTarget.h"

#include <functional>
#include <gtest/gtest.h>

namespace {

std::vector<unsigned char> run(size_t count, unsigned char first = 0)
{
    std::vector<unsigned char> bytes(count);
    for (size_t i = 0; i < count; ++i)
        bytes[i] = uint8_t(first + i);
    return bytes;
}

struct Download : ::testing::Test {
    FakeHelpers helpers;
    FakeTarget target{&helpers};
    MadeLoadFile file;
};

} // namespace

TEST(KbSize, OneTruncatedDigitInThreeUnits)
{
    const std::tuple<uint64_t, int, const char*> cases[] = {
        {300, 0, "0.3 kB"},  {2048, 0, "2.0 kB"},    {1000000, 0, "1,000.0 kB"},    {1500000, 0, "1.5 MB"},
        {2048, 1, "2.0 KB"}, {1048577, 1, "1.0 MB"}, {1048576, 2, "1,024.0 kiB"},   {3 << 20, 2, "3.0 MiB"},
        {0, 0, "0.0 kB"},    {999, 0, "0.9 kB"},     {0xFFFFFFFF, 0, "4,294.9 MB"}, {10, 7, "0.0 kB"},
    };
    for (auto [length, format, expected] : cases)
        EXPECT_EQ(kbSize(length, format).toStdString(), expected);
}

TEST_F(Download, ErasesProgramsAndVerifiesInFragments)
{
    target.code.fragment = 0x60;
    file.add("", 0x110, run(0x80)).add("vectors", 0x1F0, run(4));
    target.eraseLoadFile(&file, "/x/app.hex", false);
    // The second section lies in a block that is erased already: progress still reaches the total.
    EXPECT_EQ(target.code.log, "[erase(100,100) ]");
    EXPECT_EQ(helpers.log, "Erasing of 132: 0 96 128 132 ");
    target.code.log.clear();
    helpers.log.clear();
    target.downloadLoadFile(&file, "/x/app.hex", false);
    EXPECT_EQ(target.code.log, "load(110,60) load(170,20) last(1f0,4) ");
    EXPECT_EQ(helpers.log, "Programming of 132: 0 96 128 132 ");
    EXPECT_TRUE(target.verifyLoadFile(&file, "/x/app.hex", false, false));
    EXPECT_EQ(helpers.messages, "{Erasing \"app.hex\" to Fake Board c100\n"
                                "Erasing 0.1 kB of addresses 00000110 -- 0000018f\n"
                                "Erasing 0.0 kB of vectors addresses 000001f0 -- 000001f3\n}\n"
                                "{Downloading \"app.hex\" to Fake Board c100\n"
                                "Programming 0.1 kB of addresses 00000110 -- 0000018f\n"
                                "Programming 0.0 kB of vectors addresses 000001f0 -- 000001f3\n}\n"
                                "{Verifying \"app.hex\" on Fake Board c100\n"
                                "Verifying 0.1 kB of addresses 00000110 -- 0000018f\n"
                                "Verifying 0.0 kB of vectors addresses 000001f0 -- 000001f3\n}\n");
}

TEST_F(Download, MismatchEndsTheVerifyAndIsTold)
{
    file.add("", 0, run(16)).add("", 0x20, run(16));
    target.downloadLoadFile(&file, "a", false);
    target.code.bytes[5] ^= 0x40;
    helpers.log.clear();
    helpers.messages.clear();
    EXPECT_FALSE(target.verifyLoadFile(&file, "a", false, false));
    EXPECT_EQ(helpers.log, "Verifying of 32: 0 32 ");
    EXPECT_EQ(target.verifyMismatch().toStdString(),
              "The first difference is at 0x00000005: 0x05 expected, 0x45 found");
    EXPECT_NE(helpers.messages.find("Verify failed@104"), std::string::npos);
    target.code.bytes[5] ^= 0x40;
    EXPECT_TRUE(target.verifyLoadFile(&file, "a", false, false));
    EXPECT_TRUE(target.verifyMismatch().isEmpty());
}

TEST_F(Download, EepromSectionsGoToTheirOwnMemory)
{
    target.hasEe = true;
    file.add("", 0x10, run(4)).add("settings", 0x20, run(4), true);
    target.eraseLoadFile(&file, "a", false);
    target.downloadLoadFile(&file, "a", false);
    EXPECT_EQ(target.code.log, "[erase(0,100) ]last(10,4) ");
    EXPECT_EQ(target.ee.log, "[erase(0,100) ]last(20,4) ");
    target.ee.log.clear();
    MadeLoadFile codeOnly;
    codeOnly.add("", 0, run(1));
    target.eraseLoadFile(&codeOnly, "a", false);
    EXPECT_EQ(target.ee.log, "");
}

TEST_F(Download, DifferentialTouchesOnlyWhatDiffers)
{
    target.code.differential = true;
    target.code.fragment = 0x100;
    std::vector<unsigned char> image = run(0x400);
    memcpy(target.code.bytes.data(), image.data(), image.size());
    target.code.bytes[0x234] ^= 1;
    file.add("", 0, image);
    target.loadBegin();
    target.eraseLoadFile(&file, "a", false);
    target.downloadLoadFile(&file, "a", false);
    EXPECT_EQ(target.code.log, "[erase(200,100) ]last(200,100) ");
    EXPECT_TRUE(target.verifyLoadFile(&file, "a", false, true));
    target.loadEnd();

    // Switched off, everything is erased and programmed.
    helpers.differential = false;
    target.code.log.clear();
    target.eraseLoadFile(&file, "a", false);
    EXPECT_EQ(target.code.log, "[erase(0,100) erase(100,100) erase(200,100) erase(300,100) ]");
}

TEST_F(Download, EraseAllMakesEverythingCountAsErased)
{
    file.add("", 0, run(16));
    target.loadBegin();
    target.eraseAll();
    target.eraseLoadFile(&file, "a", false);
    target.loadEnd();
    EXPECT_EQ(target.code.log, "eraseAll []");
    EXPECT_EQ(helpers.log, "Erasing entire FLASH memory of 10: 0 10 Erasing of 16: 0 16 ");
    EXPECT_EQ(target.calls, "begin end ");
}

TEST_F(Download, SectionWithoutDataIsZeros)
{
    file.addWithoutData(0x10, 0x900).add("", 0x1000, {});
    target.downloadLoadFile(&file, "a", false);
    EXPECT_EQ(target.code.bytes[0x10], 0);
    EXPECT_EQ(target.code.bytes[0x90F], 0);
    EXPECT_EQ(target.code.bytes[0x910], 0xFF);
    EXPECT_TRUE(target.verifyLoadFile(&file, "a", false, false));
    target.code.bytes[0x700] = 1;
    EXPECT_FALSE(target.verifyLoadFile(&file, "a", false, false));
    EXPECT_NE(helpers.messages.find("Programming 0.0 kB of addresses 00001000 -- 00001000"),
              std::string::npos);
}

TEST_F(Download, FitCheckLooksAtWholeSections)
{
    file.add("", 0x1F0, run(0x20));
    EXPECT_EQ(failureOf([&] { target.checkLoadFileFits(&file); }),
              "no failure"); // nothing is known of the layout
    target.code.addressRanges().add(0, 0x1FF, false);
    target.code.addressRanges().add(0x200, 0x2FF, false);
    EXPECT_EQ(failureOf([&] { target.checkLoadFileFits(&file); }),
              "The 0x000001F0 - 0x0000020F load section does not fit the target description.");
    MadeLoadFile fits;
    fits.add("", 0x200, run(0x100)).add("", 0x5000, {}); // a section of length 0 fits anywhere
    EXPECT_EQ(failureOf([&] { target.checkLoadFileFits(&fits); }), "no failure");
}

// Whatever fails, the load is closed, the erase bracket too, and the first failure is the one told.
TEST_F(Download, FailureLeavesNothingOpen)
{
    file.add("", 0, run(0x200));
    target.code.failAt = 0x180;
    target.failEnd = true;
    EXPECT_EQ(failureOf([&] { target.eraseLoadFile(&file, "a", false); }), "link lost");
    EXPECT_EQ(target.code.log.back(), ']');
    EXPECT_EQ(failureOf([&] { target.downloadLoadFile(&file, "a", false); }), "link lost");
    EXPECT_EQ(failureOf([&] { target.verifyLoadFile(&file, "a", false, false); }), "link lost");
    LoadFileSections result;
    EXPECT_EQ(failureOf([&] { target.uploadLoadFile(&file, "a", result); }), "link lost");
    EXPECT_EQ(target.loadDepth(), 0);
    EXPECT_EQ(target.calls, "begin end begin end begin end begin end ");
    EXPECT_NE(helpers.messages.find("Download failed@104\nDownload failed}"), std::string::npos);

    target.calls.clear();
    target.failBegin = true;
    EXPECT_EQ(failureOf([&] { target.eraseAll(); }), "no loader");
    EXPECT_EQ(target.loadDepth(), 0);
    target.failBegin = false;
    EXPECT_EQ(failureOf([&] { target.lockAll(); }), "no way back");
    EXPECT_EQ(target.loadDepth(), 0);
}

TEST_F(Download, CancellationTakesTheSamePath)
{
    target.code.fragment = 0x10;
    file.add("", 0, run(0x40));
    helpers.cancelAfter = 3;
    EXPECT_EQ(failureOf([&] { target.downloadLoadFile(&file, "a", false); }), "Download cancelled");
    EXPECT_EQ(target.code.log, "load(0,10) load(10,10) ");
    EXPECT_NE(helpers.messages.find("Download cancelled@104"), std::string::npos);
    EXPECT_EQ(target.loadDepth(), 0);
}

TEST_F(Download, LoadsNest)
{
    target.loadBegin();
    target.loadBegin();
    target.loadEnd();
    EXPECT_EQ(target.calls, "begin ");
    EXPECT_EQ(target.loadDepth(), 1);
    target.loadEnd();
    EXPECT_EQ(target.calls, "begin end ");
}

TEST_F(Download, UploadBringsBackWhatIsThere)
{
    file.add("text", 0x10, run(0x30));
    target.code.bytes[0x11] = 0x77;
    LoadFileSections result;
    target.uploadLoadFile(&file, "/x/a.hex", result);
    ASSERT_EQ(result.sections().size(), 1u);
    EXPECT_EQ(result.sections()[0]->data(false)[1], 0x77);
    EXPECT_EQ(helpers.messages, "{Uploading \"a.hex\" from Fake Board c100\n"
                                "uploading section text: size 0x30, addr 0x10\nUpload complete\n}\n");
}

TEST_F(Download, RangesWalkOneMemory)
{
    target.hasEe = true;
    target.code.fragment = 0x10;
    target.lockBytes(0x20, 0x18, 0);
    EXPECT_EQ(target.code.log, "lock(20,10) lock(30,8) ");
    target.eraseBytes(0x20, 4, 1);
    EXPECT_EQ(target.ee.log, "[erase(0,100) ]");
    EXPECT_EQ(helpers.log, "Locking of 24: 0 16 24 Erasing of 4: 0 4 ");
    EXPECT_NE(helpers.messages.find(
                  "{Locking Memory Range c100\nLocking 0.0 kB of addresses 00000020 -- 00000037\n"),
              std::string::npos);
    EXPECT_NE(failureOf([&] { target.unlockBytes(0xFFFFFFFF, 2, 0); }), "no failure");
    target.unlockAll();
    EXPECT_NE(target.ee.log.find("unlockAll"), std::string::npos);
}

TEST_F(Download, PropertiesFollowConnectionAndCapabilities)
{
    PropertyValueList list(false);
    target.getProperties(list);
    target.getProperties(list); // no double
    ASSERT_EQ(list.size(), 1);
    EXPECT_EQ(list[0]->propertyClass()->shortDescription(), QString("Erase All"));
    EXPECT_FALSE(target.loaderEraseAll());
    list[0]->setValue("Yes");
    EXPECT_TRUE(target.loaderEraseAll());
    target.setLoaderEraseAll(false);
    EXPECT_EQ(list[0]->toString(), QString("No"));
    target.connected = true;
    PropertyValueList connected(false);
    target.getProperties(connected);
    EXPECT_EQ(connected.size(), 2);
    target.setDeviceId("XYZ1");
    EXPECT_EQ(target.deviceId(), QString("XYZ1"));
}
