// The arguments of a launch or an attach request, as far as they stand for options: they take the place of
// what the command line says.
#pragma once

#include <QString>

class RequestArguments;
class Options;
class SourceMap;

class Launch {
public:
    // Throws RequestFailure for what has a wrong type, is unknown, or cannot be done. What an editor adds for
    // itself begins with "__" or is one of the names that editors use, and is ignored.
    Launch(const RequestArguments& arguments, bool attach, Options& options, SourceMap& sourceMap);

    bool stopOnEntry = false;
    bool attach;
};
