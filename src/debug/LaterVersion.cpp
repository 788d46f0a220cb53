#include "debug/LaterVersion.h"

#include "support/HException.h"

void notInThisVersion(const char* what)
{
    throw HException(std::string("this version cannot ") + what);
}
