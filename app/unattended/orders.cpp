#include "app/unattended/orders.h"

#include <algorithm>
#include <cerrno>
#include <string>
#include <utility>

#include "app/config/server_config.h"
#include "app/engine/trace.h"
#include "framework/disk_file.h"
#include "framework/memory_stream.h"
#include "framework/profile.h"
#include "framework/profile_file.h"
#include "framework/profile_line.h"

namespace kalmo {
namespace {

constexpr std::size_t MAX_FILE = 16U << 20U;  // orders are a few lines
constexpr std::size_t MAX_SERVER_NAME = 100;

bool bFail(CTrace& rclTrace, std::wstring_view svWhat, std::wstring_view svWhy) {
    rclTrace.Failed(svWhat, svWhy);
    return false;
}

// The mark of an encoding that profile files are not read in; null when there is none.
const wchar_t* pszForeignMark(std::string_view svBytes) {
    using namespace std::string_view_literals;
    static constexpr std::pair<std::string_view, const wchar_t*> TAB_MARK[] = {
        {"\xFF\xFE\0\0"sv, L"UTF-32"},
        {"\0\0\xFE\xFF"sv, L"UTF-32"},
        {"\xFE\xFF"sv, L"UTF-16 big-endian"},
        {"\xEF\xBB\xBF"sv, L"UTF-8"},
    };
    const auto* const pst =
        std::ranges::find_if(TAB_MARK, [svBytes](const auto& rst) { return svBytes.starts_with(rst.first); });
    return pst == std::end(TAB_MARK) ? nullptr : pst->second;
}

// The file's bytes. False, and told, when they cannot be had.
bool bLoad(const CTString& csPath, CTrace& rclTrace, std::string* pcsBytes) {
    const CTString csWhat = L"parameter file " + csQuoted(csPath);
    CPathBuffer szPath;
    if (!__PrivateProfilePatchName(csPath.pszGet(), szPath) || !CDiskFile::bFileExists(szPath)) {
        return bFail(rclTrace, csWhat, CDiskFile::bDirectoryExists(szPath) ? L"a directory" : L"not found");
    }
    const int nError = nOutcome(CDiskFile::bLoad(szPath, MAX_FILE, pcsBytes));
    if (nError != 0) {
        rclTrace.Outcome(L"read " + csWhat, nError);
    }
    return nError == 0;
}

// Why a file does not tell its operation.
CTString csNoOperation(std::string_view svBytes) {
    if (svBytes.find_first_not_of(" \t\r\n") == std::string_view::npos) {
        return CTString(L"the parameter file is empty");
    }
    if (const wchar_t* const pszMark = pszForeignMark(svBytes); pszMark != nullptr) {
        return L"the parameter file begins with a byte-order mark of " + CTString(pszMark) +
               L"; write it in UTF-8 without a mark, or in UTF-16 little-endian with one";
    }
    return CTString(L"missing in the parameter file");
}

// One key of the file.
struct STValue {
    const wchar_t* pszKey;
    CTString cs;
    bool bThere;  // behind the text that finding it fills

    STValue(CProfileFile& rclFile, const wchar_t* pszSection, const wchar_t* pszTheKey)
        : pszKey(pszTheKey), bThere(rclFile.bGetValue(pszSection, pszTheKey, &cs)) {}

    [[nodiscard]] CTString csTold() const {
        return CTString(pszKey) + (bThere ? L"=" + csQuoted(cs) : CTString(L" missing"));
    }
};

// False, and told, when a text is missing or longer than nMax characters.
bool bCheckText(const STValue& rst, std::size_t nMax, CTrace& rclTrace) {
    if (rst.cs.bEmpty()) {
        return bFail(rclTrace, rst.pszKey, L"missing in the parameter file");
    }
    return rst.cs.nGetLength() <= nMax || bFail(rclTrace, rst.pszKey, L"too long");
}

}  // namespace

bool STOrders::bRead(const CTString& csPath, CTrace& rclTrace) {
    static constexpr const wchar_t* PSZ_SERVER = L"SERVEUR";
    *this = {0, {}, {}, 0};
    std::string csBytes;
    if (!bLoad(csPath, rclTrace, &csBytes)) {
        return false;
    }
    CMemoryStream clBytes(CTLBIN(csBytes.begin(), csBytes.end()));
    CProfileFile clFile(clBytes);
    const STValue stOperation(clFile, L"PILOTAGE", L"MAJ");
    const STValue stServer(clFile, PSZ_SERVER, L"Serveur");
    const STValue stDirectory(clFile, PSZ_SERVER, L"Repertoire");
    const STValue stPort(clFile, PSZ_SERVER, L"Port");
    rclTrace.Step(L"orders", stOperation.csTold() + L" " + stServer.csTold() + L" " + stDirectory.csTold() +
                                 L" " + stPort.csTold());

    const int nOrdered = stOperation.bThere ? nEntierDeValeur(stOperation.cs) : OP_NONE;
    if (nOrdered < OP_UPGRADE || nOrdered > OP_UNINSTALL) {
        const CTString csWhy =
            stOperation.bThere ? CTString(L"no operation of that number") : csNoOperation(csBytes);
        rclTrace.Step(L"MAJ", csWhy + L", nothing done");
        nOperation = nOrdered;
        return true;
    }
    if (!bCheckText(stServer, MAX_SERVER_NAME, rclTrace)) {
        return false;
    }
    csServer = stServer.cs;
    if (nOrdered == OP_INSTALL) {
        if (!bCheckText(stDirectory, TAILLE_MAX_PATH, rclTrace)) {
            return false;
        }
        if (!stDirectory.cs.svGet().starts_with(L'/')) {
            return bFail(rclTrace, stDirectory.pszKey, L"no absolute path");
        }
        if (!clInstallDir.bSet(stDirectory.cs) || !clInstallDir.bAddTrailingSlash()) {
            return bFail(rclTrace, stDirectory.pszKey, L"too long");
        }
        nPort = stPort.bThere ? nEntierDeValeur(stPort.cs) : PORT_DEFAUT;
    }
    nOperation = nOrdered;
    return true;
}

}  // namespace kalmo
