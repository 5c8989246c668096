#include "framework/x_error.h"

#include <cerrno>
#include <new>
#include <string_view>
#include <system_error>
#include <utility>

#include "framework/conversion.h"

namespace kalmo {

void CXErrorArguments::Set(CFormatArgList tabArg) {
    m_tabKept.clear();
    for (const CFormatArg& rclArg : tabArg) {
        switch (rclArg.eGetKind()) {
            case CFormatArg::eKIND::WideText: m_tabKept.emplace_back(CTString(rclArg.svGetWide())); break;
            case CFormatArg::eKIND::Utf8Text: m_tabKept.emplace_back(csFromUTF8(rclArg.svGetUtf8())); break;
            case CFormatArg::eKIND::Integer:
            case CFormatArg::eKIND::Pointer: m_tabKept.emplace_back(rclArg); break;
        }
    }
}

std::vector<CFormatArg> CXErrorArguments::tabGet() const {
    std::vector<CFormatArg> tab;
    for (const auto& rKept : m_tabKept) {
        tab.push_back(std::visit([](const auto& rValue) { return CFormatArg(rValue); }, rKept));
    }
    return tab;
}

namespace {

constexpr std::wstring_view SV_LINE_END = L"\r\n";

std::wstring_view svOf(const wchar_t* psz) {
    return psz == nullptr ? std::wstring_view() : std::wstring_view(psz);
}

// A remark about the error itself, for those who maintain the texts.
template <class... TArg>
CTString csRemark(std::wstring_view svTemplate, const TArg&... arg) {
    const std::array<CFormatArg, sizeof...(TArg)> tabArg{CFormatArg(arg)...};
    CTString cs;
    bThrowingNoMemory([&] { return bFormatMessage(svTemplate, tabArg, &cs); });
    return cs;
}

CTString csSystemText(unsigned dwCode) {
    return csFromUTF8(std::generic_category().message(static_cast<int>(dwCode)));
}

}  // namespace

// Runs an action; false when memory did not suffice for it.
template <class F>
bool CXError::__bGuarded(F fAction) noexcept {
    try {
        const CMemoryScope clScope;
        fAction();
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

// Runs a change of the user message's pieces and puts them together again.
template <class F>
void CXError::__ChangeUserMessage(F fChange) noexcept {
    m_st.bNoMemory = !__bGuarded([&] {
        fChange();
        std::wstring_view svBehind = m_st.csBehind;
        if (m_st.csMessage.bEmpty() && !svBehind.empty()) {
            svBehind.remove_prefix(SV_LINE_END.size());
        }
        std::wstring_view svBefore = m_st.csBefore;
        if (m_st.csMessage.bEmpty() && svBehind.empty() && !svBefore.empty()) {
            svBefore.remove_suffix(SV_LINE_END.size());
        }
        m_st.csUserMessage = CTString(svBefore) + m_st.csMessage + svBehind;
    });
}

void CXError::SetUserErrorList(const STErrorModule* pstModule, unsigned unCode,
                               CFormatArgList tabArg) noexcept {
    const int nLastError = errno;
    __ChangeUserMessage([&] {
        m_st.csBefore.Empty();
        m_st.csBehind.Empty();
        m_st.clArguments.Set(tabArg);
        __SetCode(pstModule, unCode, nLastError);
    });
}

void CXError::ChangeUserError(const STErrorModule* pstModule, unsigned unCode) noexcept {
    const int nLastError = errno;
    __ChangeUserMessage([&] { __SetCode(pstModule, unCode, nLastError); });
}

void CXError::__SetCode(const STErrorModule* pstModule, unsigned unCode, int nLastError) {
    m_st.pstModule = pstModule;
    m_st.unCode = unCode;
    m_st.unResource = 0;
    m_st.csMessage.Empty();
    const STErrorDef* pstDef = pstModule == nullptr ? nullptr : pstModule->pstFind(unCode);
    if (pstDef == nullptr) {
        m_st.csDebug += csRemark(
            L"##(CXError)-Pas de definition d'erreur dans gstErrorDef pour l'identifiant <%1!u!>##", unCode);
        m_st.csDebug += SV_LINE_END;
        return;
    }
    m_st.unResource = pstDef->dwResource;
    m_st.eLevel = pstDef->eLevel;
    __Message(nLastError);
}

// Makes the message from the module's text. nLastError is the errno that the caller of the object had.
void CXError::__Message(int nLastError) {
    CTString csText;
    const auto bLoad = [&] { return DLLRES_bLoadString(m_st.pstModule->pstTexts, m_st.unResource, &csText); };
    const auto bFormat = [&] { return bFormatMessage(csText, m_st.clArguments.tabGet(), &m_st.csMessage); };
    if (!bThrowingNoMemory(bLoad)) {
        m_st.csMessage = csRemark(L"##(CXError)-Ressource <%1!u!> non charg\u00E9e##", m_st.unResource);
    } else if (csText.bEmpty()) {
        m_st.csMessage = csRemark(L"##(CXError)-Ressource <%1!u!> vide. LastError = <%2!u!>##",
                                  m_st.unResource, nLastError);
    } else if (!bThrowingNoMemory(bFormat)) {
        m_st.csMessage = csText;
    }
}

void CXError::SetUserErrorMessage(const wchar_t* pszMessage) noexcept {
    __ChangeUserMessage([&] { m_st.csMessage = CTString(pszMessage); });
}

const wchar_t* CXError::pszGetUserMessage() const noexcept {
    return m_st.bNoMemory ? L"<No Memory>" : m_st.csUserMessage.pszGet();
}

void CXError::AddUserMessage(const wchar_t* pszMessage) noexcept {
    if (!svOf(pszMessage).empty()) {
        __ChangeUserMessage([&] { m_st.csBehind = m_st.csBehind + SV_LINE_END + pszMessage; });
    }
}

void CXError::AddUserMessageFirst(const wchar_t* pszMessage) noexcept {
    if (!svOf(pszMessage).empty()) {
        __ChangeUserMessage([&] { m_st.csBefore = CTString(pszMessage) + SV_LINE_END + m_st.csBefore; });
    }
}

void CXError::AddDebugMessage(const wchar_t* pszMessage) noexcept {
    __bGuarded([&] { m_st.csDebug = m_st.csDebug + svOf(pszMessage) + SV_LINE_END; });
}

void CXError::AddDebugMessageFirst(const wchar_t* pszMessage) noexcept {
    __bGuarded([&] { m_st.csDebug = CTString(pszMessage) + SV_LINE_END + m_st.csDebug; });
}

void CXError::SetSystemError(unsigned dwCode) noexcept {
    m_st.dwSystemCode = dwCode;
    __bGuarded([&] { m_st.csSystemMessage = csSystemText(dwCode); });
}

void CXError::SetSystemErrorParam(unsigned dwCode, const wchar_t* pszParam) noexcept {
    m_st.dwSystemCode = dwCode;
    __bGuarded([&] { m_st.csSystemMessage = CTString(pszParam) + L": " + csSystemText(dwCode); });
}

void CXError::SetSystemErrorMessage(const wchar_t* pszMessage) noexcept {
    __bGuarded([&] { m_st.csSystemMessage = CTString(pszMessage); });
}

void CXError::SetFunctionName(const wchar_t* pszName) noexcept {
    __bGuarded([&] { m_st.csFunction = CTString(pszName); });
}

void CXError::AddSubError(const CXError& rclError) noexcept {
    __AddSubError(rclError, false, true);
}
void CXError::AddSubErrorLight(const CXError& rclError) noexcept {
    __AddSubError(rclError, true, true);
}
void CXError::AddSubErrorNoUserMessage(const CXError& rclError) noexcept {
    __AddSubError(rclError, false, false);
}
void CXError::AddSubErrorLightNoUserMessage(const CXError& rclError) noexcept {
    __AddSubError(rclError, true, false);
}

void CXError::__AddSubError(const CXError& rclError, bool bLight, bool bUserMessage) noexcept {
    __bGuarded([&] {
        std::unique_ptr<CXError, STRelease> pclCopy(new CXError);
        pclCopy->m_st = rclError.m_st;
        if (!bLight) {
            pclCopy->__CopySubErrors(rclError);
        }
        if (!bUserMessage) {
            pclCopy->__ChangeUserMessage([&] {
                pclCopy->m_st.csMessage.Empty();
                pclCopy->m_st.csBefore.Empty();
                pclCopy->m_st.csBehind.Empty();
            });
        }
        m_tabSubError.Add(std::move(pclCopy));
    });
}

void CXError::__CopySubErrors(const CXError& rclError) {
    for (const auto& rpcl : rclError.m_tabSubError) {
        __AddSubError(*rpcl, false, true);
    }
}

const CXError* CXError::pclGetSubError(int nRank) const noexcept {
    return nRank >= 0 && nRank < nGetNbSubError() ? m_tabSubError[static_cast<std::size_t>(nRank)].get()
                                                  : nullptr;
}

// The sub-errors from before are kept until the end: the source may be one of them.

void CXError::Copy(const CXError& rclError) noexcept {
    if (this != &rclError) {
        const auto tabBefore = std::move(m_tabSubError);
        __CopyContent(rclError);
        __bGuarded([&] { __CopySubErrors(rclError); });
    }
}

void CXError::LightCopy(const CXError& rclError) noexcept {
    const auto tabBefore = std::move(m_tabSubError);
    __CopyContent(rclError);
}

void CXError::__CopyContent(const CXError& rclError) noexcept {
    const bool bCopied = this == &rclError || __bGuarded([&] {
                             STContent st = rclError.m_st;
                             m_st = std::move(st);
                         });
    if (!bCopied) {
        m_st = {};
        m_st.pstModule = rclError.m_st.pstModule;
        m_st.unCode = rclError.m_st.unCode;
        m_st.unResource = rclError.m_st.unResource;
        m_st.eLevel = rclError.m_st.eLevel;
        m_st.bNoMemory = true;
    }
}

}  // namespace kalmo
