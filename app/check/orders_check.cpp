#include "app/check/orders_check.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "app/check/finding_text.h"
#include "app/engine/refusal.h"
#include "app/engine/trace.h"
#include "app/unattended/orders.h"
#include "framework/conversion.h"
#include "framework/memory_stream.h"
#include "framework/profile_file.h"
#include "framework/profile_line.h"
#include "framework/profile_reader.h"
#include "services/service_manager.h"

namespace kalmo {
namespace {

constexpr const STOrdersKey* TAB_KEY[] = {&KEY_OPERATION, &KEY_SERVER, &KEY_DIRECTORY, &KEY_PORT};
constexpr int MAX_PORT = 65535;
constexpr wchar_t MARK = L'\uFEFF';

// The lines of the texts.
enum eFICHIER : int { EMPTY, FOREIGN_MARK, CRLF, CARRIAGE_RETURN, NULL_CHARACTER };
enum eSECTION : int { SECTION_UNKNOWN, SECTION_NEAR, SECTION_REPEATED };
enum eCLE : int {
    KEY_UNKNOWN,
    KEY_NEAR,
    KEY_MISPLACED,
    NO_KEY,
    KEY_REPEATED,
    KEY_REPEATED_OTHER,
    KEY_UNUSED
};
enum eVALEUR : int {
    BLANK_AT_END,
    QUOTES,
    COMMENT,
    NUMBER_CUT,
    OPERATION_MISSING,
    OPERATION_UNKNOWN,
    MISSING,
    TOO_LONG,
    NOT_ABSOLUTE,
    BAD_PORT
};

std::wstring_view svCutEnd(std::wstring_view sv) {
    return sv.substr(0, sv.find_last_not_of(L" \t") + 1);
}

// A value without what looks like a comment at its end.
std::wstring_view svBeforeComment(std::wstring_view svValue) {
    std::size_t nEnd = svValue.size();
    for (std::size_t n = 1; n < svValue.size() && nEnd == svValue.size(); ++n) {
        const bool bBlank = svValue[n - 1] == L' ' || svValue[n - 1] == L'\t';
        if (bBlank && (svValue[n] == L';' || svValue[n] == L'#')) {
            nEnd = n;
        }
    }
    return svCutEnd(svValue.substr(0, nEnd));
}

bool bDigits(std::wstring_view sv) {
    return !sv.empty() && sv.find_first_not_of(L"0123456789") == std::wstring_view::npos;
}

// The walk through the lines of one parameter file.
class COrdersCheck {
  public:
    COrdersCheck(std::string_view svBytes, CFindings& rclFindings)
        : m_svBytes(svBytes),
          m_clBytes(CTLBIN(svBytes.begin(), svBytes.end())),
          m_clFile(m_clBytes),
          m_rclFindings(rclFindings) {
        CTString csOperation;
        m_bOperation = __bValue(KEY_OPERATION, &csOperation);
        m_nOperation = m_bOperation ? nEntierDeValeur(csOperation) : OP_NONE;
        for (std::size_t n = 0; n < std::size(TAB_KEY); ++n) {
            CTString csIgnored;
            m_tabThere[n] = __bValue(*TAB_KEY[n], &csIgnored);
        }
    }

    void Check() {
        if (m_svBytes.find_first_not_of(" \t\r\n") == std::string_view::npos) {
            __Add(eSEVERITY::Error, "empty", csFindingText(TEXTE_CHECK_FICHIER, EMPTY));
            return;
        }
        if (__bOtherEncoding()) {
            return;
        }
        __CheckLines();
        __CheckWhole();
    }

  private:
    // Where a line stands.
    enum class ePLACE { BeforeAll, Read, Repeated, Unknown };

