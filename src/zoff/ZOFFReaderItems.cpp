// The records that put items into sections, and those that open scopes.
#include "zoff/ZOFFReaderInline.h"

#include "support/HException.h"
#include "zoff/ZOFFItems.h"
#include "zoff/ZOFFMarker.h"
#include "zoff/ZOFFModule.h"
#include "zoff/ZOFFSection.h"
#include "zoff/ZOFFSymbol.h"

void ZOFFReader::place(ZOFFInsn* insn)
{
    insn->setPC(m_pc);
    insn->setLocus(m_locus);
    if (!m_keepLoci)
        m_locus = nullptr;
    m_section->addInsn(insn);
}

void ZOFFReader::placeAsCurrent(ZOFFInsn* insn)
{
    place(insn);
    m_insn = insn;
}

void ZOFFReader::addProcessorInsn(bool hidden)
{
    ZOFFInsn* insn = makeInsn();
    insn->setStackAdjust(m_stackAdjust);
    insn->setHidden(hidden);
    placeAsCurrent(insn);
}

void ZOFFReader::setPC()
{
    m_pc = popInt32();
    if (m_breakPending) {
        m_breakPending = false;
        place(new ZOFFBreakInsn);
    }
}

void ZOFFReader::setBytes()
{
    std::string_view bytes = popString();
    ZOFFInsn& insn = currentInsn();
    m_codeBytes += int64_t(bytes.size());
    if (m_codeBytes > ZOFFLimits::CodeBytes)
        bad("too much code");
    insn.appendBytes(bytes);
}

void ZOFFReader::performItem(ZOFFTag tag)
{
    switch (tag) {
    case ZOFFTag::Insn:
    case ZOFFTag::HiddenInsn: addProcessorInsn(tag == ZOFFTag::HiddenInsn); break;
    case ZOFFTag::DefBytes: {
        auto size = int(popConst(1, 4));
        placeAsCurrent(new ZOFFDefBytesInsn(popExpr(false), size));
        break;
    }
    case ZOFFTag::DefAddr: placeAsCurrent(new ZOFFDefAddrInsn(popExpr(false))); break;
    case ZOFFTag::Fill: {
        int32_t count = popSize();
        placeAsCurrent(new ZOFFFillInsn(count, popInt32()));
        break;
    }
    case ZOFFTag::Align: placeAsCurrent(new ZOFFAlignInsn(popInt32())); break;
    case ZOFFTag::Origin: placeAsCurrent(new ZOFFOriginInsn(popInt32())); break;
    case ZOFFTag::Space: placeAsCurrent(new ZOFFSpaceInsn(popExpr(false))); break;
    case ZOFFTag::LocalInsn: placeAsCurrent(new ZOFFLocalInsn(popExpr(false))); break;
    case ZOFFTag::LinkIf: placeAsCurrent(new ZOFFLinkIf(popExpr(false))); break;
    case ZOFFTag::EndLinkIf: placeAsCurrent(new ZOFFEndLinkIf); break;
    case ZOFFTag::Init: {
        auto* init = new ZOFFInitInsn(popName(), m_module);
        placeAsCurrent(init);
        m_inits.push_back(init);
        break;
    }
    case ZOFFTag::MarkerDef: {
        ZOFFMarker* placed = marker(uint64_t(popConst(0, m_input.size())));
        const HString* name = popNameOrNull();
        if (placed->fragment())
            bad("marker defined more than once");
        if (name)
            placed->setName(name);
        place(placed);
        break;
    }
    case ZOFFTag::Locus: {
        int32_t line = popInt32();
        auto* locus = new ZOFFLocus(popFile(), line, tag);
        locus->setPC(m_pc);
        m_section->addInsn(locus);
        m_locus = locus;
        if (m_keepLoci)
            locus->setLocus(locus);
        break;
    }
    case ZOFFTag::Break:
        m_section->newFragment();
        m_breakPending = true;
        break;
    case ZOFFTag::SetFlags: m_section->setFlags(uint32_t(popInt32())); break;
    default: break;
    }
}

void ZOFFReader::performScope(ZOFFTag tag)
{
    if (tag == ZOFFTag::SetScope) {
        ZOFFSymbol* symbol = popSymbol();
        ZOFFScope* scope = popScope(false);
        symbol->setScope(scope);
        push(scope);
        return;
    }
    if (tag == ZOFFTag::SetFctSymbol) {
        ZOFFSymbol* symbol = popSymbol();
        popScope(false)->setFunctionSymbol(symbol);
        return;
    }
    ZOFFExpr* end = popExpr(true);
    ZOFFExpr* start = popExpr(true);
    ZOFFScope* parent = popScope(true);
    ZOFFScope* scope;
    if (tag == ZOFFTag::ScopeModule) {
        if (m_module) {
            scope = new ZOFFModule;
        } else {
            scope = m_module = ZOFFModule::createIn(m_pool.get());
        }
    } else {
        auto markerOf = [](ZOFFExpr* expr) {
            return expr && expr->kind() == ZOFFKind::MarkerExpr ? static_cast<ZOFFMarkerExpr*>(expr)
                                                                : nullptr;
        };
        scope = new ZOFFScope(tag, markerOf(start), markerOf(end));
    }
    scope->setScope(parent);
    push(scope);
}
