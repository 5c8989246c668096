#include "archive/repertoire.h"

#include <climits>
#include <utility>

#include "archive/entry_name.h"

namespace kalmo {

bool CRepertoire::bAjouteEntree(CRepEntree clEntree) {
    if (m_nCount >= INT_MAX) {
        return false;
    }
    if (m_nCount == m_tabBloc.size() * nPasCroissance) {
        m_tabBloc.push_back(std::make_unique<CBloc>());
    }
    m_clIndex.Ajoute(clEntree.csGetNom(), static_cast<int>(m_nCount));
    m_nFichier += clEntree.bEstUnFichierFactice() ? 0 : 1;
    __rclEntree(m_nCount) = std::move(clEntree);
    ++m_nCount;
    return true;
}

int CRepertoire::lRang(std::wstring_view svNom) const {
    const int* const pnRang = svNom.find(L'\\') == std::wstring_view::npos
                                  ? m_clIndex.pTrouve(svNom)
                                  : m_clIndex.pTrouve(csWithSlashes(svNom));
    return pnRang == nullptr ? -1 : *pnRang;
}

int CRepertoire::lRangCasse(std::wstring_view svNom) const {
    // Names that differ in case alone are rare: the index nearly always answers.
    const CTString csNom = csWithSlashes(svNom);
    int nRang = lRang(csNom);
    while (__bRang(nRang) && !(pclGetEntree(nRang)->csGetNom() == csNom)) {
        ++nRang;
    }
    return __bRang(nRang) ? nRang : -1;
}

const CRepEntree* CRepertoire::pclGetEntree(int nRang) const noexcept {
    return __bRang(nRang) ? &__rclEntree(static_cast<std::size_t>(nRang)) : nullptr;
}

void CRepertoire::Vide() {
    m_tabBloc.clear();
    m_nCount = 0;
    _RecalculeHash();
}

void CRepertoire::SupprimeElement(int nRang) {
    if (!__bRang(nRang)) {
        return;
    }
    for (auto n = static_cast<std::size_t>(nRang); n + 1 < m_nCount; ++n) {
        __rclEntree(n) = std::move(__rclEntree(n + 1));
    }
    --m_nCount;
    __rclEntree(m_nCount) = CRepEntree();
    _RecalculeHash();
}

bool CRepertoire::bChangeChemin(int nRang, std::wstring_view svRepertoire) {
    if (!__bRang(nRang)) {
        return false;
    }
    CRepEntree& rclEntree = __rclEntree(static_cast<std::size_t>(nRang));
    CTString csNom = csWithSlashes(svRepertoire);
    if (!csNom.bEmpty() && csNom.svGet().back() != L'/') {
        csNom += L'/';
    }
    csNom += CFSPath::stSplit(rclEntree.csGetNom()).svFileName;
    rclEntree.SetNom(std::move(csNom));
    _RecalculeHash();
    return true;
}

void CRepertoire::ForceRepVideAlaFin() {
    std::vector<CRepEntree> tabMarker;
    std::size_t nKept = 0;
    for (std::size_t n = 0; n < m_nCount; ++n) {
        CRepEntree& rclEntree = __rclEntree(n);
        if (rclEntree.bEstUnFichierFactice()) {
            tabMarker.push_back(std::move(rclEntree));
        } else if (n != nKept++) {
            __rclEntree(nKept - 1) = std::move(rclEntree);
        }
    }
    for (CRepEntree& rclMarker : tabMarker) {
        __rclEntree(nKept++) = std::move(rclMarker);
    }
    _RecalculeHash();
}

void CRepertoire::_RecalculeHash() {
    m_clIndex.Vide();
    m_nFichier = 0;
    for (std::size_t n = 0; n < m_nCount; ++n) {
        const CRepEntree& rclEntree = __rclEntree(n);
        m_clIndex.Ajoute(rclEntree.csGetNom(), static_cast<int>(n));
        m_nFichier += rclEntree.bEstUnFichierFactice() ? 0 : 1;
    }
}

}  // namespace kalmo
