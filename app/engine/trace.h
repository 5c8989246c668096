#ifndef KALMO_APP_ENGINE_TRACE_H
#define KALMO_APP_ENGINE_TRACE_H

#include <cerrno>
#include <string_view>

#include "framework/unique_fd.h"
#include "framework/xy_string.h"

namespace kalmo {

class CXError;
class IRunView;

/// A value as a trace shows it: between double quotes, with a backslash before each quote and backslash, and
/// control characters (bytes that are no UTF-8 among them) as "\xNN".
CTString csQuoted(std::wstring_view svValue);

/// A text that stays on its line whatever a file name or a message holds: line ends become " | ", those at
/// its end are dropped, any other control character (bytes that are no UTF-8 among them) becomes "\xNN".
CTString csOneLine(std::wstring_view sv);

/// Why a call of the system failed, in the run's language.
CTString csReason(int nErrno);

/// A failure whose reason the call does not tell.
inline constexpr int NO_REASON = -1;

/// What a failure with this errno tells: the error number, or NO_REASON when it is 0.
constexpr int nFailure(int nErrno) noexcept {
    return nErrno != 0 ? nErrno : NO_REASON;
}

/// What came of a call that leaves its reason in errno: 0, the error number, or NO_REASON. Written around the
/// call, so that nothing comes between: Outcome(L"what", nOutcome(bCall())).
inline int nOutcome(bool bSuccess) noexcept {
    return bSuccess ? 0 : nFailure(errno);
}

/// What a run tells: the trace that the option "/DEBUG=" asks for, one line a step, with time, what and
/// result; and to whoever sits before a screen.
///
/// Owned by the program's run, lent to everything that does a step. A trace that was never opened drops
/// what it is told, and so does the view of a run without a screen: callers need not ask. The trace never
/// holds a password: callers pass none.
class CTrace {
  public:
    /// Opens the file for appending; a new one is readable by its owner alone. Anything but a regular file,
    /// a symbolic link among it, is refused, and so is a path of more than 260 characters.
    bool bOpen(std::wstring_view svPath);

    /// One step: "2026-11-21 10:00:00.000  what: result", each as csOneLine makes it.
    void Step(std::wstring_view svWhat, std::wstring_view svResult);
    /// A step that succeeded (0) or failed, for a reason of the system or NO_REASON.
    void Outcome(std::wstring_view svWhat, int nError);
    /// A step that failed with an error object: the object's dump.
    void Error(std::wstring_view svWhat, const CXError& rclError);

    /// From now on the run is seen on a screen; null: no longer. Borrowed.
    void SetView(IRunView* pclView) noexcept { m_pclView = pclView; }
    [[nodiscard]] IRunView& rclGetView() const noexcept;

  private:
    CUniqueFd m_clFd;
    IRunView* m_pclView = nullptr;
};

}  // namespace kalmo

#endif
