#include "archive/tv_zip_base.h"

#include <exception>
#include <string>
#include <utility>

#include "archive/dos_date.h"
#include "framework/memory_scope.h"

namespace kalmo {
namespace {

// The digits of a size; none for zero.
std::wstring csSizeText(std::uint64_t u64) {
    return u64 > 0 ? std::to_wstring(u64) : std::wstring();
}

}  // namespace

bool CTVZipBase::_bRouvre() {
    return _bFichierOuvert() || m_clFichier.bOpen(m_csChemin, CDiskFile::eMODE::Read);
}

void CTVZipBase::_Ferme() noexcept {
    m_clFichier.bClose();
}

eARCHIVE CTVZipBase::Lock(int nLock) {
    return m_nAcces == 0 ? LockEcritureOuvertEnLecture(nLock)
                         : LockLectureEcritureOuvertEnLectureEcriture(nLock);
}

eARCHIVE CTVZipBase::LockEcritureOuvertEnLecture(int nLock) {
    _Ferme();
    if (nLock == 0) {
        return _eErreur(ARCHIVE_OK);
    }
    m_nAcces = 0;
    return _eErreur(_bRouvre() ? ARCHIVE_OK : ARCHIVE_CREATE);
}

eARCHIVE CTVZipBase::LockLectureEcritureOuvertEnLectureEcriture(int nLock) {
    if (nLock == 0) {
        if (m_bVerrouEcriture) {
            _Ferme();
            m_bVerrouEcriture = false;
        }
        return _eErreur(ARCHIVE_OK);
    }
    m_bVerrouEcriture = true;
    const bool bOpen = m_pclStream != &m_clFichier ||
                       m_clFichier.bOpen(m_csChemin, CDiskFile::eMODE::ReadWrite) || _bRouvre();
    return _eErreur(bOpen ? ARCHIVE_OK : ARCHIVE_CREATE);
}

unsigned CTVZipBase::dwNombreFichier() {
    return m_clRepertoire.dwNombreFichier();
}

int CTVZipBase::nTypeZip() {
    return m_nTypeZip;
}

void CTVZipBase::ForceRepVideAlaFin() {
    m_clRepertoire.ForceRepVideAlaFin();
}

const wchar_t* CTVZipBase::pszNomFichier(int nRang) {
    const CRepEntree* const pcl = m_clRepertoire.pclGetEntree(nRang);
    return pcl != nullptr ? pcl->csGetNom().pszGet() : nullptr;
}

std::uint32_t CTVZipBase::dwTailleOriginale(int nRang) {
    const CRepEntree* const pcl = m_clRepertoire.pclGetEntree(nRang);
    return pcl != nullptr ? static_cast<std::uint32_t>(pcl->u64GetTailleOriginale()) : 0;
}

std::uint32_t CTVZipBase::dwTailleCompresse(int nRang) {
    const CRepEntree* const pcl = m_clRepertoire.pclGetEntree(nRang);
    return pcl != nullptr ? static_cast<std::uint32_t>(pcl->u64GetTailleCompresse()) : 0;
}

CTVZipBase::STFileTime CTVZipBase::stftLitFtCreation(int nRang) {
    const CRepEntree* const pcl = m_clRepertoire.pclGetEntree(nRang);
    return pcl != nullptr ? pcl->stGetTimes().stCreation : STFileTime();
}

CTVZipBase::STFileTime CTVZipBase::stftLitFtAcces(int nRang) {
    const CRepEntree* const pcl = m_clRepertoire.pclGetEntree(nRang);
    return pcl != nullptr ? pcl->stGetTimes().stAcces : STFileTime();
}

CTVZipBase::STFileTime CTVZipBase::stftLitFtModif(int nRang) {
    const CRepEntree* const pcl = m_clRepertoire.pclGetEntree(nRang);
    return pcl != nullptr ? pcl->stGetTimes().stModif : STFileTime();
}

std::uint32_t CTVZipBase::dwLitAttribut(int nRang) {
    const CRepEntree* const pcl = m_clRepertoire.pclGetEntree(nRang);
    return pcl != nullptr ? pcl->dwGetAttribut() : 0;
}

bool CTVZipBase::bCrypte(int nRang) {
    const CRepEntree* const pcl = m_clRepertoire.pclGetEntree(nRang);
    return pcl != nullptr && pcl->bCrypte();
}

int CTVZipBase::lRangFichier(std::wstring_view svNom) {
    return m_clRepertoire.lRang(svNom);
}

eARCHIVE CTVZipBase::eNiveauCompression(int nNiveau) {
    m_nNiveauCompression = nNiveau;
    return _eErreur(ARCHIVE_OK);
}

eARCHIVE CTVZipBase::eGetNiveauCompression(int& rnNiveau) {
    rnNiveau = m_nNiveauCompression;
    return _eErreur(ARCHIVE_OK);
}

bool CTVZipBase::bEntete64Bits(int nEntete64Bits) {
    return std::exchange(m_bEntete64Bits, nEntete64Bits != 0);
}

void CTVZipBase::vSetNomFicUnicode(int nUnicode) {
    m_bNomUnicode = nUnicode != 0;
}

void CTVZipBase::SetPourcentGlobal(unsigned dwPourcent) {
    m_dwPourcentGlobal = dwPourcent;
}

eARCHIVE CTVZipBase::eGetInfoFichier(int nRang, CTString& rcsInfo) try {
    const CMemoryScope clScope;
    rcsInfo.Empty();
    const CRepEntree* const pcl = m_clRepertoire.pclGetEntree(nRang);
    if (pcl == nullptr) {
        return _eErreur(ARCHIVE_NOT_FOUND);
    }
    const CRepEntree::STTimes rst = pcl->stGetTimes();
    rcsInfo = pcl->csGetNom();
    rcsInfo += L'\t';
    rcsInfo += csSizeText(pcl->u64GetTailleOriginale());
    rcsInfo += L'\t';
    rcsInfo += csSizeText(pcl->u64GetTailleCompresse());
    for (const STFileTime* const pst : {&rst.stCreation, &rst.stModif, &rst.stAcces}) {
        rcsInfo += L'\t';
        rcsInfo += csFileTimeText(*pst);
    }
    rcsInfo += static_cast<std::int32_t>(pcl->dwGetAttribut()) < 0 ? L"\tH\t" : L"\t\t";
    rcsInfo += pcl->bCrypte() ? L'+' : L'N';
    return _eErreur(ARCHIVE_OK);
} catch (const std::exception&) {
    rcsInfo.Empty();
    return NoMemory(_eErreur(ARCHIVE_BAD));
}

bool CTVZipBase::bDebutSectionCritique() {
    m_clSectionCritique.lock();
    return true;
}

void CTVZipBase::FinSectionCritique() {
    m_clSectionCritique.unlock();
}

}  // namespace kalmo
