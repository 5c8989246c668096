#ifndef KALMO_FRAMEWORK_X_ERROR_H
#define KALMO_FRAMEWORK_X_ERROR_H

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <variant>
#include <vector>

#include "framework/array.h"
#include "framework/format_message.h"
#include "framework/memory_scope.h"
#include "framework/tv_unknown.h"
#include "framework/x_error_info.h"
#include "framework/x_error_module.h"
#include "framework/x_stream.h"

namespace kalmo {

/// The arguments of an error's message, kept. A CFormatArg only borrows its text; an error outlives the call
/// that raises it, so it keeps copies. Owned by its CXError.
class CXErrorArguments {
  public:
    /// Replaces what is kept by copies of the arguments.
    void Set(CFormatArgList tabArg);
    /// The arguments as a list for bFormatMessage, valid until this object is changed or destroyed.
    [[nodiscard]] std::vector<CFormatArg> tabGet() const;

  private:
    /// A text, or an argument that borrows nothing.
    std::vector<std::variant<CTString, CFormatArg>> m_tabKept;
};

/// What is known about one failure.
///
/// The operation that fails fills it: a user error (a module's code, whose message is one of the module's
/// texts), the system's error, information items, sub-errors. Whoever shows errors reads it. The caller of
/// the operation owns it, mostly on the stack.
///
/// No operation throws. What memory does not suffice for is left out, and the user message then reads
/// "<No Memory>". Borrowed pointers are valid until the object is changed or destroyed. Not safe across
/// threads.
///
/// Its methods lie in x_error.cpp; those for StringDump in x_error_dump.cpp.
class CXError : public CTVUnknown {
  public:
    using _stERRORINFO = CXErrorInfoList::_stERRORINFO;

    /// Parts of a dump; they combine with "|".
    enum class eXERROR_INFO : unsigned {
        UserMessage = 1,
        SystemError = 2,
        Context = 4,  ///< module and code, level, function, detail
        Items = 8,
        DebugMessages = 16,
        SubErrors = 32,
        All = 63,
    };

    CXError() noexcept = default;
    CXError(const CXError&) = delete;
    CXError& operator=(const CXError&) = delete;
    ~CXError() override = default;

    // --- User error ---

    /// Sets code and level, and the message from the module's text with the arguments put in. Messages added
    /// before are dropped; everything else stays. A code that the module does not define has resource number
    /// 0 and no message; a text that cannot be loaded leaves a remark as message; one that does not fit the
    /// arguments stands as it is. A null module defines nothing.
    void SetUserErrorList(const STErrorModule* pstModule, unsigned unCode, CFormatArgList tabArg) noexcept;
    template <class... TArg>
    void SetUserError(const STErrorModule* pstModule, unsigned unCode, const TArg&... arg) noexcept {
        const std::array<CFormatArg, sizeof...(TArg)> tabArg{CFormatArg(arg)...};
        SetUserErrorList(pstModule, unCode, tabArg);
    }
    /// Gives the same failure another code: the arguments and the added messages are kept.
    void ChangeUserError(const STErrorModule* pstModule, unsigned unCode) noexcept;
    /// Replaces the message alone, by a text that is ready to show. Null empties it.
    void SetUserErrorMessage(const wchar_t* pszMessage) noexcept;
    /// Replaces the code alone; message, resource number and level stay.
    void SetUserErrorCode(unsigned unCode) noexcept { m_st.unCode = unCode; }
    [[nodiscard]] unsigned unGetUserErrorCode() const noexcept { return m_st.unCode; }
    /// Number of the message's text; 0 when the code is not defined.
    [[nodiscard]] unsigned unGetUserResource() const noexcept { return m_st.unResource; }
    /// The message with the added ones before and behind it, each on a line of its own (CR LF). Never null.
    [[nodiscard]] const wchar_t* pszGetUserMessage() const noexcept;

    /// Adds a message for the operator behind, or before, the others. Empty ones are left out.
    void AddUserMessage(const wchar_t* pszMessage) noexcept;
    void AddUserMessageFirst(const wchar_t* pszMessage) noexcept;
    /// Adds a message for the dump behind, or before, the others.
    void AddDebugMessage(const wchar_t* pszMessage) noexcept;
    void AddDebugMessageFirst(const wchar_t* pszMessage) noexcept;

