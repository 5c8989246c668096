#include "framework/process_info.h"

#include <langinfo.h>
#include <pwd.h>
#include <unistd.h>

#include <array>
#include <clocale>
#include <exception>
#include <string_view>

#include "framework/conversion.h"
#include "framework/memory_scope.h"

namespace kalmo {

bool GetModuleFileNameW(CPathBuffer& rszOut) try {
    const CMemoryScope clScope;
    rszOut[0] = L'\0';
    // Room for 260 characters of the longest UTF-8 form; a path that fills it is too long in any case.
    std::array<char, 4 * TAILLE_MAX_PATH + 1> tabPath{};
    const ssize_t nLength = ::readlink("/proc/self/exe", tabPath.data(), tabPath.size());
    if (nLength <= 0 || static_cast<std::size_t>(nLength) == tabPath.size()) {
        return false;
    }
    CFSPath clPath;
    if (!clPath.bSet(csFromUTF8({tabPath.data(), static_cast<std::size_t>(nLength)}))) {
        return false;
    }
    clPath.CopyTo(rszOut);
    return true;
} catch (const std::exception&) {
    return NoMemory(false);
}

bool bGetHomeDirectory(CFSPath* pclOut) try {
    const CMemoryScope clScope;
    const passwd* const pstUser = ::getpwuid(::getuid());
    return pstUser != nullptr && pclOut->bSet(csFromUTF8(pstUser->pw_dir));
} catch (const std::exception&) {
    return NoMemory(false);
}

void SetLocaleUTF8() {
    const bool bUser =
        std::setlocale(LC_ALL, "") != nullptr && std::string_view(::nl_langinfo(CODESET)) == "UTF-8";
    if (!bUser && std::setlocale(LC_ALL, "C.UTF-8") == nullptr) {
        std::setlocale(LC_ALL, "C");
    }
    std::setlocale(LC_NUMERIC, "C");
}

}  // namespace kalmo
