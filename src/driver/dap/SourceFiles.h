// The source files that the loaded executables name, and what the editor calls them.
//
// An executable may name a file by a relative path; it then counts from the executable's own directory, or,
// where no such file is, from the current one.
#pragma once

#include "support/Path.h"

#include <QJsonObject>
#include <QString>

#include <map>
#include <vector>

class ClientFormat;
class SymbolicDebuggerInterface;

class SourceFiles {
public:
    // Neither is owned.
    SourceFiles(SymbolicDebuggerInterface& debugger, const ClientFormat& client)
        : m_debugger(debugger), m_client(client)
    {
    }

    // To be called after symbols were loaded.
    void update();

    struct File {
        QString executable;
        Path built;   // as the executable has it
        QString here; // absolute, on this host as far as it is known
    };
    const std::vector<File>& files() const { return m_files; }
    // The file that the editor names; null when no executable has it.
    const File* find(const QString& editorsPath) const;

    // The protocol's description of a file.
    QJsonObject source(const Path& built) const;

private:
    QString here(const QString& executable, const Path& built) const;

    SymbolicDebuggerInterface& m_debugger;
    const ClientFormat& m_client;
    std::vector<File> m_files;
    std::map<Path, QString> m_here;
};
