#include "tui/toolkit/msg_box.h"

#include "framework/console_message.h"
#include "framework/text.h"
#include "tui/toolkit/attribute.h"
#include "tui/toolkit/drawing.h"
#include "tui/toolkit/screen.h"
#include "tui/toolkit/text_columns.h"

namespace kalmo {
namespace {

constexpr int BUTTON_WIDTH = 12;
constexpr int TITLE_COLUMN = 2;
constexpr int MIN_HEIGHT = 11;  // For a line of the text between title and buttons.

// Whether a box of that height has text, title and buttons on its own frame.
bool bLow(int nHeight) {
    return nHeight < MIN_HEIGHT;
}

int nTitleRow(int nHeight) {
    return bLow(nHeight) ? 0 : 1;
}

STButtonRow stButtons(int nWidth, int nHeight, CMsgBox::eTYPE eType) {
    return {nWidth, nHeight, eType == CMsgBox::eTYPE::TwoButtons ? 2 : 1, BUTTON_WIDTH};
}

}  // namespace

CMsgBox::CText::CText(CMsgBox* pclBox, const wchar_t* pszText, eTYPE eType)
    : CScrollableLibel(pclBox, pszText, nTitleRow(pclBox->height), nTitleRow(pclBox->height),
                       pclBox->width - (bLow(pclBox->height) ? 1 : 3),
                       pclBox->height - (bLow(pclBox->height) ? 1 : 8)),
      m_pclBox(pclBox) {
    if (bLow(pclBox->height)) {  // The first button lies on the same frame.
        m_nSignColumns = stButtons(pclBox->width, pclBox->height, eType).nColumn(0) - 3;
    }
}

void CMsgBox::CText::Draw() {
    CScrollableLibel::Draw();
    m_pclBox->__DrawOnFrame();
}

CMsgBox::CMsgBox(int nX, int nY, int nWidth, int nHeight, const wchar_t* pszTitle, const wchar_t* pszText,
                 eTYPE eType)
    : CWindow(nX, nY, nWidth, nHeight),
      m_clText(this, pszText, eType),
      m_csTitle(pszTitle),
      m_nResult(eType == eTYPE::TwoButtons ? RESULT_SECOND : RESULT_OK),
      m_eType(eType),
      m_csText(pszText) {
    if (eType == eTYPE::TwoButtons) {
        __AddButton(&m_clFirst, TEXTE_OUI, 0);
        __AddButton(&m_clSecond, TEXTE_NON, 1);
    } else if (eType == eTYPE::OneButton) {
        __AddButton(&m_clFirst, TEXTE_OK, 0);
    }
    AddChild(&m_clText);
}

void CMsgBox::__AddButton(std::optional<CButton>* pclButton, unsigned unCaption, int nRank) {
    const STButtonRow stRow = stButtons(width, height, m_eType);
    pclButton->emplace(this, csLoadText(unCaption).pszGet(), stRow.nColumn(nRank),
                       bLow(height) ? height - 2 : stRow.nRow(), BUTTON_WIDTH,
                       bLow(height) ? 1 : STButtonRow::HEIGHT);
    AddChild(&**pclButton);
}

int CMsgBox::nShowCentred(int nPreferredWidth, int nPreferredHeight, const CTString& rcsTitle,
                          const CTString& rcsText, eTYPE eType) {
    const CTString csText =
        bDialogOpen() ? CTString(csBrokenAtWords(rcsText, nDialogSize(nPreferredWidth, COLS) - 6)) : rcsText;
    return clMakeCentred<CMsgBox>(nPreferredWidth, nPreferredHeight, rcsTitle.pszGet(), csText.pszGet(),
                                  eType)
        .Show();
}

int CMsgBox::Show() {
    if (!bDialogOpen()) {
        ConsoleMessage(m_csTitle, m_csText);
        return m_nResult;
    }
    Draw();
    MainLoop();
    return m_nResult;
}

bool CMsgBox::bOnEvent(CWidget* pclSender, eEVENT eEvent) {
    if (eEvent != eEVENT_PRESSED) {
        return false;
    }
    if (m_clFirst && pclSender == &*m_clFirst) {
        __End(m_eType == eTYPE::TwoButtons ? RESULT_FIRST : RESULT_OK);
        return true;
    }
    if (m_clSecond && pclSender == &*m_clSecond) {
        __End(RESULT_SECOND);
        return true;
    }
    return false;
}

void CMsgBox::__End(int nResult) {
    m_nResult = nResult;
    bRunning = 0;
}

void CMsgBox::_DrawWindow() {
    CWindow::_DrawWindow();
    __DrawTitle();
}

// The text's frame, whose corners stay.
void CMsgBox::__DrawTitle() {
    DrawTextLine(pWin, nTitleRow(height), TITLE_COLUMN, ATTR_BORDER, m_csTitle, width - TITLE_COLUMN - 3);
}

// What the text's frame has covered.
void CMsgBox::__DrawOnFrame() {
    const CCursorKept clKept(pWin);
    __DrawTitle();
    for (std::optional<CButton>* const pclButton : {&m_clFirst, &m_clSecond}) {
        if (bLow(height) && pclButton->has_value()) {
            (*pclButton)->Draw();
        }
    }
}

}  // namespace kalmo
