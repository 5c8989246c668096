#ifndef KALMO_APP_CHECK_FINDING_H
#define KALMO_APP_CHECK_FINDING_H

#include <vector>

#include "framework/xy_string.h"

namespace kalmo {

/// How much something that was found means for the run that is ordered.
enum class eSEVERITY : int {
    Note,     ///< Worth knowing.
    Warning,  ///< The run would work, and perhaps not do what was meant.
    Error,    ///< It stands in the run's way.
};

/// Something that was found about orders, machine or payload.
struct STFinding {
    eSEVERITY eSeverity = eSEVERITY::Note;
    const char* pszCode = "";  ///< For programs; stable, in words with hyphens, as docs/schema.json lists.
    const wchar_t* pszKey = nullptr;  ///< The parameter file's key that it is about; null: none.
    CTString csText;  ///< For people, in their language; one sentence or two, without line ends.
};

/// All that was found, in the order of finding.
///
/// Owned by the check of a parameter file, lent to each of its parts, which add what they find and look at
/// nothing that another part found.
class CFindings {
  public:
    void Add(eSEVERITY eSeverity, const char* pszCode, const CTString& csText,
             const wchar_t* pszKey = nullptr) {
        m_tab.push_back({eSeverity, pszCode, pszKey, csText});
    }
    /// Whether nothing stands in the run's way.
    [[nodiscard]] bool bWorks() const noexcept {
        for (const STFinding& rst : m_tab) {
            if (rst.eSeverity == eSEVERITY::Error) {
                return false;
            }
        }
        return true;
    }
    [[nodiscard]] const std::vector<STFinding>& tabGet() const noexcept { return m_tab; }

  private:
    std::vector<STFinding> m_tab;
};

}  // namespace kalmo

#endif
