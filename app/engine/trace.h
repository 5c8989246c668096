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

/// Is told the steps of a run as its trace tells them.
///
/// Implemented by whatever keeps or judges them; borrowed by the trace.
class IStepListener {
  public:
    /// Both texts are those of the trace's line. bFailed: it is a step that was to be done and was not.
    virtual void StepTold(const CTString& csWhat, const CTString& csResult, bool bFailed) = 0;

  protected:
    ~IStepListener() = default;
};

/// What a run tells: the trace that the option "/DEBUG=" asks for, one line a step, with time, what and
/// result; and to whoever sits before a screen.
///
/// Owned by the program's run, lent to everything that does a step. A trace that was never opened drops
/// what it is told, and so does the view of a run without a screen: callers need not ask. The trace never
/// holds a password: callers pass none.
///
/// A run may be rehearsed: its steps are told, as if each had succeeded, and none is done. For that, whatever
/// changes something on the machine asks bMayChange right before.
class CTrace {
  public:
    /// Opens the file for appending; a new one is readable by its owner alone. Anything but a regular file,
    /// a symbolic link among it, is refused, and so is a path of more than 260 characters.
    bool bOpen(std::wstring_view svPath);

    /// One step: "2026-11-21 10:00:00.000  what: result", each as csOneLine makes it.
    void Step(std::wstring_view svWhat, std::wstring_view svResult);
    /// A step that failed, and why in words.
    void Failed(std::wstring_view svWhat, std::wstring_view svWhy);
    /// A step that succeeded (0) or failed, for a reason of the system or NO_REASON.
    void Outcome(std::wstring_view svWhat, int nError);
    /// A step that failed with an error object: the object's dump.
    void Error(std::wstring_view svWhat, const CXError& rclError);
    /// Something that failed and that nothing of what is to be done depends on.
    void Note(std::wstring_view svWhat, int nError);
    /// A step whose result is told in words of its own.
    void Told(std::wstring_view svWhat, std::wstring_view svResult, bool bFailed);

    /// From now on the run is seen on a screen; null: no longer. Borrowed.
    void SetView(IRunView* pclView) noexcept { m_pclView = pclView; }
    [[nodiscard]] IRunView& rclGetView() const noexcept;
    /// From now on every step is told to it as well; null: no longer. Borrowed.
    void SetListener(IStepListener* pclListener) noexcept { m_pclListener = pclListener; }

    /// From now on nothing is changed.
    void Rehearse() noexcept { m_bRehearsal = true; }
    [[nodiscard]] bool bRehearsal() const noexcept { return m_bRehearsal; }
    /// Asked right before something on the machine is changed by a step that is told next. False in a
    /// rehearsal: it is not done, and counts as done. The step changed something unless it failed.
    bool bMayChange() noexcept {
        m_bAsked = true;
        return !m_bRehearsal;
    }
    /// Something was changed, whatever is told of it: for what may fail half-way.
    void Changed() noexcept { m_bChanges = true; }
    /// Whether anything was changed or, in a rehearsal, would be.
    [[nodiscard]] bool bChanges() const noexcept { return m_bChanges; }

  private:
    /// bDone: what the step was to do is done. bFailed: it is a failure that counts.
    void __Tell(std::wstring_view svWhat, std::wstring_view svResult, bool bDone, bool bFailed);

    CUniqueFd m_clFd;
    IRunView* m_pclView = nullptr;
    IStepListener* m_pclListener = nullptr;
    bool m_bRehearsal = false;
    bool m_bAsked = false;  ///< The next step is one that changes something.
    bool m_bChanges = false;
};

}  // namespace kalmo

#endif
