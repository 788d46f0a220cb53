#include "driver/Reporter.h"

Reporter* report = nullptr;
