// The shared library through its exports, the parameter text, the ROM file and the trace.
#include "sim/Program.h"
#include "sim/maxqsim.h"
#include "support/TempDir.h"

#include <dlfcn.h>
#include <fstream>
#include <sstream>

namespace maxq30 {

namespace {

class Library : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_handle = dlopen(MAXQ30SIM_LIBRARY, RTLD_NOW | RTLD_LOCAL);
        ASSERT_TRUE(m_handle) << dlerror();
        auto make = reinterpret_cast<NewMAXQSIMInterface>(dlsym(m_handle, "newMAXQSIMInterface"));
        ASSERT_TRUE(make);
        sim = make();
        rom = dir.write("rom.hex", ":0400000005190DDAF7\n:00000001FF\n");
    }
    void TearDown() override
    {
        auto destroy = reinterpret_cast<DeleteMAXQSIMInterface>(dlsym(m_handle, "deleteMAXQSIMInterface"));
        ASSERT_TRUE(destroy);
        destroy(sim);
        dlclose(m_handle);
    }
    MAXQSIMRunner* runner()
    {
        auto runnerOf = reinterpret_cast<RunnerOfMAXQSIM>(dlsym(m_handle, "runnerOfMAXQSIM"));
        return runnerOf ? runnerOf(sim) : nullptr;
    }
    unsigned ip() { return sim->readRegister(12, 0); }

    TempDir dir;
    std::string rom;
    Recorder events;
    MAXQSIMInterface* sim = nullptr;
    void* m_handle = nullptr;
};

} // namespace

TEST_F(Library, ExecutesThroughItsSlots)
{
    EXPECT_EQ(sim->step(), 0u); // before initialise nothing happens
    EXPECT_FALSE(sim->initialise(&events, "", (dir / "missing.hex").c_str()));
    EXPECT_EQ(events.take(), Log{"cannot read utility ROM " + dir / "missing.hex"});
    ASSERT_TRUE(sim->initialise(&events, "code=64K, data=2K", rom.c_str()));
    unsigned char bytes[4];
    ASSERT_TRUE(sim->readCode(0, 4, bytes));
    EXPECT_EQ(bytes[1], 0x19);
    EXPECT_FALSE(sim->readCode(0xFFFF, 2, bytes));
    EXPECT_FALSE(sim->writeData(0x7FF, 2, bytes));
    EXPECT_EQ(sim->readRegister(13, 1), 0x800u);
    EXPECT_EQ(sim->step(), 1u);
    EXPECT_EQ(sim->readRegister(9, 1), 5u);
    EXPECT_EQ(ip(), 1u);
    sim->writeRegister(12, 0, 0);
    EXPECT_EQ(ip(), 0u);
    sim->writeRegister(99, 0, 1);
    EXPECT_EQ(sim->readRegister(9, 32), 0u);
    sim->reset();
    EXPECT_EQ(sim->readRegister(9, 1), 0u);
    sim->close();
    EXPECT_FALSE(sim->readCode(0, 1, bytes));
}

TEST_F(Library, FurtherCallbacksOnlyOnRequest)
{
    ASSERT_TRUE(sim->initialise(&events, "", rom.c_str()));
    sim->writeRegister(1, 2, 7);
    EXPECT_EQ(events.take(), Log{});
    auto extend = reinterpret_cast<ExtendMAXQSIMCallBacks>(dlsym(m_handle, "extendMAXQSIMCallBacks"));
    ASSERT_TRUE(extend);
    extend(sim, MAXQSIM_Peripherals | MAXQSIM_LongDataAccesses);
    sim->writeRegister(1, 2, 7);
    EXPECT_EQ(events.take(), Log{"store 21=7"});
    const unsigned char push[] = {0x05, 0x0D, 0x06, 0x0D};
    ASSERT_TRUE(sim->writeCode(0, sizeof push, push));
    sim->writeRegister(13, 1, 0x20);
    sim->step();
    extend(sim, 0);
    sim->step();
    EXPECT_EQ(events.take(), (Log{"write.L 1c=5", "write.W 1a=0", "write.W 18=6"}));
}

TEST_F(Library, ARunnerTellsWhatItDidAlsoWhenACallbackThrows)
{
    EXPECT_FALSE(runner());
    struct Throwing : Recorder {
        void onDataAccess(bool read, unsigned address, unsigned value, unsigned byteAccess) override
        {
            Recorder::onDataAccess(read, address, value, byteAccess);
            if (interrupted)
                interrupted->interrupt();
            else
                throw 1;
        }
        MAXQSIMRunner* interrupted = nullptr;
    } throwing;
    ASSERT_TRUE(sim->initialise(&throwing, "", rom.c_str()));
    MAXQSIMRunner* runner = this->runner();
    ASSERT_TRUE(runner);
    // NOP, NOP, PUSH #5, JUMP to itself
    const unsigned char code[] = {0x3A, 0xDA, 0x3A, 0xDA, 0x05, 0x0D, 0xFF, 0x0C};
    ASSERT_TRUE(sim->writeCode(0, sizeof code, code));
    const unsigned stops[] = {6, 2};
    runner->setStops(stops, 2);
    MAXQSIMRun run{100, false, 0, 0, false};
    runner->run(&run);
    EXPECT_TRUE(run.atStop);
    EXPECT_EQ(ip(), 1u);
    runner->run(&run);
    EXPECT_EQ(run.steps, 0u);
    run.fromStop = true;
    EXPECT_THROW(runner->run(&run), int);
    EXPECT_EQ(run.steps, 1u);
    EXPECT_FALSE(run.atStop);
    EXPECT_EQ(ip(), 2u);
    runner->setStops(nullptr, 0);
    throwing.interrupted = runner;
    runner->run(&run);
    EXPECT_EQ(run.steps, 1u);
    EXPECT_EQ(run.cycles, 2u);
    const MAXQSIMDataRange nowhere = {0, 1};
    runner->setDataRanges(&nowhere, 1);
    sim->writeRegister(12, 0, 2);
    throwing.take();
    runner->run(&run);
    EXPECT_EQ(run.steps, 100u);
    EXPECT_EQ(throwing.take(), Log{});
    MAXQSIMCount counts[4];
    runner->readCounts(0, 4, counts);
    EXPECT_EQ(counts[3].executed, 99u);
    EXPECT_EQ(counts[3].taken, 99u);
    runner->readCounts(0x100000 - 2, 2, counts);
    EXPECT_EQ(counts[1].executed, 0u);
}