    void __Add(eSEVERITY eSeverity, const char* pszCode, const CTString& csText,
               const wchar_t* pszKey = nullptr) {
        if (!__bEnough() || (eSeverity == eSEVERITY::Error && m_rclFindings.bWorks())) {
            m_rclFindings.Add(eSeverity, pszCode, csText, pszKey);
        }
    }
    // Of a file that is something else altogether every line could be told.
    [[nodiscard]] bool __bEnough() const {
        constexpr std::size_t ENOUGH = 100;
        return m_rclFindings.tabGet().size() >= ENOUGH;
    }
    bool __bValue(const STOrdersKey& rst, CTString* pcs) {
        return m_clFile.bGetValue(rst.pszSection, rst.pszKey, pcs);
    }
    [[nodiscard]] bool __bOrdered() const {
        return m_nOperation >= OP_UPGRADE && m_nOperation <= OP_UNINSTALL;
    }
    [[nodiscard]] bool __bUsed(const STOrdersKey& rst) const {
        return !rst.bInstallOnly || m_nOperation == OP_INSTALL || !__bOrdered();
    }
    // How bad it is that a key is not read where it was meant.
    [[nodiscard]] eSEVERITY __eIfMeant(const STOrdersKey& rst) const {
        const auto nKey = std::ranges::find(TAB_KEY, &rst) - std::begin(TAB_KEY);
        return __bUsed(rst) && !m_tabThere[nKey] ? eSEVERITY::Error : eSEVERITY::Warning;
    }

    bool __bOtherEncoding();
    void __CheckLines();
    void __CheckCharacters(std::wstring_view svLine);
    void __Section(std::wstring_view svName, bool bHeader);
    bool __bHasSection(std::wstring_view svSection);
    void __Key(std::wstring_view svLine);
    void __UnknownKey(std::wstring_view svLine);
    void __Value(const STOrdersKey& rst, const CTString& csValue);
    void __Number(const STOrdersKey& rst, const CTString& csValue);
    void __Text(const STOrdersKey& rst, const CTString& csValue);
    void __CheckWhole();

