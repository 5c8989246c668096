#include "services/told_program.h"

#include <string>

#include "framework/conversion.h"
#include "framework/memory_stream.h"
#include "services/init_script.h"
#include "services/service_manager.h"
#include "services/systemctl_output.h"

namespace kalmo {
namespace {

std::optional<CTString> csToldBySystemd(const CTString& csCommandLine) {
    const CTString csOutput = L"Type=simple\nExecStart={ path=" + csCommandLine + L" ; argv[]=" +
                              csCommandLine + L" ; ignore_errors=no ; }\n";
    STUnitProperties st = stReadUnitProperties(csToUTF8(csOutput));
    return st.bInitScript ? std::nullopt : std::move(st.csProgram);
}

std::optional<CTString> csToldByScript(const CTString& csCommandLine) {
    const std::string csLine =
        std::string(SV_PROGRAM_MARKER) + std::string(csToUTF8(csCommandLine).svGet()) + "\"\n";
    CMemoryStream clScript(CTLBIN(csLine.begin(), csLine.end()));
    CTString csProgram;
    return bReadMarkedText(clScript, SV_PROGRAM_MARKER, MAX_PROGRAM_LINE, &csProgram)
               ? std::optional<CTString>(csProgram)
               : std::nullopt;
}

}  // namespace

std::optional<CTString> csProgramAsTold(const CTString& csCommandLine) {
    return CServiceManager::ms_eDistri == eSystemd ? csToldBySystemd(csCommandLine)
                                                   : csToldByScript(csCommandLine);
}

}  // namespace kalmo
