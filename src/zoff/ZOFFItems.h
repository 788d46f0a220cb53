// The items of a fragment that are no machine instructions: data, filling, places, conditions.
#pragma once

#include "support/HString.h"
#include "zoff/ZOFFExpr.h"
#include "zoff/ZOFFInsn.h"
#include "zoff/ZOFFObject.h"

class ZOFFModule;
class ZOFFSection;

// One number of 1 to 4 bytes.
class ZOFFDefBytesInsn : public ZOFFInsn {
public:
    ZOFFDefBytesInsn(ZOFFExpr* value, int size) : ZOFFInsn(ZOFFKind::DefBytes, value), m_size(size) {}
    int size() const { return m_size; }
    int length() const override { return m_size; }
    void print(std::string& out) const override;
    void encode() override;

private:
    int32_t m_size;
};

// An address of the target.
class ZOFFDefAddrInsn : public ZOFFInsn {
public:
    explicit ZOFFDefAddrInsn(ZOFFExpr* value) : ZOFFInsn(ZOFFKind::DefAddr, value) {}
    int length() const override;
    void print(std::string& out) const override;
    void encode() override;
};

class ZOFFFillInsn : public ZOFFInsn {
public:
    ZOFFFillInsn(int count, int fill) : ZOFFInsn(ZOFFKind::Fill), m_count(count), m_fill(fill) {}
    int count() const { return m_count; }
    int fill() const { return m_fill; }
    int length() const override { return m_count; }
    uint8_t getByte(int) const override { return uint8_t(m_fill); }
    void copyBytes(uint8_t* to) const override;
    void print(std::string& out) const override;

private:
    int32_t m_count;
    int32_t m_fill;
};

// Zeros up to the next multiple; none while unplaced, and none for an alignment of 0.
class ZOFFAlignInsn : public ZOFFInsn {
public:
    explicit ZOFFAlignInsn(int alignment) : ZOFFInsn(ZOFFKind::Align), m_alignment(alignment) {}
    int alignment() const { return m_alignment; }
    int length() const override;
    uint8_t getByte(int) const override { return 0; }
    void print(std::string& out) const override;

private:
    int32_t m_alignment;
};

class ZOFFOriginInsn : public ZOFFInsn {
public:
    explicit ZOFFOriginInsn(int origin) : ZOFFInsn(ZOFFKind::Origin), m_origin(origin) {}
    int origin() const { return m_origin; }
    int length() const override { return 0; }
    uint8_t getByte(int) const override { return 0; }
    void print(std::string& out) const override;

private:
    int32_t m_origin;
};

class ZOFFBreakInsn : public ZOFFInsn {
public:
    ZOFFBreakInsn() : ZOFFInsn(ZOFFKind::Break) {}
    int length() const override { return 0; }
    uint8_t getByte(int) const override { return 0; }
};

// Zeros, as many as the low 32 bits of the operand say.
class ZOFFSpaceInsn : public ZOFFInsn {
public:
    explicit ZOFFSpaceInsn(ZOFFExpr* size) : ZOFFInsn(ZOFFKind::Space, size) {}
    int length() const override;
    uint8_t getByte(int) const override { return 0; }
    void print(std::string& out) const override;
};

class ZOFFLinkIf : public ZOFFInsn {
public:
    explicit ZOFFLinkIf(ZOFFExpr* condition) : ZOFFInsn(ZOFFKind::LinkIf, condition) {}
    int length() const override { return 0; }
    void print(std::string& out) const override;
};

class ZOFFEndLinkIf : public ZOFFInsn {
public:
    ZOFFEndLinkIf() : ZOFFInsn(ZOFFKind::EndLinkIf) {}
    int length() const override { return 0; }
    void print(std::string& out) const override;
};

// A copy of the bytes of another section, for a program that fills its variables at start.
class ZOFFInitInsn : public ZOFFInsn {
public:
    ZOFFInitInsn(const HString* sectionName, ZOFFModule* module);
    const HString* sectionName() const { return m_sectionName; }
    ZOFFModule* module() const { return m_module; }
    // The section by that name: through the hook when one is set, else in the module. Null when there
    // is none; then the item is empty.
    ZOFFSection* section() const;
    // These throw HException when sections are filled from one another in a circle, or too large.
    int length() const override;
    uint8_t getByte(int i) const override;
    void print(std::string& out) const override;

    static ZOFFSection* (*findSection)(const HString* name);

private:
    const HString* m_sectionName;
    ZOFFModule* m_module;
    mutable ZOFFSection* m_section = nullptr;
    mutable uint8_t* m_cachedBytes = nullptr;
    mutable int64_t m_cachedSize = 0;
    mutable bool m_visiting = false;
};

// A use of a local label.
class ZOFFLocalInsn : public ZOFFInsn {
public:
    explicit ZOFFLocalInsn(ZOFFExpr* value) : ZOFFInsn(ZOFFKind::Local, value) {}
    int length() const override { return 0; }
    void print(std::string& out) const override;
};

class ZOFFResetLocusInsn : public ZOFFInsn {
public:
    ZOFFResetLocusInsn() : ZOFFInsn(ZOFFKind::ResetLocus) {}
    int length() const override { return 0; }
};
