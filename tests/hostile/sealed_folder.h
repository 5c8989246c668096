#ifndef KALMO_TESTS_HOSTILE_SEALED_FOLDER_H
#define KALMO_TESTS_HOSTILE_SEALED_FOLDER_H

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <set>
#include <sstream>
#include <string>

#include "framework/unique_fd.h"

namespace kalmo {

/// A folder that becomes the whole file tree of the process that seals itself in: the archive, the folder it
/// is extracted to a few levels down, and files outside of that which nothing may touch, wherever a name
/// leads.
class CSealedFolder {
  public:
    static constexpr const wchar_t* PSZ_DESTINATION = L"/far/out/destination";

    explicit CSealedFolder(std::filesystem::path clPath) : m_clPath(std::move(clPath)) {
        std::filesystem::create_directories(m_clPath / "far/out/destination");
        std::filesystem::create_directories(m_clPath / "archive");
        for (const char* const psz : {"sentinel", "far/sentinel", "far/out/sentinel"}) {
            std::ofstream(m_clPath / psz) << "not to be touched";
        }
    }
    ~CSealedFolder() {
        std::error_code eIgnored;
        if (::fchdir(m_clOutside.nGet()) != 0 || ::chroot(".") != 0) {
            std::abort();
        }
        std::filesystem::remove_all(m_clPath, eIgnored);
    }
    CSealedFolder(const CSealedFolder&) = delete;
    CSealedFolder& operator=(const CSealedFolder&) = delete;

    /// Brings a file along, as "/archive/" and its name. Gives its length; 0 when there is none.
    [[nodiscard]] std::uint64_t u64Bring(const std::filesystem::path& rclFile) const {
        std::error_code eMissing;
        const bool bThere = copy_file(rclFile, m_clPath / "archive" / rclFile.filename(), eMissing);
        return bThere ? file_size(rclFile) : 0;
    }
    /// Runs a shell command in the destination, which lays something there beforehand.
    [[nodiscard]] bool bLay(const std::string& csCommand) const {
        const std::string cs = "cd '" + (m_clPath / "far/out/destination").string() + "' && " + csCommand;
        return csCommand.empty() || std::system(cs.c_str()) == 0;
    }
    /// Makes the folder this process's file tree until this object is gone. It takes root.
    [[nodiscard]] bool bSeal() {
        if (::chdir(m_clPath.c_str()) != 0 || ::chroot(".") != 0) {
            return false;
        }
        m_csOutside = __csOutside();
        return true;
    }
    /// What there is outside of the destination when that is not what there was when the folder was sealed.
    [[nodiscard]] std::string csDisturbed() const {
        const std::string cs = __csOutside();
        return cs == m_csOutside ? "" : cs;
    }

  private:
    // Every path with its mode, owner, time of change, and what a sentinel says.
    static std::string __csOutside() {
        std::set<std::string> set;
        for (auto it = std::filesystem::recursive_directory_iterator("/"); it != end(it); ++it) {
            struct stat st {};
            ::lstat(it->path().c_str(), &st);
            std::ostringstream clState;
            clState << it->path() << ' ' << st.st_mode << ' ' << st.st_uid << ' ';
            if (it->path() == PSZ_DESTINATION) {
                it.disable_recursion_pending();
            } else {
                clState << st.st_mtim.tv_sec << '.' << st.st_mtim.tv_nsec << ' ';
            }
            if (S_ISREG(st.st_mode) && it->path().filename() == "sentinel") {
                clState << std::ifstream(it->path()).rdbuf();
            }
            set.insert(clState.str() + "; ");
        }
        return std::accumulate(set.begin(), set.end(), std::string());
    }

    std::filesystem::path m_clPath;
    CUniqueFd m_clOutside{::open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
    std::string m_csOutside;
};

}  // namespace kalmo

#endif
