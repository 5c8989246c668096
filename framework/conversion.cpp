#include "framework/conversion.h"

#include <wctype.h>

#include <algorithm>
#include <array>
#include <clocale>
#include <cstdint>
#include <cwctype>

namespace kalmo {
namespace {

constexpr wchar_t REPLACEMENT = 0xFFFD;
constexpr wchar_t ESCAPE_BASE = 0xDC00;

// The upper half of each code page; the lower half is ASCII.
using CUpperHalf = std::array<std::uint16_t, 128>;

// clang-format off
constexpr CUpperHalf TABLE_437 = {
    0x00C7, 0x00FC, 0x00E9, 0x00E2, 0x00E4, 0x00E0, 0x00E5, 0x00E7,  // 0x80
    0x00EA, 0x00EB, 0x00E8, 0x00EF, 0x00EE, 0x00EC, 0x00C4, 0x00C5,  // 0x88
    0x00C9, 0x00E6, 0x00C6, 0x00F4, 0x00F6, 0x00F2, 0x00FB, 0x00F9,  // 0x90
    0x00FF, 0x00D6, 0x00DC, 0x00A2, 0x00A3, 0x00A5, 0x20A7, 0x0192,  // 0x98
    0x00E1, 0x00ED, 0x00F3, 0x00FA, 0x00F1, 0x00D1, 0x00AA, 0x00BA,  // 0xA0
    0x00BF, 0x2310, 0x00AC, 0x00BD, 0x00BC, 0x00A1, 0x00AB, 0x00BB,  // 0xA8
    0x2591, 0x2592, 0x2593, 0x2502, 0x2524, 0x2561, 0x2562, 0x2556,  // 0xB0
    0x2555, 0x2563, 0x2551, 0x2557, 0x255D, 0x255C, 0x255B, 0x2510,  // 0xB8
    0x2514, 0x2534, 0x252C, 0x251C, 0x2500, 0x253C, 0x255E, 0x255F,  // 0xC0
    0x255A, 0x2554, 0x2569, 0x2566, 0x2560, 0x2550, 0x256C, 0x2567,  // 0xC8
    0x2568, 0x2564, 0x2565, 0x2559, 0x2558, 0x2552, 0x2553, 0x256B,  // 0xD0
    0x256A, 0x2518, 0x250C, 0x2588, 0x2584, 0x258C, 0x2590, 0x2580,  // 0xD8
    0x03B1, 0x00DF, 0x0393, 0x03C0, 0x03A3, 0x03C3, 0x00B5, 0x03C4,  // 0xE0
    0x03A6, 0x0398, 0x03A9, 0x03B4, 0x221E, 0x03C6, 0x03B5, 0x2229,  // 0xE8
    0x2261, 0x00B1, 0x2265, 0x2264, 0x2320, 0x2321, 0x00F7, 0x2248,  // 0xF0
    0x00B0, 0x2219, 0x00B7, 0x221A, 0x207F, 0x00B2, 0x25A0, 0x00A0,  // 0xF8
};

constexpr CUpperHalf TABLE_1252 = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,  // 0x80
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,  // 0x88
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,  // 0x90
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,  // 0x98
    0x00A0, 0x00A1, 0x00A2, 0x00A3, 0x00A4, 0x00A5, 0x00A6, 0x00A7,  // 0xA0
    0x00A8, 0x00A9, 0x00AA, 0x00AB, 0x00AC, 0x00AD, 0x00AE, 0x00AF,  // 0xA8
    0x00B0, 0x00B1, 0x00B2, 0x00B3, 0x00B4, 0x00B5, 0x00B6, 0x00B7,  // 0xB0
    0x00B8, 0x00B9, 0x00BA, 0x00BB, 0x00BC, 0x00BD, 0x00BE, 0x00BF,  // 0xB8
    0x00C0, 0x00C1, 0x00C2, 0x00C3, 0x00C4, 0x00C5, 0x00C6, 0x00C7,  // 0xC0
    0x00C8, 0x00C9, 0x00CA, 0x00CB, 0x00CC, 0x00CD, 0x00CE, 0x00CF,  // 0xC8
    0x00D0, 0x00D1, 0x00D2, 0x00D3, 0x00D4, 0x00D5, 0x00D6, 0x00D7,  // 0xD0
    0x00D8, 0x00D9, 0x00DA, 0x00DB, 0x00DC, 0x00DD, 0x00DE, 0x00DF,  // 0xD8
    0x00E0, 0x00E1, 0x00E2, 0x00E3, 0x00E4, 0x00E5, 0x00E6, 0x00E7,  // 0xE0
    0x00E8, 0x00E9, 0x00EA, 0x00EB, 0x00EC, 0x00ED, 0x00EE, 0x00EF,  // 0xE8
    0x00F0, 0x00F1, 0x00F2, 0x00F3, 0x00F4, 0x00F5, 0x00F6, 0x00F7,  // 0xF0
    0x00F8, 0x00F9, 0x00FA, 0x00FB, 0x00FC, 0x00FD, 0x00FE, 0x00FF,  // 0xF8
};
// clang-format on

bool bScalar(wchar_t c) {
    const auto un = static_cast<std::uint32_t>(c);
    return un < 0xD800 || (un > 0xDFFF && un <= 0x10FFFF);
}

// The valid UTF-8 sequence at the start of sv: its length in bytes and its character; length 0 when there
// is none. Overlong forms, surrogates and values above U+10FFFF are not valid.
struct STSequence {
    std::size_t nLength;
    std::uint32_t unChar;
};

STSequence stDecodeSequence(std::string_view sv) {
    static constexpr std::array<std::uint32_t, 5> SMALLEST = {0, 0, 0x80, 0x800, 0x10000};
    const auto unLead = static_cast<unsigned char>(sv.front());
    if (unLead < 0x80) {
        return {1, unLead};
    }
    const std::size_t nLength = unLead >= 0xF0 && unLead < 0xF8 ? 4
                                : unLead >= 0xE0                ? 3
                                : unLead >= 0xC0                ? 2
                                                                : 0;
    if (nLength == 0 || unLead >= 0xF8 || sv.size() < nLength) {
        return {0, 0};
    }
    std::uint32_t unChar = unLead & (0x7FU >> nLength);
    for (const char c : sv.substr(1, nLength - 1)) {
        const auto unNext = static_cast<unsigned char>(c);
        if ((unNext & 0xC0) != 0x80) {
            return {0, 0};
        }
        unChar = unChar << 6 | (unNext & 0x3FU);
    }
    if (unChar < SMALLEST[nLength] || !bScalar(static_cast<wchar_t>(unChar))) {
        return {0, 0};
    }
    return {nLength, unChar};
}

void AppendUTF8(std::string& cs, std::uint32_t un) {
    const auto Put = [&cs](std::uint32_t unByte) { cs += static_cast<char>(unByte); };
    if (un < 0x80) {
        Put(un);
    } else if (un < 0x800) {
        Put(0xC0 | un >> 6);
        Put(0x80 | (un & 0x3F));
    } else if (un < 0x10000) {
        Put(0xE0 | un >> 12);
        Put(0x80 | (un >> 6 & 0x3F));
        Put(0x80 | (un & 0x3F));
    } else {
        Put(0xF0 | un >> 18);
        Put(0x80 | (un >> 12 & 0x3F));
        Put(0x80 | (un >> 6 & 0x3F));
        Put(0x80 | (un & 0x3F));
    }
}

// The text that fDecode makes of the bytes; it writes at most a character a byte and returns how many. Names
// are short and many: only a long text needs memory of its own while it is made.
template <class CDecode>
CTString csDecoded(std::string_view sv, CDecode fDecode) {
    std::array<wchar_t, 320> szShort;
    std::wstring csLong(sv.size() > szShort.size() ? sv.size() : 0, L'\0');
    wchar_t* const pcOut = csLong.empty() ? szShort.data() : csLong.data();
    return CTString(std::wstring_view(pcOut, fDecode(sv, pcOut)));
}

}  // namespace

