#include "app/interactive/uninstall_win.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>

#include "app/config/server_config.h"
#include "app/engine/refusal.h"
#include "app/engine/server_services.h"
#include "app/engine/trace.h"
#include "app/interactive/message.h"
#include "app/record/recorder.h"
#include "app/removal/removal.h"
#include "framework/conversion.h"
#include "framework/text.h"
#include "framework/x_error.h"
#include "services/service.h"
#include "tui/toolkit/attribute.h"
#include "tui/toolkit/key.h"
#include "tui/toolkit/screen.h"
#include "tui/toolkit/window.h"

namespace kalmo {
namespace {

constexpr int BUTTON_WIDTH = 10;
constexpr int STEP_COLUMN = 10;
constexpr int STEPS_BESIDE_FILES = 2;
constexpr int JAUGE_HEIGHT = 3;

// How many rows the last step's label takes.
int nDeleteRows(bool bManager) {
    return bManager ? 1 : 3;
}

int nJaugeRow(bool bManager) {
    return nDeleteRows(bManager) + 11;
}

CTString csDeleteLabel(bool bManager) {
    const CTString csLabel = csLoadText(TEXTE_RETRAIT_FICHIERS);
    return bManager ? csLabel : csLabel + csLoadText(TEXTE_RETRAIT_GARDE);
}

// Where the close button stands: in its place below the gauge or, where its caption has no row there, in the
// gauge's.
int nCloseRow(bool bManager, int nHeight) {
    const int nRow = nDeleteRows(bManager) + 15;
    const int nCaptionRow = nRow + (STButtonRow::HEIGHT - 3) / 2 + 1;
    return nCaptionRow < nHeight ? nRow : nHeight - STButtonRow::HEIGHT - 2;
}

}  // namespace

CUnInstallWin::STStep::STStep(CWindow* pclParent, const CTString& csLabel, int nRow, int nWidth, int nHeight)
    : csText(csLabel),
      clLabel(pclParent, csLabel.pszGet(), STEP_COLUMN, nRow, nWidth - 2 * STEP_COLUMN, nHeight, 0,
              ATTR_BORDER) {}

void CUnInstallWin::STStep::MarkDone() {
    if (csText.nGetLength() > 1) {
        csText.SetAt(1, L'X');
        clLabel.SetText(csText.pszGet());
    }
}

CUnInstallWin::CUnInstallWin(int nX, int nY, int nWidth, int nHeight, CService* pclService, CTrace& rclTrace,
                             const CRecorder& rclRecorder)
    : CWindow(nX, nY, nWidth, nHeight),
      m_pclService(pclService),
      m_rclTrace(rclTrace),
      m_rclRecorder(rclRecorder),
      m_bManager(bIsManager(*pclService)),
      m_clTitle(this, csFormatText(TEXTE_RETRAIT, csGetDisplayName(*pclService)).pszGet(), 5, 2, nWidth - 10,
                2, 0, ATTR_BORDER),
      m_stStop(this, csLoadText(TEXTE_RETRAIT_ARRET), 6, nWidth, 1),
      m_stRemove(this, csLoadText(TEXTE_RETRAIT_SERVICE), 8, nWidth, 1),
      m_stDelete(this, csDeleteLabel(m_bManager), 10, nWidth, nDeleteRows(m_bManager)),
      m_clJauge(this, STEP_COLUMN, nJaugeRow(m_bManager), nWidth - 19, JAUGE_HEIGHT, 0, 1, L""),
      m_clClose(this, csLoadText(TEXTE_OK).pszGet(), (nWidth - BUTTON_WIDTH) / 2,
                nCloseRow(m_bManager, nHeight), BUTTON_WIDTH, STButtonRow::HEIGHT) {
    _ListFile();
    m_clJauge.SetMaximum(static_cast<double>(m_tabFile.size()) + STEPS_BESIDE_FILES);
    for (CWidget* const pclChild :
         {static_cast<CWidget*>(&m_clTitle), static_cast<CWidget*>(&m_stStop.clLabel),
          static_cast<CWidget*>(&m_stRemove.clLabel), static_cast<CWidget*>(&m_stDelete.clLabel),
          static_cast<CWidget*>(&m_clJauge)}) {
        AddChild(pclChild);
    }
}

void CUnInstallWin::_ListFile() {
    const CTString csDirectory = csGetProgramDirectory(m_pclService);
    CTString csProgram = csGetProgramWithoutArg(m_pclService);
    csProgram.Replace(L'\\', L'/');
    if (csDirectory.bEmpty()) {
        return;  // no path that is absolute: nothing in the current directory may be taken for it
    }
    m_tabFile.push_back(csProgram);
    if (m_bManager) {
        return;
    }
    // The logger of a 64-bit server carries the same suffix as the server.
    const wchar_t* const pszSuffix = csProgram.svGet().ends_with(L"64") ? L"64" : L"";
    m_tabFile.push_back(csDirectory + L"zdlogger" + pszSuffix);
    std::ranges::copy(tabServerLibraries(csDirectory), std::back_inserter(m_tabFile));
}

void CUnInstallWin::MainLoop() {
    bRunning = 1;
    if (!_bStopService() || !_bRemoveService() || !_bRemoveFiles()) {
        return;
    }
    m_rclRecorder.Uninstalled(*m_pclService);
    m_clShield.reset();
    AddChild(&m_clClose);
    m_clJauge.SetVisible(nCloseRow(m_bManager, height) >= nJaugeRow(m_bManager) + JAUGE_HEIGHT ? 1 : 0);
    CWindow::bSetFocus(&m_clClose);
    Draw();
    ForgetKeys();
    CWindow::MainLoop();
}

bool CUnInstallWin::_bStopService() {
    bStopService(*m_pclService, m_rclTrace);
    __ShowProgress(&m_stStop);
    return true;
}

bool CUnInstallWin::_bRemoveService() {
    const bool bRemoved = bRemoveService(*m_pclService, m_rclTrace);
    const int nError = errno != 0 ? errno : ENOTSUP;
    RepaintScreen();  // the tools of an init system complain on the terminal
    if (!bRemoved) {
        const CTString csError =
            csFormatText(TEXTE_RETRAIT_SERVICE_ERREUR, csFromUTF8(std::strerror(nError)));
        const bool bStopped = !kalmo::bRunning(*m_pclService, m_rclTrace);
        ShowErrorBox(bStopped ? csError + L"\n\n" +
                                    csFormatText(TEXTE_ARRETES, L"\n- " + csGetDisplayName(*m_pclService))
                              : csError);
        return false;
    }
    __ShowProgress(&m_stRemove);
    return true;
}

bool CUnInstallWin::_bRemoveFiles() {
    if (m_tabFile.empty()) {
        ShowErrorBox(csFormatText(TEXTE_RETRAIT_SANS_FICHIER, csGetDisplayName(*m_pclService)));
        return false;
    }
    for (const CTString& rcsFile : m_tabFile) {
        CXError clError;
        if (!bDeleteFile(rcsFile, m_rclTrace, &clError)) {
            ShowErrorBox(
                csFormatText(TEXTE_RETRAIT_FICHIER_ERREUR, clError.StringDump(CXError::eXERROR_INFO::All)));
            return false;
        }
        __ShowProgress(nullptr);
    }
    m_stDelete.MarkDone();
    Draw();
    return true;
}

void CUnInstallWin::__ShowProgress(STStep* pstDone) {
    m_clJauge.SetValue(m_clJauge.dGetValue() + 1);
    if (pstDone != nullptr) {
        pstDone->MarkDone();
    }
    Draw();
}

bool CUnInstallWin::bOnEvent(CWidget* pclSender, eEVENT eEvent) {
    if (pclSender != &m_clClose || eEvent != eEVENT_PRESSED) {
        return false;
    }
    bRunning = 0;
    return true;
}

void UninstallServer(CService* pclService, CTrace& rclTrace, const CRecorder& rclRecorder) {
    if (const CRefusal clRefusal = clRefuseRemoval(*pclService)) {
        bTellRefusal(L"uninstall " + CTString(pclService->pszGetName()), *clRefusal, rclTrace);
        return;
    }
    auto clWindow = clMakeCentred<CUnInstallWin>(
        CUnInstallWin::PREFERRED_WIDTH, CUnInstallWin::PREFERRED_HEIGHT, pclService, rclTrace, rclRecorder);
    clWindow.Draw();
    clWindow.MainLoop();
}

}  // namespace kalmo
