// File-system and process services that the whole tool shares.
#pragma once

#include <QDir>
#include <QString>

#include <optional>

namespace QTx {

// The application directory is the directory of argv0, with links resolved (a relative name counts
// from the current directory, a bare command name from PATH); the root directory lies `levels`
// steps above it. Called once, by main.
void setApplicationPath(const char* argv0, int levels);
const QString& applicationDirectory();
const QString& rootDirectory();

// HOME names a place. Without one nothing is written for the user.
bool haveHome();
// Both begin with the environment's HOME; without one they lack that part.
QString userDocumentsDirectory();
// HOME, "/.", and the name in lower case with blanks as underscores.
QString userLocalAppDataDirectory(const QString& name);

// True when the directory exists or could be made, its missing parents first.
bool makeDir(const QDir& directory);
bool makeDir(const QString& directory);
bool removeFile(const QString& file);

// The whole file as UTF-8 text; nothing when it cannot be opened.
std::optional<QString> readText(const QString& file);

// Blocks the calling thread.
void sleep(unsigned milliseconds);

// dlopen, dlsym and dlclose. loadDLL returns null on failure; dllError() then tells the reason.
void* loadDLL(const QString& file);
void* getDLLAddress(void* library, const QString& name);
void unloadDLL(void* library);
QString dllError();

} // namespace QTx
