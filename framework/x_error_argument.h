#ifndef KALMO_FRAMEWORK_X_ERROR_ARGUMENT_H
#define KALMO_FRAMEWORK_X_ERROR_ARGUMENT_H

#include <variant>
#include <vector>

#include "framework/format_message.h"

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

}  // namespace kalmo

#endif
