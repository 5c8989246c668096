#include <new>
#include <string>

#include "framework/conversion.h"
#include "framework/text_number.h"
#include "framework/x_error.h"

namespace kalmo {
namespace {

// A text as lines that end in CR LF; nothing for an empty one.
void AppendLines(std::wstring_view sv, CTString* pcsOut) {
    if (!sv.empty()) {
        *pcsOut += sv;
        *pcsOut += sv.ends_with(L'\n') ? L"" : L"\r\n";
    }
}

// A line made from a template and its arguments.
template <class... TArg>
void AppendLine(CTString* pcsOut, std::wstring_view svTemplate, const TArg&... arg) {
    const std::array<CFormatArg, sizeof...(TArg)> tabArg{CFormatArg(arg)...};
    CTString cs;
    if (bThrowingNoMemory([&] { return bFormatMessage(svTemplate, tabArg, &cs); })) {
        AppendLines(cs, pcsOut);
    }
}

// The line of the system error: the one that the operator reads too.
void AppendSystemError(CTString* pcsOut, unsigned dwCode, const CTString& rcsMessage) {
    CTString cs;
    const auto bFormat = [&] {
        return DLLRES_bFormatMessage(&gstMyModuleInfo604, TEXTE_ERREUR_SYSTEME, &cs, dwCode, rcsMessage);
    };
    if (bThrowingNoMemory(bFormat)) {
        AppendLines(cs, pcsOut);
    } else {
        AppendLine(pcsOut, L"System error %1!u!: %2", dwCode, rcsMessage);
    }
}

}  // namespace

CTString CXError::StringDump(eXERROR_INFO eParts) const noexcept {
    try {
        const CMemoryScope clScope;
        CTString cs;
        __Dump(static_cast<unsigned>(eParts), CTString(), &cs);
        return cs;
    } catch (const std::bad_alloc&) {
        return {};
    }
}

bool CXError::TraceDump(IXStream* pclTrace) const noexcept {
    try {
        const CMemoryScope clScope;
        const CXYString<char> cs = csToUTF8(StringDump(eXERROR_INFO::All));
        return pclTrace->bWrite(cs.pszGet(), cs.nGetLength());
    } catch (const std::bad_alloc&) {
        return false;
    }
}

void CXError::DumpInfo(CTString* pcsOut) const noexcept {
    try {
        const CMemoryScope clScope;
        *pcsOut += m_st.clInfo.csDump();
    } catch (const std::bad_alloc&) {
        return;  // The lines are left out.
    }
}

void CXError::__Dump(unsigned unParts, const CTString& rcsRank, CTString* pcsOut) const {
    const auto bWanted = [unParts](eXERROR_INFO e) { return (unParts & static_cast<unsigned>(e)) != 0; };
    if (bWanted(eXERROR_INFO::UserMessage)) {
        AppendLines(pszGetUserMessage(), pcsOut);
    }
    if (bWanted(eXERROR_INFO::SystemError) && (m_st.dwSystemCode != 0 || !m_st.csSystemMessage.bEmpty())) {
        AppendSystemError(pcsOut, m_st.dwSystemCode, m_st.csSystemMessage);
    }
    if (bWanted(eXERROR_INFO::Context)) {
        if (m_st.pstModule != nullptr) {
            AppendLine(pcsOut, L"IE%1=%2!u!.%3!u!\r\nModule=<%4>\r\nVersion=<%5>", rcsRank,
                       m_st.pstModule->unNumber, m_st.unCode, m_st.pstModule->pszName,
                       m_st.pstModule->pszVersion);
        }
        if (m_st.eLevel != eERRORLEVEL::None) {
            AppendLine(pcsOut, L"Level=%1!u!", static_cast<unsigned>(m_st.eLevel));
        }
        if (!m_st.csFunction.bEmpty()) {
            AppendLine(pcsOut, L"Function=<%1>", m_st.csFunction);
        }
        if (m_st.unDetail != 0) {
            AppendLine(pcsOut, L"Detail=%1!u!", m_st.unDetail);
        }
    }
    if (bWanted(eXERROR_INFO::Items)) {
        AppendLines(m_st.clInfo.csDump(), pcsOut);
    }
    if (bWanted(eXERROR_INFO::DebugMessages)) {
        AppendLines(m_st.csDebug, pcsOut);
    }
    if (bWanted(eXERROR_INFO::SubErrors)) {
        for (int n = 0; n < nGetNbSubError(); ++n) {
            const CTString csDot(rcsRank.bEmpty() ? L"" : L".");
            pclGetSubError(n)->__Dump(unParts, rcsRank + csDot + std::to_wstring(n + 1), pcsOut);
        }
    }
}

}  // namespace kalmo
