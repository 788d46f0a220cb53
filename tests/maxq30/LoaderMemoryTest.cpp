// The bootloader's memory: pages and commands, what it reports, and the way back to the debug engine.
#include "maxq30/FakeDevice.h"
#include "maxq30/jtag/MAXQ30JTAGLoaderMemoryInterface.h"
#include "project/PropertyValue.h"
#include "script/engine/ESContext.h"
#include "script/native/ESLibrary.h"
#include "support/Failure.h"
#include "support/HException.h"
#include "target/memory/TargetMemoryInterface.h"

#include <numeric>

namespace {

constexpr char IntoBootloader[] = "nrst0 trst sp1 ir2 nrst1 scan load05 load0d load09 load06 load07 ";

struct LoaderMemory : ::testing::Test {
    FakeJTAGTarget target;
    FakeDevice& device = target.device;

    TargetMemoryInterface& begin(unsigned bitmap, unsigned fixedCodeLength)
    {
        device.reports[0x05] = {(unsigned char)bitmap, (unsigned char)(bitmap >> 8),
                                (unsigned char)fixedCodeLength, 0};
        target.connected().loadBegin();
        EXPECT_EQ(device.take(), IntoBootloader);
        return *target.codeMemory();
    }
    static std::string bytes(unsigned first, unsigned count)
    {
        std::string text;
        char two[3];
        for (unsigned i = 0; i < count; ++i) {
            snprintf(two, sizeof two, "%02x", (first + i) & 0xFF);
            text += two;
        }
        return text;
    }
    static std::string erased(unsigned count) { return std::string(2 * count, 'f'); }
    std::string propertyText(const char* title)
    {
        PropertyValueList list(false);
        target.getProperties(list);
        for (PropertyValue* value : list)
            if (value->propertyClass()->shortDescription() == QLatin1String(title))
                return value->toString().toStdString();
        return "not listed";
    }
};

unsigned char g_counting[600];
[[maybe_unused]] const bool g_filled = [] {
    std::iota(std::begin(g_counting), std::end(g_counting), 0);
    return true;
}();

} // namespace

TEST_F(LoaderMemory, VariableLoadSendsWholePagesWithByteAddresses)
{
    TargetMemoryInterface& memory = begin(0x0202, 32); // both families: the variable one is used
    memory.pokeBytes(0x1020A, 1, g_counting + 7);
    EXPECT_EQ(device.take(), "");
    memory.flush();
    memory.flush();
    EXPECT_EQ(device.take(),
              "load10f000000201" + erased(10) + "07" + erased(229) + " load101000f00201" + erased(16) + " ");

    // The first byte of the next page sends the one before.
    memory.pokeBytes(0xFE, 2, g_counting);
    EXPECT_EQ(device.take(), "");
    memory.pokeBytes(0x100, 1, g_counting + 2);
    EXPECT_EQ(device.take(), "load10f000000000" + erased(240) + " load101000f00000" + erased(14) + "0001 ");
    memory.pokeBytes(0x101, 300, g_counting + 3);
    EXPECT_EQ(device.take(), "load10f000000100" + bytes(2, 240) + " load101000f00100" + bytes(242, 16) + " ");
    target.loadEnd();
    EXPECT_EQ(device.take(),
              "load10f000000200" + bytes(2, 45) + erased(195) + " load101000f00200" + erased(16) + " ");
    EXPECT_NE(target.codeMemory(), &memory);
}

