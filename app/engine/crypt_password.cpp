#include "app/engine/crypt_password.h"

#include <sys/random.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "archive/entry_cipher.h"
#include "framework/conversion.h"

namespace kalmo {

std::string csCryptPassword(const CTString& csAccount, const CTString& csPassword) {
    std::array<unsigned char, 4> tabSalt{};
    if (::getrandom(tabSalt.data(), tabSalt.size(), 0) != static_cast<ssize_t>(tabSalt.size())) {
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
