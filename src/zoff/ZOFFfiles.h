// The cache of open object files: who asks for a path twice gets the same tree, as long as the file on
// disk is the same one. A load file and the debugger share modules through it.
#pragma once

#include "support/Path.h"

#include <QDateTime>
#include <list>

class SymbolicDebug;
class ZOFFModule;

struct openFilesInfo {
    Path path;
    QDateTime lastModified;
    qint64 size = 0;
    ZOFFModule* module = nullptr;
    SymbolicDebug* symbolicDebug = nullptr;
    int moduleCount = 0;
    int debugCount = 0;
};

class ZOFFfiles {
public:
    // The module of a file, to be given back through release(). A file that changed since it was read is
    // read anew; the older module lives on for those who hold it. Throws HException "Can't access PATH",
    // and what the reader throws. Null for a file that holds no module.
    ZOFFModule* getModule(const Path& path);
    // The index over a module's symbols and lines, made at the first request; it holds its module.
    SymbolicDebug* getSymbolicDebug(const Path& path);
    // Null is allowed.
    void release(ZOFFModule* module);
    void release(SymbolicDebug* debug);

    // The entry for a path in the state that it has on disk now; null when there is none.
    openFilesInfo* findOpenFilesInfo(const Path& path);
    size_t count() const { return m_files.size(); }

private:
    std::list<openFilesInfo> m_files; // newest first
};

extern ZOFFfiles g_ZOFFfiles;
