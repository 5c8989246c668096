#ifndef KALMO_TUI_TOOLKIT_MSG_BOX_H
#define KALMO_TUI_TOOLKIT_MSG_BOX_H

#include <optional>

#include "framework/xy_string.h"
#include "tui/toolkit/button.h"
#include "tui/toolkit/libel.h"
#include "tui/toolkit/window.h"

namespace kalmo {

/// A modal box with a title, a text and one or two buttons. The caller makes it, calls Show and destroys it.
///
/// The text is cut into lines of the box's width less 6 columns, words or not; Tab reaches it only when it
/// has to be scrolled. A box of less than 11 rows, whose buttons would leave no row for the text, shows the
/// text in its own frame, the title above and the buttons below it on the frame: three lines in 6 rows.
class CMsgBox : public CWindow {
  public:
    enum class eTYPE {
        OneButton = 0,   ///< "OK"
        TwoButtons = 1,  ///< "Yes" and "No"
    };

    /// What Show returns.
    static constexpr int RESULT_OK = 0;      ///< OneButton: always.
    static constexpr int RESULT_FIRST = 1;   ///< TwoButtons: the first button.
    static constexpr int RESULT_SECOND = 2;  ///< TwoButtons: the second one, or the terminal has gone away.

    /// Position and size in cells of the screen.
    CMsgBox(int nX, int nY, int nWidth, int nHeight, const wchar_t* pszTitle, const wchar_t* pszText,
            eTYPE eType);

    /// Shows a box in the middle of the screen, of the preferred size or what a smaller screen has room for,
    /// the lines of its text broken at words. The result is that of Show.
    static int nShowCentred(int nPreferredWidth, int nPreferredHeight, const CTString& rcsTitle,
                            const CTString& rcsText, eTYPE eType);

    /// Shows the box until a button is pressed. Where no screen is open, writes title and text to standard
    /// error and returns at once.
    int Show();

    bool bOnEvent(CWidget* pclSender, eEVENT eEvent) override;

  protected:
    void _DrawWindow() override;

  private:
    /// The text; its frame lies on the row of the box's title and carries it, in a low box the buttons too.
    class CText : public CScrollableLibel {
      public:
        CText(CMsgBox* pclBox, const wchar_t* pszText, eTYPE eType);
        void Draw() override;

      private:
        CMsgBox* m_pclBox;
    };

    void __AddButton(std::optional<CButton>* pclButton, unsigned unCaption, int nRank);
    void __DrawTitle();
    void __DrawOnFrame();
    void __End(int nResult);

    CText m_clText;
    std::optional<CButton> m_clFirst;
    std::optional<CButton> m_clSecond;
    CTString m_csTitle;
    int m_nResult;
    eTYPE m_eType;
    CTString m_csText;  ///< For standard error, where no screen is open.
};

}  // namespace kalmo

#endif
