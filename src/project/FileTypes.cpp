#include "project/FileTypes.h"

#include <QHash>

namespace {

constexpr FileType Types[] = {
    {QLatin1String("C"), QLatin1String("c")},
    {QLatin1String("C++"), QLatin1String("cc;cpp;cxx;c++")},
    {QLatin1String("Assembly"), QLatin1String("s;asm")},
    {QLatin1String("Basic"), QLatin1String("bas")},
    {QLatin1String("Forth"), QLatin1String("fth;4th")},
    {QLatin1String("Header"), QLatin1String("h;hh;hpp;hxx;inc")},
    {QLatin1String("Object file"), QLatin1String("kvo")},
    {QLatin1String("Library"), QLatin1String("kva")},
    {QLatin1String("Executable"), QLatin1String("kvx")},
    {QLatin1String("Memory Map"), QLatin1String("")},
    {QLatin1String("Section Placement"), QLatin1String("")},
    {QLatin1String("Linker Script"), QLatin1String("ld")},
    {QLatin1String("Target Script"), QLatin1String("")},
    {QLatin1String("Reset Script"), QLatin1String("")},
    {QLatin1String("Text"), QLatin1String("txt")},
};

} // namespace

std::span<const FileType> filetypes()
{
    return Types;
}

QString fileTypeOfExtension(const QString& extension)
{
    static const QHash<QString, QString> byExtension = [] {
        QHash<QString, QString> table;
        for (const FileType& type : Types)
            for (const QString& each : QString(type.extensions).split(u';', Qt::SkipEmptyParts))
                table.insert(each, type.name);
        return table;
    }();
    return byExtension.value(extension.toLower());
}

QStringList fileTypeNames()
{
    QStringList names{QStringLiteral("Default")};
    for (const FileType& type : Types)
        names.append(type.name);
    return names;
}
