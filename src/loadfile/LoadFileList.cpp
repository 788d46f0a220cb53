#include "loadfile/LoadFileList.h"

#include "support/Path.h"

#include "loadfile/LoadFileFactory.h"
#include "support/AddressRanges.h"

#include <QString>

#include <algorithm>

LoadFileList::~LoadFileList()
{
    for (const LoadFileListItem& item : m_items)
        if (item.owned)
            LoadFileFactory::instance()->destroy(item.file);
}

void LoadFileList::add(LoadFileInterface* file, const std::string& name, bool owned)
{
    m_items.push_back({file, name, owned});
}

bool LoadFileList::overlap() const
{
    if (m_items.size() < 2)
        return false;
    AddressRanges accumulated;
    for (const LoadFileListItem& item : m_items) {
        AddressRanges own;
        item.file->loadFileSections().getSectionAddressRanges(own);
        if (accumulated.isOccludedBy(own))
            return true;
        accumulated.add(own);
    }
    return false;
}

std::string LoadFileList::overlapText() const
{
    auto name = [](const LoadFileListItem& item) { return Path(item.name).fileName().toStdString(); };
    for (size_t i = 0; i < m_items.size(); ++i)
        for (size_t j = i + 1; j < m_items.size(); ++j)
            for (const auto& a : m_items[i].file->loadFileSections().sections())
                for (const auto& b : m_items[j].file->loadFileSections().sections()) {
                    uint64_t first = std::max(a->address(), b->address());
                    uint64_t end =
                        std::min(uint64_t(a->address()) + a->length(), uint64_t(b->address()) + b->length());
                    if (first < end)
                        return name(m_items[i]) + " and " + name(m_items[j]) + " both have " +
                               QString::asprintf("0x%08X - 0x%08X", unsigned(first), unsigned(end - 1))
                                   .toStdString();
                }
    return {};
}

void LoadFileList::sort()
{
    for (const LoadFileListItem& item : m_items)
        item.file->sortLoadFileSections();
    std::stable_sort(m_items.begin(), m_items.end(),
                     [](const LoadFileListItem& a, const LoadFileListItem& b) {
                         return a.file->loadFileSections().firstSectionStartAddress() <
                                b.file->loadFileSections().firstSectionStartAddress();
                     });
}
