#include "framework/format_message.h"

#include <algorithm>
#include <charconv>
#include <exception>
#include <string>

#include "framework/conversion.h"
#include "framework/format_message_scanner.h"
#include "framework/memory_scope.h"

namespace kalmo {
namespace {

constexpr std::size_t MAX_MESSAGE = 65535;

int nEffectiveBits(int nWanted, int nOwn) {
    return nWanted == 0 || nWanted > nOwn ? nOwn : nWanted;
}

// Puts the arguments into a message, one insert after the other.
class CMessageBuilder {
  public:
    explicit CMessageBuilder(CFormatArgList tabArg) noexcept : m_tabArg(tabArg) {}

    bool bAppendText(std::wstring_view sv) {
        if (sv.size() > MAX_MESSAGE - m_cs.size()) {
            return false;
        }
        m_cs.append(sv);
        return true;
    }

    bool bAppendInsert(const STMessagePiece& rstPiece) {
        m_nNext = static_cast<std::size_t>(rstPiece.nInsert) - 1;
        STInsertFormat stFormat = rstPiece.stFormat;
        if (!__bResolveWidth(&stFormat) || !__bResolvePrecision(&stFormat)) {
            return false;
        }
        const CFormatArg* pclArg = __pclNextArg();
        if (pclArg == nullptr) {
            return false;
        }
        switch (pclArg->eGetKind()) {
            case CFormatArg::eKIND::WideText:
                return stFormat.cConversion == L's' && __bString(stFormat, pclArg->svGetWide());
            case CFormatArg::eKIND::Utf8Text:
                return stFormat.cConversion == L's' && __bString(stFormat, csFromUTF8(pclArg->svGetUtf8()));
            case CFormatArg::eKIND::Pointer:
                return stFormat.cConversion == L'p' &&
                       __bNumber(stFormat, L"0x", reinterpret_cast<std::uintptr_t>(pclArg->pGet()), 16);
            case CFormatArg::eKIND::Integer: return __bInteger(stFormat, *pclArg);
        }
        return false;
    }

    [[nodiscard]] const std::wstring& rcsGet() const noexcept { return m_cs; }

  private:
    // The next argument of the current insert; null behind the end of the list.
    const CFormatArg* __pclNextArg() noexcept {
        return m_nNext < m_tabArg.size() ? &m_tabArg[m_nNext++] : nullptr;
    }

    // Takes the number for a "*" from the arguments, within the bounds of a written one in either direction.
    bool __bStar(int* pnOut) noexcept {
        const CFormatArg* pclArg = __pclNextArg();
        if (pclArg == nullptr || pclArg->eGetKind() != CFormatArg::eKIND::Integer) {
            return false;
        }
        const std::int64_t i64 = pclArg->i64GetSigned(0);
        if (i64 < -CMessageScanner::MAX_WIDTH || i64 > CMessageScanner::MAX_WIDTH) {
            return false;
        }
        *pnOut = static_cast<int>(i64);
        return true;
    }
    bool __bResolveWidth(STInsertFormat* pst) noexcept {
        if (pst->nWidth != STInsertFormat::ARGUMENT) {
            return true;
        }
        if (!__bStar(&pst->nWidth)) {
            return false;
        }
        if (pst->nWidth < 0) {  // As printf has it: the flag "-" and the width.
            pst->bLeft = true;
            pst->nWidth = -pst->nWidth;
        }
        return true;
    }
    bool __bResolvePrecision(STInsertFormat* pst) noexcept {
        if (pst->nPrecision != STInsertFormat::ARGUMENT) {
            return true;
        }
        if (!__bStar(&pst->nPrecision)) {
            return false;
        }
        if (pst->nPrecision < 0) {
            pst->nPrecision = STInsertFormat::ABSENT;
        }
        return true;
    }

    bool __bPadded(const STInsertFormat& rst, std::wstring_view sv) {
        const std::size_t nWidth = rst.nWidth > 0 ? static_cast<std::size_t>(rst.nWidth) : 0;
        const std::wstring csPad(nWidth - std::min(nWidth, sv.size()), L' ');
        return rst.bLeft ? bAppendText(sv) && bAppendText(csPad) : bAppendText(csPad) && bAppendText(sv);
    }

    bool __bString(const STInsertFormat& rst, std::wstring_view sv) {
        return __bPadded(rst,
                         rst.nPrecision < 0 ? sv : sv.substr(0, static_cast<std::size_t>(rst.nPrecision)));
    }

