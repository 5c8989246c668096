#include "tui/toolkit/msg_box.h"

#include "framework/console_message.h"
#include "framework/text.h"
#include "tui/toolkit/attribute.h"
#include "tui/toolkit/drawing.h"
#include "tui/toolkit/geometry.h"
#include "tui/toolkit/screen.h"

namespace kalmo {
namespace {

constexpr int BUTTON_WIDTH = 12;
constexpr int BUTTON_HEIGHT = 4;
constexpr int TITLE_ROW = 1;
constexpr int TITLE_COLUMN = 2;

}  // namespace

CMsgBox::CText::CText(CMsgBox* pclBox, const wchar_t* pszText)
    : CScrollableLibel(pclBox, pszText, 1, TITLE_ROW, pclBox->width - 3, pclBox->height - 8),
      m_pclBox(pclBox) {}

void CMsgBox::CText::Draw() {
    CScrollableLibel::Draw();
    m_pclBox->__DrawTitle();
}

CMsgBox::CMsgBox(int nX, int nY, int nWidth, int nHeight, const wchar_t* pszTitle, const wchar_t* pszText,
                 eTYPE eType)
    : CWindow(nX, nY, nWidth, nHeight),
      m_clText(this, pszText),
      m_csTitle(pszTitle),
      m_nResult(eType == eTYPE::TwoButtons ? RESULT_SECOND : RESULT_OK),
      m_eType(eType),
      m_csText(pszText) {
    const int nRow = nHeight - 6;
    if (eType == eTYPE::TwoButtons) {
        const int nGap = nButtonGap(nWidth, BUTTON_WIDTH);
        m_clFirst.emplace(this, csLoadText(TEXTE_OUI).pszGet(), nGap, nRow, BUTTON_WIDTH, BUTTON_HEIGHT);
        m_clSecond.emplace(this, csLoadText(TEXTE_NON).pszGet(), 2 * nGap + BUTTON_WIDTH, nRow, BUTTON_WIDTH,
                           BUTTON_HEIGHT);
        AddChild(&*m_clFirst);
        AddChild(&*m_clSecond);
    } else if (eType == eTYPE::OneButton) {
        m_clFirst.emplace(this, csLoadText(TEXTE_OK).pszGet(), (nWidth - BUTTON_WIDTH) / 2, nRow,
                          BUTTON_WIDTH, BUTTON_HEIGHT);
        AddChild(&*m_clFirst);
    }
    AddChild(&m_clText);
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

// On the frame of the text, whose corners stay.
void CMsgBox::__DrawTitle() {
    DrawTextLine(pWin, TITLE_ROW, TITLE_COLUMN, ATTR_BORDER, m_csTitle, width - TITLE_COLUMN - 3);
}

}  // namespace kalmo
