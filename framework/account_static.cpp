#include <fcntl.h>
#include <pwd.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <string_view>

#include "framework/account.h"

namespace kalmo {
namespace {

using CFilePtr = std::unique_ptr<FILE, int (*)(FILE*)>;

// The first account that the stream, lines as in passwd(5), has and that is wanted.
template <typename FNWANTED>
std::optional<STAccount> stReadAccount(FILE* pFile, const FNWANTED& fnWanted) {
    while (const passwd* const pst = ::fgetpwent(pFile)) {
        // "+" and "-" begin a line that brings in, or leaves out, accounts of a directory service.
        const bool bEntry = pst->pw_name[0] != '+' && pst->pw_name[0] != '-';
        if (bEntry && fnWanted(*pst)) {
            return STAccount{pst->pw_uid, pst->pw_gid, pst->pw_dir};
        }
    }
    return std::nullopt;
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
std::optional<STAccount> stFind(const std::string& rcsKey, const FNWANTED& fnWanted) {
    if (const CFilePtr pclPasswd{std::fopen("/etc/passwd", "re"), std::fclose}) {
        if (std::optional<STAccount> stFound = stReadAccount(pclPasswd.get(), fnWanted)) {
            return stFound;
        }
    }
    return stAskGetent(rcsKey, fnWanted);
}

}  // namespace

std::optional<STAccount> stFindAccount(const std::string& rcsName) {
    // getent takes the one for an option and the other for the end of a field.
    if (rcsName.empty() || rcsName.starts_with('-') || rcsName.find_first_of(":\n") != std::string::npos) {
        return std::nullopt;
    }
    // It also takes a number for an account's, hence the comparison of what it answers.
    return stFind(rcsName,
                  [svName = std::string_view(rcsName)](const passwd& rst) { return rst.pw_name == svName; });
}

std::optional<STAccount> stFindAccount(uid_t nUser) {
    return stFind(std::to_string(nUser), [nUser](const passwd& rst) { return rst.pw_uid == nUser; });
}

}  // namespace kalmo
