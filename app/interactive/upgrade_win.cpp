#include "app/interactive/upgrade_win.h"

#include "app/config/server_config.h"
#include "app/engine/data_extractor.h"
#include "app/engine/hang_up_shield.h"
#include "app/engine/refusal.h"
#include "app/interactive/message.h"
#include "app/interactive/new_server.h"
#include "app/record/recorder.h"
#include "framework/fs_path.h"
#include "framework/text.h"
#include "tui/toolkit/attribute.h"
#include "tui/toolkit/text_columns.h"
#include "tui/toolkit/window.h"

namespace kalmo {
namespace {

constexpr int YES_BUTTON_WIDTH = 12;
constexpr int TEXT_COLUMN = 2;
constexpr int STEPS_BESIDE_ENTRIES = 2;

}  // namespace

void ShowFileDone(CJauge& rclJauge, CWindow& rclWindow) {
    rclJauge.SetValue(rclJauge.dGetValue() + 1);
    if (rclJauge.bStale()) {
        rclWindow.Draw();
    }
}

CUpgradeWin::CUpgradeWin(int nX, int nY, int nWidth, int nHeight, CService* pclService,
                         CDataExtractor* pclExtractor, int nTelemetryOn, const CRecorder& rclRecorder)
    : CWindow(nX, nY, nWidth, nHeight),
      m_clStart(this, csLoadText(TEXTE_OUI).pszGet(), {nWidth, nHeight, 2, YES_BUTTON_WIDTH}, 0),
      m_clCancel(this, csLoadText(TEXTE_NON).pszGet(), {nWidth, nHeight, 2, YES_BUTTON_WIDTH}, 1),
      m_clJauge(this, 2, nHeight - 10, nWidth - 5, 3, 0, pclExtractor->dwGetNbFile() + STEPS_BESIDE_ENTRIES,
                csLoadText(TEXTE_MAJ_JAUGE).pszGet()),
      m_pclExtractor(pclExtractor),
      m_pclService(pclService),
      m_clServices(*pclService, pclExtractor->rclGetTrace()),
      m_nTelemetryOn(nTelemetryOn),
      m_rclRecorder(rclRecorder) {
    AddChild(&m_clStart);
    AddChild(&m_clCancel);
    AddChild(&m_clJauge);
    m_clJauge.SetVisible(0);
    _InitLibel();
}

void CUpgradeWin::_InitLibel() {
    _ComputeLibel(csGetProgramWithoutArg(m_pclService));
    CTString csManagerWarning;
    CTString csInstanceWarning;
    _GetKalmaoManager(&csManagerWarning);
    if (m_clServices.bInstanceRunning()) {
        csInstanceWarning = csFormatText(TEXTE_MAJ_ARRET_SERVEUR, csGetDisplayName(*m_pclService));
    }
    if (!csInstanceWarning.bEmpty() || !csManagerWarning.bEmpty()) {
        m_csWarning = csLoadText(TEXTE_MAJ_ARRETS) + L"\n" + csInstanceWarning + L"\n" + csManagerWarning;
    }
    m_csPrompt = csLoadText(TEXTE_MAJ_QUESTION);

    const CTString csText = m_csDescription + L"\n\n" + m_csWarning;
    const int nRows = __nPromptRow() - 1;
    if (static_cast<int>(tabWrapWords(csText.svGet(), __nTextColumns()).size()) > nRows) {
        m_clLongText.emplace(this, csBrokenAtWords(csText, width - 6).c_str(), 1, 1, width - 3, nRows);
        AddChild(&*m_clLongText);
    }
}

void CUpgradeWin::_ComputeLibel(const CTString& csProgramPath) {
    CPathBuffer szConfPath;
    GetZDConfPath(m_pclService, szConfPath);
    m_csDescription =
        csFormatText(TEXTE_MAJ, csGetDisplayName(*m_pclService), nReadServerPort(szConfPath),
                     m_clServices.csGetDirectory(), csGetProgramVersion(csProgramPath), csGetOwnVersion());
}

void CUpgradeWin::_GetKalmaoManager(CTString* pcsWarning) {
    if (m_clServices.bManagerHere()) {
        *pcsWarning = csLoadText(TEXTE_MAJ_ARRET_MANAGER);
    }
}

bool CUpgradeWin::bOnEvent(CWidget* pclSender, eEVENT eEvent) {
    if (eEvent != eEVENT_PRESSED || (pclSender != &m_clStart && pclSender != &m_clCancel)) {
        return false;
    }
    if (pclSender == &m_clStart) {
        _Upgrade();
    }
    bRunning = 0;
    return true;
}

void CUpgradeWin::_Upgrade() {
    const CHangUpShield clShield;
    m_clJauge.SetVisible(1);
    Draw();
    m_clServices.StopAll();
    __ShowStep(1);
    const wchar_t* const pszDir = m_clServices.csGetDirectory().pszGet();
    if (!m_pclExtractor->bUpgrade(pszDir, this) || !m_pclExtractor->bSync(pszDir)) {
        if (const CTString csStopped = m_clServices.csStoppedNow(); !csStopped.bEmpty()) {
            ShowErrorBox(csFormatText(TEXTE_ARRETES, csStopped));
        }
        return;
    }
    m_clServices.StartAll();
    __ShowStep(m_clJauge.dGetMaximum());
    ShowResultBox(csLoadText(TEXTE_MAJ_FAITE));
    m_rclRecorder.Upgraded(*m_pclService, m_nTelemetryOn);
}

void CUpgradeWin::__ShowStep(double dValue) {
    SetJauge(dValue);
    Draw();
}

// The description from the top, the warnings a line below it, the prompt right above the buttons.
void CUpgradeWin::_DrawWindow() {
    CWindow::_DrawWindow();
    const int nEnd = __nPromptRow();
    if (!m_clLongText) {
        const int nLines =
            _nSmartPrint(1, TEXT_COLUMN, m_csDescription.pszGet(), ATTR_BORDER, __nTextColumns(), nEnd);
        _nSmartPrint(nLines + 2, TEXT_COLUMN, m_csWarning.pszGet(), ATTR_BORDER, __nTextColumns(), nEnd);
    }
    _nSmartPrint(nEnd, TEXT_COLUMN, m_csPrompt.pszGet(), ATTR_BORDER, __nTextColumns(), nEnd + 1);
}

void UpgradeServer(CDataExtractor* pclExtractor, CService* pclService, const CRecorder& rclRecorder) {
    if (const CRefusal clRefusal = clRefuseUpgrade(*pclService)) {
        bTellRefusal(L"upgrade " + CTString(pclService->pszGetName()), *clRefusal,
                     pclExtractor->rclGetTrace());
        return;
    }
    CPathBuffer szConfPath;
    GetZDConfPath(pclService, szConfPath);
    int nTelemetryOn = 0;
    if (bChooseTelemetry(eReadTelemetry(szConfPath), nTelemetryOn)) {
        DoUpgradeServer(pclExtractor, pclService, nTelemetryOn, rclRecorder);
    }
}

void DoUpgradeServer(CDataExtractor* pclExtractor, CService* pclService, int nTelemetryOn,
                     const CRecorder& rclRecorder) {
    auto clWindow = clMakeCentred<CUpgradeWin>(CUpgradeWin::PREFERRED_WIDTH, CUpgradeWin::PREFERRED_HEIGHT,
                                               pclService, pclExtractor, nTelemetryOn, rclRecorder);
    clWindow.Draw();
    clWindow.MainLoop();
}

}  // namespace kalmo
