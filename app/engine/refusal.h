#ifndef KALMO_APP_ENGINE_REFUSAL_H
#define KALMO_APP_ENGINE_REFUSAL_H

#include <optional>
#include <string_view>

#include "framework/fs_path.h"
#include "services/service.h"

/// What the installer refuses to do, because it would reach what is not this product's, or could not be found
/// again afterwards. Asked by both kinds of run before anything is changed.
namespace kalmo {

class CTrace;

/// Why something is refused; made by the questions below, told by whoever asked.
struct STRefusal {
    CTString csTraced;         ///< For the trace: what was found, in English.
    CTString csShown;          ///< For a box: the same and what to do, in the operator's language.
    const char* pszCode = "";  ///< For programs: what kind of refusal it is.
};
using CRefusal = std::optional<STRefusal>;

/// Whether the program that a service's command names is one of this product's: its name begins with "kalmo",
/// the shared manager's with "kalmomanager", or an instance's configuration lies beside it. A program that is
/// missing counts by its name. Not so one that runs a program of ours, as nice, env or a shell do, nor a link
/// to one in another directory: file and directory that the command names are then another's.
bool bOwnProgram(CService& rclService);

/// Against unregistering a service and deleting its files: its command names a program that is not ours. A
/// service that tells no command can be unregistered.
CRefusal clRefuseRemoval(CService& rclService);

/// Against upgrading an instance: it tells no program, one that is not ours, or its directory is gone; or the
/// shared manager may run from the directory in a way that hides it.
CRefusal clRefuseUpgrade(CService& rclService);
/// The same for whoever has looked the shared manager up; null when it is not installed.
CRefusal clRefuseUpgrade(CService& rclService, CService* pclKalmoManager);

/// Against installing into a directory, which ends in "/": a service there could not be found again, as the
/// rules by which commands are read would cut its path; a service may run from it in a way that hides it; or
/// it is that of an instance whose unit is masked.
CRefusal clRefuseDirectory(const CFSPath& rclDir, CServiceList& rtabServer);

/// Against a directory in which a command of the server's programs has more than MAX_SERVER_COMMAND bytes.
CRefusal clRefuseCommandRoom(const CFSPath& rclDir);

/// Against an instance's name that no service can have.
CRefusal clRefuseName(const CTString& csName);

/// Tells a refusal to the trace and to the view of the run. Returns false.
bool bTellRefusal(std::wstring_view svWhat, const STRefusal& rst, CTrace& rclTrace);

}  // namespace kalmo

#endif
