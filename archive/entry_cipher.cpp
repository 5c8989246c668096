#include "archive/entry_cipher.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>

#include "archive/crc32.h"

namespace kalmo {
namespace {

using STKeys = CEntryCipher::STKeys;

inline std::uint32_t dwCrcStep(const std::uint32_t* pdwTable, std::uint32_t dwCrc,
                               unsigned char by) noexcept {
    return dwCrc >> 8 ^ pdwTable[(dwCrc ^ by) & 0xFF];
}

inline void UpdateKeys(const std::uint32_t* pdwTable, STKeys& rst, unsigned char byPlain) noexcept {
    rst.dwKey0 = dwCrcStep(pdwTable, rst.dwKey0, byPlain);
    rst.dwKey1 = (rst.dwKey1 + (rst.dwKey0 & 0xFF)) * 134775813U + 1U;
    rst.dwKey2 = dwCrcStep(pdwTable, rst.dwKey2, static_cast<unsigned char>(rst.dwKey1 >> 24));
}

inline unsigned char byKeyStream(const STKeys& rst) noexcept {
    const std::uint32_t dw = (rst.dwKey2 & 0xFFFF) | 2;
    return static_cast<unsigned char>((dw * (dw ^ 1)) >> 8);
}

}  // namespace

void CEntryCipher::CryptInitKeys(std::wstring_view svPassword) noexcept {
    m_stKeys = {0x12345678, 0x23456789, 0x34567890};
    for (const wchar_t c : svPassword) {
        CryptUpdateKeys(static_cast<unsigned char>(c));
    }
}

void CEntryCipher::CryptUpdateKeys(unsigned char byPlain) noexcept {
    UpdateKeys(pdwCrc32Table(), m_stKeys, byPlain);
}

unsigned char CEntryCipher::CryptDecryptByte() const noexcept {
    return byKeyStream(m_stKeys);
}

unsigned char CEntryCipher::CryptDecode(unsigned char byCipher) noexcept {
    const auto byPlain = static_cast<unsigned char>(byCipher ^ CryptDecryptByte());
    CryptUpdateKeys(byPlain);
    return byPlain;
}

unsigned char CEntryCipher::CryptEncode(unsigned char byPlain) noexcept {
    const auto byCipher = static_cast<unsigned char>(byPlain ^ CryptDecryptByte());
    CryptUpdateKeys(byPlain);
    return byCipher;
}

void CEntryCipher::CryptDecodeBuffer(std::span<unsigned char> tabByte) noexcept {
    // Every byte of an enciphered payload passes here: the keys stay in registers.
    const std::uint32_t* const pdwTable = pdwCrc32Table();
    STKeys st = m_stKeys;
    for (unsigned char& rby : tabByte) {
        rby ^= byKeyStream(st);
        UpdateKeys(pdwTable, st, rby);
    }
    m_stKeys = st;
}

void CEntryCipher::CryptEncodeBuffer(std::span<unsigned char> tabByte) noexcept {
    for (unsigned char& rby : tabByte) {
        rby = CryptEncode(rby);
    }
}

bool CEntryCipher::bCryptCheck(CCryptHeader& rtabHeader, unsigned char byCheck) noexcept {
    CryptDecodeBuffer(rtabHeader);
    return rtabHeader.back() == byCheck;
}

void CEntryCipher::CryptCryptHeader(std::wstring_view svPassword, std::uint32_t dwCheck,
                                    CCryptHeader* ptabHeader) noexcept {
    using namespace std::chrono;
    CryptInitKeys(svPassword);
    const auto i64Tick = duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
    std::srand(static_cast<unsigned>(i64Tick));
    const auto itRandomEnd = ptabHeader->end() - 2;
    std::generate(ptabHeader->begin(), itRandomEnd, [] {
        // The bytes only have to differ from entry to entry; nothing rests on their being hard to guess.
        const int n = std::rand();  // NOLINT(cert-msc30-c,cert-msc50-cpp,concurrency-mt-unsafe)
        const int nByte = n >> 6 & 0xFF;
        return static_cast<unsigned char>(nByte != 0 ? nByte : n & 0xFF);
    });
    itRandomEnd[0] = static_cast<unsigned char>(dwCheck >> 16);
    itRandomEnd[1] = static_cast<unsigned char>(dwCheck >> 24);
    CryptEncodeBuffer(*ptabHeader);
}

}  // namespace kalmo
