// The base of everything in a module: a pool object with a type and a name. All of a module's
// objects live in one Pool and go with it; no destructor runs then.
#pragma once

#include "support/HString.h"
#include "support/Pool.h"
#include "zoff/ZOFFTags.h"

class ZOFFScope;
class ZOFFType;

// What an object is, so that a reader or writer need not ask each class in turn.
enum class ZOFFKind : uint8_t {
    Other,
    String,
    ConstExpr,
    RegisterExpr,
    SymbolExpr,
    MarkerExpr,
    BinaryExpr,
    TypeExpr,
    Symbol,
    Scope,
    Module,
    Section,
    Fragment,
    Field,
    Type,
    DefBytes,
    DefAddr,
    Fill,
    Align,
    Origin,
    Break,
    Space,
    LinkIf,
    EndLinkIf,
    Init,
    Local,
    ResetLocus,
    Processor,
    Marker,
    Locus,
    Filename,
};

class ZOFFObject : public PoolObject {
public:
    ZOFFObject(const ZOFFObject&) = delete;
    ZOFFObject& operator=(const ZOFFObject&) = delete;

    // May be null. Types make a printed name on demand.
    virtual const HString* getName() const { return m_name; }
    // Puts a symbol or a scope into a scope. Nothing else stands in one.
    virtual void setScope(ZOFFScope* scope) { (void)scope; }
    virtual ~ZOFFObject() = default;

    ZOFFKind kind() const { return ZOFFKind(m_kind); }
    bool isExpr() const { return kind() >= ZOFFKind::ConstExpr && kind() <= ZOFFKind::TypeExpr; }
    bool isScope() const { return kind() == ZOFFKind::Scope || kind() == ZOFFKind::Module; }
    bool isInsn() const { return kind() >= ZOFFKind::DefBytes; }

    ZOFFType* type() const { return m_type; }
    void setType(ZOFFType* type) { m_type = type; }
    // The name as it was given; null when there is none.
    const HString* name() const { return m_name; }
    void setName(const HString* name) { m_name = name; }
    // SCOPE_MODULE, SCOPE_FUNCTION or SCOPE_BLOCK; only scopes use it.
    ZOFFTag scopeKind() const { return ZOFFTag(m_scopeKind); }
    void setScopeKind(ZOFFTag tag) { m_scopeKind = uint8_t(tag); }

protected:
    explicit ZOFFObject(ZOFFKind kind, const HString* name = nullptr) : m_name(name), m_kind(uint8_t(kind)) {}

    ZOFFType* m_type = nullptr;
    mutable const HString* m_name;
    // A linked executable holds one object an instruction. Six bytes behind these two are open to derived
    // classes.
    uint8_t m_kind;
    uint8_t m_scopeKind = uint8_t(ZOFFTag::ScopeBlock);
};

// A string operand. The bytes it is made from must outlive it; text() interns them, so that bytes of
// code that travel as strings are not kept for ever.
class ZOFFString : public ZOFFObject {
public:
    explicit ZOFFString(std::string_view bytes) : ZOFFObject(ZOFFKind::String), m_bytes(bytes) {}

    std::string_view bytes() const { return m_bytes; }
    int length() const { return int(m_bytes.size()); }
    const HString* text() const { return HString::intern(m_bytes); }

private:
    std::string_view m_bytes;
};