    // --- System error ---

    /// Sets an errno value and the system's text for it.
    void SetSystemError(unsigned dwCode) noexcept;
    /// The same with the name of what the system refused in front: "name: text".
    void SetSystemErrorParam(unsigned dwCode, const wchar_t* pszParam) noexcept;
    /// Replaces the text alone. Null empties it.
    void SetSystemErrorMessage(const wchar_t* pszMessage) noexcept;
    [[nodiscard]] unsigned dwGetSystemErrorCode() const noexcept { return m_st.dwSystemCode; }
    /// Never null.
    [[nodiscard]] const wchar_t* pszGetSystemErrorMessage() const noexcept {
        return m_st.csSystemMessage.pszGet();
    }

    // --- Context ---

    void SetErrorLevel(eERRORLEVEL eLevel) noexcept { m_st.eLevel = eLevel; }
    [[nodiscard]] eERRORLEVEL eGetErrorLevel() const noexcept { return m_st.eLevel; }
    /// Name of the function that raised the error.
    void SetFunctionName(const wchar_t* pszName) noexcept;
    /// A number that tells apart the places in that function.
    void SetDetailId(unsigned unDetail) noexcept { m_st.unDetail = unDetail; }

    // --- Information items: see CXErrorInfoList ---

    /// Add an item, also when there are items of that kind already; one whose value is not of the kind's type
    /// is left out.
    void AddInfo(eERRORINFOTYPE eKind) noexcept {
        __AddInfo(eKind, [] { return std::monostate(); });
    }
    void AddInfo(eERRORINFOTYPE eKind, const wchar_t* psz) noexcept {
        __AddInfo(eKind, [psz] { return CTString(psz); });
    }
    template <std::integral T>
    void AddInfo(eERRORINFOTYPE eKind, T value) noexcept {
        __AddInfo(eKind, [value] { return static_cast<std::int64_t>(value); });
    }
    void AddInfo(eERRORINFOTYPE eKind, const void* p) noexcept {
        __AddInfo(eKind, [p] { return p; });
    }
    /// The first item of a kind; null when there is none.
    [[nodiscard]] const _stERRORINFO* GetInfo(eERRORINFOTYPE eKind) const noexcept {
        return m_st.clInfo.pstFind(eKind);
    }
    /// The value of the first item of a kind: T is CTString, std::int64_t or const void*. False, with *pOut
    /// untouched, when there is no item of that kind or its values are of another type.
    template <class T>
    bool bGetInfo(eERRORINFOTYPE eKind, T* pOut) const noexcept {
        const _stERRORINFO* pst = GetInfo(eKind);
        const T* pValue = pst == nullptr ? nullptr : std::get_if<T>(&pst->value);
        if (pValue != nullptr) {
            *pOut = *pValue;
        }
        return pValue != nullptr;
    }
    [[nodiscard]] bool bHasInfo(eERRORINFOTYPE eKind) const noexcept { return GetInfo(eKind) != nullptr; }
    /// Removes all items of a kind.
    void DeleteInfo(eERRORINFOTYPE eKind) noexcept { m_st.clInfo.Delete(eKind); }
    /// How many items there are, of all kinds.
    [[nodiscard]] int nNumInfo() const noexcept { return static_cast<int>(m_st.clInfo.nGetCount()); }

    // --- Sub-errors: the failures that led to this one, as copies that belong to it ---

    /// Adds a copy with its own sub-errors (Light: without them; NoUserMessage: without user messages). The
    /// source may be this object or one of its sub-errors.
    void AddSubError(const CXError& rclError) noexcept;
    void AddSubErrorLight(const CXError& rclError) noexcept;
    void AddSubErrorNoUserMessage(const CXError& rclError) noexcept;
    void AddSubErrorLightNoUserMessage(const CXError& rclError) noexcept;
    /// The sub-error of a rank from 0, borrowed; null for any other rank.
    [[nodiscard]] const CXError* pclGetSubError(int nRank) const noexcept;
    [[nodiscard]] int nGetNbSubError() const noexcept { return static_cast<int>(m_tabSubError.nGetCount()); }
    void DeleteAllSubError() noexcept { m_tabSubError.DeleteAll(); }

