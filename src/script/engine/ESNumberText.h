// Decimal text to number, the same in every locale.
#pragma once

#include <QStringView>

// A whole text of digits with a fraction and an exponent as options, without sign or blanks. False when it
// is something else. Beyond the range the number is infinity or 0.
bool decimalToNumber(QStringView text, double& number);
