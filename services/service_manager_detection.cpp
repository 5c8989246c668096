#include <algorithm>
#include <cerrno>
#include <optional>
#include <string>
#include <string_view>

#include "framework/disk_file.h"
#include "services/service_manager.h"
#include "services/systemctl.h"

namespace kalmo {
namespace {

// Release files are a few lines; anything longer is none and counts as unreadable.
constexpr std::size_t MAX_RELEASE_FILE = 65536;

struct STReleaseFile {
    const wchar_t* pszPath;
    eDISTRI eDistri;
};

// Files whose existence decides, in this order: several may exist on one machine.
constexpr STReleaseFile TAB_RELEASE_FILE[] = {
    {L"/etc/debian_version", eDebian},
    {L"/etc/mandrake-release", eMandriva},
    {L"/etc/mandriva-release", eMandriva},
    {L"/etc/SuSE-release", eSuSE},
    {L"/sbin/SuSEconfig", eSuSE},
    {L"/etc/gentoo-release", eGentoo},
    {L"/etc/fedora-release", eFedora},
    {L"/etc/slackware-release", eSlackware},
    {L"/etc/slackware-version", eSlackware},
};

struct STReleaseWord {
    std::string_view svWord;
    eDISTRI eDistri;
};

// Words that decide in the text of a release file, in this order.
constexpr STReleaseWord TAB_RED_HAT_RELEASE[] = {
    {"mandrake", eMandriva}, {"mandriva", eMandriva}, {"fedora", eFedora}, {"", eRedHat}};
constexpr STReleaseWord TAB_VERSION[] = {{"mandrake", eMandriva},
                                         {"mandriva", eMandriva},
                                         {"fedora", eFedora},
                                         {"redhat", eRedHat},
                                         {"debian", eDebian}};

// Whether systemctl answers. Otherwise *pnError tells why an existing one could not be asked.
bool bSystemctlWorks(int* pnError) {
    unsigned dwExitCode = 0;
    errno = 0;
    if (!CDiskFile::bFileExists(PSZ_SYSTEMCTL) ||
        !bAskSystemctl(L"--no-pager --no-legend", nullptr, &dwExitCode)) {
        *pnError = errno;
        return false;
    }
    *pnError = 0;
    return dwExitCode == 0;
}

template <std::size_t N>
std::optional<eDISTRI> eReadReleaseFile(const wchar_t* pszPath, const STReleaseWord (&rtabWord)[N]) {
    std::string csText;
    if (!CDiskFile::bFileExists(pszPath) || !CDiskFile::bLoad(pszPath, MAX_RELEASE_FILE, &csText)) {
        return std::nullopt;
    }
    std::transform(csText.begin(), csText.end(), csText.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; });
    for (const STReleaseWord& rst : rtabWord) {
        if (csText.find(rst.svWord) != std::string::npos) {
            return rst.eDistri;
        }
    }
    return std::nullopt;
}

}  // namespace

eDISTRI CServiceManager::__eFindDistri() {
    if (bSystemctlWorks(&ms_nSystemctlError)) {
        return eSystemd;
    }
    for (const STReleaseFile& rst : TAB_RELEASE_FILE) {
        if (CDiskFile::bFileExists(rst.pszPath)) {
            return rst.eDistri;
        }
    }
    if (const auto eDistri = eReadReleaseFile(L"/etc/redhat-release", TAB_RED_HAT_RELEASE)) {
        return *eDistri;
    }
    if (const auto eDistri = eReadReleaseFile(L"/etc/version", TAB_VERSION)) {
        return *eDistri;
    }
    // "function", although such machines have a file "functions": the name is part of the rule.
    return CDiskFile::bFileExists(L"/etc/init.d/function") ? eRedHat : eDebian;
}

}  // namespace kalmo
