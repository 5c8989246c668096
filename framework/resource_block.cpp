#include "framework/resource_block.h"

#include "framework/language.h"
#include "framework/le_cursor.h"

namespace kalmo {
namespace {

constexpr std::size_t ENTRY_HEADER = 7;
constexpr unsigned MODE_BITS = 3;
constexpr unsigned TWO_BYTE_UNITS = 1U << 6U;

unsigned unReadU16(std::span<const unsigned char> tab, std::size_t nOffset) {
    return CLeCursor(tab.subspan(nOffset)).wNext();
}

int nCompareInBlock(std::span<const unsigned char> tabBlock, std::uint16_t unNumber, unsigned unOffset) {
    return static_cast<int>(unNumber) - static_cast<int>(unReadU16(tabBlock, unOffset + 2));
}

}  // namespace

constinit CResAnsi604 CResAnsi604::m_stRessource_FR(&g_tabBlock_FR, &CResAnsi604::nCompareRes_FR);
constinit CResAnsi604 CResAnsi604::m_stRessource_US(&g_tabBlock_US, &CResAnsi604::nCompareRes_US);
constinit CResAnsi604 CResAnsi604::m_stRessource_ES(&g_tabBlock_ES, &CResAnsi604::nCompareRes_ES);

int CResAnsi604::nCompareRes_FR(std::uint16_t unNumber, unsigned unOffset) {
    return nCompareInBlock(g_tabBlock_FR, unNumber, unOffset);
}
int CResAnsi604::nCompareRes_US(std::uint16_t unNumber, unsigned unOffset) {
    return nCompareInBlock(g_tabBlock_US, unNumber, unOffset);
}
int CResAnsi604::nCompareRes_ES(std::uint16_t unNumber, unsigned unOffset) {
    return nCompareInBlock(g_tabBlock_ES, unNumber, unOffset);
}

bool CResAnsi604::bFind(STRessourceModule* pstRequest) {
    std::size_t nEnd = nGetCount();
    std::size_t nBegin = 1;  // Entry 0 is the block's header.
    while (nBegin < nEnd) {
        const std::size_t nMiddle = nBegin + (nEnd - nBegin) / 2;
        const int nCompare = m_pfnCompare(pstRequest->unNumber, m_tabOffset[nMiddle]);
        if (nCompare == 0) {
            __Fill(pstRequest, m_tabOffset[nMiddle]);
            return true;
        }
        if (nCompare < 0) {
            nEnd = nMiddle;
        } else {
            nBegin = nMiddle + 1;
        }
    }
    return false;
}

std::size_t CResAnsi604::nGetCount() {
    if (!m_bIndexed) {
        __BuildIndex();
    }
    return m_nCount;
}

void CResAnsi604::__BuildIndex() {
    const std::span<const unsigned char> tabBlock = *m_ptabBlock;
    std::size_t nOffset = 0;
    while (m_nCount < MAX_OFFSET && tabBlock.size() - nOffset >= ENTRY_HEADER) {
        const unsigned unSize = unReadU16(tabBlock, nOffset);
        if (unSize < ENTRY_HEADER || unSize > tabBlock.size() - nOffset) {
            break;  // The closing zero.
        }
        m_tabOffset[m_nCount++] = static_cast<unsigned>(nOffset);
        nOffset += unSize;
    }
    m_bIndexed = true;
}

void CResAnsi604::__Fill(STRessourceModule* pstRequest, unsigned unOffset) const {
    const std::span<const unsigned char> tabEntry = m_ptabBlock->subspan(unOffset);
    const unsigned unFlags = tabEntry[4];
    pstRequest->pbyText = tabEntry.subspan(ENTRY_HEADER).data();
    pstRequest->unLength = unReadU16(tabEntry, 5);
    pstRequest->nUnit = (unFlags & TWO_BYTE_UNITS) != 0 ? 2 : 1;
    pstRequest->nMode = static_cast<int>(unFlags & MODE_BITS);
}

bool bGetResAnsi604(STRessourceModule* pstRequest) {
    switch (pstRequest->nLangue) {
        case LANGUE_ESPAGNOL: return CResAnsi604::m_stRessource_ES.bFind(pstRequest);
        case LANGUE_FRANCAIS: return CResAnsi604::m_stRessource_FR.bFind(pstRequest);
        default: return CResAnsi604::m_stRessource_US.bFind(pstRequest);
    }
}

}  // namespace kalmo
