#include "tools/text_compiler/catalogue_check.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "framework/conversion.h"
#include "framework/format_message_scanner.h"

namespace kalmo {
namespace {

using CInsertSet = std::set<std::pair<int, std::wstring>>;

std::string csNumber(unsigned un) {
    return std::to_string(un);
}

/// The inserts of a text, each with its format, "s" when it names none. False when the text is malformed.
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

/// Columns that a line takes on the screen, inserts not counted.
std::size_t nColumns(std::wstring_view svLine) {
    std::size_t nResult = 0;
    CMessageScanner clScanner(svLine);
    for (STMessagePiece st = clScanner.stNext();
         st.eKind == STMessagePiece::eKIND::Text || st.eKind == STMessagePiece::eKIND::Insert;
         st = clScanner.stNext()) {
        nResult += st.eKind == STMessagePiece::eKIND::Text ? st.svText.size() : 0;
    }
    return nResult;
}

void CheckRoom(const STCatalogue& rstCatalogue, const STText& rstText, CComplaints* pclComplaints) {
    unsigned unLine = 0;
    for (std::wstring_view sv = rstText.csText;;) {
        const std::wstring_view svLine = sv.substr(0, sv.find(L'\n'));
        ++unLine;
        if (const std::size_t n = nColumns(svLine); n > rstText.unColumns) {
            pclComplaints->Add(rstCatalogue, rstText.nLine,
                               "line " + csNumber(unLine) + " of the text takes " + std::to_string(n) +
                                   " columns in a room of " + csNumber(rstText.unColumns));
        }
        if (svLine.size() == sv.size()) {
            break;
        }
        sv.remove_prefix(svLine.size() + 1);
    }
    if (unLine > rstText.unLines) {
        pclComplaints->Add(
            rstCatalogue, rstText.nLine,
            "the text takes " + csNumber(unLine) + " lines in a room of " + csNumber(rstText.unLines));
    }
}

void CheckAlone(const STCatalogue& rstCatalogue, CComplaints* pclComplaints) {
    std::map<unsigned, int> tabSeen;
    for (const STText& rstText : rstCatalogue.tabText) {
        const auto [it, bNew] = tabSeen.emplace(rstText.unNumber, rstText.nLine);
        if (!bNew) {
            pclComplaints->Add(rstCatalogue, rstText.nLine,
                               "number " + csNumber(rstText.unNumber) + " again; first on line " +
                                   std::to_string(it->second));
        }
        CInsertSet tabInsert;
        if (bCollectInserts(rstText.csText, &tabInsert)) {
            CheckRoom(rstCatalogue, rstText, pclComplaints);
        } else {
            pclComplaints->Add(rstCatalogue, rstText.nLine,
                               "a percent sign that is neither an insert nor %%");
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
        if (rstOther.pstFind(rstText.unNumber) == nullptr) {
            pclComplaints->Add(rstFirst, rstText.nLine,
                               "number " + csNumber(rstText.unNumber) + " is not in " + rstOther.csFile);
        }
    }
    for (const STText& rstText : rstOther.tabText) {
        const STText* pstFirst = rstFirst.pstFind(rstText.unNumber);
        if (pstFirst == nullptr) {
            pclComplaints->Add(rstOther, rstText.nLine,
                               "number " + csNumber(rstText.unNumber) + " is not in " + rstFirst.csFile);
            continue;
        }
        if (rstText.unColumns != pstFirst->unColumns || rstText.unLines != pstFirst->unLines) {
            pclComplaints->Add(rstOther, rstText.nLine, "room differs from " + rstFirst.csFile);
        }
        CInsertSet tabFirst;
        CInsertSet tabOther;
        if (bCollectInserts(pstFirst->csText, &tabFirst) && bCollectInserts(rstText.csText, &tabOther) &&
            tabFirst != tabOther) {
            pclComplaints->Add(rstOther, rstText.nLine, "inserts differ from " + rstFirst.csFile);
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
