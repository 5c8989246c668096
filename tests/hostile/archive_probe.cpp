// What becomes of archives: opens, lists, looks up and extracts each that a line of the standard input names,
// and prints what it saw. Each has a file tree and a time limit of its own; one that ends the process ends
// alone.
//
// Input: path, password, shell command that lays something in the destination; separated by tabs. Output,
// also with tabs:
//
//   archive  path
//   open     code, reason
//   header   size and CRC stated, method, flags, code of reading it, name   one for each central header
//   entry    code of extracting it to a file, CRC of what came, name        one for each that is listed
//   memory   most bytes in use beyond what was in use before
//   wrong    what must never be, whatever the archive holds
//   end      "ok", or how the process ended

#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <csignal>
#include <cstdio>
#include <ctime>
#include <iostream>
#include <sstream>
#include <vector>

#include "archive/crc32.h"
#include "archive/entry_path.h"
#include "archive/tv_win_zip.h"
#include "framework/conversion.h"
#include "testkit/temp_folder.h"
#include "tests/hostile/memory_peak.h"
#include "tests/hostile/sealed_folder.h"

namespace kalmo {
namespace {

namespace fs = std::filesystem;

constexpr unsigned SECONDS = 30;
constexpr int MAX_LOST = 5;
constexpr std::uint64_t MAX_FILE = 64U << 20;  // larger files fail to be written
// The bytes in use: this much for any archive, and so many for each of its own bytes. Names in the directory
// are kept in wide characters and more than once.
constexpr std::uint64_t MEMORY_ALWAYS = 1U << 20;
constexpr std::uint64_t MEMORY_PER_BYTE = 16;
constexpr std::uint64_t MAX_INFLATION = 1032;

// One field of the output.
std::string csField(std::wstring_view sv) {
    std::string cs;
    for (const wchar_t c : sv) {
        cs += c >= L' ' && c < 0x7F ? static_cast<char>(c) : '?';
    }
    return cs;
}

void Wrong(const std::string& csWhat, std::wstring_view svName = {}) {
    std::printf("wrong\t%s %s\n", csWhat.c_str(), csField(svName).c_str());
}

struct STFound {
    bool bThere = false;
    struct stat st {};
    std::uint32_t dwCrc = 0;
};

STFound stFind(const CFSPath& rclPath) {
    STFound stFound;
    stFound.bThere = ::lstat(rclPath.csGetUTF8().pszGet(), &stFound.st) == 0;
    CDiskFile clFile;
    if (S_ISREG(stFound.st.st_mode) && clFile.bOpen(rclPath.svGet(), CDiskFile::eMODE::Read)) {
        static std::array<unsigned char, 65536> tabPiece;
        for (std::size_t nRead = 1; nRead > 0 && clFile.bRead(tabPiece.data(), tabPiece.size(), &nRead);) {
            stFound.dwCrc = dwCrc32(stFound.dwCrc, {tabPiece.data(), nRead});
        }
    }
    return stFound;
}

/// What is done with one archive, in the process that is its own.
class CProbe {
  public:
    CProbe(std::wstring csPath, const std::wstring& rcsPassword, std::uint64_t u64Length)
        : m_csPath(std::move(csPath)), m_u64Length(u64Length) {
        (void)m_clRecords.bSetPassword(rcsPassword);
        (void)m_clArchive.eMotDePasse(rcsPassword.c_str());
    }
    void Run() {
        CDiskFile clFile;
        (void)clFile.bOpen(m_csPath, CDiskFile::eMODE::Read);
        m_clRecords.SetStream(&clFile, 0);
        const bool bRecords = m_clRecords.OuvreZip(m_csPath, 0) == ARCHIVE_OK;
        for (eARCHIVE e = m_clRecords.FirstFile(); e == ARCHIVE_OK; e = m_clRecords.NextFile(0)) {
            __ReadHeader(*m_clRecords.pstGetCurrent());
        }
        m_clRecords.FermeZip();

        CMemoryPeak::Start();
        const eARCHIVE eOpened = m_clArchive.eOuvreArchive(m_csPath, 0, 0);
        std::printf("open\t%d\t%s\n", eOpened, csField(m_clArchive.csGetDefaut()).c_str());
        const CRepertoire& rcl = m_clArchive.rclGetRepertoire();
        const bool bOpen = eOpened == ARCHIVE_OK;
        if (bRecords != bOpen || m_clArchive.bOuvert() != bOpen || (!bOpen && rcl.dwTaille() != 0)) {
            Wrong("opened, or left open, only in part");
        }
        auto it = m_tabStated.begin();
        for (int n = 0; n < static_cast<int>(rcl.dwTaille()); ++n) {
            while (it != m_tabStated.end() && !(it->csNom == rcl.pclGetEntree(n)->csGetNom())) {
                ++it;
            }
            if (it == m_tabStated.end()) {
                return Wrong("listed, but not in the directory:", rcl.pclGetEntree(n)->csGetNom());
            }
            m_tabListed.push_back(*it++);
        }
        std::vector<eARCHIVE> tabCode;
        for (int n = 0; n < static_cast<int>(rcl.dwTaille()); ++n) {
            tabCode.push_back(__eExtractToFile(n));
        }
        __CheckMemory(0);
        std::printf("memory\t%td\n", CMemoryPeak::nBytes());
        std::uint64_t u64Largest = 0;
        for (std::size_t n = 0; n < tabCode.size(); ++n) {
            if (tabCode[n] != ARCHIVE_WRITE) {  // too large for a file here
                u64Largest = std::max(u64Largest, __u64ExtractToMemory(m_tabListed[n].csNom, tabCode[n]));
            }
        }
        __CheckMemory(3 * u64Largest);
    }

