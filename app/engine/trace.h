#ifndef KALMO_APP_ENGINE_TRACE_H
#define KALMO_APP_ENGINE_TRACE_H

#include <string_view>

#include "framework/unique_fd.h"
#include "framework/xy_string.h"

namespace kalmo {

class CXError;

/// A value as a trace shows it: between double quotes, with a backslash before each quote and backslash, and
/// control characters (bytes that are no UTF-8 among them) as "\xNN".
CTString csQuoted(std::wstring_view svValue);

/// Why a call of the system failed, in the run's language.
CTString csReason(int nErrno);

/// The trace of a run that the option "/DEBUG=" asks for: one line a step, with time, what and result.
///
/// Owned by the program's run, lent to everything that does a step. A trace that was never opened drops
/// what it is told, so that callers need not ask. It never holds a password: callers pass none.
class CTrace {
  public:
    /// Opens the file for appending; a new one is readable by its owner alone. Anything but a regular file,
    /// a symbolic link among it, is refused, and so is a path of more than 260 characters.
    bool bOpen(std::wstring_view svPath);

    /// One step: "2026-11-21 10:00:00.000  what: result". A line end in a text becomes " | ", any other
    /// control character "\xNN".
    void Step(std::wstring_view svWhat, std::wstring_view svResult);
    /// A step that succeeded or failed. Call it before anything that changes errno: a failure is explained
    /// with it.
    void Outcome(std::wstring_view svWhat, bool bSuccess);
    /// A step that failed with an error object: the object's dump.
    void Error(std::wstring_view svWhat, const CXError& rclError);

  private:
    CUniqueFd m_clFd;
};

}  // namespace kalmo

#endif
