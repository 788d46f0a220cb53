// Where usage faults are told: the program name exactly as typed, and a stream. The process has one.
#pragma once

#include <iosfwd>
#include <string>

struct Reporter {
    std::string program; // argv[0]
    std::ostream& stream;
};

extern Reporter* report; // made by main
