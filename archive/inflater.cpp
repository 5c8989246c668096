#include "archive/inflater.h"

#include "archive/inflate_engine.h"

namespace kalmo {

CInflater::CInflater() = default;

CInflater::~CInflater() = default;

bool CInflater::bStart() {
    if (!m_pclEngine) {
        m_pclEngine = rstInflateLibrary().pfnNewEngine();
    }
    m_bStarted = m_pclEngine->bStart();
    return m_bStarted;
}

CInflater::eETAT CInflater::eInflate(std::span<const unsigned char>& rtabInput,
                                     std::span<unsigned char>& rtabRoom) {
    return m_bStarted ? m_pclEngine->eInflate(rtabInput, rtabRoom) : eETAT::Failed;
}

void CInflater::End() noexcept {
    m_bStarted = false;
}

}  // namespace kalmo
