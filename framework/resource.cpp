#include "framework/resource.h"

#include <dlfcn.h>

#include <algorithm>
#include <exception>
#include <optional>
#include <string>
#include <vector>

#include "framework/conversion.h"
#include "framework/language.h"
#include "framework/memory_scope.h"

namespace kalmo {
namespace {

constexpr unsigned MAX_ID = 0xFFFF;
constexpr int FIRST_ROOM = 256;
constexpr int LAST_ROOM = 65536;

PFNLoadStringTVM pfnLoadStringTVM = nullptr;

int nEffectiveLangue(int nLangue) {
    return nLangue != 0 ? nLangue : *CInformationModule::ms_pnLangueFramework;
}

std::optional<STRessourceModule> stRequest(const _stMyModuleInfo* pstModule, unsigned unId, int nLangue) {
    STRessourceModule st;
    st.unNumber = static_cast<std::uint16_t>(unId);
    st.nLangue = nEffectiveLangue(nLangue);
    if (pstModule == nullptr || unId > MAX_ID || !pstModule->bGetRes(&st)) {
        return std::nullopt;
    }
    return st;
}

// The text of an answered request, up to its terminating zero.
CTString csTextOf(const STRessourceModule& rst) {
    const std::span<const unsigned char> tabText(rst.pbyText, rst.unLength);
    if (rst.nUnit == 1) {
        const auto itEnd = std::find(tabText.begin(), tabText.end(), 0);
        return std::wstring(tabText.begin(), itEnd);
    }
    std::u16string csUnits;
    for (std::size_t n = 0; n + 1 < tabText.size(); n += 2) {
        csUnits += static_cast<char16_t>(tabText[n] | static_cast<unsigned>(tabText[n + 1]) << 8U);
    }
    return csFromUTF16(std::u16string_view(csUnits).substr(0, csUnits.find(u'\0')));
}

bool bLoadFromBlock(const _stMyModuleInfo* pstModule, unsigned unId, CTString* pcsOut, int nLangue) {
    const std::optional<STRessourceModule> st = stRequest(pstModule, unId, nLangue);
    if (!st || st->nMode != 0) {
        return false;
    }
    *pcsOut = csTextOf(*st);
    return true;
}

// Asks the override, if there is one, with ever more room until the text is not cut.
bool bLoadFromOverride(unsigned unId, CTString* pcsOut, int nLangue) {
    if (pfnLoadStringTVM == nullptr) {
        return false;
    }
    for (int nRoom = FIRST_ROOM;; nRoom *= 4) {
        std::vector<wchar_t> tabBuffer(static_cast<std::size_t>(nRoom));
        const int nLength =
            std::min(pfnLoadStringTVM(unId, tabBuffer.data(), nRoom, nEffectiveLangue(nLangue)), nRoom - 1);
        if (nLength <= 0) {
            return false;
        }
        if (nLength < nRoom - 1 || nRoom >= LAST_ROOM) {
            *pcsOut = std::wstring_view(tabBuffer.data(), static_cast<std::size_t>(nLength));
            return true;
        }
    }
}

}  // namespace

constinit _stMyModuleInfo gstMyModuleInfo604{&bGetResAnsi604};

bool DLLRES_bInit(HINSTANCE /*hInstance*/, int /*nReserved*/) {
    gstMyModuleInfo604.bInit = true;
    return true;
}

void DLLRES_Term() {
    pfnLoadStringTVM = nullptr;
    gstMyModuleInfo604.bInit = false;
}

int DLLRES_nLoadString(const _stMyModuleInfo* pstModule, unsigned unId, wchar_t* pszBuffer, int nSize,
                       int nLangue) try {
    const CMemoryScope clScope;
    if (pszBuffer == nullptr || nSize <= 0) {
        return 0;
    }
    CTString csText;
    if (!DLLRES_bLoadString(pstModule, unId, &csText, nLangue)) {
        return 0;
    }
    const std::size_t nLength = std::min(csText.nGetLength(), static_cast<std::size_t>(nSize) - 1);
    csText.svGet().copy(pszBuffer, nLength);
    pszBuffer[nLength] = L'\0';
    return static_cast<int>(nLength);
} catch (const std::exception&) {
    return NoMemory(0);
}

bool DLLRES_bLoadString(const _stMyModuleInfo* pstModule, unsigned unId, CTString* pcsOut, int nLangue) try {
    const CMemoryScope clScope;
    return bLoadFromOverride(unId, pcsOut, nLangue) || bLoadFromBlock(pstModule, unId, pcsOut, nLangue);
} catch (const std::exception&) {
    return NoMemory(false);
}

int DLLRES_nGetUtilisation(const _stMyModuleInfo* pstModule, unsigned unId, int nLangue) {
    const std::optional<STRessourceModule> st = stRequest(pstModule, unId, nLangue);
    return st ? st->nUnit + 16 * st->nMode : 0;
}

unsigned DLLRES_dwFormatMessage(const wchar_t* pszFormat, wchar_t** ppszOut, CFormatArgList tabArg) {
    return FormatMessage(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_STRING, pszFormat, 0, 0,
                         ppszOut, 0, tabArg);
}

int DLLRES_nFormatMessageList(const _stMyModuleInfo* pstModule, unsigned unId, wchar_t** ppszResult,
                              CFormatArgList tabArg) try {
    const CMemoryScope clScope;
    CTString csTemplate;
    *ppszResult = nullptr;
    if (!DLLRES_bLoadString(pstModule, unId, &csTemplate)) {
        return 0;
    }
    return static_cast<int>(DLLRES_dwFormatMessage(csTemplate.pszGet(), ppszResult, tabArg));
} catch (const std::exception&) {
    return NoMemory(0);
}

bool DLLRES_bFormatMessageList(const _stMyModuleInfo* pstModule, unsigned unId, CTString* pcsOut,
                               CFormatArgList tabArg) try {
    const CMemoryScope clScope;
    CTString csTemplate;
    return DLLRES_bLoadString(pstModule, unId, &csTemplate) && bFormatMessage(csTemplate, tabArg, pcsOut);
} catch (const std::exception&) {
    return NoMemory(false);
}

bool DLLRES_bFormatMessageSingulierPlurielList(const _stMyModuleInfo* pstModule, int nForm, unsigned unId,
                                               CTString* pcsOut, CFormatArgList tabArg) try {
    const CMemoryScope clScope;
    CTString csText;
    if (nForm < 0 || !DLLRES_bLoadString(pstModule, unId, &csText)) {
        return false;
    }
    std::wstring_view svRest = csText;
    for (; nForm > 0; --nForm) {
        const std::size_t nEnd = svRest.find(L'\n');
        if (nEnd == std::wstring_view::npos) {
            return false;
        }
        svRest.remove_prefix(nEnd + 1);
    }
    return bFormatMessage(svRest.substr(0, svRest.find(L'\n')), tabArg, pcsOut);
} catch (const std::exception&) {
    return NoMemory(false);
}

void DLLRES_SetLoadStringTVM(PFNLoadStringTVM pfnLoadString) {
    pfnLoadStringTVM = pfnLoadString;
}

int CommandeComposante(int nCommand, STRequeteComposante* pstRequest) {
    if (pstRequest == nullptr) {
        return 0;
    }
    switch (nCommand) {
        case COMMANDE_SET_LOAD_STRING: DLLRES_SetLoadStringTVM(pstRequest->pfnLoadString); return 1;
        case COMMANDE_LOAD_STRING:
            pstRequest->nLength = DLLRES_nLoadString(&gstMyModuleInfo604, pstRequest->unNumber,
                                                     pstRequest->pszBuffer, pstRequest->nSize, 0);
            return pstRequest->nLength > 0 ? 1 : 0;
        case COMMANDE_GET_UTILISATION:
            return DLLRES_nGetUtilisation(&gstMyModuleInfo604, pstRequest->unNumber);
        default: return 0;
    }
}

bool DLLRES_bForceInitRessource(PFNCommandeComposante pfnCallback) {
    if (pfnCallback == nullptr) {
        return false;
    }
    STRequeteComposante stRequest;
    pfnCallback(COMMANDE_LOAD_STRING, &stRequest);
    return true;
}

void* DLLRES_pLoadResource(const _stMyModuleInfo* pstModule, HINSTANCE hInstance, unsigned unId,
                           const wchar_t* pszType) {
    void* pSymbol = dlsym(hInstance, "DLLRES_pLoadResourceModule");
    if (pSymbol == nullptr) {
        return nullptr;
    }
    return reinterpret_cast<PFNLoadResourceModule>(pSymbol)(pstModule, hInstance, unId, pszType);
}

}  // namespace kalmo
