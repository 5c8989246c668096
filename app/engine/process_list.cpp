#include "app/engine/process_list.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <functional>

#include "framework/conversion.h"
#include "framework/disk_file.h"
#include "framework/file_search.h"

namespace kalmo {
namespace {

constexpr std::size_t MAX_PROC_FILE = 16U << 20U;  // the sockets of a busy machine

std::string csProc(int nProcess, std::string_view svName) {
    return "/proc/" + std::to_string(nProcess) + "/" + std::string(svName);
}

// Calls fn with each process's number until it answers true.
void EachProcess(const std::function<bool(int)>& fn) {
    const CUniqueDir pclProc(::opendir("/proc"));
    const dirent* pst = nullptr;
    while (pclProc != nullptr && (pst = ::readdir(pclProc.get())) != nullptr) {
        const std::string csName = pst->d_name;
        if (csName.find_first_not_of("0123456789") == std::string::npos && fn(std::atoi(csName.c_str()))) {
            return;
        }
    }
}

}  // namespace

std::vector<std::string> tabKernelLines(const CTString& csPath) {
    std::string csText;
    std::vector<std::string> tab;
    if (!CDiskFile::bLoad(csPath, MAX_PROC_FILE, &csText)) {
        return tab;
    }
    std::size_t nStart = 0;
    for (std::size_t nEnd = 0; nStart < csText.size(); nStart = nEnd + 1) {
        nEnd = std::min(csText.find('\n', nStart), csText.size());
        tab.push_back(csText.substr(nStart, nEnd - nStart));
    }
    return tab;
}

std::vector<STProcess> tabProcesses() {
    std::vector<STProcess> tab;
    EachProcess([&tab](int nProcess) {
        struct stat st {};
        if (::stat(csProc(nProcess, "exe").c_str(), &st) == 0) {
            tab.push_back({nProcess, st.st_dev, st.st_ino});
        }
        return false;
    });
    return tab;
}

int nParentProcess(int nProcess) {
    std::string csStat;
    // Number, (name), state, parent; the name may hold anything.
    int nParent = 0;
    if (!CDiskFile::bLoad(csFromUTF8(csProc(nProcess, "stat")), MAX_PROC_FILE, &csStat) ||
        csStat.rfind(')') == std::string::npos ||
        std::sscanf(csStat.c_str() + csStat.rfind(')'), ") %*c %d", &nParent) != 1) {
        return 0;
    }
    return nParent;
}

CTString csProcessName(int nProcess) {
    std::string csName;
    if (!CDiskFile::bLoad(csFromUTF8(csProc(nProcess, "comm")), MAX_PROC_FILE, &csName)) {
        return {};
    }
    CTString cs = csFromUTF8(csName);
    cs.TrimRight(L'\n');
    return cs;
}

bool bProcessOfService(int nProcess, std::wstring_view svService) {
    const std::string csUnit = "/" + std::string(csToUTF8(svService).svGet()) + ".service";
    const std::vector<std::string> tabGroup = tabKernelLines(csFromUTF8(csProc(nProcess, "cgroup")));
    return std::ranges::any_of(tabGroup, [&csUnit](const std::string& rcsGroup) {
        return (rcsGroup + "/").find(csUnit + "/") != std::string::npos;
    });
}

int nSocketHolder(unsigned long long ullInode) {
    const std::string csSocket = "socket:[" + std::to_string(ullInode) + "]";
    int nHolder = 0;
    EachProcess([&](int nProcess) {
        const std::string csFolder = csProc(nProcess, "fd");
        const CUniqueDir pclFds(::opendir(csFolder.c_str()));
        const dirent* pst = nullptr;
        while (nHolder == 0 && pclFds != nullptr && (pst = ::readdir(pclFds.get())) != nullptr) {
            std::array<char, 64> tabLink{};
            const ssize_t nLength =
                ::readlink((csFolder + "/" + pst->d_name).c_str(), tabLink.data(), tabLink.size());
            if (nLength > 0 &&
                std::string_view(tabLink.data(), static_cast<std::size_t>(nLength)) == csSocket) {
                nHolder = nProcess;
            }
        }
        return nHolder != 0;
    });
    return nHolder;
}

}  // namespace kalmo