CTString csFromUTF8(std::string_view sv) {
    return csDecoded(sv, [](std::string_view svRest, wchar_t* pcOut) {
        const wchar_t* const pcStart = pcOut;
        while (!svRest.empty()) {
            const STSequence st = stDecodeSequence(svRest);
            *pcOut++ = static_cast<wchar_t>(
                st.nLength == 0 ? ESCAPE_BASE + static_cast<unsigned char>(svRest.front()) : st.unChar);
            svRest.remove_prefix(std::max<std::size_t>(st.nLength, 1));
        }
        return static_cast<std::size_t>(pcOut - pcStart);
    });
}

CXYString<char> csToUTF8(std::wstring_view sv) {
    std::string cs;
    cs.reserve(sv.size());
    for (const wchar_t c : sv) {
        if (c >= ESCAPE_BASE + 0x80 && c <= ESCAPE_BASE + 0xFF) {
            cs += static_cast<char>(c - ESCAPE_BASE);
        } else {
            AppendUTF8(cs, static_cast<std::uint32_t>(bScalar(c) ? c : REPLACEMENT));
        }
    }
    return CXYString<char>(cs);
}

CTString csFromUTF16(std::u16string_view sv) {
    std::wstring cs;
    cs.reserve(sv.size());
    for (std::size_t n = 0; n < sv.size(); ++n) {
        const auto unHigh = static_cast<std::uint32_t>(sv[n]);
        const auto unLow = static_cast<std::uint32_t>(n + 1 < sv.size() ? sv[n + 1] : 0);
        if (unHigh >= 0xD800 && unHigh <= 0xDBFF && unLow >= 0xDC00 && unLow <= 0xDFFF) {
            cs += static_cast<wchar_t>(0x10000 + ((unHigh - 0xD800) << 10) + (unLow - 0xDC00));
            ++n;
        } else {
            const auto c = static_cast<wchar_t>(unHigh);
            cs += bScalar(c) ? c : REPLACEMENT;
        }
    }
    return CTString(cs);
}

