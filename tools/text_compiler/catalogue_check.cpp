#include "tools/text_compiler/catalogue_check.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "framework/conversion.h"
#include "framework/format_message_scanner.h"

namespace kalmo {
namespace {

using CInsertSet = std::set<std::pair<int, std::wstring>>;

std::string csNumber(unsigned un) {
    return std::to_string(un);
}

// The inserts of a text, each with its format, "s" when it names none. False when the text is malformed.
bool bCollectInserts(std::wstring_view sv, CInsertSet* ptabOut) {
    CMessageScanner clScanner(sv);
    for (STMessagePiece st = clScanner.stNext();; st = clScanner.stNext()) {
        switch (st.eKind) {
            case STMessagePiece::eKIND::Text: break;
            case STMessagePiece::eKIND::Insert:
                ptabOut->emplace(st.nInsert, st.svText.empty() ? L"s" : st.svText);
                break;
            case STMessagePiece::eKIND::End: return true;
            case STMessagePiece::eKIND::Broken: return false;
        }
    }
}

constexpr wchar_t SAMPLE = L'\uE000';  // What samples consist of; no text has it.

// The text with samples for its inserts. Precondition: it is well-formed, and each insert has a sample.
std::wstring csWithSamples(const STText& rstText) {
    std::wstring cs;
    CMessageScanner clScanner(rstText.csText);
    for (STMessagePiece st = clScanner.stNext(); st.eKind != STMessagePiece::eKIND::End;
         st = clScanner.stNext()) {
        if (st.eKind == STMessagePiece::eKIND::Text) {
            cs += st.svText;
            continue;
        }
        const char* pszLineEnd = "";
        for (const unsigned unColumns : rstText.tabSample.at(st.nInsert)) {
            cs += *pszLineEnd == 0 ? L"" : L"\n";
            cs.append(unColumns, SAMPLE);
            pszLineEnd = "\n";
        }
    }
    return cs;
}

// Lines of a text that is broken at words. One that has no blank within the columns is cut.
unsigned unLinesAtWords(std::wstring_view sv, std::size_t nColumns) {
    unsigned un = 1;
    for (; sv.size() > nColumns; ++un) {
        const std::size_t nBlank = sv.rfind(L' ', nColumns);
        sv.remove_prefix(nBlank == 0 || nBlank == sv.npos ? nColumns : nBlank + 1);
    }
    return un;
}

// Lines of a text as a message box shows it: what is longer than the columns is cut.
unsigned unLinesCut(const STCatalogue& rstCatalogue, const STText& rstText, CComplaints* pclComplaints) {
    const std::wstring csText = csWithSamples(rstText);
    const std::wstring csTooLong(rstText.unColumns + 1, SAMPLE);
    unsigned un = 0;
    for (std::size_t nBegin = 0; nBegin <= csText.size();) {
        const std::wstring csLine = csText.substr(nBegin, csText.find(L'\n', nBegin) - nBegin);
        const auto unWidth = static_cast<unsigned>(csLine.size());
        if (unWidth <= rstText.unColumns) {
            un += 1;
        } else if (csLine.find(csTooLong) != csLine.npos) {  // a path may be longer than any box is wide
            un += (unWidth + rstText.unColumns - 1) / rstText.unColumns;
        } else {
            un += 1;
            pclComplaints->Add(rstCatalogue, rstText.nLine,
                               "line " + csNumber(un) + " of the text takes " + csNumber(unWidth) +
                                   " columns in a room of " + csNumber(rstText.unColumns));
        }
        nBegin += csLine.size() + 1;
    }
    return un;
}

void CheckRoom(const STCatalogue& rstCatalogue, const STText& rstText, CComplaints* pclComplaints) {
    unsigned unLines = 0;
    if (rstText.csAfter.empty()) {
        unLines = unLinesCut(rstCatalogue, rstText, pclComplaints);
    } else if (const STText* pst = rstCatalogue.pstFind(rstText.csAfter); pst != nullptr) {
        unLines = unLinesAtWords(pst->csText + csWithSamples(rstText), rstText.unColumns);
    } else {
        pclComplaints->Add(rstCatalogue, rstText.nLine, "there is no " + rstText.csAfter);
    }
    if (unLines > rstText.unLines) {
        pclComplaints->Add(
            rstCatalogue, rstText.nLine,
            "the text takes " + csNumber(unLines) + " lines in a room of " + csNumber(rstText.unLines));
    }
}

// Whether each insert has a sample, and nothing else has.
bool bSampled(const STText& rstText, const CInsertSet& rtabInsert) {
    std::set<int> tabInsert;
    std::set<int> tabSampled;
    for (const auto& [nInsert, csFormat] : rtabInsert) {
        tabInsert.insert(nInsert);
    }
    for (const auto& [nInsert, tabLine] : rstText.tabSample) {
        tabSampled.insert(nInsert);
    }
    return tabInsert == tabSampled;
}

void CheckAlone(const STCatalogue& rstCatalogue, CComplaints* pclComplaints) {
    std::map<std::string, int> tabSeen;
    const auto CheckNew = [&](const std::string& rcs, int nLine) {
        const auto [it, bNew] = tabSeen.emplace(rcs, nLine);
        if (!bNew) {
            pclComplaints->Add(rstCatalogue, nLine,
                               rcs + " again; first on line " + std::to_string(it->second));
        }
    };
    for (const STText& rstText : rstCatalogue.tabText) {
        CheckNew(rstText.csKey, rstText.nLine);
        CheckNew("number " + csNumber(rstText.unNumber), rstText.nLine);
        CInsertSet tabInsert;
        if (!bCollectInserts(rstText.csText, &tabInsert)) {
            pclComplaints->Add(rstCatalogue, rstText.nLine,
                               "a percent sign that is neither an insert nor %%");
        } else if (!bSampled(rstText, tabInsert)) {
            pclComplaints->Add(rstCatalogue, rstText.nLine, "the header has no sample for each insert");
        } else {
            CheckRoom(rstCatalogue, rstText, pclComplaints);
        }
    }
    if (rstCatalogue.tabText.size() > MAX_TEXTS) {
        pclComplaints->Add(rstCatalogue, rstCatalogue.tabText[MAX_TEXTS].nLine,
                           std::to_string(rstCatalogue.tabText.size()) + " texts; at most " +
                               std::to_string(MAX_TEXTS) + " have room");
    }
}

void CheckAgainst(const STCatalogue& rstFirst, const STCatalogue& rstOther, CComplaints* pclComplaints) {
    for (const STText& rstText : rstFirst.tabText) {
        if (rstOther.pstFind(rstText.csKey) == nullptr) {
            pclComplaints->Add(rstFirst, rstText.nLine, rstText.csKey + " is not in " + rstOther.csFile);
        }
    }
    int nBefore = 0;
    for (const STText& rstText : rstOther.tabText) {
        const STText* pstFirst = rstFirst.pstFind(rstText.csKey);
        const auto Complain = [&](const std::string& rcsMessage) {
            pclComplaints->Add(rstOther, rstText.nLine, rcsMessage + rstFirst.csFile);
        };
        if (pstFirst == nullptr) {
            Complain(rstText.csKey + " is not in ");
            continue;
        }
        if (pstFirst->nLine < nBefore) {
            Complain(rstText.csKey + " comes later than in ");
        }
        nBefore = pstFirst->nLine;
        if (rstText.unNumber != pstFirst->unNumber) {
            Complain("number differs from ");
        }
        if (rstText.unColumns != pstFirst->unColumns || rstText.unLines != pstFirst->unLines ||
            rstText.tabSample != pstFirst->tabSample || rstText.csAfter != pstFirst->csAfter) {
            Complain("room or samples differ from ");
        }
        CInsertSet tabFirst;
        CInsertSet tabOther;
        if (bCollectInserts(pstFirst->csText, &tabFirst) && bCollectInserts(rstText.csText, &tabOther) &&
            tabFirst != tabOther) {
            Complain("inserts differ from ");
        }
    }
}

}  // namespace

void CheckCatalogues(std::span<const STCatalogue> tabCatalogue, CComplaints* pclComplaints) {
    for (const STCatalogue& rstCatalogue : tabCatalogue) {
        CheckAlone(rstCatalogue, pclComplaints);
    }
    for (std::size_t n = 1; n < tabCatalogue.size(); ++n) {
        CheckAgainst(tabCatalogue[0], tabCatalogue[n], pclComplaints);
    }
}

}  // namespace kalmo
