// The command line of vboard.
#pragma once

#include "board/Faults.h"
#include "board/Images.h"
#include "board/Settings.h"

#include <string>
#include <vector>

namespace board {

struct Options {
    Settings settings;
    Faults faults;
    std::vector<Image> codeImages;
    std::vector<Image> dataImages;
    std::string saveCode; // file names, empty for none
    std::string saveData;
    std::string log;
    std::string usbSocket; // empty for the serial adapter
    std::string serialNumber = "VB000001";
    std::string product = "Virtual JTAG adapter";
    bool once = false;
    bool help = false;

    // Empty when all is well, otherwise what is wrong with the arguments.
    std::string parse(const std::vector<std::string>& arguments);
    static std::string helpText();
};

} // namespace board
