// The simulator target with the real library, set up by a solution as a user would.
#include "debug/monitor/HBreakpoint.h"
#include "debug/monitor/HMonitor.h"
#include "maxq30/cpu/MAXQ30Registers.h"
#include "maxq30/sim/MAXQ30Simulator.h"
#include "project/MAXQ30BuildSystem.h"
#include "project/MAXQ30ProjectSystem.h"
#include "project/StandardBuildSystem.h"
#include "project/StandardProjectSystem.h"
#include "support/HException.h"
#include "support/TempDir.h"
#include "target/TargetRegisterInterface.h"
#include "target/memory/TargetMemoryInterface.h"

#include <memory>

namespace {

constexpr char Library[] = QBURN_BINARY_DIR "/lib/libmaxq30sim.so";

class Simulator : public ::testing::Test {
protected:
    ~Simulator() override
    {
        target.reset();
        delete buildSystem;
        delete projectSystem;
        buildSystem = nullptr;
        projectSystem = nullptr;
    }

    // A project with these settings, and a target that knows it.
    void make(const std::string& library, const std::string& rom, const std::string& parameter = "")
    {
        target.reset();
        delete projectSystem;
        delete buildSystem;
        projectSystem = new MAXQ30ProjectSystem(macroSystem);
        buildSystem = new MAXQ30BuildSystem(*projectSystem, QStringList());
        std::string solution = "<!DOCTYPE Anvil_Project_File>\n<solution Name=\"t\" version=\"2\">\n"
                               "<configuration Name=\"Common\" simulator_DLL_FileName=\"" +
                               library + "\" simulator_DLL_RomFileName=\"" + rom +
                               "\" simulator_DLL_Parameter=\"" + parameter +
                               "\"/>\n<project Name=\"p\"><file file_name=\"" + mapName +
                               "\"><configuration Name=\"Common\" file_type=\"Memory Map\"/></file>"
                               "</project></solution>\n";
        dir.write("map.xml",
                  "<!DOCTYPE Board_Memory_Definition_File>\n<Root name=\"board\">\n"
                  "<MemorySegment name=\"FLASH\" addressSpace=\"CODE\" start=\"0\" size=\"0x8000\"/>"
                  "<MemorySegment name=\"RAM\" addressSpace=\"DATA\" start=\"0\" size=\"0x800\"/>"
                  "<MemorySegment name=\"TOP\" addressSpace=\"CODE\" start=\"0xFFFFFF00\" size=\"0x200\"/>"
                  "<MemorySegment name=\"EE\" addressSpace=\"EEPROM\" start=\"0\" size=\"0x80\"/>"
                  "</Root>\n");
        dir.write("rom.hex", ":00000001FF\n");
        projectSystem->loadSolution(QString::fromStdString(dir.write("t.kvp", solution)), nullptr, nullptr);
        target = std::make_unique<MAXQ30Simulator>(nullptr);
        target->syncSettingsWithProject(projectSystem->findProject(nullptr, "p"), "Common");
    }
    std::string rom() { return dir / "rom.hex"; }
    std::string connectFailure()
    {
        try {
            target->connect(true);
        } catch (const HException& failure) {
            EXPECT_FALSE(target->isConnected());
            EXPECT_EQ(target->codeMemory(), nullptr);
            return failure.message();
        }
        return "";
    }

    TempDir dir;
    std::string mapName = "map.xml";
    std::unique_ptr<MAXQ30Simulator> target;
};

// MOVE DP[0],#0x20; MOVE A[0],#0; loop: ADD #0x101; MOVE @DP[0].L,ACC; JUMP loop
constexpr unsigned char counting[] = {0x20, 0x3F, 0x00, 0x09, 0x01, 0x0B, 0x01,
                                      0x4A, 0x00, 0x2B, 0x0A, 0x9F, 0xFB, 0x0C};

} // namespace

