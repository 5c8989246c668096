#include "tui/toolkit/terminal_description.h"

#include "tui/toolkit/ncurses.h"
// Defines macros with everyday names, hence only here and last.
#include <term.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <string_view>

namespace kalmo {
namespace {

constexpr const char* PSZ_DESCRIPTIONS = "TERMINFO";

// Descriptions in the form that curses takes from the environment.
struct STDescription {
    std::string_view svName;
    const char* pszCompiled;
};
constexpr STDescription TAB_OURS[] = {
#include "tui/toolkit/terminal_entries.inc"
};

// Which of ours a terminal's name asks for: by how it begins, up to something else than a letter.
struct STFamily {
    std::string_view svBeginning;
    std::string_view svShown;
};
constexpr STFamily TAB_FAMILY[] = {
    {"linux", "linux"},
    {"putty", "putty-256color"},
    {"rxvt", "rxvt-256color"},
    {"screen", "screen-256color"},
    {"st", "st-256color"},
    {"stterm", "st-256color"},
    {"tmux", "screen-256color"},
    // These do as xterm does.
    {"alacritty", "xterm-256color"},
    {"foot", "xterm-256color"},
    {"kitty", "xterm-256color"},
    {"konsole", "xterm-256color"},
    {"ms-terminal", "xterm-256color"},
    {"vte", "xterm-256color"},
    {"wezterm", "xterm-256color"},
    {"xterm", "xterm-256color"},
};

const char* pszVariable(const char* pszName) {
    const char* const psz = std::getenv(pszName);
    return psz == nullptr ? "" : psz;
}

bool bLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

std::string_view svFamily(std::string_view svName) {
    const auto* const pst =
        std::find_if(std::begin(TAB_FAMILY), std::end(TAB_FAMILY), [svName](const STFamily& rst) {
            return svName.starts_with(rst.svBeginning) &&
                   (svName.size() == rst.svBeginning.size() || !bLetter(svName[rst.svBeginning.size()]));
        });
    if (pst != std::end(TAB_FAMILY)) {
        return pst->svShown;
    }
    return *pszVariable("COLORTERM") != '\0' ? "xterm-256color" : "vt100";
}

bool bLoad(const char* pszName, int nFd, bool* pbKnown) {
    ::ttytype[0] = '\0';  // Filled as soon as there is a description, whatever comes of it.
    int nError = 0;
    const bool bLoaded = ::setupterm(pszName, nFd, &nError) == OK;
    *pbKnown = bLoaded || ::ttytype[0] != '\0';
    return bLoaded;
}

}  // namespace

bool bColoursUnwanted() {
    return *pszVariable("NO_COLOR") != '\0';
}

const char* pszCapability(const char* pszName) {
    const char* const psz = ::tigetstr(pszName);
    // An absent one is null, one of another type -1.
    return reinterpret_cast<std::intptr_t>(psz) == -1 ? nullptr : psz;
}

CCurrentDescription::CCurrentDescription(const char* pszName, int nFd)
    : m_pstFormer(::cur_term), m_bKnown(false), m_bLoaded(bLoad(pszName, nFd, &m_bKnown)) {}

CCurrentDescription::~CCurrentDescription() {
    TERMINAL* const pstOurs = ::set_curterm(m_pstFormer);
    if (pstOurs != m_pstFormer) {
        ::del_curterm(pstOurs);
    }
}

CTerminalDescription::CTerminalDescription(int nFd) {
    m_stTerminal.csName = pszVariable("TERM");
    if (::isatty(nFd) == 0) {
        return;
    }
    if (m_stTerminal.csName.empty()) {
        m_stTerminal.eState = eTERMINAL::NoName;
        return;
    }
    m_stTerminal.eState = eTERMINAL::NoCursor;
    m_stTerminal.csShown = m_stTerminal.csName;
    {
        const CCurrentDescription clMachines(m_stTerminal.csShown.c_str(), nFd);
        if (clMachines.bLoaded() && pszCapability("cup") != nullptr) {
            m_stTerminal.eState = eTERMINAL::Usable;
        }
        // A name that means that nothing can be done is believed without a description too.
        if (clMachines.bKnown() || m_stTerminal.csName == "dumb") {
            return;
        }
    }
    __UseOurs();
    const CCurrentDescription clOurs(m_stTerminal.csShown.c_str(), nFd);
    if (clOurs.bLoaded()) {
        m_stTerminal.eState = eTERMINAL::Usable;
    }
}

CTerminalDescription::~CTerminalDescription() {
    if (m_csFormerDescriptions) {
        ::setenv(PSZ_DESCRIPTIONS, m_csFormerDescriptions->c_str(), 1);
    } else if (m_stTerminal.bOurs) {
        ::unsetenv(PSZ_DESCRIPTIONS);
    }
}

void CTerminalDescription::__UseOurs() {
    m_stTerminal.csShown = svFamily(m_stTerminal.csName);
    if (const char* const psz = std::getenv(PSZ_DESCRIPTIONS); psz != nullptr) {
        m_csFormerDescriptions = psz;
    }
    const auto* const pst =
        std::find_if(std::begin(TAB_OURS), std::end(TAB_OURS),
                     [this](const STDescription& rst) { return rst.svName == m_stTerminal.csShown; });
    m_stTerminal.bOurs = pst != std::end(TAB_OURS) && ::setenv(PSZ_DESCRIPTIONS, pst->pszCompiled, 1) == 0;
}

}  // namespace kalmo
