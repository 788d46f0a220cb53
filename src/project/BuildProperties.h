// The vocabulary of a project's settings, by the system that adds them. Rows: save name, type, default,
// and for an Enumeration its texts joined by ";". Titles follow from the names.
#pragma once

#include "project/PropertyClass.h"

#include <span>

struct BuildProperty {
    const char* saveName;
    PropertyClass::Type type;
    const char* page;
    const char* otherwise = "";
    const char* enumerates = "";
    int minimum = 0;
    int maximum = 0;
    const char* suffix = "";
    bool readOnly = false;
};

// Both are saved under one name; a project's type tells which one counts.
extern const BuildProperty ExecutableFileNameProperty;
extern const BuildProperty LibraryFileNameProperty;

std::span<const BuildProperty> commonBuildProperties();
std::span<const BuildProperty> standardBuildProperties();
std::span<const BuildProperty> zoffBuildProperties();
std::span<const BuildProperty> maxq30BuildProperties();

// "linker_memory_map_file" as "Linker Memory Map File".
QString titleOfSetting(const QString& saveName);