std::u16string csToUTF16(std::wstring_view sv) {
    std::u16string cs;
    cs.reserve(sv.size());
    for (const wchar_t c : sv) {
        const auto un = static_cast<std::uint32_t>(bScalar(c) ? c : REPLACEMENT);
        if (un < 0x10000) {
            cs += static_cast<char16_t>(un);
        } else {
            cs += static_cast<char16_t>(0xD800 + ((un - 0x10000) >> 10));
            cs += static_cast<char16_t>(0xDC00 + (un & 0x3FF));
        }
    }
    return cs;
}

CTString csFromCodePage(eCODEPAGE eCodePage, std::string_view sv) {
    if (eCodePage == eCODEPAGE::Utf8) {
        return csFromUTF8(sv);
    }
    const CUpperHalf& rtbTable = eCodePage == eCODEPAGE::OEM ? TABLE_437 : TABLE_1252;
    return csDecoded(sv, [&rtbTable](std::string_view svIn, wchar_t* pcOut) {
        std::transform(svIn.begin(), svIn.end(), pcOut, [&rtbTable](char c) {
            const auto un = static_cast<unsigned char>(c);
            return static_cast<wchar_t>(un < 0x80 ? un : rtbTable[un - 0x80U]);
        });
        return svIn.size();
    });
}

wchar_t cMajusculeUnicode(wchar_t c) {
    static const locale_t pclUtf8 = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return pclUtf8 != nullptr ? static_cast<wchar_t>(::towupper_l(static_cast<std::wint_t>(c), pclUtf8)) : c;
}

int nCompareSansCasse(std::wstring_view svLeft, std::wstring_view svRight) {
    const std::size_t nCommon = std::min(svLeft.size(), svRight.size());
    for (std::size_t n = 0; n < nCommon; ++n) {
        const wchar_t cLeft = cMajuscule(svLeft[n]);
        const wchar_t cRight = cMajuscule(svRight[n]);
        if (cLeft != cRight) {
            return cLeft < cRight ? -1 : 1;
        }
    }
    return svLeft.size() == svRight.size() ? 0 : svLeft.size() < svRight.size() ? -1 : 1;
}

}  // namespace kalmo
