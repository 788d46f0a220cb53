// What a piece of code fails with.
#pragma once

#include "support/HException.h"

#include <string>

// The message of the HException that `body` throws; "no failure" when it throws none.
template <class Body> std::string failureOf(Body&& body)
{
    try {
        body();
    } catch (const HException& failure) {
        return failure.message();
    }
    return "no failure";
}
