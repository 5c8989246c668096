#include "samples/server/install_log.h"

#include "framework/conversion.h"

namespace kalmo::sample {

CInstallLog::CInstallLog(const CFSPath& clDirectory) {
    CFSPath clPath = clDirectory;
    if (!clPath.bEmpty() && clPath.bAppend(L"INSTALL", L"LOG")) {
        m_pstFile.reset(std::fopen(clPath.csGetUTF8().pszGet(), "ae"));
    }
}

void CInstallLog::Line(std::wstring_view svText) {
    if (m_pstFile) {
        static_cast<void>(std::fprintf(m_pstFile.get(), "%s\n", csToUTF8(svText).pszGet()));
    }
}

}  // namespace kalmo::sample
