#include "support/PlatformConstants.h"

const char* Get_ASM_FILE_EXTENSION()
{
    return "asm";
}
int Get_TARGET_PROCESSOR()
{
    return 19;
}
const char* Get_PLATFORM()
{
    return "MAXQ30";
}
int Get_ADDRESS_WIDTH()
{
    return 8;
}
const char* Get_ADDRESS_FORMAT()
{
    return "%08x";
}
int Get_TARGET_CPP()
{
    return 0;
}
const char* Get_DEFAULT_CODE_SECTION_NAME()
{
    return "CODE";
}
const char* Get_DEFAULT_CONST_SECTION_NAME()
{
    return "CONST";
}
const char* Get_DEFAULT_DATA_SECTION_NAME()
{
    return "IDATA0";
}
const char* Get_DEFAULT_ZEROED_SECTION_NAME()
{
    return "UDATA0";
}
const char* Get_DEFAULT_VECTORS_SECTION_NAME()
{
    return "INTVEC";
}
