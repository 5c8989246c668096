#include <zlib.h>

#include "archive/inflate_engine.h"

namespace kalmo {
namespace {

constexpr int RAW_WINDOW_BITS = -15;

class CZlibEngine : public IInflateEngine {
  public:
    CZlibEngine() = default;
    ~CZlibEngine() override {
        if (m_bMade) {
            ::inflateEnd(&m_stStream);
        }
    }

    bool bStart() override {
        if (m_bMade) {
            return ::inflateReset(&m_stStream) == Z_OK;
        }
        m_bMade = ::inflateInit2(&m_stStream, RAW_WINDOW_BITS) == Z_OK;
        return m_bMade;
    }

    CInflater::eETAT eInflate(std::span<const unsigned char>& rtabInput,
                              std::span<unsigned char>& rtabRoom) override {
        using eETAT = CInflater::eETAT;
        // zlib takes the input as mutable for reasons of its own and only reads it.
        m_stStream.next_in = const_cast<unsigned char*>(rtabInput.data());
        m_stStream.avail_in = static_cast<uInt>(rtabInput.size());
        m_stStream.next_out = rtabRoom.data();
        m_stStream.avail_out = static_cast<uInt>(rtabRoom.size());
        const int nResult = ::inflate(&m_stStream, Z_SYNC_FLUSH);
        if (nResult != Z_OK && nResult != Z_STREAM_END) {
            return eETAT::Failed;
        }
        rtabInput = rtabInput.last(m_stStream.avail_in);
        rtabRoom = rtabRoom.last(m_stStream.avail_out);
        return nResult == Z_STREAM_END ? eETAT::Ended : eETAT::Going;
    }

  private:
    z_stream m_stStream{};
    bool m_bMade = false;
};

std::unique_ptr<IInflateEngine> pclNewZlib() {
    return std::make_unique<CZlibEngine>();
}

std::uint32_t dwCrc32OfZlib(std::uint32_t dwCrc, std::span<const unsigned char> tabByte) noexcept {
    return static_cast<std::uint32_t>(::crc32_z(dwCrc, tabByte.data(), tabByte.size()));
}

}  // namespace

const STInflateLibrary& rstZlib() noexcept {
    static constexpr STInflateLibrary ST_LIBRARY{pclNewZlib, dwCrc32OfZlib};
    return ST_LIBRARY;
}

}  // namespace kalmo
