// The load file factory of the tool: it knows linked executables beside the hex and binary formats.
#pragma once

#include "loadfile/LoadFileFactory.h"
#include "loadfile/LoadFileInterface.h"

class ZOFFLoadFileFactory : public LoadFileFactory {
public:
    ZOFFLoadFileFactory();
    LoadFileInterface* create(const char* file, const char* type) override;
    // ".kvx" anywhere in the name wins over the endings of the other types.
    const char* detect(const char* file) override;
    std::string endings() const override { return ".kvx " + LoadFileFactory::endings(); }
};
