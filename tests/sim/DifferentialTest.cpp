// Random programs on the core and on the plain reference: what anybody can see is the same after every slice.
#include "sim/Core.h"
#include "sim/Program.h"
#include "sim/Reference.h"
#include "sim/maxqsim.h"

#include <random>

namespace maxq30 {

namespace {

constexpr uint32_t CodeWords = 256;
constexpr uint32_t DataBytes = 512;

class Differential : public ::testing::Test {
protected:
    Differential() { reference.events = &expected; }

    uint32_t random(uint32_t below) { return uint32_t(m_random() % below); }

    // Mostly words that mean something, near jumps, and pointers that stay near the memory.
    uint16_t word()
    {
        static constexpr unsigned Modules[] = {8, 9, 9, 10, 10, 10, 12, 13, 14, 15, 7, 0};
        switch (random(8)) {
        case 0: return uint16_t(m_random());
        case 1: return uint16_t(0x0B00 | (random(3) ? 0 : random(256)) | (random(4) ? 0 : random(16) << 12));
        case 2: return uint16_t(random(8) << 12 | 0x0C00 | ((random(16) - 8) & 0xFF));     // near jump
        case 3: return uint16_t((random(2) ? 0x4D00 : 0x5D00) | ((random(8) - 6) & 0xFF)); // loop
        case 4: return uint16_t(random(8) << 12 | 0x0F00 | random(256));
        }
        unsigned destination = random(8) << 4 | Modules[random(std::size(Modules))];
        unsigned source = random(16) << 4 | Modules[random(std::size(Modules))];
        return uint16_t(random(4) ? 0x8000 | destination << 8 | source : destination << 8 | random(256));
    }

    void write(uint32_t at, uint16_t value)
    {
        reference.code[at] = value;
        const unsigned char bytes[] = {uint8_t(value), uint8_t(value >> 8)};
        ASSERT_TRUE(core.writeCode(at * 2, 2, bytes));
    }

    void setBoth(unsigned number, uint32_t value)
    {
        core.writeRegister(number, value);
        reference.regs[number] = value;
    }

    void begin(unsigned seed)
    {
        m_random.seed(seed);
        for (uint32_t i = 0; i < CodeWords; ++i)
            write(i, word());
        for (unsigned number : {reg::DP0, reg::DP1, reg::BP, reg::SP})
            setBoth(number, random(DataBytes));
        for (unsigned n = 0; n < 16; ++n)
            setBoth(reg::A(n), random(3) ? random(CodeWords) : uint32_t(m_random()));
        setBoth(reg::IV, random(CodeWords));
        setBoth(reg::IMR, random(2) ? 0xFFFF : 0);
    }

    bool isAmong(const std::vector<uint32_t>& stops) const
    {
        return std::find(stops.begin(), stops.end(), reference.ip) != stops.end();
    }

    // A slice of a run, with stops; then a jump or a changed word by the host.
    void slice()
    {
        std::vector<uint32_t> stops(random(6));
        for (uint32_t& stop : stops)
            stop = random(CodeWords + 2);
        core.setStops(stops);
        MAXQSIMRun run{1 + random(random(4) ? 40 : 1000), random(4) > 0, 0, 0, false};
        uint64_t steps = 0, before = reference.cycles;
        while (steps < run.maximum && !((steps || !run.fromStop) && isAmong(stops))) {
            reference.step();
            ++steps;
        }
        core.run(run);
        EXPECT_EQ(run.steps, steps);
        EXPECT_EQ(run.cycles, reference.cycles - before);
        EXPECT_EQ(run.atStop, isAmong(stops));
    }

    void compare()
    {
        ASSERT_EQ(core.ip(), reference.ip);
        ASSERT_EQ(events.take(), expected.take());
        ASSERT_EQ(core.readRegister(reg::PSF), reference.psf());
        for (unsigned number = 0; number < RegisterNumbers; ++number)
            if (RegisterMasks[number] && number != reg::PSF) {
                ASSERT_EQ(core.readRegister(number), reference.regs[number]) << number;
            }
        std::vector<uint8_t> data(DataBytes);
        ASSERT_TRUE(core.readData(0, DataBytes, data.data()));
        ASSERT_EQ(data, reference.data);
    }

    // Leaves in `expected` what is told when only two ranges are watched.
    void keepTold()
    {
        std::erase_if(expected.log, [](const std::string& line) {
            unsigned address = 0;
            char width = 0;
            if (std::sscanf(line.c_str(), "%*[a-z].%c %x=", &width, &address) != 2)
                return false;
            unsigned last = address + (width == 'B' ? 0 : width == 'W' ? 1 : 3);
            return !(address <= 101 && last >= 100) && !(address <= 402 && last >= 400);
        });
    }

    void compareCounts()
    {
        for (uint32_t i = 0; i < CodeWords; ++i) {
            MAXQSIMCount count = core.count(i);
            ASSERT_EQ(count.executed, reference.executed[i]) << i;
            ASSERT_EQ(count.taken, reference.taken[i]) << i;
        }
    }

    Core core{2 * CodeWords, DataBytes};
    Reference reference{CodeWords, DataBytes};
    Recorder events, expected;

private:
    std::minstd_rand m_random;
};

} // namespace

TEST_F(Differential, SlicesOfRandomPrograms)
{
    core.setCallBacks(&events, MAXQSIM_LongDataAccesses);
    for (unsigned seed = 1; seed <= 1000; ++seed) {
        SCOPED_TRACE(seed);
        begin(seed);
        for (int i = 0; i < 12; ++i) {
            slice();
            compare();
            if (HasFatalFailure() || HasNonfatalFailure())
                return;
            if (random(2) == 0) {
                reference.ip = random(CodeWords);
                core.writeRegister(reg::IP, reference.ip);
            }
            if (random(2) == 0)
                write(random(CodeWords), word());
            if (random(4) == 0)
                setBoth(reg::IIR, random(4));
            if (random(8) == 0)
                compareCounts();
        }
        compareCounts();
        if (HasFatalFailure())
            return;
    }
}

// Without anybody who listens the accesses go another way.
TEST_F(Differential, UnwatchedPrograms)
{
    for (unsigned seed = 1; seed <= 1000; ++seed) {
        SCOPED_TRACE(seed);
        begin(seed);
        if (seed % 3 == 0) {
            // Told are only accesses to some bytes, and errors, which the reference then has among others.
            core.setCallBacks(&events, MAXQSIM_LongDataAccesses);
            core.tellAccesses({{100, 101}, {400, 402}});
        } else {
            core.setCallBacks(nullptr);
        }
        for (int i = 0; i < 12; ++i) {
            slice();
            if (seed % 3 == 0)
                keepTold();
            else
                expected.take();
            compare();
            if (HasFatalFailure() || HasNonfatalFailure())
                return;
        }
        compareCounts();
    }
}

} // namespace maxq30
