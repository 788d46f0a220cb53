// What is wrong with a memory map, and what of the load files it has no memory for.
#pragma once

#include <QString>
#include <QStringList>

class LoadFileList;
class MemoryMap;

// "FILE: ..." for what the map's reader found, segments without a size or of an unknown address space, and
// elements that nobody knows.
QStringList memoryMapFaults(const MemoryMap& map);
// "FIRST - LAST of FILE lies outside the memory map" for each section that no segment of code holds as a
// whole; neighbouring segments count as one. Empty for a map without such segments.
QStringList outsideMemoryMap(const MemoryMap& map, const LoadFileList& files);
