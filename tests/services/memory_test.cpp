// Every operation that can answer a failure does so whichever of its allocations fails.
#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <new>

#include "archive/entry_path.h"
#include "archive/tv_win_zip.h"
#include "framework/conversion.h"
#include "framework/file_version.h"
#include "framework/profile.h"
#include "framework/x_error.h"
#include "services/create_process.h"
#include "services/service_command.h"
#include "services/systemctl.h"
#include "testkit/temp_folder.h"
#include "tests/services/stand_in.h"

namespace {

long g_nLeft = -1;     // allocations that succeed before one fails; negative: all do
bool g_bLast = false;  // the ones behind it fail too
int g_nFailed = 0;

void* pAllocate(std::size_t nSize, std::size_t nAlign) {
    if (g_nLeft == 0) {
        ++g_nFailed;
        g_nLeft = g_bLast ? 0 : -1;
        if (const std::new_handler pfn = std::get_new_handler()) {
            pfn();
        }
        throw std::bad_alloc();
    }
    g_nLeft -= g_nLeft > 0 ? 1 : 0;
    return std::aligned_alloc(nAlign, (nSize + nAlign) / nAlign * nAlign);
}

}  // namespace

void* operator new(std::size_t nSize) {
    return pAllocate(nSize, alignof(std::max_align_t));
}
void* operator new(std::size_t nSize, std::align_val_t eAlign) {
    return pAllocate(nSize, static_cast<std::size_t>(eAlign));
}
#ifndef __SANITIZE_ADDRESS__  // whose own is not to be mixed with ours
// Where nothing is thrown, errno says it, as malloc leaves it.
void* operator new[](std::size_t nSize, const std::nothrow_t& /*rst*/) noexcept try {
    return pAllocate(nSize, alignof(std::max_align_t));
} catch (const std::bad_alloc&) {
    errno = ENOMEM;
    return nullptr;
}
#endif
void operator delete(void* p) noexcept {
    std::free(p);
}
void operator delete(void* p, std::size_t /*nSize*/) noexcept {
    std::free(p);
}
void operator delete(void* p, std::size_t /*nSize*/, std::align_val_t /*eAlign*/) noexcept {
    std::free(p);
}

