#include "zoff/ZOFFfiles.h"

#include "support/HByteStream.h"
#include "support/HException.h"
#include "zoff/ZOFFDebugIndex.h"
#include "zoff/ZOFFProcessor.h"
#include "zoff/ZOFFReader.h"

#include <algorithm>
#include <memory>

ZOFFfiles g_ZOFFfiles;

openFilesInfo* ZOFFfiles::findOpenFilesInfo(const Path& path)
{
    Path now(path.osPath()); // asks the file system anew
    auto found = std::find_if(m_files.begin(), m_files.end(), [&now](const openFilesInfo& info) {
        return info.path == now && info.lastModified == now.lastModified() && info.size == now.size();
    });
    return found == m_files.end() ? nullptr : &*found;
}

ZOFFModule* ZOFFfiles::getModule(const Path& path)
{
    Path now(path.osPath());
    if (!now.exists())
        throw HException("Can't access " + path.osPath());
    if (openFilesInfo* info = findOpenFilesInfo(now)) {
        ++info->moduleCount;
        return info->module;
    }
    // Time and size are those from before the read: a file that is written meanwhile is read again.
    openFilesInfo info{now, now.lastModified(), now.size()};
    HFileBlocks input(now.osPath());
    std::unique_ptr<ZOFFReader> reader = ZOFFProcessor::current().newReader(&input, true);
    info.module = reader->readFile(false);
    if (!info.module)
        return nullptr;
    info.moduleCount = 1;
    m_files.push_front(info);
    return info.module;
}

void ZOFFfiles::release(ZOFFModule* module)
{
    auto found = std::find_if(m_files.begin(), m_files.end(),
                              [module](const openFilesInfo& info) { return info.module == module; });
    if (found == m_files.end() || --found->moduleCount > 0)
        return;
    m_files.erase(found);
    ZOFFReader::release(module);
}

SymbolicDebug* ZOFFfiles::getSymbolicDebug(const Path& path)
{
    ZOFFModule* module = getModule(path);
    if (!module)
        throw HException("bad object file: no module in " + path.osPath());
    auto info = std::find_if(m_files.begin(), m_files.end(),
                             [module](const openFilesInfo& entry) { return entry.module == module; });
    if (!info->symbolicDebug) {
        try {
            info->symbolicDebug = ZOFFDebugIndex::current().make(info->path, module);
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
        ZOFFDebugIndex::current().destroy(debug);
        info->symbolicDebug = nullptr;
    }
    release(info->module);
}
