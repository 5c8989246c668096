#include "app/trace.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string>
#include <utility>

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

// A line stays a line whatever a file name or a message holds.
std::string csOneLine(std::wstring_view sv) {
    std::string cs;
    const CXYString<char> csBytes = csToUTF8(sv);
    for (const char c : csBytes.svGet()) {
        if (c == '\n') {
            cs += " | ";
        } else if (static_cast<unsigned char>(c) >= ' ') {
            cs += c;
        }
    }
    return cs;
}

}  // namespace

bool CTrace::bOpen(std::wstring_view svPath) {
    CFSPath clPath;
    if (!clPath.bSet(svPath)) {
        return false;
    }
    // A named pipe in its place must not hold the run up.
    constexpr int nFlags = O_WRONLY | O_CREAT | O_APPEND | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    CUniqueFd clFd(::open(clPath.csGetUTF8().pszGet(), nFlags, 0600));
    struct stat st {};
    if (!clFd.bValid() || ::fstat(clFd.nGet(), &st) != 0 || !S_ISREG(st.st_mode)) {
        return false;
    }
    m_clFd = std::move(clFd);
    return true;
}

void CTrace::Step(std::wstring_view svWhat, std::wstring_view svResult) {
    if (!m_clFd.bValid()) {
        return;
    }
    const std::string csLine = csNow() + "  " + csOneLine(svWhat) + ": " + csOneLine(svResult) + "\n";
    // One write a line, so that the lines of two runs do not mix; a full disk must not stop the work.
    const ssize_t nWritten = ::write(m_clFd.nGet(), csLine.data(), csLine.size());
    static_cast<void>(nWritten);
}

void CTrace::Outcome(std::wstring_view svWhat, bool bSuccess) {
    const int nError = errno;
    CTString csResult(bSuccess ? L"ok" : L"failed");
    if (!bSuccess && nError != 0) {
        csResult += L" (";
        csResult += csFromUTF8(std::strerror(nError));
        csResult += L")";
    }
    Step(svWhat, csResult);
}

void CTrace::Error(std::wstring_view svWhat, const CXError& rclError) {
    Step(svWhat, rclError.StringDump(CXError::eXERROR_INFO::All));
}

}  // namespace kalmo
