#ifndef KALMO_TESTKIT_TERMINAL_H
#define KALMO_TESTKIT_TERMINAL_H

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "framework/unique_fd.h"
#include "testkit/emulator.h"

namespace kalmo {

/// A program at a terminal: the program runs under a pseudo-terminal, an emulator shows what it draws, keys
/// are pressed by name and the screen is read back.
///
/// Owned by a test or a tool; the destructor hangs up and kills the program. Nothing waits blindly: a key has
/// been dealt with when the program sleeps in a read of the terminal again and nothing is under way to it or
/// from it, which the kernel tells. That holds for a program that reads the terminal itself and leads its
/// process group; one behind a second terminal (testkit/machine --tty), in a shell pipeline or below a
/// tracer is waited for with bWaitText.
class CTerminal {
  public:
    struct STOptions {
        /// The entry of the terminal database. All these are in the base system:
        ///   xterm-256color   256 colours, can change them     tmux-256color   256 colours, cannot
        ///   xterm-color      8 colours, cursor stays visible  xterm           8 colours
        ///   vt100            no colours, cursor stays visible vt220           no colours
        std::string csType = "xterm-256color";
        int nColumns = 80;
        int nRows = 24;
        /// "NAME=VALUE" on top of the caller's environment. LC_ALL is C.UTF-8 unless set here, LINES and
        /// COLUMNS do not get through.
        std::vector<std::string> tabEnvironment = {};
        /// Longest wait of any operation.
        std::chrono::milliseconds stPatience = std::chrono::seconds(120);
    };

    /// Starts a program, found along PATH. One that cannot be started ends with status 127.
    explicit CTerminal(const std::vector<std::string>& tabArgument) : CTerminal(tabArgument, STOptions()) {}
    CTerminal(const std::vector<std::string>& tabArgument, STOptions stOptions);
    CTerminal(const CTerminal&) = delete;
    CTerminal& operator=(const CTerminal&) = delete;
    ~CTerminal();

    /// Presses keys one after the other, blanks between them: each is a key's name (see CEmulator::bPressKey)
    /// or else a text to type. "Tab Down*3 Space abc" presses Down three times and the space bar once.
    /// Settles before the first key and after each; false at once when that fails.
    bool bPress(std::string_view svKeys);
    /// Sends bytes as they are and does not wait.
    void Send(std::string_view svBytes);

    /// Waits until the program waits for a key or has ended, with all its output on the screen. False when
    /// patience ends first.
    bool bSettle();
    /// Waits until the text stands somewhere on the screen, within one line. False when patience ends first,
    /// or the program.
    bool bWaitText(std::string_view svText);
    /// Waits until the program has ended. Its exit status, or 128 + the signal that ended it; -1 when
    /// patience ends first.
    int nWaitEnd();

    /// Gives the terminal another size, of which the program is told by SIGWINCH. Does not wait. Settle
    /// before: most programs overlook the signal until their next key when it comes just before their read.
    void Resize(int nColumns, int nRows);
    /// Pulls the plug: the program gets SIGHUP, its reads end. The screen stays as it was.
    void HangUp();
    /// Sends the program a signal.
    void Signal(int nSignal) const;

    [[nodiscard]] const CEmulator& clScreen() const noexcept { return m_clEmulator; }
    /// CEmulator::csText of the screen.
    [[nodiscard]] std::string csText() const { return m_clEmulator.csText(); }
    /// How many bytes the program has sent so far.
    [[nodiscard]] std::uint64_t u64Received() const noexcept { return m_u64Received; }
    /// Whether the line discipline echoes, gathers lines and makes signals of keys, as a shell expects it.
    [[nodiscard]] bool bCooked() const;
    /// Whether the terminal is as a shell expects it back, with the screen that was there before.
    [[nodiscard]] bool bGivenBack() const;
    /// bDraw: writes the screen to a file as a picture. Otherwise tells whether the file shows it.
    [[nodiscard]] bool bPicture(const std::string& rcsPath, bool bDraw) const;

  private:
    using CClock = std::chrono::steady_clock;

    void __Drain();
    bool __bEnded();
    [[nodiscard]] bool __bWaitsForKey() const;
    bool __bPoll(const std::function<bool()>& Condition);

    STOptions m_stOptions;
    CEmulator m_clEmulator;
    CUniqueFd m_clMaster;
    CUniqueFd m_clSlave;  ///< Kept open to look at what the program has not read yet.
    pid_t m_nPid = -1;
    std::optional<int> m_nStatus;  ///< As nWaitEnd gives it, once the program has ended.
    std::uint64_t m_u64Received = 0;
};

}  // namespace kalmo

#endif
