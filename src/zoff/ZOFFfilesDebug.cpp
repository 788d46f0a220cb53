// The part of the cache that needs the debugger, in a file of its own so that a program without one
// links.
#include "support/HException.h"
#include "zoff/ZOFFfiles.h"

#include <algorithm>

SymbolicDebug* ZOFFfiles::getSymbolicDebug(const Path& path)
{
    ZOFFModule* module = getModule(path);
    if (!module)
        throw HException("bad object file: no module in " + path.osPath());
    auto info = std::find_if(m_files.begin(), m_files.end(),
                             [module](const openFilesInfo& entry) { return entry.module == module; });
    if (!info->symbolicDebug) {
        try {
            info->symbolicDebug = newSymbolicDebug(info->path, module);
        } catch (...) {
            release(module);
            throw;
        }
    }
    ++info->debugCount;
    return info->symbolicDebug;
}

void ZOFFfiles::release(SymbolicDebug* debug)
{
    auto info = std::find_if(m_files.begin(), m_files.end(),
                             [debug](const openFilesInfo& entry) { return entry.symbolicDebug == debug; });
    if (!debug || info == m_files.end())
        return;
    if (--info->debugCount == 0) {
        deleteSymbolicDebug(debug);
        info->symbolicDebug = nullptr;
    }
    release(info->module);
}
