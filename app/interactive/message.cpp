#include "app/interactive/message.h"

#include "framework/text.h"
#include "services/service_command.h"
#include "tui/toolkit/key.h"
#include "tui/toolkit/msg_box.h"
#include "tui/toolkit/screen.h"

namespace kalmo {
namespace {

constexpr int BOX_WIDTH = 60;
constexpr int BOX_HEIGHT = 20;

void ShowBox(const CTString& csTitle, const CTString& csText) {
    if (bDialogOpen()) {
        ForgetKeys();
        CMsgBox::nShowCentred(BOX_WIDTH, BOX_HEIGHT, csTitle, csText, CMsgBox::eTYPE::OneButton);
    }
}

}  // namespace

void ShowErrorBox(const CTString& csText) {
    ShowBox(csLoadText(TEXTE_ATTENTION), csText);
}

void ShowDataError() {
    ShowErrorBox(csLoadText(TEXTE_DONNEES));
}

void ShowResultBox(const CTString& csText) {
    ShowBox({}, csText);
}

void CScreenView::Repaint() {
    RepaintScreen();
}

void CScreenView::Close() {
    if (bDialogOpen()) {
        end_dialog();
        nShellCommand("clear 2>/dev/null");
    }
}

}  // namespace kalmo
