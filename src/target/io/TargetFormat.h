// The format engine for the printf and scanf requests of a target program. It takes every argument
// through a table of functions, so that no argument list of the host's exists: the table's functions
// read and write target memory. The formats are those of C, as far as the lists below go.
//
// printf: flags space # ' + - 0 (' groups decimal digits by commas), width and precision, each also
// as *, lengths h hh l ll L, conversions c d i u o x X e E f F g G s p n and %.
// scanf: assignment suppression *, width, the same lengths, conversions c d i u o x X e E f g G s p n
// and %.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

// How arguments are read and written. `data` is handed through. Integers are answered sign-extended;
// pointers are target byte addresses. The set functions write one word at the place of the next
// argument, the write functions at an address.
struct va_listfns {
    int64_t (*getIntArg)(void* data);
    int64_t (*getLongArg)(void* data);
    int64_t (*getLongLongArg)(void* data);
    double (*getDoubleArg)(void* data);
    uint32_t (*getPtrArg)(void* data);
    std::string (*getStringArg)(void* data);
    void (*setLongPtrArg)(void* data, int64_t value);
    void (*setIntPtrArg)(void* data, int64_t value);
    void (*writePtrArgChar)(void* data, uint32_t address, int64_t value);
    void (*writePtrArgShort)(void* data, uint32_t address, int64_t value);
    void (*writePtrArgInt)(void* data, uint32_t address, int64_t value);
    void (*writePtrArgLong)(void* data, uint32_t address, int64_t value);
    void (*writePtrArgLongLong)(void* data, uint32_t address, int64_t value);
    void (*writePtrArgUnsignedChar)(void* data, uint32_t address, uint64_t value);
    void (*writePtrArgUnsignedShort)(void* data, uint32_t address, uint64_t value);
    void (*writePtrArgUnsignedInt)(void* data, uint32_t address, uint64_t value);
    void (*writePtrArgUnsignedLong)(void* data, uint32_t address, uint64_t value);
    void (*writePtrArgUnsignedLongLong)(void* data, uint32_t address, uint64_t value);
    void (*writePtrArgFloat)(void* data, uint32_t address, double value);
    void (*writePtrArgDouble)(void* data, uint32_t address, double value);
    void (*writePtrArgLongDouble)(void* data, uint32_t address, double value);

    unsigned intSize = 4; // bytes of an int and of a pointer on the target
};

// Where formatted characters go.
struct __printf_tag {
    int count = 0; // characters produced so far, also those beyond the limit; stays at INT_MAX
    int limit = 0;
    char* buffer = nullptr; // may be null; the last position below the limit becomes a zero
    void (*output)(int character, __printf_tag* tag) = nullptr; // may be null
    FILE* file = nullptr;                                       // for the output function
    int error = 0;                                              // what it met, as errno
};

void __putc(__printf_tag* tag, int character);
void __vfprintf(__printf_tag* tag, const char* format, const va_listfns& functions, void* data);

// Where scanned characters come from: a text, or functions that read one character and push it back.
struct __scanf_source {
    bool isString = true;
    const char* string = nullptr;
    int (*getc)(__scanf_source* source) = nullptr; // -1 at the end
    void (*ungetc)(int character, __scanf_source* source) = nullptr;
    FILE* file = nullptr;
    int error = 0;     // what getc met, as errno
    int64_t taken = 0; // characters read and not pushed back
};

// The number of items stored, or -1 when the input ends before the first conversion.
int __vfscanf(__scanf_source* source, const char* format, const va_listfns& functions, void* data);
