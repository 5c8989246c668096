#include "framework/profile_file.h"

#include <algorithm>
#include <memory>
#include <new>

#include "framework/errno_kept.h"
#include "framework/profile_line.h"
#include "framework/profile_reader.h"

namespace kalmo {
namespace {

constexpr std::wstring_view SV_FIN_DE_NOM = L"\r\n";

// Moves a reader behind a section's header as reading sees it.
bool bEnterSection(CProfileReader& rclReader, std::wstring_view svSection) {
    const CTString csSection = rclReader.csAsRead(svSection);
    STProfileLine stLine;
    while (rclReader.bNext(&stLine)) {
        if (bHeaderOf(svCutBlanks(stLine.csText), csSection)) {
            return true;
        }
    }
    return false;
}

// Moves to the section's next line that is no comment. False at the section's end.
bool bNextInSection(CProfileReader& rclReader, STProfileLine* pstLine) {
    while (rclReader.bNext(pstLine)) {
        const std::wstring_view svLine = svCutBlanks(pstLine->csText);
        if (!bComment(svLine)) {
            return !svSectionName(svLine);
        }
    }
    return false;
}

bool bOneLine(std::wstring_view sv) {
    return sv.find_first_of(std::wstring_view(L"\r\n\0", 3)) == std::wstring_view::npos;
}

}  // namespace

bool CProfileFile::bGetValue(std::wstring_view svSection, std::wstring_view svKey, CTString* pcsValue) {
    CProfileReader clReader(m_rclStream);
    if (!bEnterSection(clReader, svSection)) {
        return false;
    }
    const CTString csKey = clReader.csAsRead(svKey);
    STProfileLine stLine;
    while (bNextInSection(clReader, &stLine)) {
        if (const auto svValue = svValueOf(svCutBlanks(stLine.csText), csKey)) {
            *pcsValue = CTString(*svValue);
            return true;
        }
    }
    return false;
}

bool CProfileFile::bListSections(std::size_t nMax, CTString* pcsList) {
    CProfileReader clReader(m_rclStream);
    CTString csList;
    STProfileLine stLine;
    while (csList.nGetLength() < nMax && clReader.bNext(&stLine)) {
        if (const auto svName = svSectionName(svCutBlanks(stLine.csText))) {
            csList += *svName;
            csList += SV_FIN_DE_NOM;
        }
    }
    *pcsList = csList;
    return !csList.bEmpty();
}

bool CProfileFile::bListKeys(std::wstring_view svSection, std::size_t nMax, CTString* pcsList) {
    CProfileReader clReader(m_rclStream);
    CTString csList;
    STProfileLine stLine;
    if (!bEnterSection(clReader, svSection)) {
        return false;
    }
    while (csList.nGetLength() < nMax && bNextInSection(clReader, &stLine)) {
        if (const auto svName = svKeyName(svCutBlanks(stLine.csText))) {
            csList += *svName;
            csList += SV_FIN_DE_NOM;
        }
    }
    *pcsList = csList;
    return !csList.bEmpty();
}

CProfileFile::STPlace CProfileFile::__stFindKey(CProfileReader& rclReader, std::wstring_view svSection,
                                                std::wstring_view svKey) {
    const CTString csSection = rclReader.csAsRead(svSection);
    const CTString csKey = rclReader.csAsRead(svKey);
    STPlace stPlace;
    STProfileLine stLine;
    while (rclReader.bNext(&stLine)) {
        const std::wstring_view svLine = stLine.csText;
        if (!stPlace.bSection) {
            stPlace.bSection = bHeaderOf(svLine, csSection);
        } else if (bLineOfKey(svLine, csKey)) {
            stPlace.bKey = true;
            stPlace.i64Start = stLine.i64Start;
            stPlace.i64End = stLine.i64End;
            return stPlace;
        } else if (svLine.find_first_of(L"\n\r[") == 0) {
            stPlace.i64Start = stPlace.i64End = stLine.i64Start;
            return stPlace;
        }
    }
    stPlace.bLineFeed = stLine.csText.bEmpty() || stLine.csText.svGet().back() == L'\n';
    stPlace.i64Start = stPlace.i64End = rclReader.i64GetPosition();
    return stPlace;
}

bool CProfileFile::bWritable(std::wstring_view svSection, std::wstring_view svKey,
                             std::wstring_view svValue) {
    return bOneLine(svSection) && bOneLine(svKey) && bOneLine(svValue);
}

bool CProfileFile::bSetValue(std::wstring_view svSection, std::wstring_view svKey,
                             std::wstring_view svValue) {
    if (!bWritable(svSection, svKey, svValue)) {
        return false;
    }
    CProfileReader clReader(m_rclStream);
    const STPlace stPlace = __stFindKey(clReader, svSection, svKey);
    if (clReader.bFailed()) {
        return false;
    }
    std::wstring csText;
    if (!stPlace.bLineFeed && !stPlace.bKey) {
        csText += L'\n';
    }
    if (!stPlace.bSection) {
        csText.append(L"[").append(svSection).append(L"]\n");
    }
    csText.append(svKey).append(L" = ").append(svValue).append(L"\n");
    return __bReplace(clReader, stPlace.i64Start, stPlace.i64End, csEncode(clReader.eGetEncodage(), csText));
}

bool CProfileFile::bRemoveKey(std::wstring_view svSection, std::wstring_view svKey) {
    CProfileReader clReader(m_rclStream);
    const STPlace stPlace = __stFindKey(clReader, svSection, svKey);
    return !clReader.bFailed() &&
           (!stPlace.bKey || __bReplace(clReader, stPlace.i64Start, stPlace.i64End, {}));
}

bool CProfileFile::bRemoveSection(std::wstring_view svSection) {
    CProfileReader clReader(m_rclStream);
    const CTString csSection = clReader.csAsRead(svSection);
    STProfileLine stLine;
    bool bSection = false;
    while (!bSection && clReader.bNext(&stLine)) {
        bSection = bHeaderOf(stLine.csText, csSection);
    }
    if (!bSection) {
        return !clReader.bFailed();
    }
    const std::int64_t i64Start = stLine.i64Start;
    bool bNextSection = false;
    while (!bNextSection && clReader.bNext(&stLine)) {
        bNextSection = stLine.csText.svGet().starts_with(L'[');
    }
    return !clReader.bFailed() &&
           __bReplace(clReader, i64Start, bNextSection ? stLine.i64Start : stLine.i64End, {});
}

// Replaces a stretch of the file by new bytes and moves the rest of the file behind them.
//
// The file stays the same one and is read by others meanwhile, so it must make sense at every moment: the
// room is there before anything changes, then one write does it all. Where the file gets shorter that write
// ends in nulls, which are cut off next; should that not happen any more, whoever reads or writes the file
// afterwards drops them (CProfileReader). No piece of the old end ever stands behind the new one.
bool CProfileFile::__bReplace(const CProfileReader& rclReader, std::int64_t i64Start, std::int64_t i64End,
                              std::string_view svNew) {
    const std::int64_t i64Before = m_rclStream.i64GetLength();
    if (i64Before < rclReader.i64GetLength()) {
        return false;
    }
    const auto nOld = static_cast<std::size_t>(i64Before - i64Start);
    const auto nRest = static_cast<std::size_t>(rclReader.i64GetLength() - i64End);
    const std::int64_t i64After = i64Start + static_cast<std::int64_t>(svNew.size() + nRest);
    const std::size_t nNew = std::max(svNew.size() + nRest, nOld);
    const std::unique_ptr<char[]> tabOld(new (std::nothrow) char[nOld]);
    const std::unique_ptr<char[]> tabNew(new (std::nothrow) char[nNew]());
    if (tabOld == nullptr || tabNew == nullptr || !m_rclStream.bSeek(i64Start) ||
        !m_rclStream.bReadAll(tabOld.get(), nOld)) {
        return false;
    }
    svNew.copy(tabNew.get(), svNew.size());
    std::copy_n(tabOld.get() + (i64End - i64Start), nRest, tabNew.get() + svNew.size());
    if (!m_rclStream.bReserve(i64After)) {
        return false;
    }
    if (!m_rclStream.bSeek(i64Start) || !m_rclStream.bWrite(tabNew.get(), nNew)) {
        const CErrnoKept clKept;
        if (m_rclStream.bSeek(i64Start) && m_rclStream.bWrite(tabOld.get(), nOld)) {
            m_rclStream.bTruncate(i64Before);
        }
        return false;
    }
    return i64After >= i64Before || m_rclStream.bTruncate(i64After);
}

}  // namespace kalmo
