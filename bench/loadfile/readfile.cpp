// Reads load files into sections and does nothing else: the reading part of a session as a process of
// its own. With two or more files it also sorts them and checks them for overlap, as a download does.
#include "loadfile/LoadFileFactory.h"
#include "loadfile/LoadFileList.h"
#include "support/HException.h"

#include <cstdio>

// In KiB. The resource usage of a process would count what its parent held before.
static long peakMemory()
{
    long peak = 0;
    char line[256];
    if (FILE* file = fopen("/proc/self/status", "r")) {
        while (fgets(line, sizeof line, file))
            if (sscanf(line, "VmHWM: %ld", &peak) == 1)
                break;
        fclose(file);
    }
    return peak;
}

int main(int argc, char** argv)
{
    LoadFileFactory formats;
    LoadFileFactory::install(formats);
    try {
        LoadFileList list;
        for (int i = 1; i < argc; ++i) {
            const char* type = formats.detect(argv[i]);
            if (!type)
                throw HException(std::string("no type for ") + argv[i]);
            list.add(formats.create(argv[i], type), argv[i], true);
        }
        uint64_t bytes = 0;
        size_t sections = 0;
        if (list.items().size() > 1) {
            list.sort();
            printf("overlap: %d\n", list.overlap());
        }
        for (const LoadFileListItem& item : list.items()) {
            bytes += item.file->loadFileSections().length();
            sections += item.file->loadFileSections().sections().size();
        }
        printf("%zu sections, %llu bytes, peak memory %ld KiB\n", sections,
               static_cast<unsigned long long>(bytes), peakMemory());
    } catch (const HException& failure) {
        fprintf(stderr, "%s\n", failure.message().c_str());
        return 1;
    }
}
