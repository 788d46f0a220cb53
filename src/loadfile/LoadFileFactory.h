// Recognises and makes load files by type. The tool's factory also knows linked executables; it stands one
// floor up, where their class is.
#pragma once

#include "loadfile/LoadFileInterface.h"

#include <string>
#include <vector>

struct LoadFileTypeInfo {
    const char* name;        // what -filetype takes
    const char* filter;      // file name patterns
    const char* description; // without the closing "File"
};

class LoadFileFactory {
public:
    LoadFileFactory();
    virtual ~LoadFileFactory() = default;

    // The factory in use, which is the program's to install before it reads a load file.
    static LoadFileFactory* instance();
    static void install(LoadFileFactory& factory);

    // Reads the file at once, so that a bad one throws HException here. Null for an unknown type.
    // The caller owns the file and gives it back through destroy().
    virtual LoadFileInterface* create(const char* file, const char* type);
    virtual void destroy(LoadFileInterface* file);
    // The type by the end of the file's name, never by its content; null when there is none.
    virtual const char* detect(const char* file);

    // The known ends of names, in lower case, separated by blanks.
    virtual std::string endings() const;

    const std::vector<LoadFileTypeInfo>& types() const { return m_types; }

protected:
    std::vector<LoadFileTypeInfo> m_types;
};
