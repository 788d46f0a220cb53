// The kinds of files in a project, and the extensions by which a file without a `file_type` setting is
// told.
#pragma once

#include <QLatin1String>
#include <QString>
#include <QStringList>

#include <span>

struct FileType {
    QLatin1String name;
    QLatin1String extensions; // joined by ";", lower case, without the dot; may be empty
};

// All kinds, in the order in which they are offered.
std::span<const FileType> filetypes();
// The kind by extension, in any case; an empty text when there is none.
QString fileTypeOfExtension(const QString& extension);
// "Default" and the names of all kinds.
QStringList fileTypeNames();
