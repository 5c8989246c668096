// Profile files: any file with any operations on it. A write changes one stretch of the file and nothing
// else, is the same when done twice, can be read back, and leaves the other keys alone.
//
// Input: lines of an operation's letter and up to three texts in UTF-8, separated by tabs (section, key,
// value), up to the first empty line; behind it the file. Letters: "=" sets a key, "-" removes one, "x"
// removes a section; any other letter only reads.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "framework/conversion.h"
#include "framework/memory_stream.h"
#include "framework/profile_encoding.h"
#include "framework/profile_file.h"
#include "framework/profile_reader.h"

namespace {

using namespace kalmo;

struct STOperation {
    char cLetter;
    CTString csSection, csKey, csValue;
};

void Check(bool b) {
    if (!b) {
        std::abort();
    }
}

std::string_view svTake(std::string_view* psv, char cEnd) {
    const std::string_view svTaken = psv->substr(0, psv->find(cEnd));
    psv->remove_prefix(std::min(svTaken.size() + 1, psv->size()));
    return svTaken;
}

std::vector<STOperation> tabParse(std::string_view* psvInput) {
    std::vector<STOperation> tab;
    for (std::string_view sv = svTake(psvInput, '\n'); !sv.empty(); sv = svTake(psvInput, '\n')) {
        const char cLetter = sv.front();
        sv.remove_prefix(1);
        const CTString csSection = csFromUTF8(svTake(&sv, '\t'));
        const CTString csKey = csFromUTF8(svTake(&sv, '\t'));
        tab.push_back({cLetter, csSection, csKey, csFromUTF8(sv)});
    }
    return tab;
}

// The file's bytes but for the nulls at its end, which the next write drops.
CTLBIN tabText(CMemoryStream& rclStream) {
    CTLBIN tab = rclStream.rtabGetBytes();
    tab.resize(static_cast<std::size_t>(CProfileReader(rclStream).i64GetLength()));
    return tab;
}

// How many bytes of after are neither at the start nor at the end of before.
std::size_t nNewBytes(const CTLBIN& rtabBefore, const CTLBIN& rtabAfter) {
    const std::size_t nCommon = std::min(rtabBefore.size(), rtabAfter.size());
    const auto itEnd = rtabBefore.begin() + static_cast<std::ptrdiff_t>(nCommon);
    const auto nStart = static_cast<std::size_t>(
        std::mismatch(rtabBefore.begin(), itEnd, rtabAfter.begin()).first - rtabBefore.begin());
    const auto itLast = rtabBefore.rbegin() + static_cast<std::ptrdiff_t>(nCommon - nStart);
    const auto nEnd = static_cast<std::size_t>(
        std::mismatch(rtabBefore.rbegin(), itLast, rtabAfter.rbegin()).first - rtabBefore.rbegin());
    return rtabAfter.size() - nStart - nEnd;
}

// Names that mean one line, to reading and to writing alike.
bool bSimple(const STOperation& rst) {
    return rst.csSection.svGet().find(L']') == CTString::npos && !rst.csKey.bEmpty() &&
           rst.csKey.svGet().find_first_of(L" \t=") == CTString::npos && rst.csKey[0] != L':' &&
           rst.csKey[0] != L'[';
}

bool bNoLeadingBlanks(eENCODAGE eEncodage, const CTLBIN& rtab) {
    std::string_view sv(reinterpret_cast<const char*>(rtab.data()), rtab.size());
    if (eEncodage == eENCODAGE::Large) {
        sv.remove_prefix(2);
    }
    const CTString cs = csDecode(eEncodage, sv);
    return !cs.svGet().starts_with(L' ') && cs.svGet().find(L"\n ") == CTString::npos;
}

// What reading gives for an operation's names; its length tells "not found" from an empty value.
CTString csRead(CProfileFile& rclFile, const STOperation& rst) {
    CTString cs(L"\n");
    rclFile.bGetValue(rst.csSection, rst.csKey, &cs);
    return cs;
}

void Set(CMemoryStream& rclStream, const STOperation& rst, const std::vector<STOperation>& rtabAll) {
    CProfileFile clFile(rclStream);
    rclStream.bSeek(0);
    const eENCODAGE eEncodage = bFichierUnicode(rclStream) ? eENCODAGE::Large : eENCODAGE::Octets;
    const CTLBIN tabBefore = rclStream.rtabGetBytes();
    const CTLBIN tabTextBefore = tabText(rclStream);
    std::vector<CTString> tabRead;
    tabRead.reserve(rtabAll.size());
    for (const STOperation& rstOther : rtabAll) {
        tabRead.push_back(csRead(clFile, rstOther));
    }

    const bool bSet = clFile.bSetValue(rst.csSection, rst.csKey, rst.csValue);
    const CTLBIN tabAfter = rclStream.rtabGetBytes();
    const std::wstring csText = L"\n[" + std::wstring(rst.csSection.svGet()) + L"]\n" +
                                std::wstring(rst.csKey.svGet()) + L" = " + std::wstring(rst.csValue.svGet()) +
                                L"\n";
    Check(bSet ==
          (std::count_if(csText.begin(), csText.end(), [](wchar_t c) { return c == 0 || c == L'\r'; }) == 0));
    Check(bSet ? nNewBytes(tabTextBefore, tabAfter) <= csEncode(eEncodage, csText).size()
               : tabBefore == tabAfter);
    Check(clFile.bSetValue(rst.csSection, rst.csKey, rst.csValue) == bSet &&
          rclStream.rtabGetBytes() == tabAfter);

    if (!bSet || !bSimple(rst) || !bNoLeadingBlanks(eEncodage, tabTextBefore)) {
        return;
    }
    if (!rst.csValue.svGet().starts_with(L' ') && !rst.csValue.svGet().starts_with(L'\t')) {
        Check(csRead(clFile, rst) == csDecode(eEncodage, csEncode(eEncodage, rst.csValue)));
    }
    for (std::size_t n = 0; n < rtabAll.size(); ++n) {
        const STOperation& rstOther = rtabAll[n];
        const bool bSame =
            bEgalSansCasse(rst.csSection, rstOther.csSection) && bEgalSansCasse(rst.csKey, rstOther.csKey);
        Check(bSame || !bSimple(rstOther) || csRead(clFile, rstOther) == tabRead[n]);
    }
}

void Remove(CMemoryStream& rclStream, const STOperation& rst) {
    CProfileFile clFile(rclStream);
    const CTLBIN tabBefore = rclStream.rtabGetBytes();
    const CTLBIN tabTextBefore = tabText(rclStream);
    Check(rst.cLetter == 'x' ? clFile.bRemoveSection(rst.csSection)
                             : clFile.bRemoveKey(rst.csSection, rst.csKey));
    const CTLBIN& rtabAfter = rclStream.rtabGetBytes();
    Check(rtabAfter == tabBefore || nNewBytes(tabTextBefore, rtabAfter) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pbyData, std::size_t nSize) {
    std::string_view svInput(reinterpret_cast<const char*>(pbyData), nSize);
    const std::vector<STOperation> tabOperation = tabParse(&svInput);
    if (tabOperation.size() > 8) {
        return 0;
    }
    CMemoryStream clStream(CTLBIN(svInput.begin(), svInput.end()));
    for (const STOperation& rst : tabOperation) {
        CProfileFile clFile(clStream);
        CTString csList;
        clFile.bListSections(100, &csList);
        clFile.bListKeys(rst.csSection, 100, &csList);
        csRead(clFile, rst);
        switch (rst.cLetter) {
            case '=': Set(clStream, rst, tabOperation); break;
            case '-':
            case 'x': Remove(clStream, rst); break;
            default: break;
        }
    }
    return 0;
}
