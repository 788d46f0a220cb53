// What this build of the tool is for: names and widths of the one processor that it serves.
#pragma once

const char* Get_ASM_FILE_EXTENSION();
int Get_TARGET_PROCESSOR();
const char* Get_PLATFORM();
int Get_ADDRESS_WIDTH();          // hexadecimal digits of an address
const char* Get_ADDRESS_FORMAT(); // printf format of an unsigned address
int Get_TARGET_CPP();             // 1 when the tool chain has C++
const char* Get_DEFAULT_CODE_SECTION_NAME();
const char* Get_DEFAULT_CONST_SECTION_NAME();
const char* Get_DEFAULT_DATA_SECTION_NAME();
const char* Get_DEFAULT_ZEROED_SECTION_NAME();
const char* Get_DEFAULT_VECTORS_SECTION_NAME();
