#include "framework/profile_reader.h"

#include <algorithm>
#include <array>

namespace kalmo {
namespace {

// The line buffer's first size and what it grows by, in bytes.
constexpr std::size_t PAS_LIGNE = 256;
// No write of ours leaves more nulls; whatever has is no text.
constexpr std::int64_t MAX_NULLS = 1 << 20;

// Moves a stream's length before the nulls at its end. False when it cannot be read.
bool bCutNulls(IXStream& rclStream, std::int64_t* pi64Length) {
    const std::int64_t i64First = *pi64Length - MAX_NULLS;
    std::array<char, PAS_LIGNE> tabEnd{};
    while (*pi64Length > std::max<std::int64_t>(i64First, 0)) {
        const std::int64_t i64Block = std::min<std::int64_t>(*pi64Length, PAS_LIGNE);
        const std::string_view svEnd(tabEnd.data(), static_cast<std::size_t>(i64Block));
        if (!rclStream.bSeek(*pi64Length - i64Block) || !rclStream.bReadAll(tabEnd.data(), svEnd.size())) {
            return false;
        }
        const std::size_t nText = svEnd.find_last_not_of('\0') + 1;  // 0: nulls alone
        *pi64Length -= i64Block - static_cast<std::int64_t>(nText);
        if (nText > 0) {
            break;
        }
    }
    return true;
}

}  // namespace

CProfileReader::CProfileReader(IXStream& rclStream)
    : m_rclStream(rclStream), m_i64Length(rclStream.i64GetLength()) {
    const std::int64_t i64WithNulls = m_i64Length;
    m_bFailed = m_i64Length < 0 || !bCutNulls(rclStream, &m_i64Length) || !rclStream.bSeek(0);
    if (!m_bFailed && bFichierUnicode(rclStream)) {
        m_eEncodage = eENCODAGE::Large;
        m_i64Length = std::min(m_i64Length + m_i64Length % 2, i64WithNulls);  // the null half of a last unit
    }
    m_i64Position = rclStream.i64GetPosition();
}

std::string_view CProfileReader::__svPending() const noexcept {
    return std::string_view(m_csBuffer).substr(m_nTaken);
}

bool CProfileReader::__bFill() {
    m_csBuffer.erase(0, m_nTaken);
    m_nTaken = 0;
    const std::size_t nBefore = m_csBuffer.size();
    const auto nLeft =
        static_cast<std::size_t>(std::max<std::int64_t>(m_i64Length - m_rclStream.i64GetPosition(), 0));
    m_csBuffer.resize(nBefore + PAS_LIGNE);
    std::size_t nRead = 0;
    m_bFailed = !m_rclStream.bRead(m_csBuffer.data() + nBefore, std::min(PAS_LIGNE, nLeft), &nRead);
    m_csBuffer.resize(nBefore + (m_bFailed ? 0 : nRead));
    return m_csBuffer.size() > nBefore;
}

bool CProfileReader::bNext(STProfileLine* pstLine) {
    std::size_t nLength = 0;
    std::size_t nSeen = 0;
    while (!m_bFailed && (nLength = nTailleLigne(m_eEncodage, __svPending(), nSeen)) == 0) {
        nSeen = __svPending().size() / nTailleUnite(m_eEncodage) * nTailleUnite(m_eEncodage);
        if (!__bFill()) {
            nLength = nSeen;
            break;
        }
    }
    if (m_bFailed || nLength == 0) {
        return false;
    }
    pstLine->csText = csDecode(m_eEncodage, __svPending().substr(0, nLength));
    pstLine->i64Start = m_i64Position;
    m_nTaken += nLength;
    m_i64Position += static_cast<std::int64_t>(nLength);
    pstLine->i64End = m_i64Position;
    return true;
}

CTString CProfileReader::csAsRead(std::wstring_view svName) const {
    return csDecode(m_eEncodage, csEncode(m_eEncodage, svName));
}

}  // namespace kalmo
