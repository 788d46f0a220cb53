// The yardstick: how many instructions a second simavr executes.
#include "bench/sim/simavr.h"

#include <chrono>
#include <cstring>

extern "C" {
#include <simavr/sim_avr.h>
#include <simavr/sim_elf.h>
}

namespace {

void quiet(avr_t*, const int, const char*, va_list) {}

// Runs the program to its end; answers the number of calls of avr_run.
uint64_t runToEnd(avr_t* avr, bool single)
{
    uint64_t calls = 0;
    int state;
    do {
        if (single)
            avr->run_cycle_limit = 1;
        state = avr_run(avr);
        ++calls;
    } while (state != cpu_Done && state != cpu_Crashed);
    return calls;
}

} // namespace

Rate simavrRate(const char* elfFile, Rate best)
{
    avr_global_logger_set(quiet);
    static elf_firmware_t firmware;
    static avr_t* avr;
    static uint64_t instructions;
    if (!avr) {
        if (elf_read_firmware(elfFile, &firmware) != 0)
            return best;
        avr = avr_make_mcu_by_name("atmega328p");
        if (!avr)
            return best;
        avr_init(avr);
        avr_load_firmware(avr, &firmware);
        // One instruction a call, to know how many the program has.
        avr->run_cycle_count = 1;
        instructions = runToEnd(avr, true);
    }
    avr_reset(avr);
    avr->state = cpu_Running;
    auto start = std::chrono::steady_clock::now();
    runToEnd(avr, false);
    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    best.note(instructions, seconds);
    return best;
}
