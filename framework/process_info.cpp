#include "framework/process_info.h"

#include <langinfo.h>
#include <libintl.h>
#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <optional>
#include <string_view>

#include "framework/account.h"
#include "framework/conversion.h"
#include "framework/memory_scope.h"

namespace kalmo {

namespace {

// Of the current locale.
bool bUTF8() {
    return std::string_view(::nl_langinfo(CODESET)) == "UTF-8";
}

// The set of characters in the name of the locale that the environment asks for: what stands behind the ".",
// empty when that is not told.
std::string_view svSetOfEnvironment() {
    for (const char* const pszName : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const char* const psz = std::getenv(pszName);
        if (psz == nullptr || *psz == '\0') {
            continue;
        }
        const std::string_view svLocale(psz);
        const std::size_t nModifier = std::min(svLocale.find('@'), svLocale.size());
        const std::size_t nSet = svLocale.substr(0, nModifier).find('.');
        if (nSet != svLocale.npos) {
            return svLocale.substr(nSet + 1, nModifier - nSet - 1);
        }
        return svLocale.substr(nModifier) == "@euro" ? "ISO-8859-15" : "";
    }
    return "";
}

// Neither UTF-8 nor ASCII, which is what terminals get that nobody has told of.
bool bNamesOther(std::string_view svSet) {
    std::string csSet(svSet);
    std::erase(csSet, '-');
    return !csSet.empty() && ::strcasecmp(csSet.c_str(), "UTF8") != 0 && csSet != "ANSI_X3.41968";
}

// The characters of a UTF-8 locale that is installed, or of the C locale.
void TakeInstalledUTF8() {
    FILE* const pList = ::popen("locale -a 2>/dev/null", "re");
    bool bTaken = false;
    std::array<char, 256> szLine{};
    while (pList != nullptr && !bTaken && std::fgets(szLine.data(), szLine.size(), pList) != nullptr) {
        szLine[std::strcspn(szLine.data(), "\n")] = '\0';
        bTaken = std::strchr(szLine.data(), '.') != nullptr &&
                 std::setlocale(LC_CTYPE, szLine.data()) != nullptr && bUTF8();
    }
    if (pList != nullptr) {
        ::pclose(pList);
    }
    if (!bTaken) {
        std::setlocale(LC_CTYPE, "C");
    }
}

}  // namespace

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
    const std::optional<STAccount> stUser = stFindAccount(::getuid());
    return stUser && pclOut->bSet(csFromUTF8(stUser->csHome));
} catch (const std::exception&) {
    return NoMemory(false);
}

void SetLocaleUTF8() {
    const bool bUser = std::setlocale(LC_ALL, "") != nullptr;
    const bool bOwnSet = bUser ? bNamesOther(::nl_langinfo(CODESET)) : bNamesOther(svSetOfEnvironment());
    if (bOwnSet) {
        // Messages stay in the user's language, as UTF-8 like every text that comes in.
        std::setlocale(LC_CTYPE, "C");
        ::bind_textdomain_codeset("libc", "UTF-8");
    } else if (!bUser || !bUTF8()) {
        if (std::setlocale(LC_ALL, "C.UTF-8") == nullptr) {
            TakeInstalledUTF8();
        }
    }
    std::setlocale(LC_NUMERIC, "C");
}

}  // namespace kalmo
