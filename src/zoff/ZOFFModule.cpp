#include "zoff/ZOFFModule.h"

#include "support/HString.h"
#include "support/Pool.h"
#include "zoff/ZOFFExpr.h"
#include "zoff/ZOFFMarker.h"
#include "zoff/ZOFFObject.h"
#include "zoff/ZOFFSection.h"
#include "zoff/ZOFFSymbol.h"

#include <algorithm>
#include <memory>

ZOFFModule::ZOFFModule(Pool* pool) : ZOFFScope(ZOFFKind::Module), m_pool(pool) {}

ZOFFModule* ZOFFModule::create()
{
    auto pool = std::make_unique<Pool>();
    CurrentPool current(pool.get());
    auto* module = new ZOFFModule(pool.get());
    pool.release();
    return module;
}

void ZOFFModule::destroy(ZOFFModule* module)
{
    if (module)
        delete module->m_pool;
}

void ZOFFModule::addSection(ZOFFSection* section)
{
    m_sectionsByName[section->name()] = section;
    m_sections.push_back(section);
}

ZOFFSection* ZOFFModule::findSection(const HString* name) const
{
    auto found = m_sectionsByName.find(name);
    return found == m_sectionsByName.end() ? nullptr : found->second;
}

void ZOFFModule::makePublic(ZOFFSymbol* symbol)
{
    m_publicSymbols.set(symbol->name(), symbol);
}

bool ZOFFModule::hasHiddenInsns() const
{
    return std::any_of(m_sections.begin(), m_sections.end(),
                       [](const ZOFFSection* section) { return section->hasHiddenInsns(); });
}

void ZOFFModule::nameLabels()
{
    for (ZOFFSymbol* symbol : m_allSymbols) {
        if (!symbol->value() || symbol->value()->kind() != ZOFFKind::MarkerExpr)
            continue;
        ZOFFMarker* marker = static_cast<ZOFFMarkerExpr*>(symbol->value())->marker();
        marker->setName(symbol->name());
        marker->setLabel(symbol);
    }
}
