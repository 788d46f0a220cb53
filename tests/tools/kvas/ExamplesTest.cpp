// The example programs run on the core, with the tool's I/O server in front of them.
#include "maxq30/cpu/ZOFFMAXQ30Reader.h"
#include "sim/Core.h"
#include "support/Endian.h"
#include "target/io/TargetIOServer.h"
#include "target/memory/TargetMemoryInterface.h"
#include "tools/kvas/Diagnostics.h"
#include "tools/kvas/Link.h"
#include "tools/kvas/Sources.h"
#include "zoff/ZOFFSection.h"

#include <filesystem>
#include <optional>

namespace {

class CoreMemory : public TargetMemoryInterface {
public:
    explicit CoreMemory(maxq30::Core& core) : TargetMemoryInterface(Endian::Little, 4, false), m_core(core)
    {
        addressRanges().add(0, core.dataBytes() - 1, false);
    }
    void pokeBytes(uint32_t address, unsigned count, const unsigned char* bytes) override
    {
        EXPECT_TRUE(m_core.writeData(address, count, bytes)) << address;
    }
    void peekBytes(uint32_t address, unsigned count, unsigned char* bytes) override
    {
        EXPECT_TRUE(m_core.readData(address, count, bytes)) << address;
    }

private:
    maxq30::Core& m_core;
};

class Examples : public Sources, TargetIOServerTerminalInterface, TargetIOServerHelperFunctions {
protected:
    void assemble(const std::string& name)
    {
        std::string examples = QBURN_SOURCE_DIR "/examples/";
        job.directories = {examples + "lib"};
        job.sources = {examples + "lib/crt.s"};
        for (const auto& file : std::filesystem::directory_iterator(examples + name))
            if (file.path().extension() == ".s")
                job.sources.push_back(file.path());
        kvas::Diagnostics diagnostics;
        bytes = kvas::link(job, diagnostics);
        ASSERT_EQ(diagnostics.text(), "");
        std::span<const unsigned char> all(reinterpret_cast<const unsigned char*>(bytes.data()),
                                           bytes.size());
        ZOFFMAXQ30Reader reader(all, true);
        module = reader.readFile(false);
    }

    // The exit status; -1000 when the program does not end.
    int run(const std::string& name, const QStringList& arguments = {})
    {
        assemble(name);
        if (!module)
            return -1000;
        maxq30::Core core(256 * 1024, 64 * 1024);
        for (ZOFFSection* s : module->sections()) {
            s->computeSectionMetrics();
            if (!s->goesIntoLoadFile() || s->lowestAddress() == ZOFFSection::UnknownAddress)
                continue;
            std::vector<uint8_t> buffer(size_t(s->getSize()));
            s->dump(buffer.size(), buffer.data());
            EXPECT_TRUE(core.writeCode(s->lowestAddress(), uint32_t(buffer.size()), buffer.data()));
        }
        CoreMemory memory(core);
        TargetIOServer server(this, this);
        server.init(arguments);
        uint32_t control = uint32_t(valueOf("_dbgCntrlWord")), comm = uint32_t(valueOf("_dbgCommWord"));
        for (int round = 0; round < 20000 && !status; ++round) {
            core.run(100);
            if (uint32_t operation = memory.peekUint32(control)) {
                server.handleOperation(&memory, &memory, operation, comm);
                if (operation != 46)
                    memory.pokeUint32(control, 0);
            }
        }
        return status.value_or(-1000);
    }

    void addOutput(const QString& text) override { output += text.toLatin1().toStdString(); }
    QString getInputLine() override { return input.isEmpty() ? QString() : input.takeFirst(); }
    int inputLines() const override { return int(input.size()); }
    QChar getInputChar() override { return {}; }
    bool inputCharAvailable() const override { return false; }
    void errorOccurred(const char* text) override { ADD_FAILURE() << text; }
    void debugBreakOccurred() override {}
    void inputRequested() override {}
    void outputUpdated() override {}
    void exitOccurred(int value) override { status = value; }
    void loadSymbols(const char*, unsigned) override {}

    QStringList input;
    std::string output;
    std::optional<int> status;
};

} // namespace

TEST_F(Examples, HelloPrintsItsArgumentsAndCountsThem)
{
    EXPECT_EQ(run("hello", {QStringLiteral("one"), QStringLiteral("two words")}), 2);
    EXPECT_EQ(output, "Hello, world.\nargument 0: one\nargument 1: two words\n");
}

TEST_F(Examples, EchoRepeatsLinesUntilAnEmptyOne)
{
    input = {QStringLiteral("first"), QStringLiteral("second line"), QStringLiteral(""),
             QStringLiteral("never")};
    EXPECT_EQ(run("echo"), 2);
    EXPECT_EQ(output, "1: first\n2: second line\n");
}

TEST_F(Examples, FilesWorksOnTheHost)
{
    auto before = std::filesystem::current_path();
    std::filesystem::current_path(dir.path());
    EXPECT_EQ(run("files"), 0);
    EXPECT_EQ(output, "0123456789\nall steps passed\n");
    EXPECT_FALSE(std::filesystem::exists("qburn-renamed.txt"));
    std::filesystem::current_path(before);
}

TEST_F(Examples, CalcReadsAndPrintsThroughFormats)
{
    input = {QStringLiteral("12 * -34"), QStringLiteral("7 ? 2"), QStringLiteral("stop"),
             QStringLiteral("1 + 1")};
    EXPECT_EQ(run("calc"), 1);
    EXPECT_EQ(output, "calc > version 1.25\n= -408 0xfffffe68 037777777150\n?\nbye.\n");
}

TEST_F(Examples, CrcComputesTheKnownResult)
{
    EXPECT_EQ(run("crc"), 0);
}

TEST_F(Examples, DebugWeighsItsTreeAndTurnsAText)
{
    EXPECT_EQ(run("debug"), 12);
    EXPECT_EQ(output, "parts\n");
}
