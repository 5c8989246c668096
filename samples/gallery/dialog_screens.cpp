#include <string>

#include "samples/gallery/screens.h"
#include "tui/dialogs/license_win.h"
#include "tui/toolkit/directory.h"
#include "tui/toolkit/msg_box.h"
#include "tui/toolkit/window.h"

namespace kalmo {
namespace {

constexpr int BOX_WIDTH = 60;
constexpr int BOX_HEIGHT = 13;
constexpr int CHOOSER_WIDTH = 64;
constexpr int CHOOSER_HEIGHT = 24;

int nShowBox(const wchar_t* pszTitle, const CTString& rcsText, CMsgBox::eTYPE eType) {
    return CMsgBox::nShowCentred(BOX_WIDTH, BOX_HEIGHT, CTString(pszTitle), rcsText, eType);
}

const wchar_t* pszExampleLicense() {
    return L"SAMPLE LICENCE\n\n"
           L"1. This licence shows how a long text is read: line by line or page by page, and how it can be "
           L"accepted only when its last line was on the screen.\n\n"
           L"2. You may look at it.\n\n"
           L"3. You may scroll it down.\n\n"
           L"4. You may scroll it up again.\n\n"
           L"5. You may refuse it at any time.\n\n"
           L"6. You have reached its end.";
}

}  // namespace

CTString csShowMessage(const CTString& rcsArgument) {
    const CTString csExample = L"The server was installed.\nIt runs, and listens on port 4900.";
    return L"result " +
           std::to_wstring(nShowBox(L"Installation", rcsArgument.bEmpty() ? csExample : rcsArgument,
                                    CMsgBox::eTYPE::OneButton));
}

CTString csShowQuestion(const CTString& rcsArgument) {
    const CTString csExample = L"This directory holds a server already.\nUpgrade it?";
    return L"result " +
           std::to_wstring(nShowBox(L"Installation", rcsArgument.bEmpty() ? csExample : rcsArgument,
                                    CMsgBox::eTYPE::TwoButtons));
}

CTString csShowDirectory(const CTString& rcsArgument) {
    auto clDirectory = clMakeCentred<CDirectory>(CHOOSER_WIDTH, CHOOSER_HEIGHT, L"Choose a directory",
                                                 rcsArgument.bEmpty() ? L"/usr/" : rcsArgument.pszGet());
    clDirectory.Draw();
    clDirectory.MainLoop();
    return L"result " + std::to_wstring(clDirectory.nGetResult()) + L", " + clDirectory.pszGetDir();
}

CTString csShowLicense(const CTString& rcsArgument) {
    auto clLicense =
        clMakeCentred<CLicenseWin>(CLicenseWin::PREFERRED_WIDTH, CLicenseWin::PREFERRED_HEIGHT,
                                   rcsArgument.bEmpty() ? pszExampleLicense() : rcsArgument.pszGet());
    clLicense.Draw();
    clLicense.MainLoop();
    return clLicense.bAccepted() ? L"accepted" : L"refused";
}

}  // namespace kalmo
