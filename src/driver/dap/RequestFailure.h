// A request that cannot be carried out; the text is for the user.
#pragma once

#include "support/HException.h"

class RequestFailure : public HException {
public:
    using HException::HException;
};
