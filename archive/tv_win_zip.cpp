#include "archive/tv_win_zip.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <exception>

#include "framework/errno_kept.h"
#include "framework/fs_path.h"
#include "framework/memory_scope.h"

namespace kalmo {
namespace {

constexpr std::size_t TAILLE_PIECE = 32768;

}  // namespace

// Has the archive file open for as long as it lives: one that a Lock closed is reopened and closed again.
class CTVWinZip::CFichierRouvert {
  public:
    explicit CFichierRouvert(CTVWinZip& rcl)
        : m_rcl(rcl), m_bWasOpen(rcl._bFichierOuvert()), m_bOpen(rcl._bRouvre()) {}
    CFichierRouvert(const CFichierRouvert&) = delete;
    CFichierRouvert& operator=(const CFichierRouvert&) = delete;
    ~CFichierRouvert() {
        if (!m_bWasOpen) {
            const CErrnoKept clKept;
            m_rcl._Ferme();
        }
    }
    [[nodiscard]] bool bOpen() const noexcept { return m_bOpen; }

  private:
    CTVWinZip& m_rcl;
    bool m_bWasOpen;
    bool m_bOpen;
};

eARCHIVE CTVWinZip::eOuvreArchive(std::wstring_view svPath, unsigned dwFlags, std::int64_t i64Base) try {
    const CMemoryScope clScope;
    const CTString csPath(svPath);  // the caller's view may be of the path that is kept here
    m_pclStream = &m_clFichier;
    m_csChemin = csPath;
    m_bOuvert = false;
    m_clRepertoire.Vide();
    m_nAcces = static_cast<int>(dwFlags & OUVRE_ECRITURE);
    if (!m_clFichier.bOpen(m_csChemin, CDiskFile::eMODE::Read)) {
        return _eErreur(ARCHIVE_NOT_FOUND);
    }
    return __eOuvre(dwFlags, i64Base);
} catch (const std::exception&) {
    return __eAbandonne();
}

eARCHIVE CTVWinZip::eOuvreArchiveStream(IXStream* pclStream, unsigned dwFlags, std::int64_t i64Base) try {
    const CMemoryScope clScope;
    _Ferme();
    m_csChemin.Empty();
    m_bOuvert = false;
    m_clRepertoire.Vide();
    m_nAcces = static_cast<int>(dwFlags & OUVRE_ECRITURE);
    if (pclStream == nullptr) {
        m_pclStream = &m_clFichier;
        errno = EINVAL;
        return _eErreur(ARCHIVE_NOT_FOUND);
    }
    m_pclStream = pclStream;
    return __eOuvre(dwFlags, i64Base);
} catch (const std::exception&) {
    return __eAbandonne();
}

eARCHIVE CTVWinZip::__eAbandonne() {
    m_clRepertoire.Vide();
    m_clZip.FermeZip();
    _Ferme();
    m_bOuvert = false;
    return NoMemory(_eErreur(ARCHIVE_BAD));
}

eARCHIVE CTVWinZip::__eOuvre(unsigned dwFlags, std::int64_t i64Base) {
    m_i64Base = i64Base;
    m_nLastTime.reset();
    m_clZip.SetStream(m_pclStream, m_i64Base);
    if (m_clZip.OuvreZip(m_csChemin, static_cast<int>(dwFlags)) != ARCHIVE_OK) {
        _Ferme();
        return _eErreur(ARCHIVE_BAD);
    }
    m_bOuvert = true;
    m_bOuvert = eLitRepertoireMono() == ARCHIVE_OK;
    if (!m_bOuvert) {
        const CErrnoKept clKept;
        _Ferme();
    }
    return m_eErreur;
}

eARCHIVE CTVWinZip::eLitRepertoireMono() try {
    const CMemoryScope clScope;
    if (!m_bOuvert) {
        return _eErreur(ARCHIVE_NOT_OPEN);
    }
    m_clRepertoire.Vide();
    const CFichierRouvert clRouvert(*this);
    if (!clRouvert.bOpen()) {
        return _eErreur(ARCHIVE_CREATE);
    }
    m_clRepertoire.Reserve(m_clZip.nGetCount());
    for (eARCHIVE e = m_clZip.FirstFile(); e == ARCHIVE_OK; e = m_clZip.NextFile(0)) {
        const STCentralHeader& rstHeader = *m_clZip.pstGetCurrent();
        const STPathParts stName = CFSPath::stSplit(rstHeader.csNom);
        if (stName.svBaseName.empty() && stName.svExtension.empty()) {
            continue;  // a directory
        }
        const STFileTime stDate = rstHeader.stDate();
        CRepEntree clEntree(csWithSlashes(rstHeader.csNom), rstHeader.u64TailleOriginale,
                            rstHeader.u64TailleDonnees(), {stDate, stDate, stDate}, rstHeader.dwAttribut);
        clEntree.SetCrypte(rstHeader.bCrypte(), m_clZip.csGetPassword());
        if (!m_clRepertoire.bAjouteEntree(std::move(clEntree))) {
            return _eErreur(ARCHIVE_BAD);
        }
    }
    return _eErreur(ARCHIVE_OK);
} catch (const std::exception&) {
    m_clRepertoire.Vide();
    return NoMemory(_eErreur(ARCHIVE_BAD));
}

eARCHIVE CTVWinZip::__eTrouve(std::wstring_view svNom, bool bCasse, const CRepEntree** ppclEntree) {
    int nRang = m_clRepertoire.lRang(svNom);
    if (nRang < 0) {
        return ARCHIVE_NOT_FOUND;
    }
    if (bCasse) {
        nRang = m_clRepertoire.lRangCasse(svNom);
    }
    *ppclEntree = m_clRepertoire.pclGetEntree(nRang);
    return *ppclEntree != nullptr ? m_clZip.LocateFile(svNom, bCasse) : ARCHIVE_NOT_LOCATED;
}

eARCHIVE CTVWinZip::__eOuvreEntree() {
    switch (m_clZip.OpenCurrentFileInZip()) {
        case ARCHIVE_OK: return ARCHIVE_OK;
        case ARCHIVE_CIPHER: return ARCHIVE_PASSWORD;
        default: return ARCHIVE_BAD;
    }
}

eARCHIVE CTVWinZip::__eCopieEntree(const CRepEntree& rclEntree, IXStream* pclDestination) {
    std::array<unsigned char, TAILLE_PIECE> tabPiece;  // filled before it is read
    std::uint64_t u64Written = 0;
    eARCHIVE eResult = ARCHIVE_OK;
    std::size_t nRead = 0;
    do {
        if (!m_clZip.bReadCurrentFileInZip(tabPiece.data(), tabPiece.size(), &nRead)) {
            eResult = ARCHIVE_DATA;
        } else if (nRead > 0 && pclDestination != nullptr &&
                   !pclDestination->bWrite(tabPiece.data(), nRead)) {
            eResult = errno == ENOSPC ? ARCHIVE_DISK_FULL : ARCHIVE_WRITE;
        } else {
            u64Written += nRead;
        }
    } while (eResult == ARCHIVE_OK && nRead > 0);

    const CErrnoKept clKept;
    const bool bCrcOk = m_clZip.CloseCurrentFileInZip(0, 0) == ARCHIVE_OK;
    if (eResult == ARCHIVE_OK && !bCrcOk) {
        eResult = ARCHIVE_DATA;
    }
    if (eResult == ARCHIVE_OK && u64Written != rclEntree.u64GetTailleOriginale()) {
        eResult = ARCHIVE_BAD;
    }
    return eResult;
}

std::time_t CTVWinZip::__nTime(const CRepEntree& rclEntree) {
    const STFileTime st = rclEntree.stGetTimes().stModif;
    if (!m_nLastTime || !(st == m_stLastTime)) {
        m_stLastTime = st;
        m_nLastTime = CDiskFile::nSystemTime(st);
    }
    return *m_nLastTime;
}

bool CTVWinZip::_bTermine(CDiskFile& rclFile, mode_t unPermission) {
    return rclFile.bSetPermission(unPermission);
}

eARCHIVE CTVWinZip::__eCreeRepertoire(const CRepEntree& rclEntree, std::wstring_view svDestination) {
    if (svDestination.empty()) {
        return ARCHIVE_OK;
    }
    // Opened like a file, for its times and attributes; a link that leads to a directory is none.
    CDiskFile clDirectory;
    if (!CDiskFile::bCreateDirectory(svDestination) ||
        !clDirectory.bOpen(svDestination, CDiskFile::eMODE::ReadDirectory)) {
        return ARCHIVE_CREATE;
    }
    clDirectory.bSetTime(__nTime(rclEntree));  // not every file system keeps times
    return _bTermine(clDirectory, __unPermission(rclEntree)) ? ARCHIVE_OK : ARCHIVE_CREATE;
}

eARCHIVE CTVWinZip::__eExtraitVersFichier(const CRepEntree& rclEntree, std::wstring_view svDestination) {
    const bool bVide = rclEntree.u64GetTailleOriginale() == 0;
    const eARCHIVE eOpened = bVide ? m_clZip.eVerifieVide() : __eOuvreEntree();
    if (eOpened != ARCHIVE_OK) {
        return eOpened;
    }
    if (bVide && rclEntree.bRepertoire()) {
        return __eCreeRepertoire(rclEntree, svDestination);
    }
    CDiskFile clFile;
    if (!clFile.bOpen(svDestination, CDiskFile::eMODE::Create, PERMISSION_PENDANT)) {
        const CErrnoKept clKept;
        (void)m_clZip.CloseCurrentFileInZip(0, 0);
        return ARCHIVE_CREATE;
    }
    if (!clFile.bIsNew()) {
        clFile.bSetPermission(PERMISSION_PENDANT);  // one that was there had other bits
    }
    // A new file costs, from here on, its writes, one call for its time, one for its permissions and the
    // close.
    eARCHIVE eResult = bVide ? ARCHIVE_OK : __eCopieEntree(rclEntree, &clFile);
    if (eResult == ARCHIVE_OK) {
        clFile.bSetTime(__nTime(rclEntree));  // not every file system keeps it
        _bTermine(clFile, __unPermission(rclEntree));
        if (!clFile.bClose()) {
            eResult = errno == ENOSPC ? ARCHIVE_DISK_FULL : ARCHIVE_WRITE;
        }
    }
    if (eResult != ARCHIVE_OK) {
        const CErrnoKept clKept;
        clFile.bClose();
        CDiskFile::bDelete(svDestination);
    }
    return eResult;
}

eARCHIVE CTVWinZip::__eLitEntree(const CRepEntree& rclEntree, IXStream* pclDestination) {
    if (rclEntree.u64GetTailleOriginale() == 0) {
        return m_clZip.eVerifieVide();
    }
    const eARCHIVE eOpened = __eOuvreEntree();
    return eOpened == ARCHIVE_OK ? __eCopieEntree(rclEntree, pclDestination) : eOpened;
}

eARCHIVE CTVWinZip::__eAbandonneEntree() {
    (void)m_clZip.CloseCurrentFileInZip(0, 0);
    m_hFenetre = nullptr;
    m_pstAvancement = nullptr;
    return NoMemory(_eErreur(ARCHIVE_BAD));
}

template <class CExtraction>
eARCHIVE CTVWinZip::__eExtrait(std::wstring_view svNom, bool bCasse, HWND hFenetre,
                               STInfoAvancement* pstAvancement, CExtraction clExtraction) {
    if (!m_bOuvert) {
        return _eErreur(ARCHIVE_NOT_OPEN);
    }
    const CFichierRouvert clRouvert(*this);
    if (!clRouvert.bOpen()) {
        return _eErreur(ARCHIVE_CREATE);
    }
    m_hFenetre = hFenetre;
    m_pstAvancement = pstAvancement;
    const CRepEntree* pclEntree = nullptr;
    eARCHIVE eResult = __eTrouve(svNom, bCasse, &pclEntree);
    if (eResult == ARCHIVE_OK) {
        eResult = clExtraction(*pclEntree);
    }
    m_hFenetre = nullptr;
    m_pstAvancement = nullptr;
    return _eErreur(eResult);
}

eARCHIVE CTVWinZip::eExtraitFichier(std::wstring_view svNom, std::wstring_view svDestination,
                                    unsigned /*dwReserve*/, HWND hFenetre, int /*nReserve*/, unsigned dwFlags,
                                    STInfoAvancement* pstAvancement) try {
    const CMemoryScope clScope;
    CFSPath clDestination;
    const bool bTooLong = !bThrowingNoMemory([&] { return clDestination.bSet(svDestination); });
    if ((dwFlags & EXTRAIT_SUPPRIME) != 0 && CDiskFile::bFileExists(clDestination.svGet())) {
        CDiskFile::bDelete(clDestination.svGet());
    }
    const auto Extraction = [&](const CRepEntree& rclEntree) {
        if (bTooLong) {
            errno = ENAMETOOLONG;
            return ARCHIVE_CREATE;
        }
        return __eExtraitVersFichier(rclEntree, clDestination.svGet());
    };
    return __eExtrait(svNom, (dwFlags & EXTRAIT_CASSE) != 0, hFenetre, pstAvancement, Extraction);
} catch (const std::exception&) {
    return __eAbandonneEntree();
}

eARCHIVE CTVWinZip::eExtraitFichier(std::wstring_view svNom, CTLBIN* ptabOut, unsigned /*dwReserve*/,
                                    HWND hFenetre, int /*nReserve*/, STInfoAvancement* pstAvancement) try {
    const CMemoryScope clScope;
    ptabOut->clear();
    return __eExtrait(svNom, false, hFenetre, pstAvancement, [&](const CRepEntree& rclEntree) {
        CMemoryStream clMemory;
        const eARCHIVE eResult = __eLitEntree(rclEntree, &clMemory);
        if (eResult == ARCHIVE_OK) {
            *ptabOut = clMemory.tabDetach();
        }
        return eResult;
    });
} catch (const std::exception&) {
    return __eAbandonneEntree();
}

eARCHIVE CTVWinZip::eVerifieFichier(std::wstring_view svNom) try {
    const CMemoryScope clScope;
    return __eExtrait(svNom, false, nullptr, nullptr,
                      [&](const CRepEntree& rclEntree) { return __eLitEntree(rclEntree, nullptr); });
} catch (const std::exception&) {
    return __eAbandonneEntree();
}

eARCHIVE CTVWinZip::eMotDePasse(const wchar_t* pszMotDePasse) {
    return _eErreur(m_clZip.bSetPassword(pszMotDePasse) ? ARCHIVE_OK : ARCHIVE_PASSWORD);
}

eARCHIVE CTVWinZip::eGetMotDePasse(CTString& rcsMotDePasse) {
    rcsMotDePasse = m_clZip.csGetPassword();
    return _eErreur(ARCHIVE_OK);
}

}  // namespace kalmo
