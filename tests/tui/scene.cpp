// One dialog for the tests to drive at a terminal; prints what came of it.
//
//   tui_scene WIDTHxHEIGHT CONTROL...   a window with controls: KIND[@X,Y,WIDTH,HEIGHT][=TEXT[~LABEL]],
//       "-" in front of a disabled one, a comma between the lines of a list. F1 ends it; prints the states
//       of the controls and their events
//   tui_scene DIALOG NUMBER [SERVICE DISPLAY-NAME PROGRAM]...   one of the installer's, with its own
//   argument;
//       "-" is no display name. Prints its result and its answers
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "framework/conversion.h"
#include "framework/language.h"
#include "framework/process_info.h"
#include "services/service_manager.h"
#include "tui/dialogs/choose_server.h"
#include "tui/dialogs/config_account_win.h"
#include "tui/dialogs/config_win.h"
#include "tui/dialogs/install_progress_win.h"
#include "tui/dialogs/telemetry_win.h"
#include "tui/dialogs/upgrade_or_install_win.h"
#include "tui/toolkit/attribute.h"
#include "tui/toolkit/check_box.h"
#include "tui/toolkit/directory.h"
#include "tui/toolkit/drawing.h"
#include "tui/toolkit/entry.h"
#include "tui/toolkit/key.h"
#include "tui/toolkit/libel.h"
#include "tui/toolkit/screen.h"
#include "tui/toolkit/window.h"

namespace kalmo {
namespace {

std::string csUtf8(const wchar_t* psz) {
    return csToUTF8(psz).pszGet();
}

// A window that notes each event of its controls as " control:event", the controls numbered in Tab order.
class CScene : public CWindow {
  public:
    using CWindow::CWindow;

    template <class TControl, class... TArg>
    TControl* pclAdd(TArg&&... arg) {
        auto pclControl = std::make_unique<TControl>(this, std::forward<TArg>(arg)...);
        TControl* const pcl = pclControl.get();
        m_tabControl.push_back(std::move(pclControl));
        AddChild(pcl);
        return pcl;
    }
    void AddWanted(std::string_view svWanted);

    bool bOnEvent(CWidget* pclSender, eEVENT eEvent) override {
        const auto it = std::find_if(m_tabControl.begin(), m_tabControl.end(),
                                     [pclSender](const auto& rpcl) { return rpcl.get() == pclSender; });
        __Note(std::to_string(it - m_tabControl.begin()) + ":" + std::to_string(eEvent));
        return true;
    }
    int OnKeyEvent(int nKey) override;

    void Run() {
        Draw();
        MainLoop();
    }
    [[nodiscard]] std::string csReport() const {
        std::string cs;
        for (const auto& rpcl : m_tabControl) {
            cs += __csState(rpcl.get());
        }
        return cs + m_csEvents;
    }

  protected:
    void _DrawWindow() override {
        CWindow::_DrawWindow();
        if (m_bPrimitives) {
            __DrawPrimitives();
        }
    }

  private:
    void __Note(const std::string& rcs) { m_csEvents += " " + rcs; }
    void __DrawPrimitives();
    [[nodiscard]] CList& __rclList(std::size_t n) const { return dynamic_cast<CList&>(*m_tabControl[n]); }
    [[nodiscard]] static std::string __csState(const CWidget* pclControl);

