// The root of an object file, library or executable in memory: sections with their instructions,
// symbols, scopes and attributes.
#pragma once

#include "support/HString.h"
#include "support/Pool.h"
#include "zoff/PoolContainers.h"
#include "zoff/ZOFFScope.h"

class ZOFFInsn;
class ZOFFSection;

class ZOFFModule : public ZOFFScope {
public:
    using Sections = PoolMap<const HString*, ZOFFSection*, HString::Earlier>;
    using PublicSymbols = PoolTable<const HString*, ZOFFSymbol*, HString::Earlier>;
    using Libraries = PoolSet<const HString*, HString::Earlier>;
    using Attributes = PoolMap<const HString*, const HString*, HString::Earlier>;

    static constexpr int DefaultLinkOrderPriority = 10;

    // A root with a pool of its own, in which it lives too. Whoever builds the tree makes pool() the
    // current one (CurrentPool); destroy() ends it with all that is in it.
    static ZOFFModule* create();
    // A root in a pool that exists already, which is the current one and which the module takes over.
    static ZOFFModule* createIn(Pool* pool) { return new ZOFFModule(pool); }
    static void destroy(ZOFFModule* module);

    // A module inside another; it has no pool.
    ZOFFModule() : ZOFFModule(nullptr) {}

    Pool* pool() const { return m_pool; }

    // Enters a section by its name, in place of an earlier one, and into the list.
    void addSection(ZOFFSection* section);
    // The maps are ordered by when a name was first seen; the lists are in creation order.
    const Sections& sectionsByName() const { return m_sectionsByName; }
    const PoolList<ZOFFSection*>& sections() const { return m_sections; }
    ZOFFSection* findSection(const HString* name) const; // null when there is none

    void addSymbol(ZOFFSymbol* symbol) { m_allSymbols.push_back(symbol); }
    const PoolList<ZOFFSymbol*>& allSymbols() const { return m_allSymbols; }
    // The symbol must have a name.
    void makePublic(ZOFFSymbol* symbol);
    const PublicSymbols& publicSymbols() const { return m_publicSymbols; }

    void addLibrary(const HString* name) { m_libraries.insert(name); }
    const Libraries& libraries() const { return m_libraries; }
    void setAttribute(const HString* key, const HString* value) { m_attributes[key] = value; }
    const Attributes& attributes() const { return m_attributes; }
    bool isProtected() const { return m_protected; }
    void setProtected(bool on) { m_protected = on; }
    int32_t linkOrderPriority() const { return m_linkOrderPriority; }
    void setLinkOrderPriority(int32_t priority) { m_linkOrderPriority = priority; }

    // Whether any instruction of any section is hidden.
    bool hasHiddenInsns() const;
    // Gives each marker that is the whole value of a symbol that symbol's name.
    void nameLabels();

private:
    explicit ZOFFModule(Pool* pool);

    bool m_protected = false;
    int32_t m_linkOrderPriority = DefaultLinkOrderPriority;
    Sections m_sectionsByName;
    PoolList<ZOFFSection*> m_sections;
    PublicSymbols m_publicSymbols;
    PoolList<ZOFFSymbol*> m_allSymbols;
    Libraries m_libraries;
    Attributes m_attributes;
    Pool* m_pool;
};
