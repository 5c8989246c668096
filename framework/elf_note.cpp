#include "framework/elf_note.h"

#include <array>
#include <cstring>
#include <exception>
#include <limits>

#include "framework/memory_scope.h"

namespace kalmo {
namespace {

constexpr std::array<unsigned char, 4> MAGIC = {0x7F, 'E', 'L', 'F'};
constexpr unsigned char CLASS_32 = 1;
constexpr unsigned char CLASS_64 = 2;
constexpr unsigned char DATA_LITTLE = 1;
constexpr unsigned char DATA_BIG = 2;
constexpr std::uint32_t PT_NOTE = 4;
constexpr std::uint32_t SHT_NOTE = 7;

constexpr std::size_t MAX_DESCRIPTION = 0x10000;
constexpr int MAX_NOTES = 4096;
constexpr std::uint64_t NOTE_HEADER = 12;

// Reads the numbers of an ELF file one after the other. A read that fails gives zeros and makes every later
// one fail too, so that a caller reads straight down and asks bOk() once.
class CElfCursor {
  public:
    explicit CElfCursor(IXStream& rclStream) noexcept : m_rclStream(rclStream) {}

    // Reads the identification and takes word size and byte order from it.
    void Identify() {
        std::array<unsigned char, 16> tabIdent{};
        Seek(0);
        Read(tabIdent.data(), tabIdent.size());
        const unsigned char byClass = tabIdent[4];
        const unsigned char byData = tabIdent[5];
        m_bOk = m_bOk && std::memcmp(tabIdent.data(), MAGIC.data(), MAGIC.size()) == 0 &&
                (byClass == CLASS_32 || byClass == CLASS_64) && (byData == DATA_LITTLE || byData == DATA_BIG);
        m_bWide = byClass == CLASS_64;
        m_bBigEndian = byData == DATA_BIG;
    }

    [[nodiscard]] bool bOk() const noexcept { return m_bOk; }
    [[nodiscard]] bool bWide() const noexcept { return m_bWide; }

    // Goes to a position, also after a failure: what failed may have been one lying range among others.
    void Seek(std::uint64_t u64Position) {
        m_bOk = u64Position <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()) &&
                m_rclStream.bSeek(static_cast<std::int64_t>(u64Position));
    }
    void Read(void* pBuffer, std::size_t nSize) { m_bOk = m_bOk && m_rclStream.bReadAll(pBuffer, nSize); }

    std::uint16_t wNext() { return static_cast<std::uint16_t>(__u64Next(2)); }
    std::uint32_t dwNext() { return static_cast<std::uint32_t>(__u64Next(4)); }
    // An address, offset or size: as wide as the file's words.
    std::uint64_t u64NextWord() { return __u64Next(m_bWide ? 8 : 4); }

  private:
    std::uint64_t __u64Next(std::size_t nSize) {
        std::array<unsigned char, 8> tabByte{};
        Read(tabByte.data(), nSize);
        std::uint64_t u64 = 0;
        for (std::size_t n = 0; m_bOk && n < nSize; ++n) {
            u64 = u64 << 8 | tabByte[m_bBigEndian ? n : nSize - 1 - n];
        }
        return u64;
    }

    IXStream& m_rclStream;
    bool m_bOk = true;
    bool m_bWide = false;
    bool m_bBigEndian = false;
};

// A stretch of the file that a header says something of.
struct STRange {
    std::uint32_t dwType = 0;
    std::uint64_t u64Offset = 0;
    std::uint64_t u64Size = 0;
    std::uint64_t u64Align = 0;
};

// A table of headers: where it begins, the size of one and how many there are.
struct STTable {
    std::uint64_t u64Offset = 0;
    std::uint16_t wEntrySize = 0;
    std::uint16_t wCount = 0;
};

struct STTables {
    STTable stSegments;
    STTable stSections;
};

STTables stReadTables(CElfCursor& rcl) {
    STTables st;
    rcl.dwNext();       // e_type, e_machine
    rcl.dwNext();       // e_version
    rcl.u64NextWord();  // e_entry
    st.stSegments.u64Offset = rcl.u64NextWord();
    st.stSections.u64Offset = rcl.u64NextWord();
    rcl.dwNext();  // e_flags
    rcl.wNext();   // e_ehsize
    st.stSegments.wEntrySize = rcl.wNext();
    st.stSegments.wCount = rcl.wNext();
    st.stSections.wEntrySize = rcl.wNext();
    st.stSections.wCount = rcl.wNext();
    return st;
}

STRange stReadSegment(CElfCursor& rcl) {
    STRange st;
    st.dwType = rcl.dwNext();
    if (rcl.bWide()) {
        rcl.dwNext();  // p_flags
    }
    st.u64Offset = rcl.u64NextWord();
    rcl.u64NextWord();  // p_vaddr
    rcl.u64NextWord();  // p_paddr
    st.u64Size = rcl.u64NextWord();
    rcl.u64NextWord();  // p_memsz
    if (!rcl.bWide()) {
        rcl.dwNext();  // p_flags
    }
    st.u64Align = rcl.u64NextWord();
    return st;
}

STRange stReadSection(CElfCursor& rcl) {
    STRange st;
    rcl.dwNext();  // sh_name
    st.dwType = rcl.dwNext();
    rcl.u64NextWord();  // sh_flags
    rcl.u64NextWord();  // sh_addr
    st.u64Offset = rcl.u64NextWord();
    st.u64Size = rcl.u64NextWord();
    rcl.dwNext();  // sh_link
    rcl.dwNext();  // sh_info
    st.u64Align = rcl.u64NextWord();
    return st;
}

// One search for a note of an owner and type.
class CNoteSearch {
  public:
    CNoteSearch(CElfCursor& rclCursor, std::string_view svOwner, std::uint32_t dwType)
        : m_rclCursor(rclCursor), m_csOwner(svOwner), m_dwType(dwType) {
        m_csOwner += '\0';  // stored with its null
    }

