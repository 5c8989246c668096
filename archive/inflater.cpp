#include "archive/inflater.h"

#include <zlib.h>

namespace kalmo {
namespace {

constexpr int RAW_WINDOW_BITS = -15;

}  // namespace

CInflater::CInflater() : m_pstStream(std::make_unique<z_stream_s>()) {}

CInflater::~CInflater() {
    End();
}

bool CInflater::bStart() {
    End();
    *m_pstStream = {};
    m_bStarted = ::inflateInit2(m_pstStream.get(), RAW_WINDOW_BITS) == Z_OK;
    return m_bStarted;
}

CInflater::eETAT CInflater::eInflate(std::span<const unsigned char>& rtabInput,
                                     std::span<unsigned char>& rtabRoom) {
    // zlib takes the input as mutable for reasons of its own and only reads it.
    m_pstStream->next_in = const_cast<unsigned char*>(rtabInput.data());
    m_pstStream->avail_in = static_cast<uInt>(rtabInput.size());
    m_pstStream->next_out = rtabRoom.data();
    m_pstStream->avail_out = static_cast<uInt>(rtabRoom.size());
    const int nResult = ::inflate(m_pstStream.get(), Z_SYNC_FLUSH);
    rtabInput = rtabInput.last(m_pstStream->avail_in);
    rtabRoom = rtabRoom.last(m_pstStream->avail_out);
    switch (nResult) {
        case Z_OK: return eETAT::Going;
        case Z_STREAM_END: return eETAT::Ended;
        default: return eETAT::Failed;
    }
}

void CInflater::End() noexcept {
    if (m_bStarted) {
        ::inflateEnd(m_pstStream.get());
        m_bStarted = false;
    }
}

}  // namespace kalmo
