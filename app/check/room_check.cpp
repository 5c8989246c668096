#include "app/check/room_check.h"

#include <cerrno>
#include <cstdint>
#include <string>

#include "app/check/room_judge.h"
#include "app/config/server_config.h"
#include "app/engine/data_extractor.h"
#include "app/engine/trace.h"
#include "app/unattended/pilot.h"
#include "archive/entry_path.h"
#include "framework/conversion.h"

namespace kalmo {

void CheckRoom(const CDataExtractor& rclExtractor, const CFSPath& rclDirectory, bool bNew,
               CFindings& rclFindings) {
    CRoomJudge clRoom(rclFindings);
    const std::string csRoot(rclDirectory.csGetUTF8().svGet());
    if (!clRoom.bDirectory(csRoot)) {
        return;
    }
    if (bNew) {
        // The server itself writes there.
        const std::string csDatabase = csRoot + std::string(csToUTF8(PSZ_DATABASE_FOLDER).svGet());
        clRoom.bDirectory(csDatabase);
        clRoom.Inside(csDatabase, false);
    }
    const CRepertoire& rclRepertoire = rclExtractor.rclGetRepertoire();
    for (int nRang = 0; nRang < static_cast<int>(rclRepertoire.dwTaille()); ++nRang) {
        const CRepEntree& rclEntree = *rclRepertoire.pclGetEntree(nRang);
        const CTString csName = CDataExtractor::csInstalledName(rclEntree);
        CFSPath clTarget;
        const eARCHIVE eCode =
            csName.bEmpty() ? ARCHIVE_BAD : eVerifieChemin(rclDirectory.svGet(), csName, &clTarget);
        if (eCode == ARCHIVE_CREATE && errno != ENAMETOOLONG) {
            const CTString csPath = rclDirectory.csGet() + CFSPath::stSplit(csName).svDirectory;
            clRoom.NoDirectory(std::string(csToUTF8(csPath).svGet()));
        }
        if (eCode != ARCHIVE_OK) {
            continue;  // The payload's own faults are told with it.
        }
        const std::string csTarget(clTarget.csGetUTF8().svGet());
        const std::uint64_t u64Size = rclEntree.u64GetTailleOriginale();
        if (u64Size == 0 && rclEntree.bRepertoire()) {
            // It gets its mode, which is a change of its own.
            clRoom.bDirectory(csTarget + "/");
            clRoom.Inside(csTarget + "/", true);
        } else {
            clRoom.File(csTarget, u64Size);
        }
    }
    // A few lines each; the configuration is changed in place where there is one.
    CPathBuffer szConfPath;
    if (bNew && bConfPath(rclDirectory.svGet(), szConfPath)) {
        clRoom.Changed(std::string(csToUTF8(szConfPath).svGet()));
    }
    clRoom.Marker(csRoot);
    clRoom.Judge(csRoot);
}

}  // namespace kalmo
