#include "framework/profile_encoding.h"

#include <array>

#include "framework/conversion.h"
#include "framework/le_cursor.h"

namespace kalmo {
namespace {

constexpr std::array<char, 2> MARK = {'\xFF', '\xFE'};

bool bHigh(wchar_t c) {
    return c >= 0xD800 && c <= 0xDBFF;
}

bool bLow(wchar_t c) {
    return c >= 0xDC00 && c <= 0xDFFF;
}

// Every surrogate pair becomes the character it stands for.
std::wstring csJoinPairs(std::wstring_view sv) {
    std::wstring cs;
    cs.reserve(sv.size());
    for (const wchar_t c : sv) {
        if (bLow(c) && !cs.empty() && bHigh(cs.back())) {
            cs.back() = 0x10000 + ((cs.back() - 0xD800) << 10) + (c - 0xDC00);
        } else {
            cs += c;
        }
    }
    return cs;
}

void AppendUnit(std::string& cs, unsigned unUnit) {
    cs += static_cast<char>(unUnit & 0xFF);
    cs += static_cast<char>(unUnit >> 8);
}

}  // namespace

bool bFichierUnicode(IXStream& rclStream) {
    const std::int64_t i64Before = rclStream.i64GetPosition();
    std::array<char, 2> tabStart{};
    const bool bWide =
        rclStream.bSeek(0) && rclStream.bReadAll(tabStart.data(), tabStart.size()) && tabStart == MARK;
    if (!bWide || i64Before != 0) {
        rclStream.bSeek(i64Before);
    }
    return bWide;
}

std::size_t nTailleUnite(eENCODAGE eEncodage) {
    return eEncodage == eENCODAGE::Large ? 2 : 1;
}

std::size_t nTailleLigne(eENCODAGE eEncodage, std::string_view svBytes, std::size_t nSeen) {
    if (eEncodage == eENCODAGE::Octets) {
        return svBytes.find('\n', nSeen) + 1;  // npos + 1 is 0
    }
    for (std::size_t n = nSeen; n + 1 < svBytes.size(); n += 2) {
        if (svBytes[n] == '\n' && svBytes[n + 1] == '\0') {
            return n + 2;
        }
    }
    return 0;
}

CTString csDecode(eENCODAGE eEncodage, std::string_view svBytes) {
    if (eEncodage == eENCODAGE::Octets) {
        return csFromUTF8(svBytes);
    }
    std::wstring cs;
    cs.reserve(svBytes.size() / 2);
    CLeCursor clCursor({reinterpret_cast<const unsigned char*>(svBytes.data()), svBytes.size()});
    while (clCursor.nLeft() >= 2) {
        cs += static_cast<wchar_t>(clCursor.wNext());
    }
    return CTString(cs);
}

std::string csEncode(eENCODAGE eEncodage, std::wstring_view sv) {
    if (eEncodage == eENCODAGE::Octets) {
        return std::string(csToUTF8(csJoinPairs(sv)).svGet());
    }
    std::string cs;
    cs.reserve(2 * sv.size());
    for (const wchar_t c : sv) {
        // A unit that was read alone goes back as it was.
        if (bHigh(c) || bLow(c)) {
            AppendUnit(cs, static_cast<unsigned>(c));
            continue;
        }
        for (const char16_t cUnit : csToUTF16({&c, 1})) {
            AppendUnit(cs, cUnit);
        }
    }
    return cs;
}

}  // namespace kalmo
