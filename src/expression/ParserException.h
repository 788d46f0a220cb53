// A fault in reading or evaluating an expression.
#pragma once

#include "support/HException.h"

class ParserException : public HException {
public:
    using HException::HException;
    QString getCause() const { return text(); }
};
