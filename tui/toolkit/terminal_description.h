#ifndef KALMO_TUI_TOOLKIT_TERMINAL_DESCRIPTION_H
#define KALMO_TUI_TOOLKIT_TERMINAL_DESCRIPTION_H

#include <optional>
#include <string>

// The type behind TERMINAL of <term.h>, which defines macros with everyday names.
struct term;

namespace kalmo {

/// Whether a screen can be had on a terminal.
enum class eTERMINAL : int {
    Usable,
    None,      ///< There is no terminal.
    NoName,    ///< There is one, but TERM is unset or empty.
    NoCursor,  ///< TERM names one whose cursor cannot be placed.
};

/// What is known of the terminal.
struct STTerminal {
    eTERMINAL eState = eTERMINAL::None;
    /// TERM as the environment has it: any bytes, any length.
    std::string csName{};
    /// The description that the screen is drawn by, where it is usable: the machine's for csName, or one of
    /// ours.
    std::string csShown{};
    bool bOurs = false;
};

/// Whether the operator wants no colours: NO_COLOR is set and not empty (https://no-color.org).
bool bColoursUnwanted();

/// A string of the current description; null where it has none.
const char* pszCapability(const char* pszName);

/// A description that is the current one of curses while this lives, and afterwards again the one before: a
/// screen that was open keeps its own.
class CCurrentDescription {
  public:
    CCurrentDescription(const char* pszName, int nFd);
    CCurrentDescription(const CCurrentDescription&) = delete;
    CCurrentDescription& operator=(const CCurrentDescription&) = delete;
    ~CCurrentDescription();

    [[nodiscard]] bool bLoaded() const noexcept { return m_bLoaded; }
    /// Also true for one that is there and that curses refuses: of a printer, or of no terminal in
    /// particular.
    [[nodiscard]] bool bKnown() const noexcept { return m_bKnown; }

  private:
    term* m_pstFormer;
    bool m_bKnown;
    bool m_bLoaded;
};

/// Finds out by which description a terminal is drawn. That is the machine's for TERM; where the machine has
/// none, one that the program carries: of the family that the name tells, or else of a VT100.
///
/// Lives while the descriptions are loaded, by the name in STTerminal::csShown. curses takes ours from the
/// variable TERMINFO, which has its former value again at the end: programs that are run later get the
/// environment of the caller.
class CTerminalDescription {
  public:
    explicit CTerminalDescription(int nFd);
    CTerminalDescription(const CTerminalDescription&) = delete;
    CTerminalDescription& operator=(const CTerminalDescription&) = delete;
    ~CTerminalDescription();

    [[nodiscard]] const STTerminal& rstGet() const noexcept { return m_stTerminal; }

  private:
    void __UseOurs();

    STTerminal m_stTerminal;
    std::optional<std::string> m_csFormerDescriptions{};  ///< TERMINFO, while ours is there.
};

}  // namespace kalmo

#endif
