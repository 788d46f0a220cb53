#include "driver/session/Hints.h"

namespace {

constexpr char CheckLink[] =
    "check the cable, the power of adapter and board, your rights to the port (group dialout, "
    "or the udev rule for USB), and that no other program holds it";

struct Hint {
    const char* part; // of the message, wherever it stands
    const char* text;
};

// The first row whose part is in the message counts.
constexpr Hint Hints[] = {
    {"no target interface specified", "list the targets with -listtargets"},
    {"unknown property: ", "list the properties of the target with -listprops"},
    {"unknown file type ", "list the types with -listfiletypes"},
    {"no load address specified", "for example -loadaddress 0x0"},
    {"cannot load memory map file: ",
     "the project names its memory map as a file of the type \"Memory Map\", or by its setting, for example "
     "linker_memory_map_file=\"$(ProjectDir)/board.xml\""},
    {"simulation filename project property not set",
     "set the simulator's library and ROM in the project, for example "
     "simulator_DLL_FileName=\"$(BenchDir)/lib/libmaxq30sim.so\" and "
     "simulator_DLL_RomFileName=\"$(BenchDir)/lib/maxq30rom.hex\""},
    {"does not fit the target description",
     "the segments of the project's memory map say what memory the target has"},
    {"Bootloader has not started", "check the power and the reset line of the board"},
    {"The JTAG interface is not responding",
     "check the power of the board and the cable between it and the adapter"},
    {"open error ", CheckLink},
    {"tcgetattr error ", CheckLink},
    {"No USB Tethers are connected", CheckLink},
    {"cannot find USB device", CheckLink},
    {"cannot get USB descriptors", CheckLink},
    {"Cannot open target interface", CheckLink},
    {"Can't establish communications with the JTAG adapter", CheckLink},
    {"Binary mode ", CheckLink},
    {"Cannot switch to binary mode", CheckLink},
    {"Unable to write to serial port", CheckLink},
    {"MAXQD_shiftInOutDR ", CheckLink},
    {"write operation failed", CheckLink},
    {"read operation failed", CheckLink},
    {"data link write timed out", CheckLink},
    {"Target connection has been lost", CheckLink},
    {"No loader prompt",
     "check the power of the board; a session that begins anew finds it in its bootloader"},
};

} // namespace

QString hintFor(const QString& message)
{
    for (const Hint& hint : Hints)
        if (message.contains(QLatin1String(hint.part)))
            return QLatin1String(hint.text);
    return {};
}
