#include "zoff/ZOFFTags.h"

const char* tagName(unsigned tag)
{
    switch (tag) {
#define ZOFF_NAME(number, id, name)                                                                          \
    case number: return name;
        ZOFF_TAGS(ZOFF_NAME)
#undef ZOFF_NAME
    default: return nullptr;
    }
}
