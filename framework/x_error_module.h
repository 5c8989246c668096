#ifndef KALMO_FRAMEWORK_X_ERROR_MODULE_H
#define KALMO_FRAMEWORK_X_ERROR_MODULE_H

#include <cstdint>
#include <span>

#include "framework/resource.h"

namespace kalmo {

/// How bad an error is.
enum class eERRORLEVEL : std::uint32_t {
    None = 0,     ///< Nothing is set.
    Warning = 1,  ///< Something was done otherwise than asked.
    Error = 2,    ///< The operation failed.
    Severe = 3,   ///< The operation failed, and so will what follows.
};

/// One error that a module can raise.
struct STErrorDef {
    std::uint32_t dwCode;      ///< the user code
    std::uint32_t dwResource;  ///< number of its message among the module's texts
    std::uint32_t dwReserved;  ///< always 0
    eERRORLEVEL eLevel;
};

/// A module that raises errors: who it is, which errors it knows and where their messages are. Lives as long
/// as the program.
struct STErrorModule {
    unsigned unNumber;
    const wchar_t* pszName;
    const wchar_t* pszVersion;
    std::span<const STErrorDef> tabDef;
    const _stMyModuleInfo* pstTexts;

    /// The definition of a user code; null when the module has none.
    [[nodiscard]] const STErrorDef* pstFind(unsigned unCode) const noexcept;
};

/// The installer's own module.
extern const STErrorModule gstErrorModule604;

}  // namespace kalmo

#endif
