#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>

#include "framework/account.h"

namespace kalmo {
namespace {

using CFilePtr = std::unique_ptr<FILE, int (*)(FILE*)>;

bool bNumber(std::string_view sv, unsigned* pn) {
    const auto [pEnd, nError] = std::from_chars(sv.data(), sv.data() + sv.size(), *pn);
    return nError == std::errc() && pEnd == sv.data() + sv.size() && !sv.empty();
}

// The account of a line as in passwd(5), if it is the wanted one.
template <typename FNWANTED>
std::optional<STAccount> stAccountOf(std::string_view svLine, const FNWANTED& fnWanted) {
    enum { NAME, PASSWORD, USER, GROUP, COMMENT, HOME, SHELL, FIELDS };
    std::array<std::string_view, FIELDS> tabField{};
    for (std::string_view& rsv : tabField) {
        rsv = svLine.substr(0, svLine.find(':'));
        svLine.remove_prefix(std::min(rsv.size() + 1, svLine.size()));
    }
    STAccount st{0, 0, std::string(tabField[HOME])};
    const bool bWanted = bNumber(tabField[USER], &st.nUser) && bNumber(tabField[GROUP], &st.nGroup) &&
                         fnWanted(tabField[NAME], st.nUser);
    return bWanted ? std::optional(st) : std::nullopt;
}

// getline(3) that no signal ends, such as that of a window being resized while a directory service takes its
// time.
ssize_t nReadLine(char** ppszLine, std::size_t* pnRoom, FILE* pFile) {
    ssize_t n = 0;
    do {
        std::clearerr(pFile);
        errno = 0;
        n = ::getline(ppszLine, pnRoom, pFile);
    } while (n < 0 && errno == EINTR);
    return n;
}

// The first account of the stream that is wanted. The C library's own reader, fgetpwent(3), takes no pipe.
template <typename FNWANTED>
std::optional<STAccount> stReadAccount(FILE* pFile, const FNWANTED& fnWanted) {
    std::optional<STAccount> stFound;
    char* pszLine = nullptr;
    std::size_t nRoom = 0;
    for (ssize_t n = 0; !stFound && (n = nReadLine(&pszLine, &nRoom, pFile)) > 0;) {
        const std::string_view svLine(pszLine, static_cast<std::size_t>(n));
        // "+" and "-" begin a line that brings in, or leaves out, accounts of a directory service.
        if (svLine.front() != '+' && svLine.front() != '-') {
            stFound = stAccountOf(svLine, fnWanted);
        }
    }
    std::free(pszLine);
    return stFound;
}

// The process whose standard output is the pipe's writing end; what it has to complain about is nobody's.
pid_t nStart(const char* const* ppszArgv, const int (&rtabPipe)[2]) {
    posix_spawn_file_actions_t stActions;
    if (::posix_spawn_file_actions_init(&stActions) != 0) {
        return -1;
    }
    pid_t nPid = -1;
    const bool bPrepared =
        ::posix_spawn_file_actions_addopen(&stActions, STDIN_FILENO, "/dev/null", O_RDWR, 0) == 0 &&
        ::posix_spawn_file_actions_adddup2(&stActions, rtabPipe[1], STDOUT_FILENO) == 0 &&
        ::posix_spawn_file_actions_addopen(&stActions, STDERR_FILENO, "/dev/null", O_RDWR, 0) == 0;
    if (!bPrepared || ::posix_spawnp(&nPid, ppszArgv[0], &stActions, nullptr,
                                     const_cast<char* const*>(ppszArgv), ::environ) != 0) {
        nPid = -1;
    }
    ::posix_spawn_file_actions_destroy(&stActions);
    return nPid;
}

template <typename FNWANTED>
std::optional<STAccount> stAskGetent(const std::string& rcsKey, const FNWANTED& fnWanted) {
    int tabPipe[2];
    if (::pipe2(tabPipe, O_CLOEXEC) != 0) {
        return std::nullopt;
    }
    const char* const tabArgv[] = {"getent", "passwd", rcsKey.c_str(), nullptr};
    const pid_t nPid = nStart(tabArgv, tabPipe);
    ::close(tabPipe[1]);
    const CFilePtr pclAnswer(::fdopen(tabPipe[0], "r"), std::fclose);
    std::optional<STAccount> stFound;
    if (pclAnswer) {
        stFound = stReadAccount(pclAnswer.get(), fnWanted);
    } else {
        ::close(tabPipe[0]);
    }
    while (nPid > 0 && ::waitpid(nPid, nullptr, 0) < 0 && errno == EINTR) {
    }
    return stFound;
}

template <typename FNWANTED>
std::optional<STAccount> stReadPasswd(const FNWANTED& fnWanted) {
    const CFilePtr pclPasswd{std::fopen("/etc/passwd", "re"), std::fclose};
    return pclPasswd ? stReadAccount(pclPasswd.get(), fnWanted) : std::nullopt;
}

}  // namespace

std::optional<STAccount> stFindAccount(const std::string& rcsName) {
    // getent takes the one for an option and the other for the end of a field.
    if (rcsName.empty() || rcsName.starts_with('-') || rcsName.find_first_of(":\n") != std::string::npos) {
        return std::nullopt;
    }
    const auto bSame = [&rcsName](std::string_view svName, uid_t) { return svName == rcsName; };
    if (std::optional<STAccount> stFound = stReadPasswd(bSame)) {
        return stFound;
    }
    // It also takes a number for an account's. Whom it finds by a name is the one, also where a directory
    // service spells it in other letter cases or adds its domain.
    const bool bNumber = rcsName.find_first_not_of("0123456789+ \t\r\v\f") == std::string::npos;
    return stAskGetent(rcsName,
                       [&](std::string_view svName, uid_t n) { return !bNumber || bSame(svName, n); });
}

std::optional<STAccount> stFindAccount(uid_t nUser) {
    const auto bSame = [nUser](std::string_view, uid_t n) { return n == nUser; };
    std::optional<STAccount> stFound = stReadPasswd(bSame);
    return stFound ? stFound : stAskGetent(std::to_string(nUser), bSame);
}

}  // namespace kalmo
