// Shows a dialog until F1 is pressed or the input ends, then prints the states of its controls and its
// events.
//
//   tui_scene SCENE                  one of the scenes below
//   tui_scene controls [CONTROL...]  controls side by side: KIND or KIND=TEXT, "-" in front of a disabled one
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "framework/conversion.h"
#include "framework/process_info.h"
#include "tui/toolkit/attribute.h"
#include "tui/toolkit/button.h"
#include "tui/toolkit/check_box.h"
#include "tui/toolkit/directory.h"
#include "tui/toolkit/drawing.h"
#include "tui/toolkit/entry.h"
#include "tui/toolkit/jauge.h"
#include "tui/toolkit/key.h"
#include "tui/toolkit/libel.h"
#include "tui/toolkit/radio_list.h"
#include "tui/toolkit/screen.h"
#include "tui/toolkit/window.h"

namespace kalmo {
namespace {

// Deaths on demand, by keys that no control takes.
void Die(int nKey) {
    switch (nKey) {
        case 'A' - '@':  // in the middle of something red in reverse
            std::fputs("\x1B[7;31m", stdout);
            std::fflush(stdout);
            std::abort();
        case 'B' - '@': std::raise(SIGSEGV); break;
        case 'E' - '@': std::exit(5);
        case 'F' - '@':  // only a child dies
            if (const pid_t nChild = ::fork(); nChild == 0) {
                std::raise(SIGTERM);
            } else {
                ::waitpid(nChild, nullptr, 0);
            }
            break;
        default: break;
    }
}

// A dialog whose controls are made by the scenes. It notes each of their events as " control:event", the
// controls numbered in Tab order.
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

    bool bOnEvent(CWidget* pclSender, eEVENT eEvent) override {
        const auto it = std::find_if(m_tabControl.begin(), m_tabControl.end(),
                                     [pclSender](const auto& rpcl) { return rpcl.get() == pclSender; });
        m_csEvents.append(" ").append(std::to_string(it - m_tabControl.begin()));
        m_csEvents.append(":").append(std::to_string(eEvent));
        return true;
    }
    int OnKeyEvent(int nKey) override {
        const auto List = [this](std::size_t n) -> CList& { return dynamic_cast<CList&>(*m_tabControl[n]); };
        switch (nKey) {
            case KEY_F(1): bRunning = 0; return 1;
            case KEY_F(2): __RunAbove(); break;
            case KEY_F(3): List(0).Select(List(0).nGetSelectedLine() == 11 ? 2 : 11); break;
            case KEY_F(4):
                List(0).ClearList();
                List(0).AddLine(L"another long line");
                List(1).AddLine(L"sixth");
                break;
            case KEY_F(5): m_tabControl[5]->SetEnable(0); return 1;  // Shows without a Draw.
            default: Die(nKey); return CWindow::OnKeyEvent(nKey);
        }
        Draw();
        return 1;
    }

    std::vector<std::unique_ptr<CWidget>> m_tabControl;
    std::string m_csEvents;
    std::vector<std::string> m_tabWanted;  ///< The controls that arguments of the program ask for.
    bool m_bPrimitives = false;

  protected:
    // Shows, where asked for, the drawing primitives, also where they leave the window, and the ways to
    // print.
    void _DrawWindow() override {
        CWindow::_DrawWindow();
        if (!m_bPrimitives) {
            return;
        }
        DrawRectWithBorderAndShadow(pWin, 2, 1, 10, 5, ATTR_BORDER, ATTR_FIELD_FILL, ATTR_TRACK, 0);
        DrawRectWithBorder(pWin, 14, 1, 6, 4, ATTR_CAPTION, ATTR_GAUGE_BAR);
        DrawBorder(pWin, 22, 1, 4, 2, ATTR_MARK);
        DrawRect(pWin, 30, 9, 40, 40, ATTR_TRACK);
        DrawRect(pWin, 2, 8, 5, 0, ATTR_TRACK);
        DrawBorder(pWin, -1, 7, 4, 1, ATTR_NORMAL);
        _DrawTitle(0, 2, L"A title that is longer than the window is wide");
        _PrintAttributSansFormatW(pWin, 6, 2, ATTR_NORMAL, L"wide");
        _PrintAttributSansFormatA(pWin, 7, 4, ATTR_SELECTED, "narrow \xC3\xA9\xFF");
        _PrintW(pWin, 8, 4, L"%d of %ls", 7, L"nine");
        _PrintA(pWin, 9, 2, "%s=%03d", "port", 49);
        _PrintA(pWin, 10, 4, "%s%2000s", "a text that is longer than its window", "");
        _PrintA(pWin, 50, 2, "%s", "outside");
        const int nKept = SmartPrint(5, 18, L"sixteen columns. are kept\nfor this", ATTR_NORMAL, -1);
        CLibel clLow(this, L"", 28, 1, 5, 1, 0, A_NORMAL);
        const int nLow = clLow.SmartPrint(0, 0, L"more than one row", ATTR_NORMAL, 5);
        m_csEvents.append(" ").append(std::to_string(nKept));
        m_csEvents.append(" ").append(std::to_string(SmartPrint(5, 2, nullptr, ATTR_NORMAL, 9)));
        m_csEvents.append(" ").append(std::to_string(nLow));
    }

