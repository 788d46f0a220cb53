// The load files of a session, in order. The list hands what it owns back to the factory.
#pragma once

#include "loadfile/LoadFileInterface.h"

#include <string>
#include <vector>

struct LoadFileListItem {
    LoadFileInterface* file;
    std::string name; // the path as the operating system takes it
    bool owned;
};

class LoadFileList {
public:
    LoadFileList() = default;
    ~LoadFileList();
    LoadFileList(const LoadFileList&) = delete;
    LoadFileList& operator=(const LoadFileList&) = delete;

    void add(LoadFileInterface* file, const std::string& name, bool owned);
    bool isEmpty() const { return m_items.empty(); }
    const std::vector<LoadFileListItem>& items() const { return m_items; }

    // Two files share an address of ordinary target memory. Sections within one file are not
    // compared with each other. n log n in the number of sections.
    bool overlap() const;
    // Two files with a common range, as "A and B both have 0xFIRST - 0xLAST"; empty when there are none.
    std::string overlapText() const;

    // Sorts each file's sections, then the files by their first address; a file without sections
    // counts as address 0. Equal addresses keep their order.
    void sort();

private:
    std::vector<LoadFileListItem> m_items;
};
