// What becomes of archives: opens, lists, looks up and extracts each that a line of the standard input names,
// and prints what it saw. Each has a time limit, and the file tree that the line names to itself.
//
// Input: file tree, name of the archive in its folder /archive, password. Output, both with tabs:
//
//   open     code, reason
//   header   size and CRC stated, method, flags, code of reading it, name   one for each central header
//   entry    code of extracting it to a file, CRC of what came, name        one for each that is listed
//   memory   most bytes in use beyond what was in use before
//   wrong    what must never be, whatever the archive holds
//   end
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <ctime>
#include <filesystem>
#include <iostream>
#include <vector>

#include "archive/crc32.h"
#include "archive/entry_path.h"
#include "archive/tv_win_zip.h"
#include "framework/conversion.h"
#include "framework/unique_fd.h"

// The bytes in use, which the address sanitizer tells of, and the most of them. Without it both stay 0.
std::ptrdiff_t g_nNow = 0;
std::ptrdiff_t g_nPeak = 0;
#ifdef __SANITIZE_ADDRESS__
extern "C" std::size_t __sanitizer_get_allocated_size(const volatile void*);
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*)(const volatile void*, std::size_t),
                                                         void (*)(const volatile void*));
const int g_nHooks = __sanitizer_install_malloc_and_free_hooks(
    [](const volatile void*, std::size_t n) {
        g_nPeak = std::max(g_nPeak, g_nNow += static_cast<std::ptrdiff_t>(n));
    },
    [](const volatile void* p) {
        g_nNow -= static_cast<std::ptrdiff_t>(p != nullptr ? __sanitizer_get_allocated_size(p) : 0);
    });
#endif