namespace kalmo {
namespace {

struct STCase {
    const char* pszName;
    std::function<bool()> bDo;        // True when it was done.
    std::function<bool()> bAnswered;  // What else holds when it was not; may be missing.
};

using Memory = CStandInTest;

TEST_F(Memory, RunningOutIsAnswered) {
    CStringAllocator::sInit();
    Tool(PSZ_SCRIPT, "");
    Tool(PSZ_SYSTEMCTL, "case $* in *Active*) echo ActiveState=active;; *) echo Type=simple; esac");
    const CTempFolder clFolder;
    ASSERT_TRUE(
        clFolder.bShell("echo content >a.txt; python3 -m zipfile -c a.zip a.txt; echo '[AB]\nk=v' >f.ini"));
    const auto csOf = [&](const char* psz) { return clFolder.csWide(psz); };
    const std::wstring csZip = csOf("a.zip"), csTo = csOf("to"), csIni = csOf("f.ini"),
                       csNew = csOf("new.ini"), csDir = csOf("b/c"), csRoot = csOf(""), csAll = csOf("*"),
                       csProgram = csFromUTF8("/proc/self/exe").pszGet();
    const std::string csIniUtf8 = clFolder.clPath("f.ini");
    wchar_t szValue[20];
    CXYString<char> csBytes;
    CTString cs;
    std::string csLoaded;
    CFSPath clPath;
    CPathBuffer szPath;
    CFileSearch clSearch;
    CFileVersion clVersion;
    CXError clError, clCopy;
    clError.AddInfo(EIT_RECNUM, 1);
    CTVWinZip clZip, clOther;
    ASSERT_EQ(clZip.eOuvreArchive(csZip, 0, 0), ARCHIVE_OK);
    CTLBIN tab;
    CService clService(nullptr, L"svc");
    CServiceManager clManager;
    const auto bGone = [](const std::wstring& rcs) { return !CDiskFile::bFileExists(rcs); };
    const auto bOn = [&](int eDistri, auto Do) { return (CServiceManager::ms_eDistri = eDistri), Do(); };
    const auto bStart = [&] {
        return clService.bStart(nullptr) && clService.eGetStatus() == eServiceRunning;
    };
    const auto bFound = [&] { return clManager.pclGetService(L"svc", 0) != nullptr; };
    const auto bRead = [&] {
        GetPrivateProfileStringW(L"AB", L"k", L"none", szValue, 20, csIni.c_str());
        return szValue == std::wstring_view(L"v");
    };
    const auto bVersion = [&] {
        return clVersion.bInit(csProgram) &&
               clVersion.bGetString(L"\\StringFileInfo\\000004E4\\VersionVI", &cs);
    };
    const auto bError = [&] {
        clError.SetUserError(&gstErrorModule604, 1, "a name that is not short");
        errno = ENOMEM;  // it has no such answer
        return std::wstring_view(clError.pszGetUserMessage()).find(L"a name") != CTString::npos;
    };
    const auto bCopy = [&] {
        clCopy.SetUserErrorCode(0);
        clCopy.Copy(clError);
        errno = ENOMEM;
        return clCopy.nNumInfo() == 1;
    };
    const auto bRun = [&] {
        CLanceProcessus clChild;
        return clChild.bLanceProcessus(L"/bin/echo", L"a word", &clError) &&
               clChild.bLitSortieEtAttendFinExecution(&csBytes, nullptr);
    };
    const auto bList = [&] {
        unsigned dwCursor = 0;
        return clManager.pclEnumService(&dwCursor, L"svc", 0) != nullptr;
    };
    const STCase tabCase[] = {
        {"read", bRead, [&] { return szValue == std::wstring_view(L"none"); }},
        {"integer", [&] { return GetPrivateProfileInt(L"AB", L"k", 7, csIni.c_str()) == 0; }, {}},
        {"write", [&] { return WritePrivateProfileStringA("AB", "k", "v", csIniUtf8.c_str()); }, {}},
        {"create", [&] { return WritePrivateProfileStringW(L"AB", L"k", L"v", csNew.c_str()); },
         [&] { return bGone(csNew); }},
        {"user", [&] { return WriteProfileString(L"AB", L"k", L"v"); }, {}},
        {"text", [&] { return DLLRES_bFormatMessage(&gstMyModuleInfo604, 0x10C7, &cs, "a long name"); }, {}},
        {"directory", [&] { return CDiskFile::bCreateDirectory(csDir); }, {}},
        {"same",
         [&] { return CDiskFile::bSameDirectoryName(L"//a/long/directory", L"/a/./long/directory"); },
         {}},
        {"load", [&] { return CDiskFile::bLoad(csZip, 999, &csLoaded); }, {}},
        {"join", [&] { return CDiskFile::MakePath(szPath, L"/a", L"b", L"c"); },
         [&] { return szPath[0] == 0; }},
        {"find", [&] { return CDiskFile::bFindFirst(csAll, 0, &clSearch); }, {}},
        {"version", bVersion, {}},
        {"error", bError, [&] { return clError.pszGetUserMessage() == std::wstring_view(L"<No Memory>"); }},
        {"copy", bCopy, [&] { return clCopy.unGetUserErrorCode() == 1; }},
        {"open", [&] { return clOther.eOuvreArchive(csZip, 0, 0) == ARCHIVE_OK; },
         [&] { return !clOther.bOuvert(); }},
        {"extract",
         [&] { return clZip.eExtraitFichier(L"A.TXT", csTo, 0, nullptr, 0, 0, nullptr) == ARCHIVE_OK; },
         [&] { return bGone(csTo); }},
        {"memory",
         [&] { return clZip.eExtraitFichier(L"a.txt", &tab, 0, nullptr, 0, nullptr) == ARCHIVE_OK; },
         [&] { return tab.empty(); }},
        {"line", [&] { return clZip.eGetInfoFichier(0, cs) == ARCHIVE_OK; }, {}},
        {"rank",
         [&] { return clZip.lRangFichier(L".\\a.txt") < 0 && clZip.lRangFichier(L"a.txt") == 0; },
         {}},
        {"entry", [&] { return eCheminEntree(csRoot, L"d/e", &clPath) == ARCHIVE_OK; },
         [&] { return clPath.bEmpty(); }},
        {"run", bRun, {}},
        {"process", [&] { return CreateProcess(L"/bin/true", L"true", nullptr, 0, nullptr, nullptr); }, {}},
        {"shell", [&] { return nShellCommand(L"exit 0 # at once") == 0; }, {}},
        {"script", [&] { return bOn(eDebian, bStart); }, {}},
        {"service", [&] { return bOn(eDebian, bFound); }, {}},
        {"list", [&] { return bOn(eDebian, bList); }, {}},
        {"remove", [&] { return bOn(eSlackware, [&] { return clService.bRemove(); }); }, {}},
        {"stop", [&] { return bOn(eSystemd, [&] { return clService.bStop(); }); }, {}},
        {"state",
         [&] { return bOn(eSystemd, [&] { return clService.eGetStatus() == eServiceRunning; }); },
         {}},
        {"unit", [&] { return bOn(eSystemd, bFound); }, {}},
    };
    for (const STCase& rst : tabCase) {
        for (const bool bLast : {false, true}) {
            g_bLast = bLast;
            long n = 0;
            for (; n == 0 || g_nFailed > 0; ++n) {
                std::filesystem::remove_all(csDir);
                std::filesystem::remove(csTo);
                std::filesystem::remove(csNew);
                g_nFailed = 0;
                bool bDone = false;
                errno = 0;
                g_nLeft = n;
                EXPECT_NO_THROW(bDone = rst.bDo());
                g_nLeft = -1;
                const int nError = errno;
                EXPECT_TRUE(bDone || g_nFailed > 0) << rst.pszName << n;
                EXPECT_TRUE(bDone || (nError == ENOMEM && (!rst.bAnswered || rst.bAnswered())))
                    << rst.pszName << n << g_bLast << nError;
            }
            EXPECT_GT(n, 1) << rst.pszName << " asks for no memory";
        }
    }
    EXPECT_EXIT((g_nLeft = 0, csFromUTF8("a text")), testing::KilledBySignal(SIGABRT), "out of memory");
}

}  // namespace
}  // namespace kalmo
