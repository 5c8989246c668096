#ifndef KALMO_ARCHIVE_ENTRY_CIPHER_H
#define KALMO_ARCHIVE_ENTRY_CIPHER_H

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "archive/central_header.h"

namespace kalmo {

/// The twelve bytes in front of an enciphered entry's data.
using CCryptHeader = std::array<unsigned char, TAILLE_CRYPT_HEADER>;

/// The traditional cipher of ZIP entries (PKWARE APPNOTE 6.1): a byte stream made from three keys that the
/// password sets and every plain byte moves on.
///
/// It keeps the curious out and no more; whoever can guess a dozen bytes of an entry can break it. Owned by
/// the record reader, which sets the keys anew for each entry.
class CEntryCipher {
  public:
    struct STKeys {
        std::uint32_t dwKey0 = 0;
        std::uint32_t dwKey1 = 0;
        std::uint32_t dwKey2 = 0;
        bool operator==(const STKeys&) const = default;
    };

    CEntryCipher() { CryptInitKeys({}); }

    /// Sets the keys from a password, of each of whose characters only the low 8 bits count.
    void CryptInitKeys(std::wstring_view svPassword) noexcept;
    /// Moves the keys on by one plain byte.
    void CryptUpdateKeys(unsigned char byPlain) noexcept;
    /// The key stream's byte at this point; does not move the keys.
    [[nodiscard]] unsigned char CryptDecryptByte() const noexcept;

    /// One byte, with the keys moved on behind it.
    unsigned char CryptDecode(unsigned char byCipher) noexcept;
    unsigned char CryptEncode(unsigned char byPlain) noexcept;
    /// A run of bytes in place.
    void CryptDecodeBuffer(std::span<unsigned char> tabByte) noexcept;
    void CryptEncodeBuffer(std::span<unsigned char> tabByte) noexcept;

    /// Deciphers an entry's header in place and compares its last byte with byCheck. The keys must be fresh;
    /// they stand before the entry's data afterwards. A wrong password passes once in 256 times: only the
    /// CRC of the entry tells then.
    bool bCryptCheck(CCryptHeader& rtabHeader, unsigned char byCheck) noexcept;
    /// Sets the keys and makes an enciphered header for an entry to be written. The high half of dwCheck, the
    /// entry's CRC-32 or its DOS time in the high word, goes into its last two bytes.
    void CryptCryptHeader(std::wstring_view svPassword, std::uint32_t dwCheck,
                          CCryptHeader* ptabHeader) noexcept;

    [[nodiscard]] const STKeys& rstGetKeys() const noexcept { return m_stKeys; }

  private:
    STKeys m_stKeys;
};

}  // namespace kalmo

#endif
