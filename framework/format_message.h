#ifndef KALMO_FRAMEWORK_FORMAT_MESSAGE_H
#define KALMO_FRAMEWORK_FORMAT_MESSAGE_H

#include <concepts>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>
#include <string_view>

#include "framework/xy_string.h"

namespace kalmo {

/// One argument of a message: a text, an integer or a pointer.
///
/// It knows its kind, so a message whose format does not fit its argument fails instead of misreading it.
/// It borrows what it names; text must live until the message is formatted. Made in place by the callers of
/// the format functions.
class CFormatArg {
  public:
    enum class eKIND { WideText, Utf8Text, Integer, Pointer };

    /// A null text is shown as "(null)".
    CFormatArg(const wchar_t* psz) noexcept
        : CFormatArg(std::wstring_view(psz == nullptr ? L"(null)" : psz)) {}
    CFormatArg(std::wstring_view sv) noexcept : m_eKind(eKIND::WideText), m_sv(sv) {}
    CFormatArg(const std::wstring& rcs) noexcept : CFormatArg(std::wstring_view(rcs)) {}
    CFormatArg(const CTString& rcs) noexcept : CFormatArg(rcs.svGet()) {}
    CFormatArg(const char* psz) noexcept : CFormatArg(std::string_view(psz == nullptr ? "(null)" : psz)) {}
    CFormatArg(std::string_view sv) noexcept : m_eKind(eKIND::Utf8Text), m_svUtf8(sv) {}
    CFormatArg(const std::string& rcs) noexcept : CFormatArg(std::string_view(rcs)) {}
    CFormatArg(const CXYString<char>& rcs) noexcept : CFormatArg(rcs.svGet()) {}
    template <std::integral T>
    CFormatArg(T value) noexcept
        : m_eKind(eKIND::Integer),
          m_nBits(8 * static_cast<int>(sizeof(T))),
          m_u64Bits(static_cast<std::uint64_t>(value)) {}
    CFormatArg(const void* p) noexcept : m_eKind(eKIND::Pointer), m_p(p) {}

    [[nodiscard]] eKIND eGetKind() const noexcept { return m_eKind; }
    /// WideText: the text.
    [[nodiscard]] std::wstring_view svGetWide() const noexcept { return m_sv; }
    /// Utf8Text: the text.
    [[nodiscard]] std::string_view svGetUtf8() const noexcept { return m_svUtf8; }
    /// Integer: the value read as a signed number of nBits bits, 0 for the size it was given with.
    [[nodiscard]] std::int64_t i64GetSigned(int nBits) const noexcept;
    /// Integer: the value read as an unsigned number of nBits bits, 0 for the size it was given with.
    [[nodiscard]] std::uint64_t u64GetUnsigned(int nBits) const noexcept;
    /// Pointer: the address.
    [[nodiscard]] const void* pGet() const noexcept { return m_p; }

  private:
    eKIND m_eKind;
    int m_nBits = 0;
    std::wstring_view m_sv;
    std::string_view m_svUtf8;
    std::uint64_t m_u64Bits = 0;  ///< Sign-extended when it was signed.
    const void* m_p = nullptr;
};

/// The arguments of a message; the first one is %1.
using CFormatArgList = std::span<const CFormatArg>;

constexpr unsigned FORMAT_MESSAGE_ALLOCATE_BUFFER = 0x100;
constexpr unsigned FORMAT_MESSAGE_FROM_STRING = 0x400;

/// Builds the message that a template (see CMessageScanner) and its arguments make.
///
/// True with the message in *pcsOut. False, with *pcsOut untouched, when the template is malformed, names an
/// argument that is not in the list, prints an argument of another kind (text with s; integers with d i o u
/// x X and, as one character, c; pointers with p), or makes more than 65535 characters.
/// Text precision and width count characters.
bool bFormatMessage(std::wstring_view svTemplate, CFormatArgList tabArg, CTString* pcsOut);

/// The same in the shape of Windows: dwFlags must be ALLOCATE_BUFFER and FROM_STRING together, pszSource is
/// the template, the identifiers are not used. Returns the length and, in *ppszBuffer, a null-terminated text
/// of at least dwMinSize characters' room that the caller frees with LocalFree. 0 with a null pointer there
/// is the failure; 0 with a buffer is an empty message.
unsigned FormatMessage(unsigned dwFlags, const wchar_t* pszSource, unsigned dwMessageId,
                       unsigned dwLanguageId, wchar_t** ppszBuffer, unsigned dwMinSize,
                       CFormatArgList tabArg);

/// Frees what FormatMessage allocated. A null pointer is allowed.
inline void LocalFree(void* p) noexcept {
    std::free(p);
}

}  // namespace kalmo

#endif
