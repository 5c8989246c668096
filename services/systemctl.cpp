#include "services/systemctl.h"

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string>

#include "framework/conversion.h"
#include "framework/memory_scope.h"
#include "services/command_witness.h"
#include "services/lance_processus.h"

namespace kalmo {
namespace {

// What is in the administrator's environment must not get into the output that is read here.
void ForgetSettings() {
    for (const char* const psz :
         {"SYSTEMD_COLORS", "SYSTEMD_LOG_LEVEL", "SYSTEMD_LOG_TARGET", "SYSTEMD_URLIFY"}) {
        ::unsetenv(psz);
    }
}

bool bRun(CLanceProcessus& rclSystemctl, std::wstring_view svArguments, CXYString<char>* pcsOutput,
          unsigned* pdwExitCode) {
    ForgetSettings();
    return rclSystemctl.bLanceProcessus(PSZ_SYSTEMCTL, CTString(svArguments).pszGet(), nullptr) &&
           rclSystemctl.bLitSortieEtAttendFinExecution(pcsOutput, pdwExitCode);
}

constexpr int MAX_ERRNO = 133;

// systemctl waits half a minute for a systemd that is busy; a service that is then not seen would be taken
// for none.
constexpr int ATTEMPTS = 3;

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

bool bRunSystemctl(std::wstring_view svArguments, CXYString<char>* pcsOutput, unsigned* pdwExitCode) try {
    const CMemoryScope clScope;
    CLanceProcessus clSystemctl;
    return bRun(clSystemctl, svArguments, pcsOutput, pdwExitCode);
} catch (const std::exception&) {
    return NoMemory(false);
}

bool bAskSystemctl(std::wstring_view svArguments, CXYString<char>* pcsOutput, unsigned* pdwExitCode) try {
    const CMemoryScope clScope;
    CXYString<char> csSaid;
    unsigned dwExitCode = 0;
    for (int nAttempt = 1;; ++nAttempt) {
        CLanceProcessus clSystemctl;
        clSystemctl.ExpectAnswer();
        csSaid.Empty();
        if (!bRun(clSystemctl, svArguments, &csSaid, &dwExitCode)) {
            return false;
        }
        if (dwExitCode == 0 || nAttempt == ATTEMPTS || nReasonInWords(csSaid) != ETIMEDOUT) {
            break;
        }
    }
    if (pcsOutput != nullptr) {
        *pcsOutput += csSaid;
    }
    if (pdwExitCode != nullptr) {
        *pdwExitCode = dwExitCode;
    }
    return true;
} catch (const std::exception&) {
    return NoMemory(false);
}

bool bCommandSystemctl(std::wstring_view svArguments, CXYString<char>* pcsSaid) try {
    const CMemoryScope clScope;
    CLanceProcessus clSystemctl;
    clSystemctl.KeepAtMost(MAX_SAID);
    CXYString<char> csSaid;
    unsigned dwExitCode = 0;
    errno = 0;
    const bool bRan = bRun(clSystemctl, svArguments, &csSaid, &dwExitCode);
    const int nErrno = bRan ? 0 : errno;
    if (!bRan || dwExitCode != 0) {
        const CTString csCommand = CTString(PSZ_SYSTEMCTL) + L" " + svArguments;
        const CTString csWords = csFromUTF8(csSaid);
        errno = nErrno;
        TellCommandEnd({csCommand, bRan ? clSystemctl.nGetStatus() : -1, csWords});
    }
    if (pcsSaid != nullptr) {
        *pcsSaid = csSaid;
    }
    errno = nErrno;
    return bRan && dwExitCode == 0;
} catch (const std::exception&) {
    return NoMemory(false);
}

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
