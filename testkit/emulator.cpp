#include "testkit/emulator.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "framework/conversion.h"

namespace kalmo {
namespace {

constexpr std::pair<std::string_view, VTermKey> TAB_KEY[] = {
    {"Enter", VTERM_KEY_ENTER},         {"Tab", VTERM_KEY_TAB},       {"Escape", VTERM_KEY_ESCAPE},
    {"Backspace", VTERM_KEY_BACKSPACE}, {"Up", VTERM_KEY_UP},         {"Down", VTERM_KEY_DOWN},
    {"Left", VTERM_KEY_LEFT},           {"Right", VTERM_KEY_RIGHT},   {"Delete", VTERM_KEY_DEL},
    {"PageDown", VTERM_KEY_PAGEDOWN},   {"PageUp", VTERM_KEY_PAGEUP}, {"KeypadEnter", VTERM_KEY_KP_ENTER},
};

constexpr std::string_view NO_BREAK_SPACE = "\u00A0";

int nColour(const VTermColor& rst) {
    return VTERM_COLOR_IS_DEFAULT_FG(&rst) || VTERM_COLOR_IS_DEFAULT_BG(&rst) ? -1 : rst.indexed.idx;
}

std::string csCellText(const VTermScreenCell& rst) {
    std::wstring cs;
    for (std::size_t n = 0; n < std::size(rst.chars) && rst.chars[n] != 0; ++n) {
        cs += static_cast<wchar_t>(rst.chars[n]);
    }
    return cs.empty() ? " " : std::string(csToUTF8(cs).svGet());
}

// How many of the bytes libvterm may have: it forgets the start of an OSC that comes in two parts.
std::size_t nWholeBytes(std::string_view sv) {
    const std::size_t nStart = sv.rfind("\x1b]");
    if (nStart != std::string_view::npos) {
        const std::string_view svRest = sv.substr(nStart + 2);
        const bool bNumbered = svRest.empty() || (svRest.front() >= '0' && svRest.front() <= '9');
        if (bNumbered && svRest.find('\a') == svRest.npos && svRest.find("\x1b\\") == svRest.npos) {
            return nStart;
        }
    }
    return sv.ends_with('\x1b') ? sv.size() - 1 : sv.size();
}

}  // namespace

CEmulator::CEmulator(int nRows, int nColumns, std::function<void(std::string_view)> Send)
    : m_pclTerm(vterm_new(nRows, nColumns)),
      m_pclScreen(vterm_obtain_screen(m_pclTerm.get())),
      m_Send(std::move(Send)),
      m_nRows(nRows),
      m_nColumns(nColumns) {
    vterm_set_utf8(m_pclTerm.get(), 1);
    vterm_output_set_callback(
        m_pclTerm.get(),
        [](const char* pc, std::size_t nLength, void* pclSelf) {
            static_cast<CEmulator*>(pclSelf)->m_Send({pc, nLength});
        },
        this);
    static VTermScreenCallbacks stScreen{};
    stScreen.movecursor = __nOnMoveCursor;
    stScreen.settermprop = __nOnProperty;
    vterm_screen_set_callbacks(m_pclScreen, &stScreen, this);
    static VTermParserCallbacks stUnknown{};
    stUnknown.osc = __nOnCommand;
    vterm_screen_set_unrecognised_fallbacks(m_pclScreen, &stUnknown, this);
    vterm_screen_enable_altscreen(m_pclScreen, 1);
    vterm_screen_reset(m_pclScreen, 1);
    Feed("\x1b[?12l");  // libvterm's cursor blinks from the start
}

void CEmulator::Feed(std::string_view svBytes) {
    m_csHeld += svBytes;
    const std::size_t nWhole = nWholeBytes(m_csHeld);
    vterm_input_write(m_pclTerm.get(), m_csHeld.data(), nWhole);
    m_csHeld.erase(0, nWhole);
}

void CEmulator::Resize(int nRows, int nColumns) {
    m_nRows = nRows;
    m_nColumns = nColumns;
    vterm_set_size(m_pclTerm.get(), nRows, nColumns);
}

bool CEmulator::bPressKey(std::string_view svName) {
    int nKey = VTERM_KEY_NONE;
    for (const auto& [svKeyName, eKey] : TAB_KEY) {
        nKey = svKeyName == svName ? eKey : nKey;
    }
    int nFunction = 0;
    char cRest = 0;
    if (std::sscanf(std::string(svName).c_str(), "F%2d%c", &nFunction, &cRest) == 1) {
        nKey = VTERM_KEY_FUNCTION(nFunction);
    }
    if (nKey != VTERM_KEY_NONE) {
        vterm_keyboard_key(m_pclTerm.get(), static_cast<VTermKey>(nKey), VTERM_MOD_NONE);
    }
    return nKey != VTERM_KEY_NONE;
}

STCell CEmulator::stCell(int nRow, int nColumn) const {
    VTermScreenCell st{};
    vterm_screen_get_cell(m_pclScreen, {.row = nRow, .col = nColumn}, &st);
    const bool bRightHalf = st.chars[0] == static_cast<std::uint32_t>(-1);
    const STLook stLook{nColour(st.fg), nColour(st.bg), st.attrs.reverse != 0, st.attrs.bold != 0,
                        st.attrs.underline != 0};
    return bRightHalf ? STCell{"", this->stCell(nRow, nColumn - 1).stLook} : STCell{csCellText(st), stLook};
}

unsigned CEmulator::unPaletteColour(int nIndex) const {
    VTermColor st{};
    vterm_state_get_palette_color(vterm_obtain_state(m_pclTerm.get()), nIndex, &st);
    return static_cast<unsigned>(st.rgb.red << 16 | st.rgb.green << 8 | st.rgb.blue);
}

bool CEmulator::bAtRest() const {
    std::string csKey;
    const auto Send = std::exchange(m_Send, [&csKey](std::string_view sv) { csKey += sv; });
    vterm_keyboard_key(m_pclTerm.get(), VTERM_KEY_UP, VTERM_MOD_NONE);
    m_Send = Send;
    const VTermState* const pclState = vterm_obtain_state(m_pclTerm.get());
    VTermValue unReverse{}, unText{}, unBehind{};
    vterm_state_get_penattr(pclState, VTERM_ATTR_REVERSE, &unReverse);
    vterm_state_get_penattr(pclState, VTERM_ATTR_FOREGROUND, &unText);
    vterm_state_get_penattr(pclState, VTERM_ATTR_BACKGROUND, &unBehind);
    return csKey == "\x1b[A" && unReverse.boolean == 0 && nColour(unText.color) == -1 &&
           nColour(unBehind.color) == -1;
}

std::string CEmulator::csText() const {
    std::string cs;
    for (int nRow = 0; nRow < m_nRows; ++nRow) {
        cs += '\n' + csText(nRow, 0, m_nColumns);
        cs.resize(cs.find_last_not_of(' ') + 1);
    }
    cs.resize(cs.find_last_not_of('\n') + 1);
    return cs + '\n';
}

std::string CEmulator::csText(int nRow, int nColumn, int nWidth) const {
    std::string cs;
    for (int n = nColumn; n < std::min(nColumn + nWidth, m_nColumns); ++n) {
        const std::string csCell = stCell(nRow, n).csText;
        cs += csCell == NO_BREAK_SPACE ? " " : csCell;
    }
    return cs;
}

std::string CEmulator::csLooks(std::span<const STLegend> tabLegend, int nRow, int nColumn, int nWidth) const {
    std::string cs;
    for (int n = nColumn; n < std::min(nColumn + nWidth, m_nColumns); ++n) {
        const STLook stLook = stCell(nRow, n).stLook;
        const auto it = std::find_if(tabLegend.begin(), tabLegend.end(),
                                     [&](const STLegend& rst) { return rst.stLook == stLook; });
        cs += it != tabLegend.end() ? it->cLetter : stLook == STLook{} ? ' ' : '?';
    }
    return cs;
}

std::string CEmulator::csShow(std::span<const STLegend> tabLegend) const {
    std::string cs = "\n";
    for (int nRow = 0; nRow < m_nRows; ++nRow) {
        cs += csText(nRow, 0, m_nColumns) + ' ' + csLooks(tabLegend, nRow, 0, m_nColumns) + '\n';
    }
    return cs;
}

int CEmulator::__nOnProperty(VTermProp eProperty, VTermValue* punValue, void* pclSelf) {
    auto& rclSelf = *static_cast<CEmulator*>(pclSelf);
    switch (eProperty) {
        case VTERM_PROP_CURSORVISIBLE: rclSelf.m_stCursor.bVisible = punValue->boolean != 0; return 1;
        case VTERM_PROP_CURSORBLINK:
            rclSelf.m_stCursor.bVeryVisible = punValue->boolean != 0;
            // Of a sequence for several modes libvterm takes the first one only, and xterm's cvvis is "blink
            // and show".
            rclSelf.m_stCursor.bVisible = rclSelf.m_stCursor.bVisible || rclSelf.m_stCursor.bVeryVisible;
            return 1;
        case VTERM_PROP_ALTSCREEN: rclSelf.m_bAlternate = punValue->boolean != 0; return 1;
        default: return 0;
    }
}

int CEmulator::__nOnMoveCursor(VTermPos stNew, VTermPos /*stOld*/, int /*nVisible*/, void* pclSelf) {
    auto& rclSelf = *static_cast<CEmulator*>(pclSelf);
    rclSelf.m_stCursor.nRow = stNew.row;
    rclSelf.m_stCursor.nColumn = stNew.col;
    return 1;
}

int CEmulator::__nOnCommand(const char* pcCommand, std::size_t nLength, void* pclSelf) {
    VTermState* const pclState = vterm_obtain_state(static_cast<CEmulator*>(pclSelf)->m_pclTerm.get());
    const std::string csCommand(pcCommand, nLength);
    int nIndex = 0;
    unsigned tab[3] = {};
    VTermColor st{};
    if (std::sscanf(csCommand.c_str(), "4;%d;rgb:%2x/%2x/%2x", &nIndex, &tab[0], &tab[1], &tab[2]) == 4) {
        vterm_color_rgb(&st, static_cast<std::uint8_t>(tab[0]), static_cast<std::uint8_t>(tab[1]),
                        static_cast<std::uint8_t>(tab[2]));
        vterm_state_set_palette_color(pclState, nIndex, &st);
        return 1;
    }
    const CEmulator clFresh(1, 1, {});
    for (nIndex = 0; csCommand == "104" && nIndex < 16; ++nIndex) {
        vterm_state_get_palette_color(vterm_obtain_state(clFresh.m_pclTerm.get()), nIndex, &st);
        vterm_state_set_palette_color(pclState, nIndex, &st);
    }
    return 1;
}

}  // namespace kalmo
