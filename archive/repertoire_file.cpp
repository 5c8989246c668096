#include <array>
#include <cerrno>
#include <exception>
#include <string>

#include "archive/entry_path.h"
#include "archive/repertoire.h"
#include "framework/conversion.h"
#include "framework/le_cursor.h"
#include "framework/memory_scope.h"

// A directory on disk, little-endian:
//
//   4  "KREP"
//   4  version, 1
//   4  number of entries
//   and for each entry
//   4  length of the name in bytes, at most 65536
//   8  uncompressed size, 8 compressed size
//   4  attributes
//   1  flags: bit 0 enciphered
//   7  creation time, 7 last-access time, 7 modification time, each: 2 year, then month, day, hour, minute,
//      second in a byte each
//   n  the name in UTF-8

namespace kalmo {
namespace {

constexpr std::uint32_t SIGNATURE = 0x5045524B;
constexpr std::uint32_t VERSION = 1;
constexpr std::size_t HEADER_BYTES = 12;
constexpr std::size_t RECORD_BYTES = 4 + 8 + 8 + 4 + 1 + 3 * 7;
constexpr std::uint32_t TAILLE_MAX_NOM = 65536;
constexpr unsigned char CRYPTE = 1;

class CLeWriter {
  public:
    void Put(std::uint64_t u64, int nBytes) {
        for (; nBytes > 0; --nBytes, u64 >>= 8) {
            m_csByte += static_cast<char>(u64 & 0xFF);
        }
    }
    void PutTime(const CDiskFile::STFileTime& rst) {
        Put(static_cast<std::uint64_t>(rst.nAnnee), 2);
        for (const int n : {rst.nMois, rst.nJour, rst.nHeure, rst.nMinute, rst.nSeconde}) {
            Put(static_cast<std::uint64_t>(n), 1);
        }
    }
    void PutText(std::string_view sv) { m_csByte += sv; }
    [[nodiscard]] const std::string& csGet() const noexcept { return m_csByte; }

  private:
    std::string m_csByte;
};

CDiskFile::STFileTime stNextTime(CLeCursor& rcl) {
    CDiskFile::STFileTime st;
    st.nAnnee = rcl.wNext();
    for (int* const pn : {&st.nMois, &st.nJour, &st.nHeure, &st.nMinute, &st.nSeconde}) {
        *pn = rcl.byNext();
    }
    return st;
}

bool bReadEntry(IXStream& rclStream, CRepEntree* pclEntree) {
    std::array<unsigned char, RECORD_BYTES> tabFixed{};
    if (!rclStream.bReadAll(tabFixed.data(), tabFixed.size())) {
        return false;
    }
    CLeCursor cl(tabFixed);
    const std::uint32_t dwName = cl.dwNext();
    const std::uint64_t u64Original = cl.u64Next();
    const std::uint64_t u64Compressed = cl.u64Next();
    const std::uint32_t dwAttribut = cl.dwNext();
    const unsigned char byFlags = cl.byNext();
    CRepEntree::STTimes stTimes;
    stTimes.stCreation = stNextTime(cl);
    stTimes.stAcces = stNextTime(cl);
    stTimes.stModif = stNextTime(cl);
    if (dwName > TAILLE_MAX_NOM) {
        return false;
    }
    std::string csName(dwName, '\0');
    if (!rclStream.bReadAll(csName.data(), csName.size())) {
        return false;
    }
    *pclEntree =
        CRepEntree(csWithSlashes(csFromUTF8(csName)), u64Original, u64Compressed, stTimes, dwAttribut);
    pclEntree->SetCrypte((byFlags & CRYPTE) != 0, CTString());
    return true;
}

bool bWrite(CDiskFile& rclFile, const CLeWriter& rcl) {
    return rclFile.bWrite(rcl.csGet().data(), rcl.csGet().size());
}

}  // namespace

bool CRepertoire::bLit(IXStream& rclStream) try {
    const CMemoryScope clScope;
    Vide();
    std::array<unsigned char, HEADER_BYTES> tabHeader{};
    if (!rclStream.bReadAll(tabHeader.data(), tabHeader.size())) {
        return false;
    }
    CLeCursor cl(tabHeader);
    if (cl.dwNext() != SIGNATURE || cl.dwNext() != VERSION) {
        return false;
    }
    // The count is a claim: entries are made as they are read, and the first missing one ends it.
    for (std::uint32_t dwLeft = cl.dwNext(); dwLeft > 0; --dwLeft) {
        CRepEntree clEntree;
        if (!bReadEntry(rclStream, &clEntree) || !bAjouteEntree(std::move(clEntree))) {
            Vide();
            return false;
        }
    }
    return true;
} catch (const std::exception&) {
    Vide();
    return NoMemory(false);
}

eARCHIVE CRepertoire::eEcrit(CDiskFile& rclFile) const try {
    const CMemoryScope clScope;
    CLeWriter clHeader;
    clHeader.Put(SIGNATURE, 4);
    clHeader.Put(VERSION, 4);
    clHeader.Put(m_nCount, 4);
    bool bWritten = bWrite(rclFile, clHeader);
    for (std::size_t n = 0; bWritten && n < m_nCount; ++n) {
        const CRepEntree& rclEntree = __rclEntree(n);
        const CXYString<char> csName = csToUTF8(rclEntree.csGetNom());
        CLeWriter cl;
        cl.Put(csName.nGetLength(), 4);
        cl.Put(rclEntree.u64GetTailleOriginale(), 8);
        cl.Put(rclEntree.u64GetTailleCompresse(), 8);
        cl.Put(rclEntree.dwGetAttribut(), 4);
        cl.Put(rclEntree.bCrypte() ? CRYPTE : 0, 1);
        const CRepEntree::STTimes stTimes = rclEntree.stGetTimes();
        cl.PutTime(stTimes.stCreation);
        cl.PutTime(stTimes.stAcces);
        cl.PutTime(stTimes.stModif);
        cl.PutText(csName);
        bWritten = bWrite(rclFile, cl);
    }
    if (bWritten) {
        return ARCHIVE_OK;
    }
    return errno == ENOSPC ? ARCHIVE_DISK_FULL : ARCHIVE_WRITE;
} catch (const std::exception&) {
    return NoMemory(ARCHIVE_WRITE);
}

}  // namespace kalmo
