#include "framework/format_message_scanner.h"

namespace kalmo {
namespace {

constexpr std::wstring_view SV_FLAG_CHARACTERS = L"-+ #0";

bool bDigit(wchar_t c) {
    return c >= L'0' && c <= L'9';
}

// A cursor over the text between the two "!". Its steps return false once the format is known to be bad.
class CFormatParser {
  public:
    CFormatParser(std::wstring_view sv, STInsertFormat* pstOut) noexcept : m_sv(sv), m_rst(*pstOut) {}

    bool bParse() noexcept {
        __Flags();
        if (!__bNumber(&m_rst.nWidth)) {
            return false;
        }
        if (__bTake(L'.')) {
            m_rst.nPrecision = 0;  // A point alone means precision 0.
            if (!__bNumber(&m_rst.nPrecision)) {
                return false;
            }
        }
        __Size();
        return __bConversion() && m_sv.empty() && __bSensible();
    }

  private:
    bool __bTake(wchar_t c) noexcept {
        if (m_sv.empty() || m_sv.front() != c) {
            return false;
        }
        m_sv.remove_prefix(1);
        return true;
    }
    bool __bTake(std::wstring_view sv) noexcept {
        if (!m_sv.starts_with(sv)) {
            return false;
        }
        m_sv.remove_prefix(sv.size());
        return true;
    }

    void __Flags() noexcept {
        while (!m_sv.empty() && SV_FLAG_CHARACTERS.find(m_sv.front()) != std::wstring_view::npos) {
            switch (m_sv.front()) {
                case L'-': m_rst.bLeft = true; break;
                case L'0': m_rst.bZero = true; break;
                case L'#': m_rst.bAlternate = true; break;
                case L'+': m_rst.cSign = L'+'; break;
                default: m_rst.cSign = m_rst.cSign == 0 ? L' ' : m_rst.cSign; break;
            }
            m_sv.remove_prefix(1);
        }
    }

    // Reads an optional number or "*". Without one *pnOut stays as it is.
    bool __bNumber(int* pnOut) noexcept {
        if (__bTake(L'*')) {
            *pnOut = STInsertFormat::ARGUMENT;
            return true;
        }
        if (m_sv.empty() || !bDigit(m_sv.front())) {
            return true;
        }
        int nValue = 0;
        for (; !m_sv.empty() && bDigit(m_sv.front()); m_sv.remove_prefix(1)) {
            nValue = nValue * 10 + static_cast<int>(m_sv.front() - L'0');
            if (nValue > CMessageScanner::MAX_WIDTH) {
                return false;
            }
        }
        *pnOut = nValue;
        return true;
    }

    // Arguments know their own size, so all sizes but the narrowing ones mean nothing more.
    void __Size() noexcept {
        if (__bTake(L"hh")) {
            m_rst.nBits = 8;
        } else if (__bTake(L"h")) {
            m_rst.nBits = 16;
        } else {
            (void)(__bTake(L"ll") || __bTake(L"l") || __bTake(L"w") || __bTake(L"I64") || __bTake(L"I32") ||
                   __bTake(L"I"));
        }
    }

    bool __bConversion() noexcept {
        if (m_sv.empty() || std::wstring_view(L"diouxXcCsSp").find(m_sv.front()) == std::wstring_view::npos) {
            return false;
        }
        m_rst.cConversion = m_sv.front() == L'C' ? L'c' : m_sv.front() == L'S' ? L's' : m_sv.front();
        m_sv.remove_prefix(1);
        return true;
    }

    // Turns down what printf leaves undefined.
    [[nodiscard]] bool __bSensible() const noexcept {
        const wchar_t c = m_rst.cConversion;
        const bool bSigned = c == L'd' || c == L'i';
        const bool bAlternating = c == L'o' || c == L'x' || c == L'X';
        const bool bInteger = bSigned || bAlternating || c == L'u';
        return (m_rst.cSign == 0 || bSigned) && (!m_rst.bAlternate || bAlternating) &&
               (!m_rst.bZero || bInteger) &&
               (m_rst.nPrecision == STInsertFormat::ABSENT || bInteger || c == L's');
    }

    std::wstring_view m_sv;
    STInsertFormat& m_rst;
};

STMessagePiece stText(std::wstring_view sv) {
    return {STMessagePiece::eKIND::Text, sv, 0, {}};
}

}  // namespace

STMessagePiece CMessageScanner::stNext() noexcept {
    if (m_bBroken) {
        return __stEnd(STMessagePiece::eKIND::Broken);
    }
    if (m_sv.empty()) {
        return __stEnd(STMessagePiece::eKIND::End);
    }
    if (m_sv.front() == L'%') {
        m_sv.remove_prefix(1);
        return __stEscape();
    }
    const std::wstring_view svLiteral = m_sv.substr(0, m_sv.find(L'%'));
    m_sv.remove_prefix(svLiteral.size());
    return stText(svLiteral);
}

STMessagePiece CMessageScanner::__stEscape() noexcept {
    if (m_sv.empty()) {
        return __stEnd(STMessagePiece::eKIND::Broken);
    }
    const std::wstring_view svSign = m_sv.substr(0, 1);
    if (svSign.front() >= L'1' && svSign.front() <= L'9') {
        return __stInsert();
    }
    m_sv.remove_prefix(1);
    switch (svSign.front()) {
        case L'0': return __stEnd(STMessagePiece::eKIND::End);
        case L'n': return stText(L"\r\n");
        case L'r': return stText(L"\r");
        case L't': return stText(L"\t");
        case L'%':
        case L'.':
        case L'!':
        case L' ': return stText(svSign);
        default: return __stEnd(STMessagePiece::eKIND::Broken);
    }
}

STMessagePiece CMessageScanner::__stInsert() noexcept {
    STMessagePiece stPiece;
    stPiece.eKind = STMessagePiece::eKIND::Insert;
    for (int nDigits = 0; nDigits < 2 && !m_sv.empty() && bDigit(m_sv.front()); ++nDigits) {
        stPiece.nInsert = stPiece.nInsert * 10 + static_cast<int>(m_sv.front() - L'0');
        m_sv.remove_prefix(1);
    }
    if (m_sv.empty() || m_sv.front() != L'!') {
        return stPiece;
    }
    const std::size_t nEnd = m_sv.find(L'!', 1);
    if (nEnd == std::wstring_view::npos) {
        return __stEnd(STMessagePiece::eKIND::Broken);
    }
    stPiece.svText = m_sv.substr(1, nEnd - 1);
    m_sv.remove_prefix(nEnd + 1);
    if (!CFormatParser(stPiece.svText, &stPiece.stFormat).bParse()) {
        return __stEnd(STMessagePiece::eKIND::Broken);
    }
    return stPiece;
}

STMessagePiece CMessageScanner::__stEnd(STMessagePiece::eKIND eKind) noexcept {
    m_bBroken = eKind == STMessagePiece::eKIND::Broken;
    m_sv = {};
    return {eKind, {}, 0, {}};
}

}  // namespace kalmo
