// A named value: a label, a variable, a function, a number.
#pragma once

#include "support/HString.h"
#include "zoff/ZOFFExpr.h"
#include "zoff/ZOFFObject.h"
#include "zoff/ZOFFScope.h"

class ZOFFLocus;

class ZOFFSymbol : public ZOFFObject {
public:
    explicit ZOFFSymbol(const HString* name) : ZOFFObject(ZOFFKind::Symbol, name) {}

    // The first call counts, later ones are ignored. The scope enters the symbol into its name map under
    // getName(), in place of an object of that name; a nameless symbol is not entered.
    void setScope(ZOFFScope* scope) override;
    ZOFFScope* scope() const { return m_scope; } // null in the module

    // Unresolved while the symbol has no value.
    ZOFFEvaluation evaluate() const;

    ZOFFExpr* value() const { return m_value; } // null while undefined
    void setValue(ZOFFExpr* value) { m_value = value; }
    // Where the symbol is declared; may be null.
    ZOFFLocus* locus() const { return m_locus; }
    void setLocus(ZOFFLocus* locus) { m_locus = locus; }
    int32_t codeletIndex() const { return m_codeletIndex; } // -1 for none
    void setCodeletIndex(int32_t index) { m_codeletIndex = index; }
    bool patchable() const { return m_patchable; }
    int32_t patchValue() const { return m_patchValue; } // -1 for none
    void setPatchable(int32_t value)
    {
        m_patchable = true;
        m_patchValue = value;
    }
    bool patched() const { return m_patched; }
    void setPatched(bool on) { m_patched = on; }

private:
    bool m_patchable = false;
    bool m_patched = false;
    ZOFFScope* m_scope = nullptr;
    ZOFFExpr* m_value = nullptr;
    ZOFFLocus* m_locus = nullptr;
    int32_t m_codeletIndex = -1;
    int32_t m_patchValue = -1;
};
