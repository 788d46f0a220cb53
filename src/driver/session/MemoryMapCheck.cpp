#include "driver/session/MemoryMapCheck.h"

#include "loadfile/LoadFileList.h"
#include "project/memorymap/MemoryMap.h"
#include "project/memorymap/MemoryMapElement.h"
#include "support/AddressRanges.h"
#include "support/Path.h"

namespace {

const QString Code = QStringLiteral("CODE");
const QString Data = QStringLiteral("DATA");

} // namespace

QStringList memoryMapFaults(const MemoryMap& map)
{
    const QString file = map.fileName() + QLatin1String(": ");
    QStringList faults;
    for (const QString& warning : map.warnings())
        faults += file + warning;
    for (const MemoryMapElement* element : map.getAllElements())
        if (element->elementType() == MemoryMapElement::Unsupported)
            faults += file + QStringLiteral("nobody knows <%1>").arg(QString::fromUtf8(element->tagName()));
    for (const MemoryMapElement* segment : map.getSegments(true)) {
        const QString name = QStringLiteral("segment \"%1\"").arg(segment->name());
        if (segment->size() == 0)
            faults += file + name + QLatin1String(" has no size");
        const QString space = segment->addressSpace();
        if (space != Code && space != Data)
            faults += file + name + QStringLiteral(" is in the unknown address space \"%1\"").arg(space);
    }
    return faults;
}

QStringList outsideMemoryMap(const MemoryMap& map, const LoadFileList& files)
{
    AddressRanges code;
    for (const MemoryMapElement* segment : map.getSegments(true))
        if (segment->addressSpace() == Code && segment->size() > 0) {
            uint64_t last = uint64_t(segment->address()) + segment->size() - 1;
            code.add(segment->address(), uint32_t(std::min<uint64_t>(last, UINT32_MAX)), true);
        }
    QStringList outside;
    if (code.isEmpty())
        return outside;
    for (const LoadFileListItem& item : files.items()) {
        AddressRanges sections;
        item.file->loadFileSections().getSectionAddressRanges(sections);
        for (const AddressRange& section : sections)
            if (!code.find(section.low, section.high))
                outside += QString::asprintf("0x%08X - 0x%08X of ", section.low, section.high) +
                           Path(item.name).fileName() + QLatin1String(" lies outside the memory map");
    }
    return outside;
}
