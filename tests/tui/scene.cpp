// Shows one dialog of the toolkit, named by the first argument, until F1 is pressed or the input ends; then
// prints what its controls reported. Exit status 3 where there is no usable terminal.
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "framework/process_info.h"
#include "tests/tui/recorder.h"
#include "tui/attribute.h"
#include "tui/button.h"
#include "tui/check_box.h"
#include "tui/drawing.h"
#include "tui/entry.h"
#include "tui/jauge.h"
#include "tui/key.h"
#include "tui/libel.h"
#include "tui/radio_list.h"
#include "tui/screen.h"
#include "tui/scrollable_libel.h"

namespace kalmo {
namespace {

// A dialog whose controls are made by the scenes.
class CScene : public CRecorder {
  public:
    using CRecorder::CRecorder;

    int OnKeyEvent(int nKey) override {
        if (nKey == KEY_F(1)) {
            bRunning = 0;
            return 1;
        }
        return m_OnKey && m_OnKey(nKey) ? 1 : CWindow::OnKeyEvent(nKey);
    }

    std::function<bool(int nKey)> m_OnKey;  ///< Sees each key first; true when it was for it.
};

void Run(CScene& rclScene) {
    rclScene.Draw();
    rclScene.MainLoop();
}

void Fields(CScene& rclScene) {
    rclScene.pclAdd<CButton>(L"OK", 2, 1, 10, 4);
    rclScene.pclAdd<CButton>(L"Disabled", 13, 1, 12, 4)->SetEnable(0);
    rclScene.pclAdd<CButton>(L"Made to fit", 34, 1, 4);
    rclScene.pclAdd<CButton>(L"Much too long", 45, 1, 9, 5);
    rclScene.pclAdd<CEntry>(L"name", 2, 6, 14, 3, L"Server", CWidget::eBORDER_FRAME);
    rclScene.pclAdd<CEntry>(L"text", 18, 6, 14, 4, L"Much longer label", CWidget::eBORDER_SHADOW);
    rclScene.pclAdd<CEntry>(L"bare", 34, 7, 10, 1, L"unseen", CWidget::eBORDER_NONE)->SetMaxLength(12);
    rclScene.pclAdd<CEntry>(L"grey", 46, 6, 8, 3, L"", CWidget::eBORDER_FRAME)->SetEnable(0);
    rclScene.pclAdd<CCheckBox>(L"keep the settings today", 2, 10, 18, 2, 0);
    rclScene.pclAdd<CCheckBox>(L"wide", 2, 13, 10, 1, 1);
    rclScene.pclAdd<CLibel>(L"A framed text that is longer than its frame", 20, 10, 16, 4, 1, ATTR_BORDER);
    rclScene.pclAdd<CLibel>(L"plain text", 38, 10, 6, 2, 0, ATTR_SELECTED);
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
    for (const wchar_t* const psz : {L"e", L"B", L"d", L"a", L"C"}) {
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
    rclScene.m_OnKey = [&rclScene, pclLong, pclShort](int nKey) {
        switch (nKey) {
            case KEY_F(2): pclLong->Select(11); break;
            case KEY_F(3): pclLong->Select(2); break;
            case KEY_F(4):
                pclLong->ClearList();
                pclLong->AddLine(L"another long line");
                pclShort->AddLine(L"sixth");
                break;
            default: return false;
        }
        rclScene.Draw();
        return true;
    };
}

// Texts that a careless toolkit would let break the screen.
void Strange(CScene& rclScene) {
    CList* const pclList = rclScene.pclAdd<CList>(1, 1, 12, 10, 0);
    for (const wchar_t* const psz : {L"bell\x07 esc\x1B[2J", L"raw\xDCFF\xDC80", L"tab\there",
                                     L"日本語日本語", L"e\x0301te\x0301", L"\x0301start",
                                     L"\x202E"
                                     L"dlrow",
                                     L"\x9B"
                                     L"31m"}) {
        pclList->AddLine(psz);
    }
    rclScene.pclAdd<CEntry>(L"日本語", 14, 1, 7, 3, L"日本語日本語", CWidget::eBORDER_FRAME);
    rclScene.pclAdd<CButton>(L"日本語", 22, 1, 8, 4);
    rclScene.pclAdd<CLibel>(L"日本語 日本語", 14, 6, 7, 4, 1, ATTR_BORDER);
}

// The drawing primitives, also where they leave the window, and the ways to print.
class CPrimitives : public CScene {
  public:
    using CScene::CScene;

  protected:
    void _DrawWindow() override {
        CScene::_DrawWindow();
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
        _PrintA(pWin, 10, 4, "%s", "a text that is longer than its window");
        _PrintA(pWin, 50, 2, "%s", "outside");
        Note(" " +
             std::to_string(SmartPrint(5, 18, L"sixteen columns. are kept\nfor this", ATTR_NORMAL, -1)) +
             " " + std::to_string(SmartPrint(5, 2, nullptr, ATTR_NORMAL, 9)));
    }
};

// A dialog that opens another one on top of itself.
void Nested(CScene& rclScene) {
    rclScene.pclAdd<CButton>(L"Below", 2, 1, 10, 4);
    rclScene.m_OnKey = [&rclScene](int nKey) {
        if (nKey == KEY_F(2)) {
            CScene clUpper(24, 4, 20, 8);
            clUpper.pclAdd<CButton>(L"Above", 4, 2, 10, 4);
            Run(clUpper);
        }
        if (nKey == KEY_F(2) || nKey == KEY_F(3)) {
            rclScene.Draw();
            return true;
        }
        return false;
    };
}

// Deaths on demand.
void Crash(CScene& rclScene) {
    rclScene.pclAdd<CButton>(L"Alive", 2, 1, 10, 4);
    struct sigaction stInterrupt {};  // without SA_RESTART: reads fail
    stInterrupt.sa_handler = [](int) {};
    ::sigaction(SIGUSR1, &stInterrupt, nullptr);
    rclScene.m_OnKey = [](int nKey) {
        switch (nKey) {
            case 'a': std::abort();
            case 'e': std::exit(5);
            case 's': std::raise(SIGSEGV); break;
            case 'f':  // only a child dies
                if (const pid_t nChild = ::fork(); nChild == 0) {
                    std::raise(SIGTERM);
                } else {
                    ::waitpid(nChild, nullptr, 0);
                }
                break;
            case 'h': {  // reads behind its memory, which a sanitizer notices
                const std::vector<char> tabByte(10);
                volatile std::size_t unIndex = 10;
                std::exit(1 + (tabByte.data()[unIndex] & 1));
            }
            default: break;
        }
        return false;
    };
}

void Nothing(CScene& /*rclScene*/) {}

struct STScene {
    std::string_view svName;
    void (*pfnFill)(CScene& rclScene);
    int nWidth = 36;
    int nHeight = 12;
};
constexpr STScene TAB_SCENE[] = {
    {"fields", Fields, 58, 16}, {"lists", Lists, 48, 14}, {"strange", Strange},
    {"nested", Nested},         {"primitives", Nothing},  {"crash", Crash},
};

int nMain(std::string_view svScene) {
    SetLocaleUTF8();
    if (!init_dialog()) {
        return 3;
    }
    std::string csEvents;
    for (const STScene& rst : TAB_SCENE) {
        if (svScene != rst.svName) {
            continue;
        }
        const std::unique_ptr<CScene> pclScene =
            svScene == "primitives"
                ? std::unique_ptr<CScene>(std::make_unique<CPrimitives>(1, 0, rst.nWidth, rst.nHeight))
                : std::make_unique<CScene>(1, 0, rst.nWidth, rst.nHeight);
        rst.pfnFill(*pclScene);
        Run(*pclScene);
        csEvents = pclScene->csTakeEvents();
    }
    end_dialog();
    std::printf("events:%s\n", csEvents.c_str());
    return 0;
}

}  // namespace
}  // namespace kalmo

int main(int nArgc, char** ppszArgv) {
    return nArgc == 2 ? kalmo::nMain(ppszArgv[1]) : 2;
}