  private:
    struct STStated {
        CTString csNom;
        std::uint64_t u64Size;
        std::uint32_t dwCrc;
    };

    void __CheckMemory(std::uint64_t u64Data) const {
        const std::uint64_t u64Most = MEMORY_ALWAYS + MEMORY_PER_BYTE * m_u64Length + u64Data;
        if (static_cast<std::uint64_t>(CMemoryPeak::nBytes()) > u64Most) {
            Wrong("takes " + std::to_string(CMemoryPeak::nBytes()) + " bytes of memory");
        }
    }

    void __ReadHeader(const STCentralHeader& rst) {
        int nCode = m_clRecords.OpenCurrentFileInZip();
        std::uint64_t u64Total = 0;
        std::uint32_t dwCrc = 0;
        if (nCode == ARCHIVE_OK) {
            static std::array<unsigned char, 10007> tabPiece;
            bool bRead = true;
            for (std::size_t nRead = 1; bRead && nRead > 0 && u64Total < MAX_FILE; u64Total += nRead) {
                bRead = m_clRecords.bReadCurrentFileInZip(tabPiece.data(), tabPiece.size(), &nRead);
                dwCrc = dwCrc32(dwCrc, {tabPiece.data(), nRead});
            }
            nCode = m_clRecords.CloseCurrentFileInZip(1, 0);
            if (!bRead) {
                nCode = ARCHIVE_DATA;
            } else if (nCode == ARCHIVE_OK && u64Total < std::min(rst.u64TailleOriginale, MAX_FILE)) {
                nCode = ARCHIVE_BAD;
            }
        }
        const bool bAsStated = u64Total == rst.u64TailleOriginale && dwCrc == rst.dwCrc;
        if (u64Total > rst.u64TailleOriginale || (nCode == ARCHIVE_OK && !bAsStated && u64Total < MAX_FILE)) {
            Wrong("read as a success, but not as stated:", rst.csNom);
        }
        std::printf("header\t%ju\t%08x\t%u\t%u\t%d\t%s\n", std::uintmax_t{rst.u64TailleOriginale}, rst.dwCrc,
                    rst.wMethode, rst.wFlags, nCode, csField(rst.csNom).c_str());
        m_tabStated.push_back({csWithSlashes(rst.csNom), rst.u64TailleOriginale, rst.dwCrc});
    }

    eARCHIVE __eExtractToFile(int nRang) {
        const CTString csNom = m_tabListed[static_cast<std::size_t>(nRang)].csNom;
        const int nFirst = m_clArchive.lRangFichier(csNom);
        std::wstring csOther(csNom.svGet());
        for (wchar_t& rc : csOther) {
            rc = rc == L'/' ? L'\\' : cMajuscule(rc);
        }
        if (nFirst < 0 || nFirst > nRang || m_clArchive.lRangFichier(csOther) != nFirst) {
            Wrong("listed, but not to be found:", csNom);
            return ARCHIVE_NOT_FOUND;
        }
        const STStated& rst = m_tabListed[static_cast<std::size_t>(nFirst)];
        CFSPath clTo;
        eARCHIVE e = eCheminEntree(CSealedFolder::PSZ_DESTINATION, csNom, &clTo);
        STFound stFound;
        if (e == ARCHIVE_OK) {
            const bool bBefore = stFind(clTo).bThere;
            e = m_clArchive.eExtraitFichier(csNom, clTo.svGet(), 0, nullptr, 0, 0, nullptr);
            stFound = stFind(clTo);
            const bool bFile = S_ISREG(stFound.st.st_mode) && stFound.st.st_nlink == 1 &&
                               static_cast<std::uint64_t>(stFound.st.st_size) == rst.u64Size &&
                               stFound.dwCrc == rst.dwCrc;
            const bool bDirectory = S_ISDIR(stFound.st.st_mode) && rst.u64Size == 0 && rst.dwCrc == 0;
            if (e == ARCHIVE_OK && ((!bFile && !bDirectory) || (stFound.st.st_mode & 07000) != 0)) {
                Wrong("extracted as a success, but not as stated:", csNom);
            }
            if (e != ARCHIVE_OK && !bBefore && stFound.bThere) {
                Wrong("a failure left a file behind:", csNom);
            }
            if (stFound.st.st_size > 1 << 20) {
                CDiskFile::bDelete(clTo.svGet());
            }
        }
        std::printf("entry\t%d\t%08x\t%s\n", e, stFound.dwCrc, csField(csNom).c_str());
        return e;
    }

