#include "services/systemctl.h"

#include "services/lance_processus.h"

namespace kalmo {

bool bRunSystemctl(std::wstring_view svArguments, CXYString<char>* pcsOutput, unsigned* pdwExitCode) {
    CLanceProcessus clSystemctl;
    return clSystemctl.bLanceProcessus(pszSystemctl, CTString(svArguments).pszGet(), nullptr) &&
           clSystemctl.bLitSortieEtAttendFinExecution(pcsOutput, pdwExitCode);
}

bool bCommandSystemctl(std::wstring_view svArguments) {
    unsigned dwExitCode = 0;
    return bRunSystemctl(svArguments, nullptr, &dwExitCode) && dwExitCode == 0;
}

}  // namespace kalmo
