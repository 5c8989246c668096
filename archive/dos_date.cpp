#include "archive/dos_date.h"

#include <array>
#include <cwchar>

namespace kalmo {

CDiskFile::STFileTime stFromDosDate(std::uint32_t dwDosDate) noexcept {
    const std::uint32_t dwTime = dwDosDate & 0xFFFF;
    const std::uint32_t dwDate = dwDosDate >> 16;
    CDiskFile::STFileTime st;
    st.nSeconde = static_cast<int>((dwTime & 31) * 2);
    st.nMinute = static_cast<int>(dwTime >> 5 & 63);
    st.nHeure = static_cast<int>(dwTime >> 11 & 31);
    st.nJour = static_cast<int>(dwDate & 31);
    st.nMois = static_cast<int>(dwDate >> 5 & 15);
    st.nAnnee = static_cast<int>((dwDate >> 9) + 1980);
    return st;
}

CTString csFileTimeText(const CDiskFile::STFileTime& rstTime) {
    std::array<wchar_t, 80> szText{};  // six numbers of any int, and the end
    const int nLength =
        std::swprintf(szText.data(), szText.size(), L"%04i%02i%02i%02i%02i%02i", rstTime.nAnnee,
                      rstTime.nMois, rstTime.nJour, rstTime.nHeure, rstTime.nMinute, rstTime.nSeconde);
    return nLength > 0 ? CTString(szText.data()) : CTString();
}

}  // namespace kalmo