TEST_F(Simulator, RunsAProgramUnderBreakpoints)
{
    make(Library, rom(), "code=64K data=2K");
    target->connect(true);
    EXPECT_TRUE(target->isConnected());
    EXPECT_EQ(target->capabilities(), 0x2BF);
    TargetMemoryInterface& codeMemory = *target->codeMemory();
    TargetMemoryInterface& dataMemory = *target->dataMemory();
    EXPECT_EQ(codeMemory.wordLength(), 2u);
    EXPECT_EQ(dataMemory.wordLength(), 4u);
    EXPECT_TRUE(codeMemory.memoryExists(0, 0x8000));
    EXPECT_FALSE(codeMemory.memoryExists(0, 0x8001));
    EXPECT_TRUE(codeMemory.memoryExists(0xFFFFFF00, 0x100)); // a segment does not wrap around
    EXPECT_FALSE(codeMemory.memoryExists(0x10000, 1));
    EXPECT_TRUE(dataMemory.memoryExists(0, 0x800));
    EXPECT_EQ(dataMemory.addressRanges().count(), 1u);
    EXPECT_THROW(dataMemory.peekUint32(0x7FE), HException);
    EXPECT_THROW(codeMemory.pokeByte(0x10000, 1), HException);

    codeMemory.pokeBytes(0, sizeof counting, counting);
    target->reset(true, false);
    HBreakpoint stop;
    stop.address = 8;
    target->setBreakpoint(&stop);
    target->start(true, 0);
    EXPECT_EQ(target->registers()->getPC(), 8u);
    EXPECT_EQ(target->registers()->getValue(9), 0x101u);
    EXPECT_EQ(target->registers()->getSP(), 0x800u);
    unsigned address, count, other;
    target->iterateExecutionCount();
    ASSERT_TRUE(target->getNextExecutionCount(address, count, other));
    EXPECT_EQ(address, 0u);
    target->removeBreakpoint(&stop);

    // A variable of 32 bits: by its value, and by an access to its upper half alone.
    HBreakpoint watch;
    watch.address = 0x20;
    watch.length = 4;
    watch.trigger = 2;
    watch.hasValue = true;
    watch.mask = 0xFFFFFFFF;
    watch.value = 0x10100;
    target->setBreakpoint(&watch);
    target->go();
    EXPECT_EQ(target->matched(), &watch);
    EXPECT_EQ(dataMemory.peekUint32(0x20), 0x10100u);
    watch.hasValue = false;
    watch.address = 0x22;
    watch.length = 2;
    target->go();
    EXPECT_EQ(target->matchedAddress(), 0x22u);
    EXPECT_EQ(dataMemory.peekUint32(0x20), 0x10201u);
    target->removeBreakpoint(&watch);

    target->registers()->setValue(MAXQ30Registers::DP0, 0x9000);
    target->setErrorEnabled("Address outside memory range on write", true);
    target->go();
    EXPECT_STREQ(target->lastError(address), "Address outside memory range on write");
    EXPECT_EQ(address, 0x9000u);
    EXPECT_EQ(target->matched(), nullptr);

    target->registers()->setPC(0x20);
    EXPECT_EQ(target->registers()->getValue(MAXQ30Registers::IP), 0x20u);
    target->disconnect();
    EXPECT_EQ(target->registers(), nullptr);
    target->connect(true); // and again
    target->disconnect();
    target->disconnect();
}

TEST_F(Simulator, FailuresOfConnectNameTheirReason)
{
    make("", rom());
    EXPECT_EQ(connectFailure(), "simulation filename project property not set");
    make(dir / "none.so", rom());
    EXPECT_EQ(connectFailure(), "Cannot load " + dir / "none.so");
    make("libz.so.1", rom());
    EXPECT_EQ(connectFailure(), "Cannot find newMAXQSIMInterface");
    make(Library, "");
    EXPECT_EQ(connectFailure(), "simulation filename project property not set");
    make(Library, dir / "none.hex");
    EXPECT_EQ(connectFailure(), "Cannot open utility ROM hex file " + dir / "none.hex");
    make(Library, rom(), "code=nonsense");
    EXPECT_EQ(connectFailure(), "Cannot open utility ROM hex file " + rom());
    MAXQ30Simulator unprepared(nullptr);
    EXPECT_THROW(unprepared.connect(true), HException);
    // One simulator a process.
    make(Library, rom());
    target->connect(true);
    MAXQ30Simulator other(nullptr);
    other.syncSettingsWithProject(projectSystem->findProject(nullptr, "p"), "Common");
    EXPECT_THROW(other.connect(true), HException);
    EXPECT_THROW(other.reset(true, false), HException);
    EXPECT_THROW(other.start(true, 0), HException);
    EXPECT_THROW(other.step(), HException);
    EXPECT_TRUE(target->isConnected());
    EXPECT_EQ(target->codeMemory()->peekUint16(0), 0xFFFFu);
    mapName = "none.xml";
    make(Library, rom());
    EXPECT_EQ(connectFailure(), "cannot load memory map file: " + dir / "none.xml");
}

// The program writes the word once in three instructions; each write is told behind its instruction.
TEST_F(Simulator, TellsOfTheControlWordBehindTheInstructionThatWritesIt)
{
    make(Library, rom(), "code=64K data=2K");
    target->connect(true);
    target->codeMemory()->pokeBytes(0, sizeof counting, counting);
    target->reset(true, false);
    struct Watcher : ControlWordWatcher {
        void controlWordWritten() override
        {
            EXPECT_EQ(target->dataMemory()->peekUint32(0x20), 0x101u * ++told);
            EXPECT_EQ(target->registers()->getPC(), 12u);
            if (told == 1000)
                target->clear();
        }
        MAXQ30Simulator* target;
        unsigned told = 0;
    } watcher;
    watcher.target = target.get();
    EXPECT_FALSE(target->watchControlWord(0x22, &watcher)) << "not a whole word of memory";
    ASSERT_TRUE(target->watchControlWord(0x20, &watcher));
    target->start(true, 0);
    EXPECT_EQ(watcher.told, 1000u);

    HBreakpoint stop;
    stop.address = 12;
    target->setBreakpoint(&stop);
    target->go();
    EXPECT_EQ(watcher.told, 1000u) << "cleared";
}