    bool __bInteger(const STInsertFormat& rst, const CFormatArg& rclArg) {
        switch (rst.cConversion) {
            case L'd':
            case L'i': {
                const std::int64_t i64 = rclArg.i64GetSigned(rst.nBits);
                const std::wstring csSign = i64 < 0          ? std::wstring(1, L'-')
                                            : rst.cSign != 0 ? std::wstring(1, rst.cSign)
                                                             : std::wstring();
                const auto u64 = static_cast<std::uint64_t>(i64);
                return __bNumber(rst, csSign, i64 < 0 ? 0 - u64 : u64, 10);
            }
            case L'u': return __bNumber(rst, L"", rclArg.u64GetUnsigned(rst.nBits), 10);
            case L'o': return __bNumber(rst, L"", rclArg.u64GetUnsigned(rst.nBits), 8);
            case L'x':
            case L'X': {
                const std::uint64_t u64 = rclArg.u64GetUnsigned(rst.nBits);
                const bool bPrefix = rst.bAlternate && u64 != 0;
                return __bNumber(rst, !bPrefix ? L"" : rst.cConversion == L'x' ? L"0x" : L"0X", u64, 16);
            }
            case L'c': return __bCharacter(rst, rclArg.u64GetUnsigned(0));
            default: return false;
        }
    }

    // A character that would end the text, or that is none, makes the message fail.
    bool __bCharacter(const STInsertFormat& rst, std::uint64_t u64) {
        if (u64 == 0 || (u64 >= 0xD800 && u64 <= 0xDFFF) || u64 > 0x10FFFF) {
            return false;
        }
        const auto c = static_cast<wchar_t>(u64);
        return __bPadded(rst, std::wstring_view(&c, 1));
    }

    bool __bNumber(const STInsertFormat& rst, std::wstring_view svPrefix, std::uint64_t u64, int nBase) {
        char szDigits[24];
        const char* pszEnd = std::to_chars(std::begin(szDigits), std::end(szDigits), u64, nBase).ptr;
        std::wstring csDigits(static_cast<const char*>(szDigits), pszEnd);
        if (rst.cConversion == L'X') {
            for (wchar_t& rc : csDigits) {
                rc = rc >= L'a' ? static_cast<wchar_t>(rc - L'a' + L'A') : rc;
            }
        }
        std::size_t nLeast = 0;
        if (rst.nPrecision >= 0) {
            nLeast = static_cast<std::size_t>(rst.nPrecision);
            if (nLeast == 0 && u64 == 0) {
                csDigits.clear();
            }
        } else if (rst.bZero && !rst.bLeft && rst.nWidth > static_cast<int>(svPrefix.size())) {
            nLeast = static_cast<std::size_t>(rst.nWidth) - svPrefix.size();
        }
        if (csDigits.size() < nLeast) {
            csDigits.insert(0, nLeast - csDigits.size(), L'0');
        }
        if (rst.cConversion == L'o' && rst.bAlternate && !csDigits.starts_with(L'0')) {
            csDigits.insert(0, 1, L'0');
        }
        return __bPadded(rst, std::wstring(svPrefix) + csDigits);
    }

    CFormatArgList m_tabArg;
    std::size_t m_nNext = 0;  // The argument that the current insert takes next.
    std::wstring m_cs;
};

}  // namespace

std::int64_t CFormatArg::i64GetSigned(int nBits) const noexcept {
    const int nShift = 64 - nEffectiveBits(nBits, m_nBits);
    return static_cast<std::int64_t>(m_u64Bits << nShift) >> nShift;
}

std::uint64_t CFormatArg::u64GetUnsigned(int nBits) const noexcept {
    const int nShift = 64 - nEffectiveBits(nBits, m_nBits);
    return m_u64Bits << nShift >> nShift;
}

bool bFormatMessage(std::wstring_view svTemplate, CFormatArgList tabArg, CTString* pcsOut) try {
    const CMemoryScope clScope;
    CMessageBuilder clBuilder(tabArg);
    CMessageScanner clScanner(svTemplate);
    for (;;) {
        const STMessagePiece stPiece = clScanner.stNext();
        switch (stPiece.eKind) {
            case STMessagePiece::eKIND::Text:
                if (!clBuilder.bAppendText(stPiece.svText)) {
                    return false;
                }
                break;
            case STMessagePiece::eKIND::Insert:
                if (!clBuilder.bAppendInsert(stPiece)) {
                    return false;
                }
                break;
            case STMessagePiece::eKIND::End: *pcsOut = CTString(clBuilder.rcsGet()); return true;
            case STMessagePiece::eKIND::Broken: return false;
        }
    }
} catch (const std::exception&) {
    return NoMemory(false);
}

unsigned FormatMessage(unsigned dwFlags, const wchar_t* pszSource, unsigned /*dwMessageId*/,
                       unsigned /*dwLanguageId*/, wchar_t** ppszBuffer, unsigned dwMinSize,
                       CFormatArgList tabArg) {
    *ppszBuffer = nullptr;
    CTString csMessage;
    if (dwFlags != (FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_STRING) || pszSource == nullptr ||
        !bFormatMessage(pszSource, tabArg, &csMessage)) {
        return 0;
    }
    const std::size_t nLength = csMessage.nGetLength();
    const std::size_t nRoom = std::max<std::size_t>(nLength + 1, dwMinSize);
    auto* pszBuffer = static_cast<wchar_t*>(std::calloc(nRoom, sizeof(wchar_t)));
    if (pszBuffer == nullptr) {
        return NoMemory(0U);
    }
    csMessage.svGet().copy(pszBuffer, nLength);
    *ppszBuffer = pszBuffer;
    return static_cast<unsigned>(nLength);
}

}  // namespace kalmo
