#include "loadfile/LoadFileFactory.h"

#include "loadfile/BinaryLoadFile.h"
#include "loadfile/HexLoadFile.h"
#include "loadfile/IntelHexLoadFile.h"
#include "loadfile/SRecordLoadFile.h"
#include "loadfile/TIHexLoadFile.h"
#include "support/Installed.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace {

template <class File> LoadFileInterface* make(const char* file)
{
    return new File(file);
}

// Everything that is known of a type, in the order of the listing. Endings are separated by blanks
// and match in just these spellings.
struct Type {
    LoadFileTypeInfo info;
    const char* endings;
    LoadFileInterface* (*make)(const char* file);
};

const Type g_types[] = {
    {{"bin", "*.bin *.rom", "Binary"}, ".bin .BIN .rom .ROM", make<BinaryLoadFile>},
    {{"ihex", "*.hex", "Intel Hex"}, ".hex .HEX .ihx .IHX .ihex .IHEX", make<IntelHexLoadFile>},
    {{"hex", "*.lst", "Hex"}, ".lst .LST", make<HexLoadFile>},
    {{"tihex", "*.txt", "TI Hex"}, ".txt .TXT", make<TIHexLoadFile>},
    {{"srec", "*.s19 *.srec", "Motorola S-Record"},
     ".srec .SREC .s19 .S19 .s28 .S28 .s37 .S37 .mot .MOT",
     make<SRecordLoadFile>},
};

constinit Installed<LoadFileFactory> g_factory("the LoadFileFactory");

bool endsWithAny(std::string_view name, std::string_view endings)
{
    while (!endings.empty()) {
        std::string_view ending = endings.substr(0, endings.find(' '));
        if (name.ends_with(ending))
            return true;
        endings.remove_prefix(std::min(endings.size(), ending.size() + 1));
    }
    return false;
}

} // namespace

LoadFileFactory* LoadFileFactory::instance()
{
    return &g_factory.get();
}

void LoadFileFactory::install(LoadFileFactory& factory)
{
    g_factory.install(factory);
}

LoadFileFactory::LoadFileFactory()
{
    for (const Type& type : g_types)
        m_types.push_back(type.info);
}

LoadFileInterface* LoadFileFactory::create(const char* file, const char* type)
{
    for (const Type& known : g_types)
        if (strcmp(known.info.name, type) == 0)
            return known.make(file);
    return nullptr;
}

void LoadFileFactory::destroy(LoadFileInterface* file)
{
    delete file;
}

std::string LoadFileFactory::endings() const
{
    std::string text;
    for (const Type& type : g_types) {
        std::string_view endings = type.endings;
        while (!endings.empty()) {
            std::string_view ending = endings.substr(0, endings.find(' '));
            if (std::none_of(ending.begin(), ending.end(), [](char c) { return c >= 'A' && c <= 'Z'; }))
                text += (text.empty() ? "" : " ") + std::string(ending);
            endings.remove_prefix(std::min(endings.size(), ending.size() + 1));
        }
    }
    return text;
}

const char* LoadFileFactory::detect(const char* file)
{
    for (const Type& type : g_types)
        if (endsWithAny(file, type.endings))
            return type.info.name;
    return nullptr;
}
