#include <isa-l/crc.h>
#include <isa-l/igzip_lib.h>

#include "archive/inflate_engine.h"

namespace kalmo {
namespace {

class CIsalEngine : public IInflateEngine {
  public:
    bool bStart() override {
        ::isal_inflate_init(&m_stState);
        return true;
    }

    CInflater::eETAT eInflate(std::span<const unsigned char>& rtabInput,
                              std::span<unsigned char>& rtabRoom) override {
        using eETAT = CInflater::eETAT;
        // ISA-L takes the input as mutable and only reads it.
        m_stState.next_in = const_cast<unsigned char*>(rtabInput.data());
        m_stState.avail_in = static_cast<std::uint32_t>(rtabInput.size());
        m_stState.next_out = rtabRoom.data();
        m_stState.avail_out = static_cast<std::uint32_t>(rtabRoom.size());
        const int nResult = ::isal_inflate(&m_stState);
        const bool bEnded = m_stState.block_state == ISAL_BLOCK_FINISH;
        // Neither wanting input nor getting nowhere is an error to it.
        const bool bNowhere =
            m_stState.avail_in == rtabInput.size() && m_stState.avail_out == rtabRoom.size() && !bEnded;
        // Behind an error it may count less than nothing as left of the input.
        if (nResult != ISAL_DECOMP_OK || bNowhere || m_stState.avail_in > rtabInput.size() ||
            m_stState.avail_out > rtabRoom.size()) {
            return eETAT::Failed;
        }
        rtabInput = rtabInput.last(m_stState.avail_in);
        rtabRoom = rtabRoom.last(m_stState.avail_out);
        return bEnded ? eETAT::Ended : eETAT::Going;
    }

  private:
    inflate_state m_stState{};
};

std::unique_ptr<IInflateEngine> pclNewIsal() {
    return std::make_unique<CIsalEngine>();
}

std::uint32_t dwCrc32OfIsal(std::uint32_t dwCrc, std::span<const unsigned char> tabByte) noexcept {
    return ::crc32_gzip_refl(dwCrc, tabByte.data(), tabByte.size());
}

}  // namespace

bool bIsalRunsHere() noexcept {
#if defined(__x86_64__)
    __builtin_cpu_init();
    return __builtin_cpu_supports("sse4.1") != 0 && __builtin_cpu_supports("sse4.2") != 0 &&
           __builtin_cpu_supports("pclmul") != 0;
#elif defined(__aarch64__)
    return true;
#else
    return false;
#endif
}

const STInflateLibrary& rstIsal() noexcept {
    static constexpr STInflateLibrary ST_LIBRARY{pclNewIsal, dwCrc32OfIsal};
    return ST_LIBRARY;
}

}  // namespace kalmo
