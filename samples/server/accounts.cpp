#include "samples/server/accounts.h"

#include <crypt.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <vector>

#include "archive/entry_cipher.h"
#include "framework/conversion.h"
#include "framework/unique_fd.h"

namespace kalmo::sample {
namespace {

constexpr std::size_t SALT_BYTES = 4;
constexpr std::size_t MAX_FILE = 1U << 20U;

struct STAccount {
    std::string csHash;
    std::string csName;
};

// The hash of a password under a setting: another hash, or a prefix with a salt. Empty on failure.
std::string csHash(const std::string& csPassword, const char* pszSetting) {
    const auto pst = std::make_unique<crypt_data>();
    const char* const psz = ::crypt_r(csPassword.c_str(), pszSetting, pst.get());
    return psz != nullptr && *psz != '*' ? psz : "";
}

std::string csNewHash(const std::string& csPassword) {
    std::array<char, CRYPT_GENSALT_OUTPUT_SIZE> szSetting{};
    const bool bSalted = ::crypt_gensalt_rn(nullptr, 0, nullptr, 0, szSetting.data(),
                                            static_cast<int>(szSetting.size())) != nullptr;
    return bSalted ? csHash(csPassword, szSetting.data()) : "";
}

bool bPasswordIs(const STAccount& rst, const std::string& csPassword) {
    return rst.csHash.empty() ? csPassword.empty() : csHash(csPassword, rst.csHash.c_str()) == rst.csHash;
}

// The directory is the daemon's: a link that it may have put in the file's place is not followed.
std::vector<STAccount> tabRead(const CFSPath& clFile) {
    const CUniqueFd clFd(::open(clFile.csGetUTF8().pszGet(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    std::string csText;
    std::array<char, 4096> tabPiece{};
    for (ssize_t n = 0;
         csText.size() < MAX_FILE && (n = ::read(clFd.nGet(), tabPiece.data(), tabPiece.size())) > 0;) {
        csText.append(tabPiece.data(), static_cast<std::size_t>(n));
    }
    std::vector<STAccount> tab;
    for (std::size_t nStart = 0, nEnd = 0; (nEnd = csText.find('\n', nStart)) != csText.npos;
         nStart = nEnd + 1) {
        const std::string csLine = csText.substr(nStart, nEnd - nStart);
        if (const std::size_t nBlank = csLine.find(' '); nBlank != csLine.npos && nBlank > 0) {
            tab.push_back({csLine.substr(0, nBlank), csLine.substr(nBlank + 1)});
        }
    }
    if (tab.empty()) {
        tab.push_back({"", "Admin"});
    }
    return tab;
}

bool bWriteAll(int nFd, std::string_view sv) {
    return ::write(nFd, sv.data(), sv.size()) == static_cast<ssize_t>(sv.size());
}

// Replaces the file at one stroke.
bool bReplace(const CFSPath& clFile, std::string_view svText) {
    CFSPath clDirectory = clFile;
    clDirectory.KeepDirectory();
    const std::string csFile(clFile.csGetUTF8().svGet());
    std::string csPartial = csFile + ".XXXXXX";
    const CUniqueFd clFd(::mkostemp(csPartial.data(), O_CLOEXEC));  // 0600
    struct stat st {};
    const bool bWritten = clFd.bValid() && ::stat(clDirectory.csGetUTF8().pszGet(), &st) == 0 &&
                          bWriteAll(clFd.nGet(), svText) &&
                          ::fchown(clFd.nGet(), st.st_uid, st.st_gid) == 0 &&
                          std::rename(csPartial.c_str(), csFile.c_str()) == 0;
    if (clFd.bValid() && !bWritten) {
        ::unlink(csPartial.c_str());
    }
    return bWritten;
}

int nDigit(char c) {
    return static_cast<int>(std::string_view("0123456789ABCDEF").find(c));  // -1: none
}

}  // namespace

std::optional<std::string> csDecipherPassword(std::string_view svAccount, std::string_view svHex) {
    std::vector<unsigned char> tabByte;
    for (; svHex.size() >= 2; svHex.remove_prefix(2)) {
        if (nDigit(svHex[0]) < 0 || nDigit(svHex[1]) < 0) {
            return {};
        }
        tabByte.push_back(static_cast<unsigned char>(nDigit(svHex[0]) * 16 + nDigit(svHex[1])));
    }
    if (!svHex.empty() || tabByte.size() < SALT_BYTES) {
        return {};
    }
    CEntryCipher clCipher;
    clCipher.CryptInitKeys(std::wstring(svAccount.begin(), svAccount.end()));
    clCipher.CryptDecodeBuffer(tabByte);
    std::string csPassword(tabByte.begin() + SALT_BYTES, tabByte.end());
    // What is not UTF-8 becomes lone surrogates.
    const CTString csWide = csFromUTF8(csPassword);
    const bool bText = std::ranges::none_of(csWide.svGet(),
                                            [](wchar_t c) { return c == 0 || (c >= 0xD800 && c <= 0xDFFF); });
    return bText ? std::optional(csPassword) : std::nullopt;
}

CAccounts::CAccounts(const CFSPath& clDatabaseRoot) : m_clFile(clDatabaseRoot) {
    if (!m_clFile.bAppend(L"__system/accounts")) {
        m_clFile = {};
    }
}

bool CAccounts::bCreate(std::string_view svName, std::string_view svPassword) {
    const auto bControl = [](char c) { return static_cast<unsigned char>(c) < ' '; };
    const std::string csNew = csNewHash(std::string(svPassword));
    if (m_clFile.bEmpty() || svName.empty() || std::ranges::any_of(svName, bControl) || csNew.empty()) {
        return false;
    }
    std::string csText;
    for (const STAccount& rst : tabRead(m_clFile)) {
        if (!rst.csHash.empty() && rst.csName != svName) {
            csText += rst.csHash + " " + rst.csName + "\n";
        }
    }
    return bReplace(m_clFile, csText + csNew + " " + std::string(svName) + "\n");
}

bool CAccounts::bLogin(std::string_view svNameAndPassword) const {
    return std::ranges::any_of(tabRead(m_clFile), [&](const STAccount& rst) {
        std::string_view sv = svNameAndPassword;
        if (!sv.starts_with(rst.csName)) {
            return false;
        }
        sv.remove_prefix(rst.csName.size());
        return sv.empty() ? bPasswordIs(rst, "")
                          : sv[0] == ' ' && bPasswordIs(rst, std::string(sv.substr(1)));
    });
}

}  // namespace kalmo::sample