    std::vector<std::unique_ptr<CWidget>> m_tabControl;
    std::string m_csEvents;
    bool m_bPrimitives = false;
};

// Adds a control as an argument of the program tells it. Where no place is given, they stand side by side.
void CScene::AddWanted(std::string_view svWanted) {
    const bool bOff = svWanted.starts_with('-');
    svWanted.remove_prefix(bOff ? 1 : 0);
    const std::string csWhere(svWanted.substr(0, svWanted.find('=')));
    const std::string csKind = csWhere.substr(0, csWhere.find('@'));
    std::wstring csText(csFromUTF8(svWanted.substr(std::min(csWhere.size() + 1, svWanted.size()))).svGet());
    const std::size_t nLabel = std::min(csText.find(L'~'), csText.size());
    const std::wstring csLabel = csText.substr(std::min(nLabel + 1, csText.size()));
    csText.resize(nLabel);
    std::replace(csText.begin(), csText.end(), L',', L'\n');
    int nX = static_cast<int>(m_tabControl.size()) * 10 + 1;
    int nY = 1;
    int nWidth = 10;
    int nHeight = 4;
    std::sscanf(csWhere.c_str() + csKind.size(), "@%d,%d,%d,%d", &nX, &nY, &nWidth, &nHeight);
    const auto Add = [&]<class T>(std::type_identity<T>, auto... arg) {
        return pclAdd<T>(csText.c_str(), nX, nY, nWidth, nHeight, arg...);
    };
    const auto AddEntry = [&](auto stKind, auto... arg) {
        const auto eStyle = csKind == "shadow" ? CWidget::eBORDER_SHADOW : CWidget::eBORDER_FRAME;
        return Add(stKind, csLabel.c_str(), csKind == "bare" ? CWidget::eBORDER_NONE : eStyle, arg...);
    };
    const auto AddLines = [&](auto* pcl, auto pfnAdd) {
        std::wistringstream clLines(csText);
        for (std::wstring cs; std::getline(clLines, cs);) {
            (pcl->*pfnAdd)(cs.c_str());
        }
    };
    if (csKind == "button") {
        Add(std::type_identity<CButton>());
    } else if (csKind == "fitted") {
        pclAdd<CButton>(csText.c_str(), nX, nY, nHeight);
    } else if (csKind == "box" || csKind == "checked") {
        Add(std::type_identity<CCheckBox>(), csKind == "box" ? 0 : 1);
    } else if (csKind == "label" || csKind == "framed") {
        Add(std::type_identity<CLibel>(), csKind == "label" ? 0 : 1,
            csKind == "label" ? ATTR_SELECTED : ATTR_BORDER);
    } else if (csKind == "gauge" || csKind == "hidden") {
        double dValue = 0;
        double dMaximum = 1;
        std::swscanf(csText.c_str(), L"%lf/%lf", &dValue, &dMaximum);
        auto* const pcl = pclAdd<CJauge>(nX, nY, nWidth, nHeight, 0.0, dMaximum, csLabel.c_str());
        pcl->SetValue(dValue);
        pcl->SetVisible(csKind == "gauge" ? 1 : 0);
    } else if (csKind == "entry" || csKind == "shadow" || csKind == "bare") {
        AddEntry(std::type_identity<CEntry>())->SetMaxLength(csKind == "bare" ? 12 : 99);
    } else if (csKind == "number") {
        AddEntry(std::type_identity<CNumEntry>());
    } else if (csKind == "lower") {
        AddEntry(std::type_identity<CEntryLower>());
    } else if (csKind == "path" || csKind == "unguarded") {
        AddEntry(std::type_identity<CDirEntry>(), csKind == "path" ? 1 : 0);
    } else if (csKind == "text") {
        Add(std::type_identity<CScrollableLibel>());
    } else if (csKind == "list" || csKind == "sorted") {
        auto* const pcl = pclAdd<CList>(nX, nY, nWidth, nHeight, csKind == "list" ? 0 : 1);
        AddLines(pcl, &CList::AddLine);
        if (csKind == "sorted") {
            pcl->SortLine(::wcscasecmp);
            pcl->Select(2);
        }
    } else if (csKind == "radio" || csKind == "chosen") {
        const int nChosen = csKind == "radio" ? 0 : 1;
        AddLines(pclAdd<CRadioList>(nX, nY, nWidth, nHeight, csLabel.c_str(), nChosen, nChosen),
                 &CRadioList::AddOption);
    } else {
        m_bPrimitives = csKind == "primitives";
        return;
    }
    m_tabControl.back()->SetEnable(bOff ? 0 : 1);
}

// Some keys that no control takes are deaths on demand.
int CScene::OnKeyEvent(int nKey) {
    switch (nKey) {
        case KEY_F(1): bRunning = 0; return 1;
        case KEY_F(2): {
            CScene clAbove(24, 4, 20, 8);
            clAbove.AddWanted("entry@4,2,10,3=Above");
            clAbove.AddWanted("box@4,5,8,1=b");
            clAbove.Run();
            break;
        }
        case KEY_F(3): __rclList(0).Select(__rclList(0).nGetSelectedLine() == 11 ? 2 : 11); break;
        case KEY_F(4):
            __rclList(0).ClearList();
            __rclList(0).AddLine(L"another long line");
            __rclList(1).AddLine(L"sixth");
            break;
        case KEY_F(5): m_tabControl[5]->SetEnable(0); return 1;  // Shows without a Draw.
        case 'A' - '@':                                          // in the middle of something red in reverse
            std::fputs("\x1B[7;31m", stdout);
            std::fflush(stdout);
            std::abort();
        case 'B' - '@': std::raise(SIGSEGV); return 1;
        case 'E' - '@': std::exit(5);
        case 'F' - '@':  // only a child dies
            if (const pid_t nChild = ::fork(); nChild == 0) {
                std::raise(SIGTERM);
            } else {
                ::waitpid(nChild, nullptr, 0);
            }
            return 1;
        default: return CWindow::OnKeyEvent(nKey);
    }
    Draw();
    return 1;
}

// The drawing primitives, also where they leave the window, and the ways to print.
void CScene::__DrawPrimitives() {
    DrawRectWithBorderAndShadow(pWin, 2, 1, 10, 5, ATTR_BORDER, ATTR_FIELD_FILL, ATTR_TRACK, 0);
    DrawRectWithBorder(pWin, 14, 1, 6, 4, ATTR_CAPTION, ATTR_GAUGE_BAR);
    DrawBorder(pWin, 22, 1, 4, 2, ATTR_MARK);
    DrawRect(pWin, 30, 9, 40, 40, ATTR_TRACK);
    DrawRect(pWin, 2, 8, 5, 0, ATTR_TRACK);
    DrawBorder(pWin, -1, 7, 4, 1, ATTR_NORMAL);
    _DrawTitle(0, 2, L"A title that is longer than the window is wide");
    _PrintAttributSansFormatW(pWin, 6, 2, ATTR_NORMAL, L"wide");
    _PrintAttributSansFormatA(pWin, 7, 4, ATTR_SELECTED, "narrow \xC3\xA9\xFF");
    _PrintA(pWin, 8, 4, "%d of %s", 7, "nine");
    _PrintW(pWin, 9, 2, L"%ls=%03d", L"port", 49);
    _PrintW(pWin, 10, 4, L"%ls%2000ls", L"a text that is longer than its window", L"");
    _PrintA(pWin, 50, 2, "%s", "outside");
    __Note(std::to_string(SmartPrint(5, 18, L"sixteen columns. are\tkept\nfor this", ATTR_NORMAL, -1)));
    __Note(std::to_string(SmartPrint(5, 2, nullptr, ATTR_NORMAL, 9)));
    CLibel clLow(this, L"", 28, 1, 5, 1, 0, A_NORMAL);
    __Note(std::to_string(clLow.SmartPrint(0, 0, L"more than one row", ATTR_NORMAL, 5)));
}

// An entry's text with "|" in front of the cursor; a box's mark; the number of what is selected.
std::string CScene::__csState(const CWidget* pclControl) {
    if (const auto* const pclEntry = dynamic_cast<const CEntry*>(pclControl)) {
        CTString cs = pclEntry->pszGetText();
        cs.Insert(static_cast<std::size_t>(pclEntry->nGetCursor()), L"|");
        return " " + csUtf8(cs.pszGet());
    }
    if (const auto* const pclBox = dynamic_cast<const CCheckBox*>(pclControl)) {
        return pclBox->bIsChecked() ? " x" : " o";
    }
    if (const auto* const pclList = dynamic_cast<const CList*>(pclControl)) {
        return " " + std::to_string(pclList->nGetSelectedLine());
    }
    const auto* const pclRadio = dynamic_cast<const CRadioList*>(pclControl);
    return pclRadio == nullptr ? "" : " " + std::to_string(pclRadio->nGetSelectedItem());
}

std::string csScene(const std::vector<std::string>& rtabArgument) {
    int nWidth = 0;
    int nHeight = 0;
    std::sscanf(rtabArgument[1].c_str(), "%dx%d", &nWidth, &nHeight);
    CScene clScene(1, 0, nWidth, nHeight);
    std::for_each(rtabArgument.begin() + 2, rtabArgument.end(),
                  [&clScene](const std::string& rcs) { clScene.AddWanted(rcs); });
    clScene.Run();
    const std::string cs = clScene.csReport();
    return cs.substr(std::min<std::size_t>(1, cs.size()));
}

template <class TDialog, class... TArg>
TDialog clMake(int nHeight, TArg&&... arg) {
    return clMakeCentred<TDialog>(TDialog::PREFERRED_WIDTH, nHeight, std::forward<TArg>(arg)...);
}

// Runs a dialog; its result, followed by its answers.
template <class TDialog, class TAnswers>
std::string csRun(TDialog&& rclDialog, TAnswers Answers) {
    rclDialog.Draw();
    rclDialog.MainLoop();
    return std::to_string(rclDialog.nGetResult()) + " " + Answers(rclDialog);
}

// The progress window moves its gauge with each key.
std::string csProgress(int nMaximum) {
    auto clDialog = clMake<CInstallProgressWin>(CInstallProgressWin::PREFERRED_HEIGHT);
    clDialog.InitJauge(nMaximum);
    clDialog.Draw();
    for (int nKey = 0; bReadKey(&nKey);) {
        clDialog.IncJauge();
        ::wrefresh(clDialog.pGetWindow());
    }
    return {};
}

std::string csDialog(const std::string& rcsName, int nNumber, CServiceList& rclServices) {
    if (rcsName == "action") {
        return csRun(clMake<CUpgradeOrInstallWin>(CUpgradeOrInstallWin::PREFERRED_HEIGHT, nNumber),
                     [](auto& rcl) { return std::to_string(rcl.nGetSelectedItem()); });
    }
    if (rcsName == "choose") {
        return csRun(
            clMake<CChooseServer>(CChooseServer::nPreferredHeight(rclServices), rclServices, nNumber),
            [](auto& rcl) {
                const CService* const pclService = rcl.pclGetServerService();
                return pclService == nullptr ? "none" : csUtf8(pclService->pszGetName());
            });
    }
    if (rcsName == "config") {
        return csRun(clMake<CConfigWin>(CConfigWin::PREFERRED_HEIGHT, rclServices), [](auto& rcl) {
            return csUtf8(rcl.pszGetServerName()) + "|" + csUtf8(rcl.pszGetPort()) + "|" +
                   csUtf8(rcl.pszGetDaemonUser());
        });
    }
    if (rcsName == "account") {
        return csRun(clMake<CConfigAccountWin>(CConfigAccountWin::PREFERRED_HEIGHT), [](auto& rcl) {
            return csUtf8(rcl.pszGetAccount()) + "|" + csUtf8(rcl.pszGetPassword());
        });
    }
    if (rcsName == "telemetry") {
        return csRun(
            clMake<CTelemetryWin>(CTelemetryWin::PREFERRED_HEIGHT, static_cast<ETelemetryState>(nNumber)),
            [](auto& rcl) { return std::to_string(static_cast<int>(rcl.eGetState())); });
    }
    return csProgress(nNumber);
}

int nMain(const std::vector<std::string>& rtabArgument) {
    struct sigaction stInterrupt {};  // without SA_RESTART: reads fail
    stInterrupt.sa_handler = [](int) {};
    ::sigaction(SIGUSR1, &stInterrupt, nullptr);
    SetLocaleUTF8();
    SetLangueFramework();
    CServiceManager::ms_eDistri = eSystemd;  // What is not told about a service is not looked for either.
    const bool bScene = rtabArgument[1].find_first_of("0123456789") == 0;
    CServiceList clServices;
    for (std::size_t n = 3; !bScene && n + 2 < rtabArgument.size(); n += 3) {
        const CTString csDisplayName = csFromUTF8(rtabArgument[n + 1]);
        clServices.Add(
            CXPtr_deleteRCV<CService>(new CService(nullptr, csFromUTF8(rtabArgument[n]).pszGet(),
                                                   csDisplayName == L"-" ? nullptr : csDisplayName.pszGet(),
                                                   csFromUTF8(rtabArgument[n + 2]).pszGet())));
    }
    const auto csEnvironment = [] {
        std::string cs;
        for (char** ppsz = environ; *ppsz != nullptr; ++ppsz) {
            cs += *ppsz + std::string("\n");
        }
        return cs;
    };
    const std::string csBefore = csEnvironment();
    if (!init_dialog() || csEnvironment() != csBefore) {
        return 3;  // a program run later must get the caller's
    }
    const std::string csReport =
        bScene ? csScene(rtabArgument) : csDialog(rtabArgument[1], std::stoi(rtabArgument[2]), clServices);
    end_dialog();
    std::printf("%s\n", csReport.c_str());
    return 0;
}

}  // namespace
}  // namespace kalmo

int main(int nArgc, char** ppszArgv) {
    return nArgc >= 3 ? kalmo::nMain({ppszArgv, ppszArgv + nArgc}) : 2;
}
