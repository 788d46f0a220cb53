// Declared beside its base class.
#pragma once

#include "project/StandardBuildSystem.h"
