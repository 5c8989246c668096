#include "app/engine/passwords.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "archive/entry_cipher.h"
#include "framework/conversion.h"
#include "framework/random_bytes.h"

namespace kalmo {

CTString csGetArchivePassword() {
    static constexpr std::string_view SV_TEXT =
        "ZDSQL payload: the administrator's own copy, please leave it sealed.";
    static constexpr std::wstring_view SV_ALPHABET =
        L"ABCDEFGHJKLMNPQRSTUVWXYZabcdefghijkmnopqrstuvwxyz23456789";
    static constexpr std::size_t PASSWORD_LENGTH = 24;

    // FNV-1a over the text, once more for each character of the password.
    std::uint64_t u64Hash = 0xCBF29CE484222325U;
    CTString csPassword;
    while (csPassword.nGetLength() < PASSWORD_LENGTH) {
        for (const char c : SV_TEXT) {
            u64Hash = (u64Hash ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
        }
        csPassword += SV_ALPHABET[(u64Hash >> 32) % SV_ALPHABET.size()];
    }
    return csPassword;
}

std::string csCryptPassword(const CTString& csAccount, const CTString& csPassword) {
    std::array<unsigned char, 4> tabSalt{};
    if (!bRandomBytes(tabSalt.data(), tabSalt.size())) {
        return {};
    }
    std::vector<unsigned char> tabByte(tabSalt.begin(), tabSalt.end());
    const CXYString<char> csBytes = csToUTF8(csPassword);
    std::ranges::copy(csBytes.svGet(), std::back_inserter(tabByte));

    // The cipher takes the low 8 bits of each character: the bytes of the name, one a character.
    const CXYString<char> csAccountBytes = csToUTF8(csAccount);
    const std::string_view svAccount = csAccountBytes.svGet();
    CEntryCipher clCipher;
    clCipher.CryptInitKeys(std::wstring(svAccount.begin(), svAccount.end()));
    clCipher.CryptEncodeBuffer(tabByte);

    static constexpr std::string_view SV_DIGITS = "0123456789ABCDEF";
    std::string csHex;
    for (const unsigned char by : tabByte) {
        csHex += SV_DIGITS[by >> 4U];
        csHex += SV_DIGITS[by & 15U];
    }
    return csHex;
}

}  // namespace kalmo
