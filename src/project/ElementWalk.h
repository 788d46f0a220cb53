// A walk over the tree below an element in document order, with no recursion: the depth of a solution
// costs no stack.
#pragma once

#include "project/ProjectElement.h"

#include <utility>
#include <vector>

class ElementWalk {
public:
    explicit ElementWalk(const ProjectElement* root)
    {
        if (root)
            m_levels.push_back({&root->children(), 0});
    }

    // The next element, or null at the end. Configurations are not among them.
    ProjectElement* next()
    {
        while (!m_levels.empty()) {
            auto& [children, at] = m_levels.back();
            if (at == children->size()) {
                m_levels.pop_back();
                continue;
            }
            ProjectElement* element = (*children)[at++].get();
            m_levels.push_back({&element->children(), 0});
            return element;
        }
        return nullptr;
    }

private:
    std::vector<std::pair<const std::vector<std::unique_ptr<ProjectElement>>*, size_t>> m_levels;
};