TEST_F(Library, BadParametersAndRomFilesAreRefused)
{
    for (const char* parameter : {"code=63", "code=17M", "data=", "data=5000000000", "data=0x", "code=4Kx",
                                  "code=65", "speed=9", "trace=", "trace=\"open", "=", "code"}) {
        SCOPED_TRACE(parameter);
        EXPECT_FALSE(sim->initialise(&events, parameter, rom.c_str()));
        EXPECT_EQ(events.take().size(), 1u);
    }
    struct Case {
        const char* text;
        const char* error;
    };
    const Case cases[] = {
        {":0400000005190DDAF7\n", "utility ROM: no end record"},
        {":0400000005190DDAF6\n:00000001FF\n", "utility ROM, line 1: bad checksum"},
        {"\r\n:0500000005190DDAF6\r\n", "utility ROM, line 2: bad record length"},
        {":040000000519 DDAF7\n", "utility ROM, line 1: not a hexadecimal digit"},
        {":04\n", "utility ROM, line 1: bad record length"},
        {"rom\n", "utility ROM, line 1: a record begins with a colon"},
        {":00000006FA\n", "utility ROM, line 1: unknown record type"},
        {":01000004AA51\n", "utility ROM, line 1: bad record length"},
        {":020000040100F9\n:0100000000FF\n", "utility ROM, line 2: data outside the code memory"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        std::string file = dir.write("bad.hex", c.text);
        EXPECT_FALSE(sim->initialise(&events, "", file.c_str()));
        EXPECT_EQ(events.take(), Log{c.error});
    }
    EXPECT_FALSE(sim->initialise(&events, "", "/")); // a directory opens like a file
    EXPECT_EQ(events.take(), Log{"cannot read utility ROM /"});
    std::string based = dir.write("based.hex", ":020000021000EC\n:020010003ADADA\n:00000001FF\n");
    ASSERT_TRUE(sim->initialise(&events, "", based.c_str()));
    unsigned char bytes[2];
    ASSERT_TRUE(sim->readCode(0x10010, 2, bytes));
    EXPECT_EQ(bytes[1], 0xDA);
}

TEST_F(Library, TraceShowsEachInstruction)
{
    EXPECT_FALSE(sim->initialise(&events, ("trace=" + dir / "none/t.txt").c_str(), rom.c_str()));
    EXPECT_EQ(events.take(), Log{"cannot write trace file " + dir / "none/t.txt"});
    std::string file = dir / "my trace.txt";
    ASSERT_TRUE(sim->initialise(&events, ("trace=\"" + file + "\"").c_str(), rom.c_str()));
    const unsigned char code[] = {0x05, 0x19, 0x12, 0x0B, 0x34, 0x0A, 0x07, 0x20};
    ASSERT_TRUE(sim->writeCode(0, sizeof code, code));
    for (int i = 0; i < 3; ++i)
        sim->step();
    sim->writeRegister(8, 5, 1);
    sim->writeRegister(8, 6, 1);
    sim->writeRegister(8, 11, 1);
    sim->step();
    sim->close();
    std::stringstream text;
    text << std::ifstream(file).rdbuf();
    EXPECT_EQ(text.str(), "000000: 1905                 A[1]=00000005\n"
                          "000002: 0b12 0a34            A[0]=00001234 PSF=0000\n"
                          "000006: 2007                 M0[2]=00000007\n"
                          "000008: interrupt, requests 0001\n");
}

TEST_F(Library, AFullDiskUnderTheTraceIsToldAtTheEndOfARun)
{
    ASSERT_TRUE(sim->initialise(&events, "trace=/dev/full", rom.c_str()));
    const unsigned char nop[] = {0x3A, 0xDA};
    ASSERT_TRUE(sim->writeCode(2, sizeof nop, nop));
    MAXQSIMRun run{1, true, 0, 0, false};
    runner()->run(&run);
    EXPECT_EQ(events.take(), Log{"cannot write the trace file"});
    EXPECT_EQ(run.steps, 1u);
    runner()->run(&run); // without a trace from here on
    EXPECT_EQ(events.take(), Log{});
    EXPECT_EQ(run.steps, 1u);
}

} // namespace maxq30
