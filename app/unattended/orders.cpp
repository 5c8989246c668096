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
    const STOrdersKey& rstKey;
    CTString cs;
    bool bThere;  // behind the text that finding it fills

    STValue(CProfileFile& rclFile, const STOrdersKey& rst)
        : rstKey(rst), bThere(rclFile.bGetValue(rst.pszSection, rst.pszKey, &cs)) {}

    [[nodiscard]] CTString csTold() const {
        return CTString(rstKey.pszKey) + (bThere ? L"=" + csQuoted(cs) : CTString(L" missing"));
    }
};

const wchar_t* pszFault(STOrdersFault::eKIND eKind) {
    switch (eKind) {
        case STOrdersFault::eKIND::Missing: return L"missing in the parameter file";
        case STOrdersFault::eKIND::TooLong: return L"too long";
        default: return L"no absolute path";
    }
}

}  // namespace

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

bool STOrders::bLoad(const CTString& csPath, CTrace& rclTrace, std::string* pcsBytes) {
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

bool STOrders::bRead(const CTString& csPath, CTrace& rclTrace) {
    *this = {0, {}, {}, 0};
    std::string csBytes;
    if (!bLoad(csPath, rclTrace, &csBytes)) {
        return false;
    }
    const std::vector<STOrdersFault> tabFault = tabTake(csBytes, rclTrace);
    return tabFault.empty() || bFail(rclTrace, tabFault[0].pszKey, pszFault(tabFault[0].eKind));
}

std::vector<STOrdersFault> STOrders::tabTake(std::string_view svBytes, CTrace& rclTrace) {
    using eKIND = STOrdersFault::eKIND;
    *this = {0, {}, {}, 0};
    CMemoryStream clBytes(CTLBIN(svBytes.begin(), svBytes.end()));
    CProfileFile clFile(clBytes);
    const STValue stOperation(clFile, KEY_OPERATION);
    const STValue stServer(clFile, KEY_SERVER);
    const STValue stDirectory(clFile, KEY_DIRECTORY);
    const STValue stPort(clFile, KEY_PORT);
    rclTrace.Step(L"orders", stOperation.csTold() + L" " + stServer.csTold() + L" " + stDirectory.csTold() +
                                 L" " + stPort.csTold());

    const int nOrdered = stOperation.bThere ? nEntierDeValeur(stOperation.cs) : OP_NONE;
    if (nOrdered < OP_UPGRADE || nOrdered > OP_UNINSTALL) {
        const CTString csWhy =
            stOperation.bThere ? CTString(L"no operation of that number") : csNoOperation(svBytes);
        rclTrace.Step(L"MAJ", csWhy + L", nothing done");
        nOperation = nOrdered;
        return {};
    }
    std::vector<STOrdersFault> tabFault;
    const auto bCheckText = [&tabFault](const STValue& rst, std::size_t nMax) {
        const bool bFits = rst.cs.nGetLength() <= nMax;
        if (rst.cs.bEmpty() || !bFits) {
            tabFault.push_back({rst.rstKey.pszKey, bFits ? eKIND::Missing : eKIND::TooLong});
            return false;
        }
        return true;
    };
    if (bCheckText(stServer, MAX_SERVER_NAME)) {
        csServer = stServer.cs;
    }
    if (nOrdered == OP_INSTALL) {
        if (bCheckText(stDirectory, TAILLE_MAX_PATH)) {
            if (!stDirectory.cs.svGet().starts_with(L'/')) {
                tabFault.push_back({KEY_DIRECTORY.pszKey, eKIND::NotAbsolute});
            } else if (!clInstallDir.bSet(stDirectory.cs) || !clInstallDir.bAddTrailingSlash()) {
                tabFault.push_back({KEY_DIRECTORY.pszKey, eKIND::TooLong});
            }
        }
        nPort = stPort.bThere ? nEntierDeValeur(stPort.cs) : PORT_DEFAUT;
    }
    nOperation = tabFault.empty() ? nOrdered : 0;
    return tabFault;
}

}  // namespace kalmo
