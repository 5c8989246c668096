// Inflating: one library is held against the other. Of any stream both make the same bytes, as far as both go
// on, and end at the same place, unless one refuses it: of what is no sound stream one may see more than the
// other. Neither reads or writes a byte beyond what it was given, although nothing of theirs is built with
// sanitizers.
//
// Input: a byte for the size of the input's pieces, one for that of the room; behind them the stream.

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

#include "archive/crc32.h"
#include "archive/inflate_engine.h"

namespace {

using namespace kalmo;

constexpr std::size_t MAX_OUT = 1 << 20;
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
        while (st.eState == eETAT::Going && st.tabOut.size() < MAX_OUT) {
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
    if (nSize < 2 || !bIsalRunsHere()) {
        return 0;
    }
    const std::span tabStream(pbyData + 2, nSize - 2);
    const std::size_t nPiece = TAB_SIZE[pbyData[0] % std::size(TAB_SIZE)];
    const std::size_t nRoom = TAB_SIZE[pbyData[1] % std::size(TAB_SIZE)];
    const STOutcome stOne = stInflate(rstZlib(), tabStream, nPiece, nRoom);
    const STOutcome stOther = stInflate(rstIsal(), tabStream, nPiece, nRoom);
    const std::size_t nBoth = std::min(stOne.tabOut.size(), stOther.tabOut.size());
    Check(std::equal(stOne.tabOut.begin(), stOne.tabOut.begin() + static_cast<std::ptrdiff_t>(nBoth),
                     stOther.tabOut.begin()));
    if (stOne.eState != eETAT::Failed && stOther.eState != eETAT::Failed) {
        Check(stOne.eState == stOther.eState || nBoth >= MAX_OUT);
        Check(stOne.tabOut.size() == stOther.tabOut.size() || nBoth >= MAX_OUT);
    }
    if (stOne.eState == eETAT::Ended && stOther.eState == eETAT::Ended) {
        Check(stOther.nTaken >= stOne.nTaken && stOther.nTaken - stOne.nTaken <= MAX_BEHIND);
    }
    // From an odd place on, too.
    const auto tabFrom = tabStream.subspan(std::min<std::size_t>(tabStream.size(), pbyData[0] / 8));
    Check(rstZlib().pfnCrc32(pbyData[1], tabFrom) == rstIsal().pfnCrc32(pbyData[1], tabFrom));
    return 0;
}
