#include "zoff/ZOFFLoadFileFactory.h"

#include "loadfile/LoadFileInterface.h"
#include "support/Path.h"
#include "zoff/ZOFFLoadFile.h"

#include <cstring>

namespace {
const char ExecutableType[] = "kvx";
}

ZOFFLoadFileFactory::ZOFFLoadFileFactory()
{
    m_types.insert(m_types.begin(), {ExecutableType, "*.kvx", "Forgeline Executable"});
}

LoadFileInterface* ZOFFLoadFileFactory::create(const char* file, const char* type)
{
    if (strcmp(type, ExecutableType) == 0)
        return new ZOFFLoadFile(Path(file));
    return LoadFileFactory::create(file, type);
}

const char* ZOFFLoadFileFactory::detect(const char* file)
{
    return strstr(file, ".kvx") ? ExecutableType : LoadFileFactory::detect(file);
}