TEST_F(LoaderMemory, FixedLoadAwaitsThePromptOnceAPage)
{
    TargetMemoryInterface& memory = begin(0x0200, 32);
    memory.pokeBytes(0x200, 256, g_counting);
    device.scans = {{3, 0}, {1, '>'}, {3, '>'}};
    memory.flush();
    std::string frames = "timeout2000 scan scan scan timeout1000 ";
    for (unsigned i = 0; i < 4; ++i)
        frames += "load902000" + bytes(32 * i, 1) + "0100" + bytes(64 * i, 64) + " ";
    EXPECT_EQ(device.take(), frames);

    // The time-out of the link comes back when the wait is broken off, too.
    memory.pokeBytes(0, 1, g_counting);
    device.failAfter = 2;
    EXPECT_EQ(failureOf([&] { memory.flush(); }), "link lost");
    EXPECT_EQ(device.timeout, 1000u);
    device.failAfter = -1;
    device.take();
    memory.flush();
    EXPECT_EQ(device.take(), "") << "a page that failed is not sent again";
}

TEST_F(LoaderMemory, FixedLengthDecidesThePage)
{
    TargetMemoryInterface& memory = begin(0x0200, 48);
    device.otherwise = {3, '>'};
    memory.pokeBytes(0xC0, 193, g_counting); // pages of 192 bytes
    EXPECT_EQ(device.take(), "timeout2000 scan timeout1000 load903000600000" + bytes(0, 96) +
                                 " load903000900000" + bytes(96, 96) + " ");
    target.loadEnd();
    EXPECT_EQ(device.take(), "timeout2000 scan timeout1000 load903000c00000" + bytes(192, 1) + erased(95) +
                                 " load903000f00000" + erased(96) + " ");
}

TEST_F(LoaderMemory, WithoutALoadThatFitsTheFirstFlushFails)
{
    struct {
        unsigned bitmap, fixedLength;
    } cases[] = {{0x0000, 32}, {0x0200, 0}, {0x0200, 121}, {0x0200, 255}, {0x7C04, 32}};
    for (auto [bitmap, fixedLength] : cases) {
        TargetMemoryInterface& memory = begin(bitmap, fixedLength);
        memory.pokeBytes(0, 1, g_counting);
        EXPECT_EQ(failureOf([&] { target.loadEnd(); }), "fixed or variable length load not supported");
        EXPECT_EQ(device.take(), "");
        EXPECT_EQ(target.loadDepth(), 0);
        target.disconnect();
    }
    TargetMemoryInterface& memory = begin(0x0200, 120);
    device.otherwise = {3, '>'};
    memory.pokeBytes(0, 1, g_counting);
    target.loadEnd();
    EXPECT_EQ(device.take(), "timeout2000 scan timeout1000 load907800000000"
                             "00" +
                                 erased(239) + " ");
}

TEST_F(LoaderMemory, FirstReadLeavesTheBootloader)
{
    TargetMemoryInterface& memory = begin(0x0002, 0);
    memory.pokeBytes(0, 1, g_counting);
    device.words[0x800000] = 0xBEEF;
    unsigned char word[2];
    memory.peekBytes(0, 2, word);
    EXPECT_EQ(word[0], 0xEF);
    std::string page = "load10f000000000"
                       "00" +
                       erased(239) + " load101000f00000" + erased(16) + " ";
    EXPECT_EQ(device.take(), page + "nrst0 trst sp0 ir2 in1180 in1f nrst1 in1f in20 scan "
                                    "in2200008000010000 out2 in27 ");
    memory.peekBytes(0, 2, word);
    EXPECT_EQ(device.take(), "in1f in20 scan in2200008000010000 out2 in27 ");
}

