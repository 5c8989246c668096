#include "services/refusal_reason.h"

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstring>
#include <string>

namespace kalmo {
namespace {

constexpr int MAX_ERRNO = 133;

// ASCII only: other letters have the case that the system's own texts have.
std::string csLower(std::string_view sv) {
    std::string cs(sv);
    std::transform(cs.begin(), cs.end(), cs.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; });
    return cs;
}

class CLocale {
  public:
    explicit CLocale(const char* pszName) : m_cl(::newlocale(LC_ALL_MASK, pszName, nullptr)) {}
    CLocale(const CLocale&) = delete;
    CLocale& operator=(const CLocale&) = delete;
    ~CLocale() {
        if (m_cl != nullptr) {
            ::freelocale(m_cl);
        }
    }
    [[nodiscard]] std::string csText(int nError) const {
        return m_cl == nullptr ? std::string() : csLower(::strerror_l(nError, m_cl));
    }

  private:
    locale_t m_cl;
};

}  // namespace

int nReasonInWords(std::string_view svWords) {
    const std::string csWords = csLower(svWords);
    for (const char* const psz :
         {"access denied", "permission denied", "operation not permitted", "authentication required"}) {
        if (csWords.find(psz) != std::string::npos) {
            return EPERM;
        }
    }
    int nReason = ECANCELED;
    std::size_t nLongest = 0;  // one text may be a part of another one
    for (const char* const pszLocale : {"C", ""}) {
        const CLocale clLocale(pszLocale);
        for (int n = 1; n <= MAX_ERRNO; ++n) {
            const std::string csText = clLocale.csText(n);
            if (csText.size() > nLongest && csWords.find(csText) != std::string::npos) {
                nLongest = csText.size();
                nReason = n == EACCES ? EPERM : n;
            }
        }
    }
    return nReason;
}

}  // namespace kalmo
