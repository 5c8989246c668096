#include "samples/server/registration.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

#include "framework/conversion.h"
#include "framework/disk_file.h"
#include "services/init_script.h"
#include "services/service_manager.h"
#include "services/systemctl.h"

namespace kalmo::sample {
namespace {

// %N service, %D description, %P program, %U account.
constexpr std::wstring_view SV_UNIT =
    LR"([Unit]
Description=%D
After=network.target

[Service]
Type=simple
ExecStart="%P" --service
ExecReload=/bin/kill -HUP $MAINPID
User=%U
Restart=on-failure

[Install]
WantedBy=multi-user.target
)";

constexpr std::wstring_view SV_SCRIPT =
    LR"(#!/bin/sh
### BEGIN INIT INFO
# Provides:          %N
# Required-Start:    $remote_fs $network
# Required-Stop:     $remote_fs $network
# Default-Start:     2 3 4 5
# Default-Stop:      0 1 6
# Short-Description: %D
### END INIT INFO
Name="%D"
Program="%P --service"
User="%U"
Daemon="${Program% --service}"
Pid="/run/%N.pid"

status() {
    start-stop-daemon --status --pidfile "$Pid" --exec "$Daemon"
}
start() {
    start-stop-daemon --start --quiet --oknodo --background --make-pidfile --pidfile "$Pid" \
        --chuid "$User" --exec "$Daemon" -- --service || return
    # It is started when it is the program, not before: whoever stops it right away would not find it.
    tries=300
    while [ $tries -gt 0 ] && read -r pid <"$Pid" && kill -0 "$pid" 2>/dev/null && ! status; do
        sleep 0.1
        tries=$((tries - 1))
    done
}
stop() {
    start-stop-daemon --stop --quiet --oknodo --retry TERM/10/KILL/5 --remove-pidfile --pidfile "$Pid" --exec "$Daemon"
}

case "$1" in
    start) start ;;
    stop) stop ;;
    restart) stop && start ;;
    reload) start-stop-daemon --stop --quiet --signal HUP --pidfile "$Pid" --exec "$Daemon" ;;
    status) status ;;
    *) echo "Usage: $0 {start|stop|restart|reload|status}" >&2; exit 2 ;;
esac
)";

CTString csFill(std::wstring_view svTemplate, const STRegistration& rst) {
    CTString cs;
    for (std::size_t n = 0; n < svTemplate.size(); ++n) {
        if (svTemplate[n] != L'%' || n + 1 == svTemplate.size()) {
            cs += svTemplate[n];
            continue;
        }
        switch (svTemplate[++n]) {
            case L'N': cs += rst.csService; break;
            case L'D': cs += rst.csDescription; break;
            case L'P': cs += rst.clProgram.svGet(); break;
            case L'U': cs += rst.csUser.bEmpty() ? std::wstring_view(L"root") : rst.csUser.svGet(); break;
            default: cs += L'%'; cs += svTemplate[n];
        }
    }
    return cs;
}

bool bWriteFile(const CTString& csPath, const CTString& csText, mode_t unMode, CInstallLog& rclLog) {
    const CXYString<char> csBytes = csToUTF8(csText);
    CDiskFile clFile;
    const bool bWritten = clFile.bOpen(csPath, CDiskFile::eMODE::Create) &&
                          clFile.bWrite(csBytes.pszGet(), csBytes.nGetLength()) &&
                          clFile.bSetPermission(unMode) && clFile.bClose();
    rclLog.Line(L"write " + csPath + L": " + (bWritten ? CTString(L"ok") : csFromUTF8(std::strerror(errno))));
    return bWritten;
}

bool bSystemctl(const CTString& csArguments, CInstallLog& rclLog) {
    CXYString<char> csOutput;
    unsigned dwCode = 0;
    const bool bRan = bRunSystemctl(csArguments, &csOutput, &dwCode) && dwCode == 0;
    rclLog.Line(L"systemctl " + csArguments + (bRan ? L": ok" : L": failed"));
    if (!bRan && !csOutput.bEmpty()) {
        rclLog.Line(csFromUTF8(csOutput));
    }
    return bRan;
}

bool bRegisterSystemd(const STRegistration& rst, CInstallLog& rclLog) {
    return bWriteFile(L"/etc/systemd/system/" + rst.csService + L".service", csFill(SV_UNIT, rst), 0644,
                      rclLog) &&
           bSystemctl(L"daemon-reload", rclLog) && bSystemctl(L"enable " + rst.csService, rclLog) &&
           bSystemctl(L"restart " + rst.csService, rclLog);
}

// The command that makes the boot links of a script, by distribution.
const char* pszBootTool() {
    switch (CServiceManager::ms_eDistri) {
        case eDebian: return "update-rc.d %s defaults >/dev/null";
        case eRedHat:
        case eMandriva:
        case eFedora: return "chkconfig --add %s >/dev/null";
        case eSuSE: return "insserv %s >/dev/null";
        case eGentoo: return "rc-update add %s default >/dev/null";
        default: return "true";
    }
}

bool bRegisterSysV(const STRegistration& rst, CInstallLog& rclLog) {
    const CTString csScript = csScriptPath(rst.csService);
    // Whoever reads the script's marker lines reads no longer ones, with the line feed.
    const CXYString<char> csProgram = csToUTF8(rst.clProgram.svGet());
    if (SV_PROGRAM_MARKER.size() + csProgram.nGetLength() + sizeof " --service\"" - 1 >= MAX_PROGRAM_LINE) {
        rclLog.Line(L"the program's path is too long for an init script: " + rst.clProgram.csGet());
        return false;
    }
    if (!bWriteFile(csScript, csFill(SV_SCRIPT, rst), 0755, rclLog)) {
        return false;
    }
    CXYString<char> csTool(pszBootTool());
    if (const std::size_t n = csTool.svGet().find("%s"); n != std::string_view::npos) {
        csTool.Remove(n, 2);
        csTool.Insert(n, csToUTF8(rst.csService));
    }
    const bool bLinked = std::system(csTool.pszGet()) == 0;
    rclLog.Line(csFromUTF8(csTool) + (bLinked ? L": ok" : L": failed"));
    const CXYString<char> csRestart = csToUTF8(csScript + L" restart >/dev/null 2>&1");
    const bool bStarted = std::system(csRestart.pszGet()) == 0;
    rclLog.Line(csFromUTF8(csRestart) + (bStarted ? L": ok" : L": failed"));
    return bLinked && bStarted;
}

}  // namespace

bool bRegister(const STRegistration& rst, CInstallLog& rclLog) {
    if (rst.clProgram.svGet().find_first_of(L"\"\\`$%\n") != std::wstring_view::npos) {
        rclLog.Line(L"the directory's name must not hold quotes, backslashes, `, $ or %: " +
                    rst.clProgram.csGet());
        return false;
    }
    return CServiceManager::ms_eDistri == eSystemd ? bRegisterSystemd(rst, rclLog)
                                                   : bRegisterSysV(rst, rclLog);
}

}  // namespace kalmo::sample