  private:
    static void __RunAbove() {
        CScene clAbove(24, 4, 20, 8);
        clAbove.pclAdd<CEntry>(L"Above", 4, 2, 10, 3, L"", CWidget::eBORDER_FRAME);
        clAbove.pclAdd<CCheckBox>(L"b", 4, 5, 8, 1, 0);
        clAbove.Draw();
        clAbove.MainLoop();
    }
};

void Fields(CScene& rclScene) {
    rclScene.pclAdd<CButton>(L"OK", 2, 1, 10, 4);
    rclScene.pclAdd<CButton>(L"Disabled", 13, 1, 12, 4)->SetEnable(0);
    rclScene.pclAdd<CButton>(L"Made to fit", 34, 1, 4);
    rclScene.pclAdd<CButton>(L"Much too long", 45, 1, 9, 5);
    rclScene.pclAdd<CEntry>(L"name", 2, 5, 14, 4, L"Server", CWidget::eBORDER_FRAME);
    rclScene.pclAdd<CEntry>(L"text", 18, 5, 14, 5, L"Much longer label", CWidget::eBORDER_SHADOW);
    rclScene.pclAdd<CEntry>(L"bare", 34, 6, 10, 4, L"unseen", CWidget::eBORDER_NONE)->SetMaxLength(12);
    rclScene.pclAdd<CEntry>(L"greyed", 46, 6, 8, 3, L"", CWidget::eBORDER_FRAME)->SetEnable(0);
    rclScene.pclAdd<CCheckBox>(L"keep it running today and on", 2, 10, 18, 2, 0);
    rclScene.pclAdd<CCheckBox>(L"wide", 2, 13, 10, 1, 1);
    rclScene.pclAdd<CLibel>(L"A framed text that is longer than its frame", 20, 10, 16, 4, 1, ATTR_BORDER);
    rclScene.pclAdd<CLibel>(L"plain text\ncut", 38, 10, 6, 2, 0, ATTR_SELECTED);
    rclScene.pclAdd<CJauge>(38, 12, 18, 3, 0.0, 40.0, L"Progress")->SetValue(15);
    rclScene.pclAdd<CJauge>(46, 9, 8, 3, 0.0, 1.0, L"A long caption")->SetValue(3);
    rclScene.pclAdd<CJauge>(1, 1, 30, 10, 0.0, 1.0, L"")->SetVisible(0);
}

void Lists(CScene& rclScene) {
    CList* const pclLong = rclScene.pclAdd<CList>(1, 1, 14, 7, 0);
    for (const wchar_t* const psz : {L"zero", L"one", L"two words of text", L"three", L"four", L"five",
                                     L"six", L"seven", L"eight", L"nine", L"ten", L"eleven"}) {
        pclLong->AddLine(psz);
    }
    CList* const pclShort = rclScene.pclAdd<CList>(16, 1, 10, 8, 1);
    for (const wchar_t* const psz : {L"eight wide", L"B", L"d", L"a", L"C"}) {
        pclShort->AddLine(psz);
    }
    pclShort->SortLine(::wcscasecmp);
    pclShort->Select(2);
    rclScene.pclAdd<CScrollableLibel>(L"fits", 16, 9, 10, 3);
    rclScene.pclAdd<CScrollableLibel>(L"one line\r\neleven wide\nlonger than that\n\n\ttab\nlast", 1, 8, 14,
                                      5);
    CRadioList* const pclRadio = rclScene.pclAdd<CRadioList>(27, 1, 18, 10, L"Choose an item", 1, 1);
    for (const wchar_t* const psz : {L"upgrade", L"install", L"uninstall everything"}) {
        pclRadio->AddOption(psz);
    }
}

void Primitives(CScene& rclScene) {
    rclScene.m_bPrimitives = true;
}

// A control that an argument of the program asks for: KIND or KIND=TEXT. Each character is a line of a list.
struct STWanted {
    CScene& rclScene;
    int nX;
    std::wstring csText;
};

template <class TEntry, int... ARG>
void AddEntry(const STWanted& rst) {
    rst.rclScene.pclAdd<TEntry>(rst.csText.c_str(), rst.nX, 1, 10, 3, L"", CWidget::eBORDER_FRAME, ARG...);
}

void AddText(const STWanted& rst) {
    std::wstring csLines;
    for (const wchar_t c : rst.csText) {
        csLines += {c, L'\n'};
    }
    rst.rclScene.pclAdd<CScrollableLibel>(csLines.c_str(), rst.nX, 1, 8, 5);
}

void AddList(const STWanted& rst) {
    CList* const pcl = rst.rclScene.pclAdd<CList>(rst.nX, 1, 8, 4, 0);
    for (const wchar_t c : rst.csText) {
        pcl->AddLine(std::wstring(1, c).c_str());
    }
}

void AddRadio(const STWanted& rst) {
    CRadioList* const pcl = rst.rclScene.pclAdd<CRadioList>(rst.nX, 1, 8, 8, L"r", 0, 0);
    for (const wchar_t c : rst.csText) {
        pcl->AddOption(std::wstring(1, c).c_str());
    }
}

constexpr struct {
    std::string_view svKind;
    void (*pfnAdd)(const STWanted& rst);
} TAB_KIND[] = {
    {"button", [](const STWanted& rst) { rst.rclScene.pclAdd<CButton>(L"b", rst.nX, 1, 8, 4); }},
    {"box", [](const STWanted& rst) { rst.rclScene.pclAdd<CCheckBox>(L"b", rst.nX, 1, 8, 1, 0); }},
    {"label", [](const STWanted& rst) { rst.rclScene.pclAdd<CLibel>(L"l", rst.nX, 1, 8, 1, 0, A_NORMAL); }},
    {"gauge", [](const STWanted& rst) { rst.rclScene.pclAdd<CJauge>(rst.nX, 1, 8, 3, 0.0, 1.0, L""); }},
    {"entry", AddEntry<CEntry>},
    {"number", AddEntry<CNumEntry>},
    {"lower", AddEntry<CEntryLower>},
    {"path", AddEntry<CDirEntry, 1>},
    {"unguarded", AddEntry<CDirEntry, 0>},
    {"text", AddText},
    {"list", AddList},
    {"radio", AddRadio},
};

void Controls(CScene& rclScene) {
    for (int nX = 1; std::string_view svWanted : rclScene.m_tabWanted) {
        const bool bOff = svWanted.starts_with('-');
        svWanted.remove_prefix(bOff ? 1 : 0);
        const std::string_view svKind = svWanted.substr(0, svWanted.find('='));
        const CTString csText = csFromUTF8(svWanted.substr(std::min(svKind.size() + 1, svWanted.size())));
        for (const auto& rst : TAB_KIND) {
            if (rst.svKind == svKind) {
                rst.pfnAdd({rclScene, nX, std::wstring(csText.svGet())});
            }
        }
        rclScene.m_tabControl.back()->SetEnable(bOff ? 0 : 1);
        nX += 10;
    }
}

// An entry's text with "|" in front of the cursor; a box's mark; the number of what is selected.
std::string csState(const CWidget* pclControl) {
    if (const auto* const pclEntry = dynamic_cast<const CEntry*>(pclControl)) {
        CTString cs = pclEntry->pszGetText();
        cs.Insert(static_cast<std::size_t>(pclEntry->nGetCursor()), L"|");
        return std::string(" ") + csToUTF8(cs).pszGet();
    }
    if (const auto* const pclBox = dynamic_cast<const CCheckBox*>(pclControl)) {
        return pclBox->bIsChecked() ? " x" : " o";
    }
    if (const auto* const pclList = dynamic_cast<const CList*>(pclControl)) {
        return std::string(" ") + std::to_string(pclList->nGetSelectedLine());
    }
    const auto* const pclRadio = dynamic_cast<const CRadioList*>(pclControl);
    return pclRadio == nullptr ? "" : std::string(" ") + std::to_string(pclRadio->nGetSelectedItem());
}

constexpr struct {
    std::string_view svName;
    void (*pfnFill)(CScene& rclScene);
    int nWidth = 36;
    int nHeight = 12;
} TAB_SCENE[] = {
    {"fields", Fields, 58, 16},
    {"lists", Lists, 48, 14},
    {"controls", Controls},
    {"primitives", Primitives},
};

int nMain(const std::vector<std::string>& tabArgument) {
    struct sigaction stInterrupt {};  // without SA_RESTART: reads fail
    stInterrupt.sa_handler = [](int) {};
    ::sigaction(SIGUSR1, &stInterrupt, nullptr);
    SetLocaleUTF8();
    const auto* const pstScene = std::find_if(std::begin(TAB_SCENE), std::end(TAB_SCENE),
                                              [&](const auto& rst) { return rst.svName == tabArgument[1]; });
    if (pstScene == std::end(TAB_SCENE) || !init_dialog()) {
        return 3;
    }
    std::string csReport;
    {
        CScene clScene(1, 0, pstScene->nWidth, pstScene->nHeight);
        clScene.m_tabWanted.assign(tabArgument.begin() + 2, tabArgument.end());
        pstScene->pfnFill(clScene);
        clScene.Draw();
        clScene.MainLoop();
        for (const auto& rpcl : clScene.m_tabControl) {
            csReport += csState(rpcl.get());
        }
        csReport += clScene.m_csEvents;
    }
    end_dialog();
    std::printf("%s\n", csReport.c_str() + (csReport.empty() ? 0 : 1));
    return 0;
}

}  // namespace
}  // namespace kalmo

int main(int nArgc, char** ppszArgv) {
    return nArgc >= 2 ? kalmo::nMain({ppszArgv, ppszArgv + nArgc}) : 2;
}
