// The indexes of the loaded executables, and lookups over all of them: the one that knows an address, a
// line or a name first has it.
//
// The indexes come from the cache of open files and go back to it. Whoever keeps pointers into one drops
// them before the reference goes that load() and unload() return.
#pragma once

#include "support/Path.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <list>
#include <memory>

class SymbolicDebug;
class ZOFFInsn;
class ZOFFType;

class SymbolTables {
public:
    struct GiveBack {
        void operator()(SymbolicDebug* table) const;
    };
    using Reference = std::unique_ptr<SymbolicDebug, GiveBack>;
    using List = std::list<Reference>;

    // An executable as it is on disk now. Returns its earlier state when that was loaded and differs, else
    // null. Throws HException for a file that cannot be read.
    Reference load(const Path& path);
    // An empty path stands for all.
    List unload(const Path& path);
    const List& all() const { return m_tables; }

    // The executable that has an instruction at the address; the first one when none has, or the address
    // is 0. Null without executables.
    SymbolicDebug* at(uint32_t address) const;
    ZOFFInsn* insnAt(uint32_t address) const;
    // The instruction that ends in front of an address, whatever its length.
    ZOFFInsn* insnBefore(uint32_t address) const;
    // A public symbol's value, of whichever executable resolves it first.
    bool linkerSymbol(const char* name, int64_t& value) const;
    ZOFFType* namedType(const char* name) const;

    // The address of a line and the executable that has it; a file that is given must be that one. -1 when
    // none has.
    int64_t lineAddress(QString& file, const Path& path, int line) const;
    // The line of an address, with the executable and the source; -1 when there is none.
    int addressLine(uint32_t address, QString& file, Path& path) const;

    // Names of executables are their paths.
    QStringList executableNames() const;
    QStringList sourceFileNames(const QString& executable) const;
    QList<int> lineNumbers(const QString& executable, const Path& source) const;
    QStringList symbolNames(const QString& executable) const;

private:
    List::iterator find(const Path& path);
    const SymbolicDebug* named(const QString& executable) const;

    List m_tables;
};
