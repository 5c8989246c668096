#include <algorithm>
#include <cstring>
#include <string>

#include "app/check/check_run.h"
#include "app/check/finding_text.h"
#include "app/config/server_config.h"
#include "app/engine/trace.h"
#include "framework/conversion.h"
#include "framework/json.h"
#include "framework/text.h"

namespace kalmo {
namespace {

const char* pszSeverityWord(eSEVERITY eSeverity) {
    switch (eSeverity) {
        case eSEVERITY::Error: return "error";
        case eSEVERITY::Warning: return "warning";
        default: return "note";
    }
}

// The lines of the two texts of a report.
enum eSENTENCE : int { SENTENCE_INSTALL = 1, SENTENCE_UPGRADE, SENTENCE_UNINSTALL };
enum eWORD : int { WORD_ERROR, WORD_WARNING, WORD_NOTE, WORD_WORKS, WORD_FAILS, WORD_STEPS };

CTString csWord(eWORD e) {
    return csFindingText(TEXTE_CONTROLE_MOT, e);
}

CTString csSeverityText(eSEVERITY eSeverity) {
    switch (eSeverity) {
        case eSEVERITY::Error: return csWord(WORD_ERROR);
        case eSEVERITY::Warning: return csWord(WORD_WARNING);
        default: return csWord(WORD_NOTE);
    }
}

bool bIs(const char* psz, const char* pszOther) {
    return psz != nullptr && std::strcmp(psz, pszOther) == 0;
}

// What the run would do, in a sentence; empty where that is not known.
CTString csIntention(const STCheckReport& rst) {
    if (bIs(rst.pszOperation, "install")) {
        return csFindingText(TEXTE_CONTROLE_PHRASE, SENTENCE_INSTALL, rst.csInstance, rst.csDirectory,
                             CTString(std::to_wstring(rst.nPort.value_or(0))));
    }
    if (rst.csDirectory.bEmpty()) {
        return {};
    }
    return bIs(rst.pszOperation, "upgrade")
               ? csFindingText(TEXTE_CONTROLE_PHRASE, SENTENCE_UPGRADE, rst.csInstance, rst.csDirectory,
                               rst.csInstalled.bEmpty() ? CTString(L"?") : rst.csInstalled, csGetOwnVersion())
               : csFindingText(TEXTE_CONTROLE_PHRASE, SENTENCE_UNINSTALL, rst.csInstance, rst.csDirectory);
}

}  // namespace

CTString csCheckAsText(const STCheckReport& rst) {
    CTString csText;
    const auto Line = [&csText](const CTString& cs) {
        csText += (csText.bEmpty() ? CTString() : CTString(L"\n")) + csOneLine(cs);
    };
    if (const CTString csIntended = csIntention(rst); !csIntended.bEmpty()) {
        Line(csIntended);
    }
    for (const eSEVERITY eSeverity : {eSEVERITY::Error, eSEVERITY::Warning, eSEVERITY::Note}) {
        for (const STFinding& rstFinding : rst.clFindings.tabGet()) {
            if (rstFinding.eSeverity == eSeverity) {
                Line(csSeverityText(eSeverity) + L" " + rstFinding.csText);
            }
        }
    }
    if (!rst.tabPlan.empty()) {
        Line(csWord(WORD_STEPS));
        for (const STPlanStep& rstStep : rst.tabPlan) {
            Line(L"  " + rstStep.csStep + L": " + rstStep.csResult);
        }
    }
    Line(csWord(rst.clFindings.bWorks() ? WORD_WORKS : WORD_FAILS));
    return csText;
}

std::string csCheckAsJson(const STCheckReport& rst) {
    CJson tabFinding = CJson::array();
    for (const STFinding& rstFinding : rst.clFindings.tabGet()) {
        tabFinding.push_back(
            {{"severity", pszSeverityWord(rstFinding.eSeverity)},
             {"code", rstFinding.pszCode},
             {"key", rstFinding.pszKey == nullptr ? CJson() : clJsonText(CTString(rstFinding.pszKey))},
             {"text", csToUTF8(rstFinding.csText).pszGet()}});
    }
    CJson tabPlan = CJson::array();
    for (const STPlanStep& rstStep : rst.tabPlan) {
        tabPlan.push_back(
            {{"step", csToUTF8(rstStep.csStep).pszGet()}, {"result", csToUTF8(rstStep.csResult).pszGet()}});
    }
    return csJsonDump({{"schema", 1},
                       {"version", clJsonText(csGetOwnVersion())},
                       {"orders", csToUTF8(rst.csOrders).pszGet()},
                       {"works", rst.clFindings.bWorks()},
                       {"operation", rst.pszOperation == nullptr ? CJson() : CJson(rst.pszOperation)},
                       {"instance", clJsonText(rst.csInstance)},
                       {"service", clJsonText(rst.csService)},
                       {"directory", clJsonText(rst.csDirectory)},
                       {"port", rst.nPort ? CJson(*rst.nPort) : CJson()},
                       {"installed", clJsonText(rst.csInstalled)},
                       {"changes", rst.bChanges},
                       {"findings", tabFinding},
                       {"plan", tabPlan}});
}

}  // namespace kalmo