    std::string_view m_svBytes;
    CMemoryStream m_clBytes;
    CProfileFile m_clFile;
    CFindings& m_rclFindings;
    bool m_tabThere[std::size(TAB_KEY)] = {};  // whether the key is read
    bool m_bOperation = false;
    int m_nOperation = OP_NONE;
    ePLACE m_ePlace = ePLACE::BeforeAll;
    const wchar_t* m_pszSection = nullptr;                   // that a line stands in, when it is a known one
    std::vector<CTString> m_tabSection;                      // known ones that began already
    std::optional<bool> m_tabSectionThere[2];                // whether the file has one, once looked for
    std::optional<CTString> m_tabValue[std::size(TAB_KEY)];  // of the keys that were met
    int m_nLine = 0;
    bool m_bCrlf = false;
    bool m_bReturn = false;
    bool m_bNull = false;
};

// An encoding in which no line can be read is told alone; UTF-8 with a mark hides its first line.
bool COrdersCheck::__bOtherEncoding() {
    const wchar_t* const pszMark = pszForeignMark(m_svBytes);
    if (pszMark == nullptr) {
        return false;
    }
    const bool bUtf8 = csFromUTF8(m_svBytes.substr(0, 3)) == std::wstring_view(&MARK, 1);
    const std::string_view svFirst = m_svBytes.substr(0, m_svBytes.find('\n'));
    const bool bHarmless = bUtf8 && svFirst.find_first_of("[=") == std::string_view::npos;
    __Add(bHarmless ? eSEVERITY::Warning : eSEVERITY::Error, "byte-order-mark",
          csFindingText(TEXTE_CHECK_FICHIER, FOREIGN_MARK, pszMark));
    return !bUtf8;
}

void COrdersCheck::__CheckLines() {
    CProfileReader clReader(m_clBytes);
    STProfileLine stLine;
    while (!(__bEnough() && !m_rclFindings.bWorks()) && clReader.bNext(&stLine)) {
        ++m_nLine;
        __CheckCharacters(stLine.csText);
        const std::wstring_view svLine = svCutBlanks(stLine.csText);
        const std::wstring_view svShown = svCutEnd(svLine.substr(0, svLine.find_first_of(L"\r\n")));
        if (svLine.starts_with(MARK)) {
            m_ePlace = svSectionName(svCutBlanks(svLine.substr(1))) ? ePLACE::Unknown : m_ePlace;
        } else if (const auto svName = svSectionName(svLine)) {
            __Section(*svName, true);
        } else if (svShown.starts_with(L'[') && svShown.find(L'=') == std::wstring_view::npos) {
            __Section(svShown.substr(1), false);
        } else if (!svShown.empty() && !bComment(svLine) && svShown.find_first_of(L"#;") != 0) {
            __Key(svLine);
        }
    }
}

void COrdersCheck::__CheckCharacters(std::wstring_view svLine) {
    const auto Tell = [this](bool* pbTold, eSEVERITY eSeverity, const char* pszCode, int nText) {
        if (!std::exchange(*pbTold, true)) {
            __Add(eSeverity, pszCode, csFindingText(TEXTE_CHECK_FICHIER, nText, std::to_wstring(m_nLine)));
        }
    };
    if (svLine.ends_with(L"\r\n")) {
        Tell(&m_bCrlf, eSEVERITY::Note, "crlf", CRLF);
        svLine.remove_suffix(2);
    }
    // At the end of the file it ends a value as well as a line.
    if (svLine.substr(0, svLine.size() - (svLine.empty() ? 0 : 1)).find(L'\r') != std::wstring_view::npos) {
        Tell(&m_bReturn, eSEVERITY::Warning, "carriage-return", CARRIAGE_RETURN);
    }
    if (svLine.find(L'\0') != std::wstring_view::npos) {
        Tell(&m_bNull, eSEVERITY::Warning, "null-character", NULL_CHARACTER);
    }
}

// A header; or a line that only begins like one, which leaves what follows where it is.
void COrdersCheck::__Section(std::wstring_view svName, bool bHeader) {
    static const std::vector<CTString> TAB_KNOWN{PSZ_PILOTAGE, PSZ_SERVEUR};
    const auto bBegan = [this](const CTString& rcs) {
        return std::ranges::find(m_tabSection, rcs) != m_tabSection.end();
    };
    if (const auto it = std::ranges::find_if(
            TAB_KNOWN, [&](const CTString& rcs) { return bHeader && bEgalSansCasse(rcs, svName); });
        it != TAB_KNOWN.end()) {
        const bool bAgain = bBegan(*it);
        m_pszSection = it->pszGet();
        m_ePlace = bAgain ? ePLACE::Repeated : ePLACE::Read;
        if (bAgain) {
            __Add(eSEVERITY::Warning, "repeated-section",
                  csFindingText(TEXTE_CHECK_SECTION, SECTION_REPEATED, *it));
        } else {
            m_tabSection.push_back(*it);
        }
        return;
    }
    m_ePlace = bHeader ? ePLACE::Unknown : m_ePlace;
    const CTString* const pcsMeant = pcsNearest(svName, TAB_KNOWN);
    if (pcsMeant == nullptr) {
        __Add(eSEVERITY::Warning, "unknown-section",
              csFindingText(TEXTE_CHECK_SECTION, SECTION_UNKNOWN, csQuoted(svName)));
        return;
    }
    std::optional<bool>& rbThere = m_tabSectionThere[pcsMeant == &TAB_KNOWN[0] ? 0 : 1];
    if (!rbThere) {
        rbThere = __bHasSection(*pcsMeant);
    }
    __Add(*rbThere ? eSEVERITY::Warning : eSEVERITY::Error, "unknown-section",
          csFindingText(TEXTE_CHECK_SECTION, SECTION_NEAR, csQuoted(svName), *pcsMeant));
}

bool COrdersCheck::__bHasSection(std::wstring_view svSection) {
    CProfileReader clReader(m_clBytes);
    STProfileLine stLine;
    while (clReader.bNext(&stLine)) {
        if (bHeaderOf(svCutBlanks(stLine.csText), svSection)) {
            return true;
        }
    }
    return false;
}

void COrdersCheck::__Key(std::wstring_view svLine) {
    if (m_ePlace == ePLACE::Unknown) {
        return;  // the section is told
    }
    const STOrdersKey* pstElsewhere = nullptr;
    for (std::size_t n = 0; n < std::size(TAB_KEY); ++n) {
        const auto svValue = svValueOf(svLine, TAB_KEY[n]->pszKey);
        if (!svValue) {
            continue;
        }
        if (m_ePlace != ePLACE::Read || CTString(m_pszSection) != TAB_KEY[n]->pszSection) {
            pstElsewhere = TAB_KEY[n];
            continue;
        }
        const CTString csValue(*svValue);
        if (!m_tabValue[n]) {
            m_tabValue[n] = csValue;
            __Value(*TAB_KEY[n], csValue);
        } else {
            const bool bSame = *m_tabValue[n] == csValue;
            __Add(bSame ? eSEVERITY::Note : eSEVERITY::Warning, "duplicate-key",
                  csFindingText(TEXTE_CHECK_CLE, bSame ? KEY_REPEATED : KEY_REPEATED_OTHER,
                                TAB_KEY[n]->pszKey, csQuoted(csValue), csQuoted(*m_tabValue[n])),
                  TAB_KEY[n]->pszKey);
        }
        return;
    }
    if (pstElsewhere != nullptr) {
        __Add(__eIfMeant(*pstElsewhere), "misplaced-key",
              csFindingText(TEXTE_CHECK_CLE, KEY_MISPLACED, pstElsewhere->pszKey, pstElsewhere->pszSection),
              pstElsewhere->pszKey);
        return;
    }
    __UnknownKey(svLine);
}

// What the line was meant to be is what it begins with, whether it is a key or not.
void COrdersCheck::__UnknownKey(std::wstring_view svLine) {
    const bool bKey = svKeyName(svLine).has_value();
    std::wstring_view svName = svLine.substr(0, svLine.find_first_of(bKey ? L"=" : L"\r\n"));
    svName = svCutEnd(svName);
    std::wstring_view svWord = svName.substr(std::min(svName.find_first_not_of(L" \t"), svName.size()));
    svWord = bKey ? svWord : svWord.substr(0, svWord.find_first_of(L" \t:"));
    std::vector<CTString> tabKnown;
    for (const STOrdersKey* const pst : TAB_KEY) {
        if (m_pszSection != nullptr && CTString(m_pszSection) == pst->pszSection) {
            tabKnown.emplace_back(pst->pszKey);
        }
    }
    const CTString* const pcsMeant = pcsNearest(svWord, tabKnown);
    const auto* const ppstMeant = std::ranges::find_if(
        TAB_KEY, [&](const STOrdersKey* pst) { return pcsMeant != nullptr && *pcsMeant == pst->pszKey; });
    const bool bMeant = ppstMeant != std::end(TAB_KEY);
    const eSEVERITY eSeverity = bMeant ? __eIfMeant(**ppstMeant) : eSEVERITY::Warning;
    const wchar_t* const pszKey = bMeant ? (*ppstMeant)->pszKey : nullptr;
    if (!bKey) {
        __Add(eSeverity, "unread-line", csFindingText(TEXTE_CHECK_CLE, NO_KEY, csQuoted(svName)), pszKey);
    } else if (bMeant) {
        __Add(eSeverity, "unknown-key", csFindingText(TEXTE_CHECK_CLE, KEY_NEAR, csQuoted(svName), pszKey),
              pszKey);
    } else {
        __Add(eSeverity, "unknown-key", csFindingText(TEXTE_CHECK_CLE, KEY_UNKNOWN, csQuoted(svName)));
    }
}

void COrdersCheck::__Value(const STOrdersKey& rst, const CTString& csValue) {
    if (!__bUsed(rst)) {
        __Add(eSEVERITY::Note, "unused-key", csFindingText(TEXTE_CHECK_CLE, KEY_UNUSED, rst.pszKey),
              rst.pszKey);
        return;
    }
    if (&rst == &KEY_OPERATION || &rst == &KEY_PORT) {
        __Number(rst, csValue);
    } else {
        __Text(rst, csValue);
    }
}

void COrdersCheck::__Number(const STOrdersKey& rst, const CTString& csValue) {
    const std::wstring_view svNumber = svBeforeComment(csValue);
    const bool bNumber = bDigits(svNumber);
    const int nRead = nEntierDeValeur(csValue);
    const CTString csRead = std::to_wstring(nRead);
    const bool bPort = &rst == &KEY_PORT;
    const auto Tell = [&](eSEVERITY eSeverity, const char* pszCode, int nText) {
        __Add(eSeverity, pszCode,
              csFindingText(TEXTE_CHECK_VALEUR, nText, rst.pszKey, csQuoted(csValue), csRead), rst.pszKey);
    };
    if (bPort ? !bNumber || nRead < 1 || nRead > MAX_PORT : !__bOrdered()) {
        Tell(eSEVERITY::Error, bPort ? "bad-port" : "no-operation", bPort ? BAD_PORT : OPERATION_UNKNOWN);
    } else if (!bNumber) {
        Tell(eSEVERITY::Warning, "number-cut", NUMBER_CUT);
    } else if (svNumber.size() != svCutEnd(csValue).size()) {
        Tell(eSEVERITY::Warning, "comment-in-value", NUMBER_CUT);
    }
}

void COrdersCheck::__Text(const STOrdersKey& rst, const CTString& csValue) {
    const std::wstring_view svValue = csValue;
    const std::wstring_view svCut = svCutEnd(svValue);
    const auto Warn = [&](const char* pszCode, int nText) {
        __Add(eSEVERITY::Warning, pszCode,
              csFindingText(TEXTE_CHECK_VALEUR, nText, rst.pszKey, csQuoted(csValue)), rst.pszKey);
    };
    if (svCut.size() > 1 && svCut.front() == svCut.back() && (svCut[0] == L'"' || svCut[0] == L'\'')) {
        Warn("quotes", QUOTES);
    }
    if (svBeforeComment(svValue).size() != svCut.size()) {
        Warn("comment-in-value", COMMENT);
    } else if (!svCut.empty() && svCut.size() != svValue.size()) {
        Warn("blank-at-end", BLANK_AT_END);
    }
}

// What is missing, and what the run itself would refuse.
void COrdersCheck::__CheckWhole() {
    if (!m_bOperation) {
        __Add(eSEVERITY::Error, "no-operation", csFindingText(TEXTE_CHECK_VALEUR, OPERATION_MISSING),
              KEY_OPERATION.pszKey);
    }
    STOrders stOrders;
    CTrace clSilent;
    for (const STOrdersFault& rst : stOrders.tabTake(m_svBytes, clSilent)) {
        struct STTold {
            const char* pszCode;
            int nText;
        };
        static constexpr STTold TAB_TOLD[] = {
            {"missing-key", MISSING}, {"too-long", TOO_LONG}, {"relative-directory", NOT_ABSOLUTE}};
        const STTold& rstTold = TAB_TOLD[static_cast<int>(rst.eKind)];
        __Add(eSEVERITY::Error, rstTold.pszCode, csFindingText(TEXTE_CHECK_VALEUR, rstTold.nText, rst.pszKey),
              rst.pszKey);
    }
    // To systemctl some names are several; elsewhere only a new instance's is judged.
    if (!stOrders.csServer.bEmpty() &&
        (CServiceManager::ms_eDistri == eSystemd || m_nOperation == OP_INSTALL)) {
        if (const CRefusal clRefusal = clRefuseName(stOrders.csServer)) {
            __Add(eSEVERITY::Error, clRefusal->pszCode, csInOneLine(clRefusal->csShown), KEY_SERVER.pszKey);
        }
    }
}

}  // namespace

void CheckOrders(std::string_view svBytes, CFindings& rclFindings) {
    COrdersCheck(svBytes, rclFindings).Check();
}

}  // namespace kalmo