    // Looks through the notes of every header of type dwHeader that stRead finds in a table.
    std::optional<std::string> csInTable(const STTable& rstTable, std::uint32_t dwHeader,
                                         STRange (*stRead)(CElfCursor&)) {
        for (std::uint64_t u64 = 0; u64 < rstTable.wCount; ++u64) {
            m_rclCursor.Seek(rstTable.u64Offset + u64 * rstTable.wEntrySize);
            const STRange stRange = stRead(m_rclCursor);
            if (!m_rclCursor.bOk()) {
                break;
            }
            if (stRange.dwType == dwHeader) {
                if (auto csFound = __csInRange(stRange)) {
                    return csFound;
                }
            }
        }
        return std::nullopt;
    }

  private:
    std::optional<std::string> __csInRange(const STRange& rstRange) {
        const std::uint64_t u64Align = rstRange.u64Align == 8 ? 8 : 4;
        const auto u64Aligned = [u64Align](std::uint64_t u64) {
            return (u64 + u64Align - 1) & ~(u64Align - 1);
        };
        std::uint64_t u64Start = rstRange.u64Offset;
        std::uint64_t u64Left = rstRange.u64Size;
        while (u64Left >= NOTE_HEADER && m_nNotes++ < MAX_NOTES) {
            m_rclCursor.Seek(u64Start);
            const std::uint32_t dwOwnerSize = m_rclCursor.dwNext();
            const std::uint32_t dwSize = m_rclCursor.dwNext();
            const std::uint32_t dwType = m_rclCursor.dwNext();
            const std::uint64_t u64Description = u64Aligned(NOTE_HEADER + dwOwnerSize);
            const std::uint64_t u64End = u64Description + dwSize;
            if (!m_rclCursor.bOk() || u64End > u64Left) {
                break;
            }
            if (dwType == m_dwType && dwOwnerSize == m_csOwner.size() && dwSize <= MAX_DESCRIPTION) {
                if (auto csFound = __csDescription(u64Start + u64Description, dwSize)) {
                    return csFound;
                }
            }
            const std::uint64_t u64Next = u64Aligned(u64End);
            if (u64Next > u64Left) {
                break;
            }
            u64Start += u64Next;
            u64Left -= u64Next;
        }
        return std::nullopt;
    }

    // The description at a position, when the owner, whom the cursor stands before, is the one looked for.
    std::optional<std::string> __csDescription(std::uint64_t u64Position, std::size_t nSize) {
        std::string csOwner(m_csOwner.size(), '\0');
        m_rclCursor.Read(csOwner.data(), csOwner.size());
        if (csOwner != m_csOwner) {
            return std::nullopt;
        }
        std::string csDescription(nSize, '\0');
        m_rclCursor.Seek(u64Position);
        m_rclCursor.Read(csDescription.data(), nSize);
        return m_rclCursor.bOk() ? std::optional(csDescription) : std::nullopt;
    }

    CElfCursor& m_rclCursor;
    std::string m_csOwner;
    std::uint32_t m_dwType;
    int m_nNotes = 0;
};

}  // namespace

std::optional<std::string> csFindElfNote(IXStream& rclStream, std::string_view svOwner,
                                         std::uint32_t dwType) try {
    const CMemoryScope clScope;
    CElfCursor clCursor(rclStream);
    clCursor.Identify();
    const STTables stTables = stReadTables(clCursor);
    if (!clCursor.bOk()) {
        return std::nullopt;
    }
    CNoteSearch clSearch(clCursor, svOwner, dwType);
    auto csFound = clSearch.csInTable(stTables.stSegments, PT_NOTE, stReadSegment);
    return csFound ? csFound : clSearch.csInTable(stTables.stSections, SHT_NOTE, stReadSection);
} catch (const std::exception&) {
    return NoMemory(std::optional<std::string>());
}

}  // namespace kalmo
