// The records that put items into sections, and those that open scopes.
#include "support/HException.h"
#include "support/HString.h"
#include "zoff/ZOFFExpr.h"
#include "zoff/ZOFFInsn.h"
#include "zoff/ZOFFItems.h"
#include "zoff/ZOFFMarker.h"
#include "zoff/ZOFFModule.h"
#include "zoff/ZOFFObject.h"
#include "zoff/ZOFFReader.h"
#include "zoff/ZOFFReaderInline.h" // the steps of the reader
#include "zoff/ZOFFScope.h"
#include "zoff/ZOFFSection.h"
#include "zoff/ZOFFSymbol.h"
#include "zoff/ZOFFTags.h"

void ZOFFReader::place(ZOFFInsn* insn)
{
    insn->setPC(m_pc);
    if (m_keepLoci) {
        openPacker();
        m_packer.addObject(insn);
        return;
    }
    insn->setLocus(m_locus);
    m_locus = nullptr;
    m_section->addInsn(insn);
}

void ZOFFReader::placeAsCurrent(ZOFFInsn* insn)
{
    place(insn);
    m_insn = insn;
    m_packedInsn.operation = nullptr;
}

void ZOFFReader::addProcessorInsn(bool hidden)
{
    if (m_keepLoci && m_depth >= 2 && m_stack[m_depth - 1].kind == Entry::Const) {
        const Entry& operand = m_stack[m_depth - 2];
        if (operand.kind == Entry::Object && (!operand.object || operand.object->isExpr()) &&
            packInsn(uint64_t(m_stack[m_depth - 1].value), static_cast<ZOFFExpr*>(operand.object), hidden)) {
            m_depth -= 2;
            return;
        }
    }
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
    chargeCode(bytes.size());
    insn.appendBytes(bytes);
}

void ZOFFReader::chargeCode(size_t count)
{
    m_codeBytes += int64_t(count);
    if (m_codeBytes + m_packer.codeBytes() > ZOFFLimits::CodeBytes)
        bad("too much code");
}

// The number has been checked; the name may be null.
void ZOFFReader::placeMarker(uint64_t number, const HString* name)
{
    ZOFFMarker* placed = marker(number);
    if (placed->fragment())
        bad("marker defined more than once");
    if (name)
        placed->setName(name);
    place(placed);
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
        auto number = uint64_t(popConst(0, largestNumber()));
        placeMarker(number, popNameOrNull());
        break;
    }
    case ZOFFTag::Locus: {
        int32_t line = popInt32();
        ZOFFFilename* file = popFile();
        if (m_keepLoci) {
            packLocus(file, line);
            break;
        }
        m_locus = new ZOFFLocus(file, line, tag);
        m_locus->setPC(m_pc);
        m_section->addInsn(m_locus);
        break;
    }
    case ZOFFTag::Break:
        m_packer.close();
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
