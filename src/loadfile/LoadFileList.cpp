#include "loadfile/LoadFileList.h"

#include "loadfile/LoadFileFactory.h"

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
