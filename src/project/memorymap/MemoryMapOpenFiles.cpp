#include "project/memorymap/MemoryMapOpenFiles.h"

#include "project/xml/MacroText.h"

#include <map>
#include <memory>

MemoryMap* MemoryMapOpenFiles::getMemoryMapFile(const QString& file, const MacroText::Macros& macros)
{
    static std::map<QString, std::unique_ptr<MemoryMap>> open;
    QString name = MacroText::replaceMacros(macros, file);
    auto found = open.find(name);
    if (found != open.end() && found->second->upToDate())
        return found->second.get();
    auto map = std::make_unique<MemoryMap>();
    map->setFileMacros(macros);
    if (!map->load(name, MacroText::stringFromStringList(MacroText::stringListFromMacros(macros)), true)) {
        open.erase(name);
        return nullptr;
    }
    return (open[name] = std::move(map)).get();
}
