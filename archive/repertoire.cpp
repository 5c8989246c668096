#include "archive/repertoire.h"

#include <sys/stat.h>

#include <climits>
#include <exception>
#include <utility>

#include "archive/entry_path.h"
#include "framework/memory_scope.h"

namespace kalmo {

void CRepEntree::SetCrypte(bool bCrypte, const CTString& csPassword) {
    m_bCrypte = bCrypte;
    m_csPassword = csPassword;
}

bool CRepEntree::bMdpOK(std::wstring_view svPassword) const noexcept {
    return !m_bCrypte || m_csPassword.svGet() == svPassword;
}

bool CRepEntree::bEstUnFichierFactice() const noexcept {
    return m_u64TailleOriginale == 0 && (m_csNom.bEmpty() || m_csNom.svGet().back() == L'/');
}

bool CRepEntree::bRepertoire() const noexcept {
    constexpr std::uint32_t DOS_REPERTOIRE = 0x4000;
    // Archivers of some systems set that bit for every file; a Unix file type, where there is one, knows.
    const std::uint32_t dwUnix = m_dwAttribut >> 16;
    return (dwUnix & S_IFMT) != 0 ? S_ISDIR(dwUnix) : (m_dwAttribut & DOS_REPERTOIRE) != 0;
}

mode_t CRepEntree::unPermission() const noexcept {
    constexpr std::uint32_t NINE_BITS = 0777;
    const std::uint32_t dwUnix = m_dwAttribut >> 16 & NINE_BITS;
    return dwUnix != 0 ? dwUnix : m_dwAttribut & NINE_BITS;
}

bool CRepertoire::bAjouteEntree(CRepEntree clEntree) try {
    const CMemoryScope clScope;
    if (m_nCount >= INT_MAX) {
        return false;
    }
    if (m_nCount == m_tabBloc.size() * PAS_CROISSANCE) {
        m_tabBloc.push_back(std::make_unique<CBloc>());
    }
    m_clIndex.Ajoute(clEntree.csGetNom(), static_cast<int>(m_nCount));
    m_nFichier += clEntree.bEstUnFichierFactice() ? 0 : 1;
    __rclEntree(m_nCount) = std::move(clEntree);
    ++m_nCount;
    return true;
} catch (const std::exception&) {
    return NoMemory(false);
}

int CRepertoire::lRang(std::wstring_view svNom) const try {
    const CMemoryScope clScope;
    const int* const pnRang = svNom.find(L'\\') == std::wstring_view::npos
                                  ? m_clIndex.pTrouve(svNom)
                                  : m_clIndex.pTrouve(csWithSlashes(svNom));
    return pnRang == nullptr ? -1 : *pnRang;
} catch (const std::exception&) {
    return NoMemory(-1);
}

int CRepertoire::lRangCasse(std::wstring_view svNom) const try {
    const CMemoryScope clScope;
    // Names that differ in case alone are rare: the index nearly always answers.
    const CTString csNom = csWithSlashes(svNom);
    int nRang = lRang(csNom);
    while (__bRang(nRang) && !(pclGetEntree(nRang)->csGetNom() == csNom)) {
        ++nRang;
    }
    return __bRang(nRang) ? nRang : -1;
} catch (const std::exception&) {
    return NoMemory(-1);
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

bool CRepertoire::bChangeChemin(int nRang, std::wstring_view svRepertoire) try {
    const CMemoryScope clScope;
    if (!__bRang(nRang)) {
        return false;
    }
    CRepEntree& rclEntree = __rclEntree(static_cast<std::size_t>(nRang));
    CTString csNom = csWithSlashes(svRepertoire);
    if (!csNom.bEmpty() && csNom.svGet().back() != L'/') {
        csNom += L'/';
    }
    csNom += CFSPath::stSplit(rclEntree.csGetNom()).svFileName;
    const CTString csBefore = rclEntree.csGetNom();
    rclEntree.SetNom(std::move(csNom));
    try {
        _RecalculeHash();
    } catch (const std::exception&) {
        rclEntree.SetNom(csBefore);
        throw;
    }
    return true;
} catch (const std::exception&) {
    return NoMemory(false);
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
    if (m_nCount == 0) {
        m_clIndex.Vide();
        m_nFichier = 0;
        return;
    }
    // Made aside, so that the former one stays where memory does not suffice.
    CTHashTableTi<int> clIndex(BUCKETS_INITIAL);
    std::size_t nFichier = 0;
    for (std::size_t n = 0; n < m_nCount; ++n) {
        const CRepEntree& rclEntree = __rclEntree(n);
        clIndex.Ajoute(rclEntree.csGetNom(), static_cast<int>(n));
        nFichier += rclEntree.bEstUnFichierFactice() ? 0 : 1;
    }
    m_clIndex = std::move(clIndex);
    m_nFichier = nFichier;
}

}  // namespace kalmo