    // Gives how many bytes it may have taken memory for.
    std::uint64_t __u64ExtractToMemory(const CTString& rcsNom, eARCHIVE eToFile) {
        CTLBIN tab;
        const eARCHIVE e = m_clArchive.eExtraitFichier(rcsNom, &tab, 0, nullptr, 0, nullptr);
        const STStated& rst = m_tabListed[static_cast<std::size_t>(m_clArchive.lRangFichier(rcsNom))];
        // What has a name that is no path, or stands in its own way, is data all the same.
        const bool bSame = e == eToFile || eToFile == ARCHIVE_CREATE || eToFile == ARCHIVE_BAD;
        const bool bAsStated = tab.size() == rst.u64Size && dwCrc32(0, tab) == rst.dwCrc;
        if (!bSame || !(e == ARCHIVE_OK ? bAsStated : tab.empty())) {
            Wrong("into memory with code " + std::to_string(e) + ":", rcsNom);
        }
        return std::min(rst.u64Size, m_u64Length * MAX_INFLATION);
    }

    const std::wstring m_csPath;
    const std::uint64_t m_u64Length;
    CWinZip m_clRecords;
    CTVWinZip m_clArchive;
    std::vector<STStated> m_tabStated;  ///< By header.
    std::vector<STStated> m_tabListed;  ///< By rank.
};

void Probe(const fs::path& rclTree, const std::string& rcsLine) {
    std::istringstream clLine(rcsLine);
    std::string csPath;
    std::string csPassword;
    std::string csLay;
    std::getline(std::getline(std::getline(clLine, csPath, '\t'), csPassword, '\t'), csLay);
    std::printf("archive\t%s\n", csPath.c_str());

    CSealedFolder clFolder(rclTree);
    std::uint64_t u64Length = clFolder.u64Bring(csPath);
    for (int n = 1; n < 10; ++n) {
        u64Length += clFolder.u64Bring(fs::path(csPath).replace_extension(".z0" + std::to_string(n)));
    }
    if (!clFolder.bLay(csLay) || !clFolder.bSeal()) {
        return Wrong("no file tree of its own");
    }
    CProbe(L"/archive/" + fs::path(csPath).filename().wstring(), {csPassword.begin(), csPassword.end()},
           u64Length)
        .Run();
    if (const std::string cs = clFolder.csDisturbed(); !cs.empty()) {
        Wrong("disturbed outside of the destination: " + cs);
    }
}

// The archives one after the other, each in the process of the one before unless that did not survive it.
// False when the process did not end well although each archive did.
bool bProbeAll(const std::vector<std::string>& rtabLine) {
    const CTempFolder clFolder;
    auto* const pnDone = static_cast<std::size_t*>(
        ::mmap(nullptr, sizeof(std::size_t), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    for (int nLost = 0; *pnDone < rtabLine.size() && nLost < MAX_LOST;) {
        std::fflush(stdout);
        const pid_t nChild = ::fork();
        if (nChild == 0) {
            const rlimit stFile{MAX_FILE, MAX_FILE};
            ::setrlimit(RLIMIT_FSIZE, &stFile);
            std::signal(SIGXFSZ, SIG_IGN);
            for (; *pnDone < rtabLine.size(); ++*pnDone) {
                ::alarm(SECONDS);
                Probe(clFolder.clPath("tree"), rtabLine[*pnDone]);
                std::puts("end\tok");
                std::fflush(stdout);
            }
            std::exit(0);
        }
        int nStatus = 0;
        ::waitpid(nChild, &nStatus, 0);
        if (nStatus != 0 && *pnDone == rtabLine.size()) {
            return false;
        }
        if (nStatus != 0) {
            std::printf("\nend\t%s %d\n", WIFSIGNALED(nStatus) ? "signal" : "status",
                        WIFSIGNALED(nStatus) ? WTERMSIG(nStatus) : WEXITSTATUS(nStatus));
            ++*pnDone;
            ++nLost;
            fs::remove_all(clFolder.clPath("tree"));
        }
    }
    return *pnDone == rtabLine.size();
}

}  // namespace
}  // namespace kalmo

int main() {
    // What the C library looks up in files is looked up before those are out of sight.
    ::tzset();
    (void)kalmo::cMajuscule(L'\u00E9');
    std::vector<std::string> tabLine;
    for (std::string cs; std::getline(std::cin, cs);) {
        tabLine.push_back(cs);
    }
    return kalmo::bProbeAll(tabLine) ? 0 : 1;
}
