// Reads an executable, makes its load sections, then the objects of all its items, and prints the
// disassembly into a buffer: the work of a session as a process of its own. With "read" it does nothing but
// read, with "walk" it reads and makes the objects. The rest of the process is the same, so a run by itself
// can be compared with other programs.
#include "maxq30/cpu/MAXQ30Processor.h"
#include "support/HException.h"
#include "support/Path.h"
#include "zoff/ZOFFInsn.h"
#include "zoff/ZOFFLoadFile.h"
#include "zoff/ZOFFModule.h"
#include "zoff/ZOFFObject.h"
#include "zoff/ZOFFProcessor.h"
#include "zoff/ZOFFSection.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <unistd.h>

namespace {

size_t g_allocations = 0;

// Bytes of this process that lie in memory.
size_t resident()
{
    size_t total = 0, pages = 0;
    if (FILE* file = fopen("/proc/self/statm", "r")) {
        if (fscanf(file, "%zu %zu", &total, &pages) != 2)
            pages = 0;
        fclose(file);
    }
    return pages * size_t(sysconf(_SC_PAGESIZE));
}

double seconds()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

} // namespace

void* operator new(size_t size)
{
    ++g_allocations;
    if (void* memory = malloc(size))
        return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept
{
    free(memory);
}

void operator delete(void* memory, size_t) noexcept
{
    free(memory);
}

int main(int argc, char** argv)
{
    ZOFFProcessor::install(MAXQ30Processor);
    if (argc < 2)
        return 2;
    try {
        size_t before = resident();
        double start = seconds();
        ZOFFLoadFile file{Path(argv[1])};
        double read = seconds() - start;
        size_t memory = resident() - before;
        std::string only = argc > 2 ? argv[2] : "";
        if (only == "read")
            return 0;

        start = seconds();
        uint64_t bytes = only == "walk" ? 0 : file.loadFileSections().length();
        double sections = seconds() - start;

        size_t count = 0, length = 0;
        start = seconds();
        for (ZOFFSection* section : file.module()->sections())
            section->find([&](ZOFFInsn* insn) {
                count += insn->kind() == ZOFFKind::Processor;
                return false;
            });
        double objects = seconds() - start;
        size_t memoryOfAll = resident() - before;
        if (only == "walk")
            return 0;
        std::string text;
        text.reserve(256);
        size_t allocations = g_allocations;
        start = seconds();
        for (ZOFFSection* section : file.module()->sections())
            section->find([&](ZOFFInsn* insn) {
                if (insn->kind() == ZOFFKind::Processor) {
                    text.clear();
                    insn->print(text);
                    length += text.size();
                }
                return false;
            });
        double disassembly = seconds() - start;
        printf("%zu %zu %zu %.6f %.6f %.6f %.6f %zu %zu %zu\n", count, memory, memoryOfAll, read, sections,
               objects, disassembly, g_allocations - allocations, size_t(bytes), length);
    } catch (const HException& failure) {
        fprintf(stderr, "%s\n", failure.message().c_str());
        return 1;
    }
}
