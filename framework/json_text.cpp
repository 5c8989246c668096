#include "framework/json_text.h"

#include <algorithm>
#include <charconv>
#include <exception>
#include <string>

#include "framework/conversion.h"
#include "framework/memory_scope.h"

namespace kalmo {
namespace {

constexpr int MAX_DEPTH = 32;

// What csFromUTF8 makes of a byte that is no valid UTF-8.
bool bStrayByte(wchar_t c) {
    return c >= 0xDC80 && c <= 0xDCFF;
}

// Walks through a JSON text from its start. Each method takes one element away from the front of what is left
// and returns false when none stands there.
class CJsonScanner {
  public:
    explicit CJsonScanner(std::string_view svText) noexcept : m_svLeft(svText) {}

    // The whole text as one object; *pcsString takes the string under svName, when there is one.
    bool bDocument(std::string_view svName, std::optional<std::string>* pcsString) {
        __SkipBlanks();
        return __bObject(0, svName, pcsString) && m_svLeft.empty();
    }

  private:
    void __SkipBlanks() {
        m_svLeft.remove_prefix(std::min(m_svLeft.find_first_not_of(" \t\r\n"), m_svLeft.size()));
    }

    bool __bTake(std::string_view svToken) {
        if (!m_svLeft.starts_with(svToken)) {
            return false;
        }
        m_svLeft.remove_prefix(svToken.size());
        return true;
    }

    // A token of punctuation and the blanks behind it.
    bool __bMark(char c) {
        if (!__bTake({&c, 1})) {
            return false;
        }
        __SkipBlanks();
        return true;
    }

    // An object; a null pcsString asks for none of its strings.
    bool __bObject(int nDepth, std::string_view svName, std::optional<std::string>* pcsString) {
        if (nDepth > MAX_DEPTH || !__bMark('{')) {
            return false;
        }
        if (__bMark('}')) {
            return true;
        }
        do {
            std::string csName;
            if (!__bString(&csName) || !__bMark(':')) {
                return false;
            }
            const bool bWanted = pcsString != nullptr && csName == svName && m_svLeft.starts_with('"');
            if (bWanted ? !__bString(&pcsString->emplace()) : !__bValue(nDepth + 1)) {
                return false;
            }
        } while (__bMark(','));
        return __bMark('}');
    }

    bool __bArray(int nDepth) {
        if (nDepth > MAX_DEPTH || !__bMark('[')) {
            return false;
        }
        if (__bMark(']')) {
            return true;
        }
        do {
            if (!__bValue(nDepth + 1)) {
                return false;
            }
        } while (__bMark(','));
        return __bMark(']');
    }

    bool __bValue(int nDepth) {
        std::string csIgnored;
        const char c = m_svLeft.empty() ? '\0' : m_svLeft.front();
        switch (c) {
            case '{': return __bObject(nDepth, {}, nullptr);
            case '[': return __bArray(nDepth);
            case '"': return __bString(&csIgnored);
            default: break;
        }
        const bool bTaken = __bTake("true") || __bTake("false") || __bTake("null") || __bNumber();
        __SkipBlanks();
        return bTaken;
    }

    bool __bDigits() {
        const std::size_t nCount = std::min(m_svLeft.find_first_not_of("0123456789"), m_svLeft.size());
        m_svLeft.remove_prefix(nCount);
        return nCount > 0;
    }

    bool __bNumber() {
        __bTake("-");
        if (!__bTake("0") && !__bDigits()) {
            return false;
        }
        if (__bTake(".") && !__bDigits()) {
            return false;
        }
        if (__bTake("e") || __bTake("E")) {
            if (!__bTake("+")) {
                __bTake("-");
            }
            return __bDigits();
        }
        return true;
    }

    // A string, decoded to UTF-8, and the blanks behind it.
    bool __bString(std::string* pcsOut) {
        if (!__bTake("\"")) {
            return false;
        }
        pcsOut->clear();
        while (!__bTake("\"")) {
            if (m_svLeft.empty() || static_cast<unsigned char>(m_svLeft.front()) < 0x20) {
                return false;
            }
            if (__bTake("\\")) {
                if (!__bEscape(pcsOut)) {
                    return false;
                }
            } else {
                *pcsOut += m_svLeft.front();
                m_svLeft.remove_prefix(1);
            }
        }
        __SkipBlanks();
        return true;
    }

    // What follows the backslash of an escape.
    bool __bEscape(std::string* pcsOut) {
        static constexpr std::string_view SV_LETTER = "\"\\/bfnrt";
        static constexpr std::string_view SV_MEANING = "\"\\/\b\f\n\r\t";
        if (__bTake("u")) {
            return __bUnicode(pcsOut);
        }
        const std::size_t nLetter = m_svLeft.empty() ? SV_LETTER.npos : SV_LETTER.find(m_svLeft.front());
        if (nLetter == SV_LETTER.npos) {
            return false;
        }
        *pcsOut += SV_MEANING[nLetter];
        m_svLeft.remove_prefix(1);
        return true;
    }

    // The digits behind "\u", and the second escape of a surrogate pair. Half a pair is an error.
    bool __bUnicode(std::string* pcsOut) {
        std::u16string csUnit(1, u'\0');
        if (!__bHex(&csUnit[0])) {
            return false;
        }
        if (csUnit[0] >= 0xD800 && csUnit[0] <= 0xDBFF) {
            csUnit += u'\0';
            if (!__bTake("\\u") || !__bHex(&csUnit[1])) {
                return false;
            }
        }
        const CTString csChar = csFromUTF16(csUnit);
        const bool bReplaced = csUnit[0] != 0xFFFD && csChar[0] == 0xFFFD;
        if (!bReplaced) {
            *pcsOut += csToUTF8(csChar).svGet();
        }
        return !bReplaced;
    }

    bool __bHex(char16_t* pcUnit) {
        unsigned unValue = 0;
        const char* const pszEnd = m_svLeft.data() + std::min<std::size_t>(4, m_svLeft.size());
        const auto [pszStop, eError] = std::from_chars(m_svLeft.data(), pszEnd, unValue, 16);
        if (eError != std::errc() || pszStop != m_svLeft.data() + 4) {
            return false;
        }
        *pcUnit = static_cast<char16_t>(unValue);
        m_svLeft.remove_prefix(4);
        return true;
    }

    std::string_view m_svLeft;
};

}  // namespace

std::optional<CTString> csJsonString(std::string_view svJson, std::string_view svName) try {
    const CMemoryScope clScope;
    std::optional<std::string> csFound;
    if (!CJsonScanner(svJson).bDocument(svName, &csFound) || !csFound) {
        return std::nullopt;
    }
    const CTString csWide = csFromUTF8(*csFound);
    // The conversion carries stray bytes along; a JSON text has none.
    return std::ranges::none_of(csWide.svGet(), bStrayByte) ? std::optional(csWide) : std::nullopt;
} catch (const std::exception&) {
    return NoMemory(std::optional<CTString>());
}

}  // namespace kalmo