TEST_F(LoaderMemory, ReportsBecomeProperties)
{
    EXPECT_EQ(propertyText("Code Size"), "not listed");
    device.reports[0x0D] = {'R', 'e', 'v', 0xB5, 0};
    begin(0x6203, 48);
    EXPECT_EQ(propertyText("Device Type"), "Rev\xC2\xB5");
    EXPECT_EQ(propertyText("Supported Commands"), "0x6203");
    EXPECT_EQ(propertyText("Code Size"), "65536 bytes");
    EXPECT_EQ(propertyText("Data Size"), "Not Reported");
    EXPECT_EQ(propertyText("Fixed Code Length"), "48 bytes");
    EXPECT_EQ(propertyText("Fixed Data Length"), "Not Reported");
    EXPECT_EQ(propertyText("Supported Commands: Load (Variable)"), "Supported");
    EXPECT_EQ(propertyText("Supported Commands: Dump (Variable)"), "Not Supported");
    EXPECT_EQ(propertyText("Supported Commands: Load and Verify (Fixed)"), "Supported");
    EXPECT_EQ(propertyText("Supported Commands: Verify (Fixed)"), "Not Supported");
    EXPECT_EQ(propertyText("ROM Version"), "1.05");
    EXPECT_EQ(target.supported(14), "Supported");
    EXPECT_EQ(target.variableLengthErase(), "Not Supported");
    PropertyValueList list(false);
    target.getProperties(list);
    EXPECT_EQ(list.size(), 21);
    EXPECT_EQ(list.first()->propertyClass()->saveName(), "eraseTimeout");
    target.disconnect();
    EXPECT_EQ(propertyText("Code Size"), "not listed");
}

TEST_F(LoaderMemory, ABootloaderThatDoesNotAnswerLeavesNothingBehind)
{
    device.reports[0x0D] = FakeDevice::Bytes(300, 'x');
    target.connected();
    EXPECT_EQ(failureOf([&] { target.loadBegin(); }),
              "The bootloader's device id does not end within 256 bytes");
    EXPECT_EQ(target.loadDepth(), 0);
    target.disconnect();
    target.connected();
    device.otherwise = {0, 0};
    EXPECT_EQ(failureOf([&] { target.loadBegin(); }), "Bootloader has not started");
    EXPECT_EQ(target.loadDepth(), 0);
    device.take();
    // Not in a load: code memory is the debug engine's again.
    unsigned char byte;
    device.otherwise = {1, 0};
    target.codeMemory()->peekBytes(0, 1, &byte);
    EXPECT_EQ(device.take(), "in1f in20 scan in2200008000010000 out2 in27 ");
}

TEST_F(LoaderMemory, ErasingWithoutAProjectSaysWhatToName)
{
    begin(0x0002, 0);
    try {
        target.eraseAll();
        FAIL() << "erased";
    } catch (const HException& failure) {
        EXPECT_EQ(failure.message(), "no erase script specified");
        for (const char* part : {"-solution", "-project", "-config", "target_erase_script"})
            EXPECT_NE(failure.hint().find(part), std::string::npos) << failure.hint();
    }
    EXPECT_EQ(device.take(), "timeout10000 timeout1000 ");
    EXPECT_EQ(device.timeout, 1000u);
}

TEST_F(LoaderMemory, ScriptsReachTheBootloader)
{
    ESContext context;
    ESLibrary::mkexec(nullptr, &context);
    begin(0x0002, 0);
    target.installScriptObject(&context);
    auto run = [&](const char* text) {
        return context.toString(context.eval(QLatin1String(text)).value).toStdString();
    };
    EXPECT_EQ(run("TargetInterface.loaderMasterEraseCommand()"), "undefined");
    EXPECT_EQ(run("TargetInterface.loaderRawCommand([0x10, 0x101, -1])"), "undefined");
    EXPECT_EQ(run("TargetInterface.loaderRawCommand([])"), "undefined");
    EXPECT_EQ(device.take(), "load0200 load1001ff ");
    EXPECT_EQ(run("TargetInterface.peekByte(1)"), "0");
    device.take();

    auto* memory = dynamic_cast<MAXQ30JTAGLoaderMemoryInterface*>(target.codeMemory());
    EXPECT_EQ(memory->getFlagsAndError(), std::make_pair((unsigned char)0, (unsigned char)4));
    EXPECT_STREQ(memory->getLoaderStatusString(4), "bad parameter");
    EXPECT_STREQ(memory->getLoaderStatusString(12), "unknown error");
}
