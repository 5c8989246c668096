#include <gtest/gtest.h>

#include <string>

#include "framework/conversion.h"
#include "framework/language.h"
#include "tui/dialogs/text_number.h"
#include "tui/toolkit/dialog_text.h"
#include "tui/toolkit/text_columns.h"
#include "tui/toolkit/word_wrap.h"

namespace kalmo {
namespace {

class TextRoom : public testing::TestWithParam<int> {
  protected:
    TextRoom() { CInformationModule::ms_nLangueFramework = GetParam(); }
    ~TextRoom() override { CInformationModule::ms_nLangueFramework = LANGUE_ANGLAIS; }
};

INSTANTIATE_TEST_SUITE_P(Language, TextRoom,
                         testing::Values(LANGUE_ANGLAIS, LANGUE_FRANCAIS, LANGUE_ESPAGNOL));

// With inserts as long as an operator meets them, a message box has nothing to scroll and cuts no line but
// that of a long path.
TEST_P(TextRoom, MessageBoxesShowTheirTextsWhole) {
    const std::wstring csAccount(32, L'w');  // The longest that a system account can be.
    const std::wstring csAdministrator(28, L'w');
    const std::wstring csServer = L"Zentrale Auftragsabwicklung";
    const std::wstring csPath = L"/usr/local/" + std::wstring(200, L'p');
    const std::wstring csReason = L"No space left on device\r\n\r\n";
    struct STBox {
        CTString csText;
        int nWidth = 60, nHeight = 20;
    };
    std::vector<STBox> tabBox = {
        {csFormatText(TEXTE_COMPTE_INCONNU, csAccount), 60, 13},
        {csFormatText(TEXTE_CONFLIT_NOM, csServer)},
        {csFormatText(TEXTE_CONFLIT_PORT, 65535, csServer)},
        {csLoadText(0x103B) + L"\r\n" + csFormatText(0x10C3, csAdministrator)},
        {csLoadText(0x103B) + L"\r\n" + csFormatText(0x262B, csAdministrator, csAccount)},
        {csFormatText(0x1236, csAccount)},
        {csFormatText(0x10E8, csReason + csPath)},
    };
    for (const unsigned unText : {0x10E7U, 0x123AU, 0x123CU, 0x123BU, 0x1238U, 0x1239U, 4161U}) {
        tabBox.push_back({csReason + csFormatText(unText, csPath)});
    }
    for (const STBox& rst : tabBox) {
        const int nRoom = std::min(rst.nHeight, 24 - 4) - 10;
        EXPECT_LE(tabCutLines(rst.csText, rst.nWidth - 6).size(), static_cast<std::size_t>(nRoom))
            << csToUTF8(rst.csText).pszGet();
        EXPECT_NE(rst.csText, L"");
        for (const std::wstring_view svLine : tabCutLines(rst.csText, 1000)) {
            EXPECT_TRUE(nColumns(svLine) <= rst.nWidth - 6 || svLine.find(csPath) != svLine.npos)
                << csToUTF8(svLine).pszGet();
        }
    }
}

// Three lines of 40 columns, beside which the gauge begins.
TEST_P(TextRoom, TheLongestStepOfAnUninstallHasThreeLines) {
    const CTString csText = csLoadText(0x10E5) + csLoadText(0x10EE);
    EXPECT_LE(tabWrapWords(csText, 40).size(), 3U);
}

}  // namespace
}  // namespace kalmo
