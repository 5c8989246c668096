#include "app/engine/trace.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <cwchar>
#include <string>
#include <utility>

#include "app/engine/run_view.h"
#include "framework/conversion.h"
#include "framework/fs_path.h"
#include "framework/x_error.h"

namespace kalmo {
namespace {

// Local time with milliseconds.
std::string csNow() {
    const auto clNow = std::chrono::system_clock::now();
    const std::time_t nNow = std::chrono::system_clock::to_time_t(clNow);
    const auto nMillis =
        std::chrono::duration_cast<std::chrono::milliseconds>(clNow.time_since_epoch()).count() % 1000;
    std::tm st{};
    ::localtime_r(&nNow, &st);
    std::array<char, 40> szTime{};
    const std::size_t nLength = std::strftime(szTime.data(), szTime.size(), "%Y-%m-%d %H:%M:%S", &st);
    std::array<char, 8> szMillis{};
    static_cast<void>(std::snprintf(szMillis.data(), szMillis.size(), ".%03d", static_cast<int>(nMillis)));
    return std::string(szTime.data(), nLength) + szMillis.data();
}

// Control characters, with which a name could forge a line or reach the terminal of whoever reads the trace.
// Bytes that are no UTF-8 are lone surrogates here (csFromUTF8).
bool bControl(wchar_t c) {
    return c < L' ' || (c >= 0x7F && c <= 0x9F) || (c >= 0xDC80 && c <= 0xDCFF);
}

std::wstring csEscaped(wchar_t c) {
    std::array<wchar_t, 8> szCode{};
    std::swprintf(szCode.data(), szCode.size(), L"\\x%02X", static_cast<unsigned>(c) & 0xFFU);
    return szCode.data();
}

CTString csOutcome(int nError) {
    switch (nError) {
        case 0: return CTString(L"ok");
        case NO_REASON: return CTString(L"failed");
        default: return L"failed (" + csReason(nError) + L")";
    }
}

// The view of a run that nobody watches.
class CNoView final : public IRunView {
  public:
    void ShowError(const CTString& /*csText*/) override {}
    void ShowResult(const CTString& /*csText*/) override {}
    void Repaint() override {}
    void Close() override {}
};

}  // namespace

CTString csReason(int nErrno) {
    return csFromUTF8(std::strerror(nErrno));
}

CTString csOneLine(std::wstring_view sv) {
    sv = sv.substr(0, sv.find_last_not_of(L"\r\n") + 1);
    std::wstring cs;
    for (std::size_t n = 0; n < sv.size(); ++n) {
        if (sv[n] == L'\n') {
            cs += L" | ";
        } else if (sv.substr(n, 2) != L"\r\n") {
            cs += bControl(sv[n]) ? csEscaped(sv[n]) : std::wstring(1, sv[n]);
        }
    }
    return cs;
}

CTString csQuoted(std::wstring_view svValue) {
    std::wstring cs = L"\"";
    for (const wchar_t c : svValue) {
        cs += c == L'"' || c == L'\\' ? std::wstring{L'\\', c}
              : bControl(c)           ? csEscaped(c)
                                      : std::wstring(1, c);
    }
    return CTString(cs + L'"');
}

bool CTrace::bOpen(std::wstring_view svPath) {
    CFSPath clPath;
    if (!clPath.bSet(svPath)) {
        return false;
    }
    // A named pipe in its place must not hold the run up.
    constexpr int FLAGS = O_WRONLY | O_CREAT | O_APPEND | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    CUniqueFd clFd(::open(clPath.csGetUTF8().pszGet(), FLAGS, 0600));
    struct stat st {};
    if (!clFd.bValid() || ::fstat(clFd.nGet(), &st) != 0 || !S_ISREG(st.st_mode)) {
        return false;
    }
    m_clFd = std::move(clFd);
    return true;
}

void CTrace::__Tell(std::wstring_view svWhat, std::wstring_view svResult, bool bDone, bool bFailed) {
    m_bChanges |= m_bAsked && bDone;
    m_bAsked = false;
    if (m_pclListener == nullptr && !m_clFd.bValid()) {
        return;
    }
    const CTString csWhat = csOneLine(svWhat);
    const CTString csResult = csOneLine(svResult);
    if (m_pclListener != nullptr) {
        m_pclListener->StepTold(csWhat, csResult, bFailed);
    }
    if (!m_clFd.bValid()) {
        return;
    }
    const std::string csLine = csNow() + "  " + csToUTF8(csWhat + L": " + csResult).pszGet() + "\n";
    // One write a line, so that the lines of two runs do not mix; a full disk must not stop the work.
    const ssize_t nWritten = ::write(m_clFd.nGet(), csLine.data(), csLine.size());
    static_cast<void>(nWritten);
}

void CTrace::Step(std::wstring_view svWhat, std::wstring_view svResult) {
    __Tell(svWhat, svResult, true, false);
}

void CTrace::Told(std::wstring_view svWhat, std::wstring_view svResult, bool bFailed) {
    __Tell(svWhat, svResult, !bFailed, bFailed);
}

void CTrace::Failed(std::wstring_view svWhat, std::wstring_view svWhy) {
    __Tell(svWhat, L"failed: " + CTString(svWhy), false, true);
}

void CTrace::Outcome(std::wstring_view svWhat, int nError) {
    __Tell(svWhat, csOutcome(nError), nError == 0, nError != 0);
}

void CTrace::Note(std::wstring_view svWhat, int nError) {
    __Tell(svWhat, csOutcome(nError), nError == 0, false);
}

void CTrace::Error(std::wstring_view svWhat, const CXError& rclError) {
    __Tell(svWhat, rclError.StringDump(CXError::eXERROR_INFO::All), false, true);
}

IRunView& CTrace::rclGetView() const noexcept {
    static CNoView clNone;
    return m_pclView != nullptr ? *m_pclView : clNone;
}

}  // namespace kalmo
