#include "app/record/recorder.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <string>

#include "app/config/server_config.h"
#include "app/engine/run_view.h"
#include "app/engine/trace.h"
#include "framework/conversion.h"
#include "framework/profile_line.h"
#include "framework/text.h"
#include "framework/whole_file.h"
#include "services/service_manager.h"

namespace kalmo {
namespace {

CTString csNow() {
    const std::time_t nNow = std::time(nullptr);
    std::tm st{};
    ::localtime_r(&nNow, &st);
    std::array<char, 40> szTime{};
    const std::size_t nLength = std::strftime(szTime.data(), szTime.size(), "%Y-%m-%d %H:%M:%S", &st);
    return csFromUTF8({szTime.data(), nLength});
}

CTString csStep(const CTString& csPath) {
    return L"record to " + csQuoted(csPath);
}

CTString csYesOrNo(int nYes) {
    return csLoadText(nYes != 0 ? TEXTE_OUI : TEXTE_NON);
}

// The reasons of the system for these are about calls that nobody here knows of.
CTString csWhyNot(int nError) {
    return nError == ELOOP || nError == EEXIST ? csLoadText(TEXTE_ENREGISTREMENT_PAS_FICHIER)
                                               : csReason(nError);
}

// Each line as a comment of a profile file.
CTString csComment(std::wstring_view svText) {
    CTString cs;
    while (!svText.empty()) {
        const std::wstring_view svLine = svText.substr(0, svText.find(L'\n'));
        svText.remove_prefix(std::min(svText.size(), svLine.size() + 1));
        cs += L": " + CTString(svLine) + L"\n";
    }
    return cs;
}

// The parameter file, its keys as kalmoinstall.ini(5) has them.
CXYString<char> csFile(const CTString& csRemark, const STOrders& rst) {
    CTString cs = csComment(csRemark) + L"[PILOTAGE]\nMAJ=" + std::to_wstring(rst.nOperation) +
                  L"\n[SERVEUR]\nServeur=" + rst.csServer + L"\n";
    if (rst.nOperation == OP_INSTALL) {
        // Without its last slash, as people write it.
        const std::wstring_view svDir = rst.clInstallDir.svGet();
        cs += L"Repertoire=" + CTString(svDir.substr(0, std::max<std::size_t>(svDir.size() - 1, 1))) +
              L"\nPort=" + std::to_wstring(rst.nPort) + L"\n";
    }
    return csToUTF8(cs);
}

// Whether an unattended run reads these orders in a file.
bool bReadBack(std::string_view svFile, const STOrders& rst) {
    CTrace clNobody;
    STOrders stRead;
    return stRead.tabTake(svFile, clNobody).empty() && stRead.nOperation == rst.nOperation &&
           stRead.csServer == rst.csServer && stRead.clInstallDir.csGet() == rst.clInstallDir.csGet() &&
           stRead.nPort == rst.nPort;
}

// What an unattended run calls the service: the manager has a name of its own.
CTString csNameInOrders(const CService& rclService) {
    static constexpr std::wstring_view SV_PREFIX = PSZ_SERVICE_PREFIX;  // of all that are listed
    return bIsManager(rclService)
               ? CTString(PSZ_MANAGER_PROGRAM)
               : CTString(std::wstring_view(rclService.pszGetName()).substr(SV_PREFIX.size()));
}

// Whether an unattended run takes the name for an instance's: not for the manager's, nor, under systemd, for
// none at all.
bool bNamesInstance(const CTString& csName) {
    return !bEgalSansCasse(csName, PSZ_MANAGER_PROGRAM) &&
           (CServiceManager::ms_eDistri != eSystemd || bServiceCanBeNamed(csName));
}

}  // namespace

bool CRecorder::bReady() const {
    const int nError = m_csPath.bEmpty() ? 0 : nOutcome(bReplaceable(m_csPath));
    if (nError == 0) {
        return true;
    }
    m_rclTrace.Outcome(csStep(m_csPath), nError);
    m_rclTrace.rclGetView().ShowError(
        csFormatText(TEXTE_ENREGISTREMENT_IMPOSSIBLE, m_csPath, csWhyNot(nError)));
    return false;
}

void CRecorder::Installed(std::wstring_view svDir, const CDataExtractor::STInstallParam& rstParam) const {
    STOrders st;
    st.nOperation = OP_INSTALL;
    st.csServer = rstParam.csServerName;
    st.nPort = nEntierDeValeur(rstParam.csPort);
    if (!st.clInstallDir.bSet(svDir) || !st.clInstallDir.bAddTrailingSlash()) {
        return;  // nothing can have been installed there
    }
    const CTString& rcsUser = rstParam.csDaemonUser;
    __Write(csFormatText(TEXTE_ENREGISTREMENT_INSTALLATION, csGetOwnVersion(), csNow(),
                         csQuoted(rcsUser.bEmpty() ? CTString(PSZ_ROOT) : rcsUser),
                         csYesOrNo(rstParam.nTelemetry), csQuoted(rstParam.csAdminAccount)),
            st, bNamesInstance(st.csServer));
}

void CRecorder::Upgraded(const CService& rclService, int nTelemetryOn) const {
    __Write(csFormatText(TEXTE_ENREGISTREMENT_MAJ, csGetOwnVersion(), csNow(), csYesOrNo(nTelemetryOn)),
            OP_UPGRADE, rclService);
}

void CRecorder::Uninstalled(const CService& rclService) const {
    __Write(csFormatText(TEXTE_ENREGISTREMENT_RETRAIT, csGetOwnVersion(), csNow()), OP_UNINSTALL, rclService);
}

void CRecorder::__Write(const CTString& csRemark, int nOperation, const CService& rclService) const {
    STOrders st;
    st.nOperation = nOperation;
    st.csServer = csNameInOrders(rclService);
    __Write(csRemark, st, bIsManager(rclService) || bNamesInstance(st.csServer));
}

void CRecorder::__Write(const CTString& csRemark, const STOrders& rst, bool bNameKept) const {
    if (m_csPath.bEmpty()) {
        return;
    }
    const CTString csWhat = csStep(m_csPath);
    const CXYString<char> csBytes = csFile(csRemark, rst);
    if (!bNameKept || !bReadBack(csBytes, rst)) {
        m_rclTrace.Step(csWhat, L"failed: an unattended run would read other orders");
        m_rclTrace.rclGetView().ShowError(csFormatText(TEXTE_ENREGISTREMENT_IRREPETABLE, m_csPath));
        return;
    }
    const int nError = nOutcome(bReplaceFile(m_csPath, csBytes));
    m_rclTrace.Outcome(csWhat, nError);
    if (nError != 0) {
        m_rclTrace.rclGetView().ShowError(
            csFormatText(TEXTE_ENREGISTREMENT_PERDU, m_csPath, csWhyNot(nError)));
    }
}

}  // namespace kalmo