namespace kalmo {
namespace {

constexpr std::uint64_t MAX_FILE = 64U << 20;  // larger files fail to be written
std::array<unsigned char, 10007> g_tabPiece;

// One field of the output.
std::string csField(std::wstring_view sv) {
    std::string cs;
    for (const wchar_t c : sv) {
        cs += c >= L' ' && c < 0x7F ? static_cast<char>(c) : '?';
    }
    return cs;
}

void Wrong(bool bWrong, const std::string& csWhat, std::wstring_view svName = {}) {
    if (bWrong) {
        std::printf("wrong\t%s %s\n", csWhat.c_str(), csField(svName).c_str());
    }
}

// What is done with one archive.
class CProbe {
  public:
    CProbe(std::wstring csPath, const std::wstring& rcsPassword) : m_csPath(std::move(csPath)) {
        for (const auto& rclFile : std::filesystem::directory_iterator("/archive")) {
            m_u64Length += rclFile.file_size();
        }
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

        m_nBefore = g_nPeak = g_nNow;
        const eARCHIVE eOpened = m_clArchive.eOuvreArchive(m_csPath, 0, 0);
        std::printf("open\t%d\t%s\n", eOpened, csField(m_clArchive.csGetDefaut()).c_str());
        const CRepertoire& rcl = m_clArchive.rclGetRepertoire();
        const bool bOpen = eOpened == ARCHIVE_OK;
        Wrong(bRecords != bOpen || m_clArchive.bOuvert() != bOpen || (!bOpen && rcl.dwTaille() != 0),
              "opened, or left open, only in part");
        auto it = m_tabStated.begin();
        for (int n = 0; n < static_cast<int>(rcl.dwTaille()); ++n) {
            const CTString csNom = rcl.pclGetEntree(n)->csGetNom();
            it = std::find_if(it, m_tabStated.end(), [&](auto& rst) { return rst.csNom == csNom; });
            if (it == m_tabStated.end()) {
                return Wrong(true, "listed, but not in the directory:", csNom);
            }
            m_tabListed.push_back(*it++);
        }
        std::vector<eARCHIVE> tabCode;
        for (std::size_t n = 0; n < m_tabListed.size(); ++n) {
            tabCode.push_back(__eExtractToFile(n));
        }
        __CheckMemory(0);
        std::printf("memory\t%td\n", g_nPeak - m_nBefore);
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

    // So much for any archive, and for each of its own bytes: names of the directory are kept in wide
    // characters and more than once.
    void __CheckMemory(std::uint64_t u64Data) const {
        Wrong(static_cast<std::uint64_t>(g_nPeak - m_nBefore) > (1U << 20) / 2 + 12 * m_u64Length + u64Data,
              "takes " + std::to_string(g_nPeak - m_nBefore) + " bytes of memory");
    }

    void __ReadHeader(const STCentralHeader& rst) {
        int nCode = m_clRecords.OpenCurrentFileInZip();
        std::uint64_t u64Total = 0;
        std::uint32_t dwCrc = 0;
        if (nCode == ARCHIVE_OK) {
            bool bRead = true;
            for (std::size_t nRead = 1; bRead && nRead > 0 && u64Total < MAX_FILE; u64Total += nRead) {
                bRead = m_clRecords.bReadCurrentFileInZip(g_tabPiece.data(), g_tabPiece.size(), &nRead);
                dwCrc = dwCrc32(dwCrc, {g_tabPiece.data(), nRead});
            }
            nCode = m_clRecords.CloseCurrentFileInZip(1, 0);
            if (!bRead) {
                nCode = ARCHIVE_DATA;
            } else if (nCode == ARCHIVE_OK && u64Total < std::min(rst.u64TailleOriginale, MAX_FILE)) {
                nCode = ARCHIVE_BAD;
            }
        }
        const bool bAsStated = u64Total == rst.u64TailleOriginale && dwCrc == rst.dwCrc;
        Wrong(u64Total > rst.u64TailleOriginale || (nCode == ARCHIVE_OK && !bAsStated && u64Total < MAX_FILE),
              "read as a success, but not as stated:", rst.csNom);
        std::printf("header\t%ju\t%08x\t%u\t%u\t%d\t%s\n", std::uintmax_t{rst.u64TailleOriginale}, rst.dwCrc,
                    rst.wMethode, rst.wFlags, nCode, csField(rst.csNom).c_str());
        m_tabStated.push_back({csWithSlashes(rst.csNom), rst.u64TailleOriginale, rst.dwCrc});
    }

    eARCHIVE __eExtractToFile(std::size_t nRang) {
        const CTString csNom = m_tabListed[nRang].csNom;
        const auto nFirst = static_cast<std::size_t>(m_clArchive.lRangFichier(csNom));
        std::wstring csOther(csNom.svGet());
        for (wchar_t& rc : csOther) {
            rc = rc == L'/' ? L'\\' : cMajuscule(rc);
        }
        if (nFirst > nRang || static_cast<std::size_t>(m_clArchive.lRangFichier(csOther)) != nFirst) {
            Wrong(true, "listed, but not to be found:", csNom);
            return ARCHIVE_NOT_FOUND;
        }
        const STStated& rst = m_tabListed[nFirst];
        std::uint32_t dwCrc = 0;
        CFSPath clTo;
        eARCHIVE e = eCheminEntree(L"/far/out/destination", csNom, &clTo);
        if (e == ARCHIVE_OK) {
            struct stat st {};
            const bool bBefore = ::lstat(clTo.csGetUTF8().pszGet(), &st) == 0;
            e = m_clArchive.eExtraitFichier(csNom, clTo.svGet(), 0, nullptr, 0, 0, nullptr);
            const bool bThere = ::lstat(clTo.csGetUTF8().pszGet(), &st) == 0;
            CDiskFile clFile;
            if (bThere && S_ISREG(st.st_mode) && clFile.bOpen(clTo.svGet(), CDiskFile::eMODE::Read)) {
                for (std::size_t n = 1; n > 0 && clFile.bRead(g_tabPiece.data(), g_tabPiece.size(), &n);) {
                    dwCrc = dwCrc32(dwCrc, {g_tabPiece.data(), n});
                }
            }
            const bool bFile = S_ISREG(st.st_mode) && st.st_nlink == 1 && dwCrc == rst.dwCrc &&
                               static_cast<std::uint64_t>(st.st_size) == rst.u64Size;
            const bool bDirectory = S_ISDIR(st.st_mode) && rst.u64Size == 0 && rst.dwCrc == 0;
            Wrong(e == ARCHIVE_OK && (!bThere || (!bFile && !bDirectory) || (st.st_mode & 07000) != 0),
                  "extracted as a success, but not as stated:", csNom);
            Wrong(e != ARCHIVE_OK && !bBefore && bThere, "a failure left a file behind:", csNom);
            if (bThere && st.st_size > 1 << 20) {
                CDiskFile::bDelete(clTo.svGet());
            }
        }
        std::printf("entry\t%d\t%08x\t%s\n", e, dwCrc, csField(csNom).c_str());
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
        Wrong(!bSame || !(e == ARCHIVE_OK ? bAsStated : tab.empty()),
              "into memory with code " + std::to_string(e) + ":", rcsNom);
        return std::min(rst.u64Size, m_u64Length * 1032);  // nothing inflates to more
    }

    const std::wstring m_csPath;
    std::uint64_t m_u64Length = 0;
    std::ptrdiff_t m_nBefore = 0;
    CWinZip m_clRecords;
    CTVWinZip m_clArchive;
    std::vector<STStated> m_tabStated;  // By header.
    std::vector<STStated> m_tabListed;  // By rank.
};

}  // namespace
}  // namespace kalmo

int main() {
    using namespace kalmo;
    // What the C library looks up in files is looked up before those are out of sight.
    ::tzset();
    (void)cMajuscule(L'\u00E9');
    const rlimit stFile{MAX_FILE, MAX_FILE};
    ::setrlimit(RLIMIT_FSIZE, &stFile);
    std::signal(SIGXFSZ, SIG_IGN);
    const CUniqueFd clOutside(::open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    for (std::string csTree, csName, csPassword;
         std::getline(std::getline(std::getline(std::cin, csTree, '\t'), csName, '\t'), csPassword);) {
        ::alarm(30);
        if (::chdir(csTree.c_str()) != 0 || ::chroot(".") != 0) {
            return 1;
        }
        CProbe((L"/archive/" + csFromUTF8(csName)).pszGet(), {csPassword.begin(), csPassword.end()}).Run();
        if (::fchdir(clOutside.nGet()) != 0 || ::chroot(".") != 0) {
            return 1;
        }
        std::puts("end");
        std::fflush(stdout);
    }
}
