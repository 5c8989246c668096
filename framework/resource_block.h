#ifndef KALMO_FRAMEWORK_RESOURCE_BLOCK_H
#define KALMO_FRAMEWORK_RESOURCE_BLOCK_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace kalmo {

/// The blocks of the three languages, built from the catalogues in framework/texts.
///
/// A block is a run of entries, ended by a 16-bit zero. Numbers are little-endian; an entry has
///     offset 0, 2 bytes   size of the entry in bytes, these 7 bytes included
///     offset 2, 2 bytes   number of the text
///     offset 4, 1 byte    bits 0-1: storage mode; bit 6: text in 2-byte units (UTF-16), else in 1-byte units
///     offset 5, 2 bytes   length of the stored text in bytes, terminating zero included; size is this plus 7
///     offset 7            the stored text
/// The first entry is the block's header, number 257. The others stand by ascending number.
extern const std::span<const unsigned char> g_tabBlock_FR;
extern const std::span<const unsigned char> g_tabBlock_US;
extern const std::span<const unsigned char> g_tabBlock_ES;

/// A question for a stored text, and its answer.
struct STRessourceModule {
    std::uint16_t unNumber = 0;              ///< in: number of the text
    int nLangue = 0;                         ///< in: 10 Spanish, 12 French, anything else English
    const unsigned char* pbyText = nullptr;  ///< out: the stored text, for the life of the program
    unsigned unLength = 0;                   ///< out: its length in bytes, terminating zero included
    int nUnit = 0;                           ///< out: bytes of a unit, 1 or 2
    int nMode = 0;                           ///< out: storage mode, 0 for plain text
    int nReserved = -1;                      ///< not used
};

/// The lookup in the block of one language. There is one object a language, for the life of the program; the
/// first lookup builds its index. Not safe across threads.
class CResAnsi604 {
  public:
    static constexpr std::size_t MAX_OFFSET = 123;  ///< Room of the index.

    /// Compares a number with that of the entry at an offset of the block: negative, 0 or positive.
    using PFNCompare = int (*)(std::uint16_t unNumber, unsigned unOffset);

    constexpr CResAnsi604(const std::span<const unsigned char>* ptabBlock, PFNCompare pfnCompare) noexcept
        : m_ptabBlock(ptabBlock), m_pfnCompare(pfnCompare) {}

    static CResAnsi604 m_stRessource_FR;
    static CResAnsi604 m_stRessource_US;
    static CResAnsi604 m_stRessource_ES;

    static int nCompareRes_FR(std::uint16_t unNumber, unsigned unOffset);
    static int nCompareRes_US(std::uint16_t unNumber, unsigned unOffset);
    static int nCompareRes_ES(std::uint16_t unNumber, unsigned unOffset);

    /// Fills the request's answer. False, with the request untouched, when there is no such text. The block's
    /// own header is not one.
    bool bFind(STRessourceModule* pstRequest);
    /// How many entries the block has, its header included.
    std::size_t nGetCount();

  private:
    void __BuildIndex();
    void __Fill(STRessourceModule* pstRequest, unsigned unOffset) const;

    const std::span<const unsigned char>* m_ptabBlock;
    PFNCompare m_pfnCompare;
    std::array<unsigned, MAX_OFFSET> m_tabOffset{};  ///< Where each entry begins in the block.
    bool m_bIndexed = false;
    std::size_t m_nCount = 0;
};

/// Answers a request from the block of its language: the lookup function of this program's module.
bool bGetResAnsi604(STRessourceModule* pstRequest);

}  // namespace kalmo

#endif
