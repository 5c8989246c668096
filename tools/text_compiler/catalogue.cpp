#include "tools/text_compiler/catalogue.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "framework/conversion.h"

namespace kalmo {
namespace {

constexpr unsigned MAX_NUMBER = 0xFFFF;
constexpr unsigned MAX_ROOM = 999;
constexpr unsigned MAX_INSERT = 99;

bool bCapital(char c) {
    return c >= 'A' && c <= 'Z';
}

bool bTake(std::string_view* psv, std::string_view svPrefix) {
    if (!psv->starts_with(svPrefix)) {
        return false;
    }
    psv->remove_prefix(svPrefix.size());
    return true;
}

// Takes a number of unMin to unMax off the front of a text.
bool bTakeNumber(std::string_view* psv, unsigned unMin, unsigned unMax, unsigned* punOut) {
    const auto [pszEnd, eError] = std::from_chars(psv->data(), psv->data() + psv->size(), *punOut);
    psv->remove_prefix(static_cast<std::size_t>(pszEnd - psv->data()));
    return eError == std::errc() && *punOut >= unMin && *punOut <= unMax;
}

// Takes a key off the front of a text: a capital, then capitals, digits and underscores.
bool bTakeKey(std::string_view* psv, std::string* pcsOut) {
    const auto itEnd = std::find_if_not(
        psv->begin(), psv->end(), [](char c) { return bCapital(c) || (c >= '0' && c <= '9') || c == '_'; });
    pcsOut->assign(psv->begin(), itEnd);
    psv->remove_prefix(pcsOut->size());
    return !pcsOut->empty() && bCapital(pcsOut->front());
}

// Takes what a header has behind the room: " %1=40 %2=5+0+40 after KEY".
bool bTakeSamples(std::string_view* psv, STText* pstOut) {
    while (bTake(psv, " %")) {
        unsigned unInsert = 0;
        if (!bTakeNumber(psv, 1, MAX_INSERT, &unInsert) || !bTake(psv, "=")) {
            return false;
        }
        std::vector<unsigned>& rtabLine = pstOut->tabSample[static_cast<int>(unInsert)];
        do {
            if (!bTakeNumber(psv, 0, MAX_ROOM, &rtabLine.emplace_back())) {
                return false;
            }
        } while (bTake(psv, "+"));
    }
    return !bTake(psv, " after ") || bTakeKey(psv, &pstOut->csAfter);
}

// Reads "[KEY NUMBER COLUMNSxLINES ...] note"; the caller has seen "[" and a capital.
std::optional<STText> stReadHeader(std::string_view sv, int nLine) {
    STText stText;
    stText.nLine = nLine;
    sv.remove_prefix(1);
    if (bTakeKey(&sv, &stText.csKey) && bTake(&sv, " ") &&
        bTakeNumber(&sv, 1, MAX_NUMBER, &stText.unNumber) && bTake(&sv, " ") &&
        bTakeNumber(&sv, 1, MAX_ROOM, &stText.unColumns) && bTake(&sv, "x") &&
        bTakeNumber(&sv, 1, MAX_ROOM, &stText.unLines) && bTakeSamples(&sv, &stText) && bTake(&sv, "]") &&
        stText.unNumber != HEADER_NUMBER) {
        bTake(&sv, " ");
        stText.csNote = sv;
        return stText;
    }
    return std::nullopt;
}

// What makes a line unfit for the screen; empty when nothing does.
std::string_view svFault(std::string_view svUtf8, std::wstring_view sv) {
    // An invalid byte comes out of the conversion as a lone low surrogate.
    if (std::any_of(sv.begin(), sv.end(), [](wchar_t c) { return c >= 0xDC00 && c <= 0xDFFF; })) {
        return "not valid UTF-8";
    }
    if (std::any_of(sv.begin(), sv.end(), [](wchar_t c) { return c < L' ' || (c >= 0x7F && c < 0xA0); })) {
        return "control character";
    }
    return svUtf8.ends_with(' ') ? "blank at the end of the line" : std::string_view();
}

// Builds a catalogue from its lines.
class CCatalogueReader {
  public:
    CCatalogueReader(std::string_view svFile, CComplaints* pclComplaints) : m_pclComplaints(pclComplaints) {
        m_stCatalogue.csFile = svFile;
    }

