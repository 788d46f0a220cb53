#include "support/HException.h"

int HException::m_count = 0;
