// Inflating: one library is held against the other. Of any stream both make the same bytes, as far as both go
// on, and end at the same place, unless one refuses it: of what is no sound stream one may see more than the
// other. Neither reads or writes a byte beyond what it was given, although nothing of theirs is built with
// sanitizers.
//
// Input: a byte for the size of the input's pieces, one for that of the room, and one that says what follows:
// a stream, or what is deflated to one here, because changes of a stream at random seldom leave one.

#include <sys/mman.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

#include "archive/crc32.h"
#include "archive/inflate_engine.h"

namespace {

using namespace kalmo;

constexpr std::size_t MAX_OUT = 1 << 18;
constexpr std::size_t MAX_DEFLATED = 1 << 17;
constexpr int MAX_STEPS = 3000;  // a step of ISA-L may move its whole window, however little it is given
constexpr std::size_t MAX_BEHIND = 8;  // what may be taken of the bytes behind a stream's end

void Check(bool b) {
    if (!b) {
        std::abort();
    }
}

// Bytes in front of a page that nobody may touch.
class CGuarded {
  public:
    CGuarded() {
        const auto nPage = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
        void* const p =
            ::mmap(nullptr, SIZE + nPage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        Check(p != MAP_FAILED);
        m_pbyEnd = static_cast<unsigned char*>(p) + SIZE;
        Check(::mprotect(m_pbyEnd, nPage, PROT_NONE) == 0);
    }
    // The last ones.
    [[nodiscard]] std::span<unsigned char> tabLast(std::size_t nSize) const {
        Check(nSize <= SIZE);
        return {m_pbyEnd - nSize, nSize};
    }

  private:
    static constexpr std::size_t SIZE = 1 << 16;
    unsigned char* m_pbyEnd;
};

// What libFuzzer learns from, since it sees into neither library: each kind of step that was made.
__attribute__((section("__libfuzzer_extra_counters"))) std::uint8_t g_tabSeen[1 << 12];

void See(std::size_t nLibrary, CInflater::eETAT eState, std::size_t nTaken, std::size_t nMade) {
    const auto nSteps = [](std::size_t n) { return static_cast<std::size_t>(std::bit_width(n)) & 15U; };
    std::uint8_t& rby = g_tabSeen[nLibrary << 11 | static_cast<std::size_t>(eState) << 8 |
                                  nSteps(nTaken) << 4 | nSteps(nMade)];
    rby = static_cast<std::uint8_t>(rby < 255 ? rby + 1 : rby);
}

// Deflates: pairs of a byte and how often it stands there, and above 127 how far back what stands there once
// more begins. nHow says with which level and strategy.
std::vector<unsigned char> tabDeflate(std::span<const unsigned char> tab, unsigned nHow) {
    std::vector<unsigned char> tabPlain;
    for (; tab.size() >= 2 && tabPlain.size() < MAX_DEFLATED; tab = tab.subspan(2)) {
        if (tab[1] < 128 || tabPlain.empty()) {
            tabPlain.insert(tabPlain.end(), std::size_t{1} << tab[1] % 12, tab[0]);
            continue;
        }
        const std::size_t nBack =
            std::min<std::size_t>(tabPlain.size(), std::size_t{tab[0]} << tab[1] % 8 | 1U);
        for (unsigned n = 0; n < tab[1]; ++n) {
            tabPlain.push_back(tabPlain[tabPlain.size() - nBack]);
        }
    }
    z_stream st{};
    Check(::deflateInit2(&st, static_cast<int>(nHow % 10), Z_DEFLATED, -15, 9,
                         static_cast<int>(nHow / 10 % 5)) == Z_OK);
    std::vector<unsigned char> tabStream(::deflateBound(&st, tabPlain.size()) + 64);
    st.next_in = tabPlain.data();
    st.next_out = tabStream.data();
    st.avail_out = static_cast<uInt>(tabStream.size());
    // Blocks of their own.
    for (const int nFlush : {Z_SYNC_FLUSH, Z_FULL_FLUSH, Z_FINISH}) {
        st.avail_in =
            static_cast<uInt>(nFlush == Z_FINISH ? tabPlain.size() - st.total_in : tabPlain.size() / 3);
        Check(::deflate(&st, nFlush) != Z_STREAM_ERROR);
    }
    tabStream.resize(st.total_out);
    ::deflateEnd(&st);
    return tabStream;
}

struct STOutcome {
    CInflater::eETAT eState = CInflater::eETAT::Going;
    std::size_t nTaken = 0;
    std::vector<unsigned char> tabOut;
};

// As the reader does it: what is left of a piece stands in front of the next one, and each room is filled.
STOutcome stInflate(const STInflateLibrary& rst, std::span<const unsigned char> tabStream, std::size_t nPiece,
                    std::size_t nRoom) {
    static const CGuarded CL_INPUT;
    static const CGuarded CL_ROOM;
    using eETAT = CInflater::eETAT;
    const auto pclEngine = rst.pfnNewEngine();
    STOutcome st;
    // The second round is of the same engine, which forgets the first one.
    for (int nRound = 0; nRound < 2; ++nRound) {
        Check(pclEngine->bStart());
        st = {};
        for (int n = 0; st.eState == eETAT::Going && n < MAX_STEPS && st.tabOut.size() < MAX_OUT; ++n) {
            const auto tabGiven = CL_INPUT.tabLast(std::min(nPiece, tabStream.size() - st.nTaken));
            std::copy_n(tabStream.begin() + static_cast<std::ptrdiff_t>(st.nTaken), tabGiven.size(),
                        tabGiven.begin());
            std::span<const unsigned char> tabInput = tabGiven;
            const std::size_t nWanted = nRoom - st.tabOut.size() % nRoom;
            const auto tabWhole = CL_ROOM.tabLast(nWanted);
            std::span<unsigned char> tabRoom = tabWhole;
            st.eState = pclEngine->eInflate(tabInput, tabRoom);
            Check(tabInput.size() <= tabGiven.size() && tabRoom.size() <= nWanted);
            Check(st.eState != eETAT::Failed ||
                  (tabInput.size() == tabGiven.size() && tabRoom.size() == nWanted));
            Check(st.eState != eETAT::Going || tabInput.size() < tabGiven.size() || tabRoom.size() < nWanted);
            See(&rst == &rstIsal() ? 1 : 0, st.eState, tabGiven.size() - tabInput.size(),
                nWanted - tabRoom.size());
            st.nTaken += tabGiven.size() - tabInput.size();
            st.tabOut.insert(st.tabOut.end(), tabWhole.begin(),
                             tabWhole.end() - static_cast<std::ptrdiff_t>(tabRoom.size()));
        }
    }
    return st;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pbyData, std::size_t nSize) {
    using eETAT = CInflater::eETAT;
    constexpr std::size_t TAB_SIZE[] = {32768, 16384, 8192, 1024, 259, 16, 2, 1};
    if (nSize < 3 || !bIsalRunsHere()) {
        return 0;
    }
    std::span<const unsigned char> tabStream(pbyData + 3, nSize - 3);
    std::vector<unsigned char> tabDeflated;
    if (const unsigned nHow = pbyData[2]; nHow != 0) {
        tabDeflated = tabDeflate(tabStream, nHow - 1);
        // Half of the time one bit of it is another, and something stands behind it.
        if (nHow > 100 && !tabStream.empty()) {
            tabDeflated[tabStream[0] * tabDeflated.size() / 256] ^=
                static_cast<unsigned char>(1U << nHow % 8);
            tabDeflated.insert(tabDeflated.end(), tabStream.begin(), tabStream.end());
        }
        tabStream = tabDeflated;
    }
    const std::size_t nPiece = TAB_SIZE[pbyData[0] % std::size(TAB_SIZE)];
    const std::size_t nRoom = TAB_SIZE[pbyData[1] % std::size(TAB_SIZE)];
    const STOutcome stOne = stInflate(rstZlib(), tabStream, nPiece, nRoom);
    const STOutcome stOther = stInflate(rstIsal(), tabStream, nPiece, nRoom);
    const std::size_t nBoth = std::min(stOne.tabOut.size(), stOther.tabOut.size());
    Check(std::equal(stOne.tabOut.begin(), stOne.tabOut.begin() + static_cast<std::ptrdiff_t>(nBoth),
                     stOther.tabOut.begin()));
    // One that goes on was stopped here. It has not come as far as the other's end.
    if (stOne.eState == eETAT::Going || stOther.eState == eETAT::Going) {
        Check(stOne.eState != eETAT::Ended || stOther.tabOut.size() <= stOne.tabOut.size());
        Check(stOther.eState != eETAT::Ended || stOne.tabOut.size() <= stOther.tabOut.size());
    }
    if (stOne.eState == eETAT::Ended && stOther.eState == eETAT::Ended) {
        Check(stOne.tabOut.size() == stOther.tabOut.size());
        Check(stOther.nTaken >= stOne.nTaken && stOther.nTaken - stOne.nTaken <= MAX_BEHIND);
    }
    // From an odd place on, too.
    const auto tabFrom = tabStream.subspan(std::min<std::size_t>(tabStream.size(), pbyData[0] / 8));
    Check(rstZlib().pfnCrc32(pbyData[1], tabFrom) == rstIsal().pfnCrc32(pbyData[1], tabFrom));
    return 0;
}
