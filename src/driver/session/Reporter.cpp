#include "driver/session/Reporter.h"

Reporter* report = nullptr;
