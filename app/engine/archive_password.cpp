#include "app/engine/archive_password.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

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

}  // namespace kalmo
