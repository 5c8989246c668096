#include "framework/x_error_info.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <utility>

#include "framework/format_message.h"
#include "framework/memory_scope.h"

namespace kalmo {
namespace {

// A conversion in a format tells the type of the kind's value.
constexpr std::array<std::wstring_view, EIT_THREAD + 1> TAB_FORMAT = {
    L"EIT_HELPFILE : <%s>",        L"EIT_USERNAME : <%s>",
    L"EIT_DSTFILE : <%s>",         L"EIT_SRCFILE : <%s>",
    L"EIT_PATHTVD : <%s>",         L"EIT_LOGICALTABLENAME : <%s>",
    L"EIT_ITEMNAME : <%s>",        L"EIT_PATHFIC : <%s>",
    L"EIT_PATHNDX : <%s>",         L"EIT_PATHMMO : <%s>",
    L"EIT_LINKNAME : <%s>",        L"EIT_RECNUM : <%lld>",
    L"EIT_HLOCKTIME : <%lld>",     L"EIT_BASEMESSAGE : <%s>",
    L"EIT_NATIVEMESSAGE : <%s>",   L"EIT_ADOMESSAGE : <%s>",
    L"EIT_BASECODE : <%d>",        L"EIT_NATIVECODE : <%d>",
    L"EIT_ADOCODE : <%d>",         L"EIT_ODBCCODE : <%s>",
    L"EIT_ODBCDESCRIPTION : <%s>", L"EIT_DATAACCESS : <%p>",
    L"EIT_INFOCLIENT : <%s>",      L"EIT_INFOSERVEUR : <%s>",
    L"EIT_PILETL :\r\n%s",         L"EIT_PILEC :\r\n%s",
    L"EIT_COMPOSANT :\r\n%s",      L"EIT_DATEHEURE : %s",
    L"EIT_LOCKINFO : %s",          L"EIT_CORRIGE_ETAT : %s",
    L"EIT_INFOCS : <%s>",          L"EIT_SERVEURCS : <%s>",
    L"EIT_XINFO : <%d>",           L"EIT_TYPE_TVFILE : <%d>",
    L"EIT_IDCODE : <%d>",          L"EIT_HCNXID : <%d>",
    L"EIT_POSITION_ERREUR : <%s>", L"EIT_EXCEPTION_CLASS_NAME : <%s>",
    L"EIT_EXCEPTIONDOTNET",        L"EIT_EXCEPTIONJAVA",
    L"EIT_CODEHTTP : <%d>",        L"EIT_THREAD : <%s>",
};

struct STFormat {
    std::wstring_view svBefore;
    std::wstring_view svConversion;  // empty for a kind without value
    std::wstring_view svAfter;
};

STFormat stSplit(eERRORINFOTYPE eKind) {
    const std::wstring_view svFormat = TAB_FORMAT[eKind];
    const std::size_t nBegin = svFormat.find(L'%');
    if (nBegin == std::wstring_view::npos) {
        return {svFormat, {}, {}};
    }
    const std::size_t nEnd = svFormat.find_first_of(L"sdp", nBegin) + 1;
    return {svFormat.substr(0, nBegin), svFormat.substr(nBegin, nEnd - nBegin), svFormat.substr(nEnd)};
}

// The alternative of CValue that a kind holds.
std::size_t nValueType(eERRORINFOTYPE eKind) {
    const std::wstring_view svConversion = stSplit(eKind).svConversion;
    if (svConversion.empty()) {
        return 0;
    }
    return svConversion.back() == L's' ? 1 : svConversion.back() == L'd' ? 2 : 3;
}

// A value as its kind's conversion prints it.
CTString csValue(const CXErrorInfoList::CValue& rValue, std::wstring_view svConversion) {
    CTString cs;
    if (const auto* pcs = std::get_if<CTString>(&rValue)) {
        cs = *pcs;
    } else if (const auto* pi64 = std::get_if<std::int64_t>(&rValue)) {
        cs = std::to_wstring(svConversion == L"%d" ? static_cast<std::int32_t>(*pi64) : *pi64);
    } else if (const auto* pp = std::get_if<const void*>(&rValue); pp != nullptr && *pp == nullptr) {
        cs = CTString(L"(nil)");
    } else if (pp != nullptr) {
        const CFormatArg clArg(*pp);
        bThrowingNoMemory([&] { return bFormatMessage(L"%1!p!", {&clArg, 1}, &cs); });
    }
    return cs;
}

}  // namespace

bool CXErrorInfoList::bAdd(eERRORINFOTYPE eKind, CValue value) {
    if (eKind < 0 || eKind > EIT_THREAD || value.index() != nValueType(eKind)) {
        return false;
    }
    m_tabItem.push_back({eKind, std::move(value)});
    return true;
}

const CXErrorInfoList::_stERRORINFO* CXErrorInfoList::pstFind(eERRORINFOTYPE eKind) const noexcept {
    const auto it = std::find_if(m_tabItem.begin(), m_tabItem.end(),
                                 [eKind](const _stERRORINFO& rst) { return rst.eKind == eKind; });
    return it == m_tabItem.end() ? nullptr : &*it;
}

void CXErrorInfoList::Delete(eERRORINFOTYPE eKind) noexcept {
    std::erase_if(m_tabItem, [eKind](const _stERRORINFO& rst) { return rst.eKind == eKind; });
}

CTString CXErrorInfoList::csDump() const {
    CTString cs;
    for (const _stERRORINFO& rst : m_tabItem) {
        const STFormat stFormat = stSplit(rst.eKind);
        cs += stFormat.svBefore;
        cs += csValue(rst.value, stFormat.svConversion);
        cs += stFormat.svAfter;
        cs += L"\r\n";
    }
    return cs;
}

}  // namespace kalmo