    void Line(std::string_view svUtf8) {
        ++m_nLine;
        const CTString csLine = csFromUTF8(svUtf8);
        if (const std::string_view sv = svFault(svUtf8, csLine); !sv.empty()) {
            m_pclComplaints->Add(m_stCatalogue, m_nLine, sv);
        }
        if (svUtf8.size() > 1 && svUtf8[0] == '[' && bCapital(svUtf8[1])) {
            __Header(svUtf8);
        } else if (!svUtf8.starts_with('#')) {
            __TextLine(csLine);
        }
    }

    STCatalogue stFinish() {
        __FinishText();
        return std::move(m_stCatalogue);
    }

  private:
    void __Header(std::string_view sv) {
        __FinishText();
        const std::optional<STText> stText = stReadHeader(sv, m_nLine);
        m_bInText = stText.has_value();
        if (!stText) {
            m_pclComplaints->Add(
                m_stCatalogue, m_nLine,
                "a header reads [KEY NUMBER COLUMNSxLINES], number 1 to 65535 but 257, then its samples");
            m_bSkipping = true;
            return;
        }
        m_bSkipping = false;
        m_stCatalogue.tabText.push_back(*stText);
    }

    void __TextLine(const CTString& rcsLine) {
        if (m_bSkipping || (!m_bInText && rcsLine.bEmpty())) {
            return;
        }
        if (!m_bInText) {
            m_pclComplaints->Add(m_stCatalogue, m_nLine, "text before the first header");
            return;
        }
        std::wstring& rcsText = m_stCatalogue.tabText.back().csText;
        rcsText += rcsLine.svGet();
        rcsText += L'\n';
    }

    // Drops the line ends behind the text that has just ended.
    void __FinishText() {
        if (!m_bInText) {
            return;
        }
        STText& rstText = m_stCatalogue.tabText.back();
        rstText.csText.erase(rstText.csText.find_last_not_of(L'\n') + 1);
        if (rstText.csText.empty() || rstText.csText.front() == L'\n') {
            m_pclComplaints->Add(m_stCatalogue, rstText.nLine,
                                 "the text is empty or begins with an empty line");
        }
    }

    CComplaints* m_pclComplaints;
    STCatalogue m_stCatalogue;
    int m_nLine = 0;
    bool m_bInText = false;    // A header was read: lines belong to the last text.
    bool m_bSkipping = false;  // A bad header was read: lines belong to nothing.
};

}  // namespace

const STText* STCatalogue::pstFind(std::string_view svKey) const noexcept {
    const auto it = std::find_if(tabText.begin(), tabText.end(),
                                 [svKey](const STText& rst) { return rst.csKey == svKey; });
    return it == tabText.end() ? nullptr : &*it;
}

void CComplaints::Add(const STCatalogue& rstCatalogue, int nLine, std::string_view svMessage) {
    m_tabLine.push_back(rstCatalogue.csFile + ":" + std::to_string(nLine) + ": " + std::string(svMessage));
}

STCatalogue stReadCatalogue(std::string_view svFile, std::string_view svContent, CComplaints* pclComplaints) {
    CCatalogueReader clReader(svFile, pclComplaints);
    while (!svContent.empty()) {
        const std::string_view svLine = svContent.substr(0, svContent.find('\n'));
        clReader.Line(svLine);
        svContent.remove_prefix(std::min(svContent.size(), svLine.size() + 1));
    }
    return clReader.stFinish();
}

}  // namespace kalmo
