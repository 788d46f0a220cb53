// The memory maps that are in use, by file name. A map that changed on disk is loaded again.
#pragma once

#include "project/memorymap/MemoryMap.h"
#include "project/xml/MacroText.h"

class MemoryMapOpenFiles {
public:
    // The map, with the macros given to it and expansion on; null when the file does not load. It stays
    // here; the pointer is good until a call finds that the file changed.
    static MemoryMap* getMemoryMapFile(const QString& file, const MacroText::Macros& macros);
};
