#include "archive/rep_entree.h"

#include <sys/stat.h>

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

}  // namespace kalmo
