#include "services/shell_command.h"

#include <cerrno>
#include <cstdlib>
#include <exception>

#include "framework/conversion.h"
#include "framework/memory_scope.h"

namespace kalmo {

int nShellCommand(const char* pszCommand) {
    // A shell that could not be started is told as one that ended with 127, a command that it does not find.
    // The reason in errno tells the two apart.
    constexpr int NOT_STARTED = 127 << 8;
    errno = 0;
    const int nStatus = std::system(pszCommand);
    return nStatus == NOT_STARTED && errno != 0 && errno != EINTR ? -1 : nStatus;
}

int nShellCommand(std::wstring_view svCommand) try {
    const CMemoryScope clScope;
    return nShellCommand(csToUTF8(svCommand).pszGet());
} catch (const std::exception&) {
    return NoMemory(-1);
}

}  // namespace kalmo
