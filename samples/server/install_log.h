#ifndef KALMO_SAMPLES_SERVER_INSTALL_LOG_H
#define KALMO_SAMPLES_SERVER_INSTALL_LOG_H

#include <cstdio>
#include <memory>
#include <string_view>

#include "framework/fs_path.h"

namespace kalmo::sample {

/// "INSTALL.LOG" of an install directory: what the server's programs did in installer mode, a line each.
/// Both programs append to it; the installer shows it when one of them fails.
class CInstallLog {
  public:
    /// A directory that is empty, since it is not known, has no log: nothing is kept.
    explicit CInstallLog(const CFSPath& clDirectory);
    void Line(std::wstring_view svText);

  private:
    struct STClose {
        void operator()(std::FILE* pstFile) const noexcept { static_cast<void>(std::fclose(pstFile)); }
    };
    std::unique_ptr<std::FILE, STClose> m_pstFile;
};

}  // namespace kalmo::sample

#endif