    /// Makes this object a copy of another one, with its sub-errors or without any. The source may be one of
    /// this object's own sub-errors. Where memory does not suffice for the whole, code, module and level come
    /// over alone.
    void Copy(const CXError& rclError) noexcept;
    void LightCopy(const CXError& rclError) noexcept;

    // --- Output ---

    /// The parts asked for, as lines that end in CR LF:
    ///     the user message
    ///     System error CODE: TEXT                            when there is one; the language's text 4164
    ///     IE=MODULE.CODE, Module=<NAME>, Version=<VERSION>   a line each, when there is a module
    ///     Level=N, Function=<NAME>, Detail=N                 a line each, those that were set
    ///     the information items
    ///     the debug messages
    ///     each sub-error in the same form, its rank from 1 behind "IE" ("IE1=", "IE1.2=")
    /// Empty when memory does not suffice.
    [[nodiscard]] CTString StringDump(eXERROR_INFO eParts) const noexcept;
    /// Writes the whole dump to a trace as UTF-8. False when the stream refuses it.
    bool TraceDump(IXStream* pclTrace) const noexcept;
    /// Appends the lines of the information items.
    void DumpInfo(CTString* pcsOut) const noexcept;

  protected:
    /// Names the module before anything is raised.
    explicit CXError(const STErrorModule* pstModule) noexcept { m_st.pstModule = pstModule; }

  private:
    struct STRelease {
        void operator()(CXError* pcl) const noexcept { pcl->dwRelease(); }
    };

    /// Everything but the sub-errors.
    struct STContent {
        const STErrorModule* pstModule = nullptr;
        unsigned unCode = 0;
        unsigned unResource = 0;
        CXErrorArguments clArguments;
        CTString csMessage;      ///< the message of the user error itself
        CTString csBefore;       ///< added messages, each with its line end
        CTString csBehind;       ///< added messages, each with its line end in front
        CTString csUserMessage;  ///< the three together
        bool bNoMemory = false;  ///< csUserMessage could not be made
        CTString csDebug;        ///< debug messages, each with its line end
        unsigned dwSystemCode = 0;
        CTString csSystemMessage;
        eERRORLEVEL eLevel = eERRORLEVEL::None;
        CTString csFunction;
        unsigned unDetail = 0;
        CXErrorInfoList clInfo;
    };

    template <class F>
    static bool __bGuarded(F fAction) noexcept;
    template <class F>
    void __ChangeUserMessage(F fChange) noexcept;
    template <class F>
    void __AddInfo(eERRORINFOTYPE eKind, F fValue) noexcept {
        try {
            const CMemoryScope clScope;
            m_st.clInfo.bAdd(eKind, fValue());
        } catch (const std::bad_alloc&) {
            return;  // The item is left out.
        }
    }
    void __SetCode(const STErrorModule* pstModule, unsigned unCode, int nLastError);
    void __Message(int nLastError);
    void __AddSubError(const CXError& rclError, bool bLight, bool bUserMessage) noexcept;
    void __CopyContent(const CXError& rclError) noexcept;
    void __CopySubErrors(const CXError& rclError);
    void __Dump(unsigned unParts, const CTString& rcsRank, CTString* pcsOut) const;

    STContent m_st;
    CXArraySingle<std::unique_ptr<CXError, STRelease>> m_tabSubError;
};

constexpr CXError::eXERROR_INFO operator|(CXError::eXERROR_INFO e1, CXError::eXERROR_INFO e2) {
    return static_cast<CXError::eXERROR_INFO>(static_cast<unsigned>(e1) | static_cast<unsigned>(e2));
}

/// An error of the installer's own module.
class _CXErrorModule604 final : public CXError {
  public:
    _CXErrorModule604() noexcept : CXError(&gstErrorModule604) {}

    template <class... TArg>
    void SetUserError(unsigned unCode, const TArg&... arg) noexcept {
        CXError::SetUserError(&gstErrorModule604, unCode, arg...);
    }
    void ChangeUserError(unsigned unCode) noexcept { CXError::ChangeUserError(&gstErrorModule604, unCode); }
};

}  // namespace kalmo

#endif
