#include "services/shell_command.h"

#include <cstdlib>

#include "framework/conversion.h"

namespace kalmo {

int nShellCommand(std::wstring_view svCommand) {
    const CXYString<char> csCommand = csToUTF8(svCommand);
    return std::system(csCommand.pszGet());
}

}  // namespace kalmo
