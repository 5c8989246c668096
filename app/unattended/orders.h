#ifndef KALMO_APP_UNATTENDED_ORDERS_H
#define KALMO_APP_UNATTENDED_ORDERS_H

#include <string>
#include <string_view>
#include <vector>

#include "framework/fs_path.h"

namespace kalmo {

class CTrace;

/// What the operation of an unattended run is. Any other number does nothing.
enum eOPERATION : int { OP_UPGRADE = 1, OP_INSTALL = 2, OP_UNINSTALL = 3, OP_NONE = 4 };

/// A key of a parameter file, in its section.
struct STOrdersKey {
    const wchar_t* pszSection;
    const wchar_t* pszKey;
    bool bInstallOnly;  ///< Other operations do not look at it.
};
inline constexpr const wchar_t* PSZ_PILOTAGE = L"PILOTAGE";
inline constexpr const wchar_t* PSZ_SERVEUR = L"SERVEUR";
inline constexpr STOrdersKey KEY_OPERATION{PSZ_PILOTAGE, L"MAJ", false};
inline constexpr STOrdersKey KEY_SERVER{PSZ_SERVEUR, L"Serveur", false};
inline constexpr STOrdersKey KEY_DIRECTORY{PSZ_SERVEUR, L"Repertoire", true};
inline constexpr STOrdersKey KEY_PORT{PSZ_SERVEUR, L"Port", true};

/// What keeps an operation that is ordered from being begun.
struct STOrdersFault {
    enum class eKIND { Missing, TooLong, NotAbsolute };

    const wchar_t* pszKey;
    eKIND eKind;
};

/// The mark of an encoding that profile files are not read in, at the start of a file; null when there is
/// none.
const wchar_t* pszForeignMark(std::string_view svBytes);

/// The orders of an unattended run, as its parameter file gives them.
///
/// A member of the run, filled once before anything else is done: the run may wait for another installer, and
/// a file that is changed meanwhile must not mix two orders.
///
/// The parameter file (a profile file; the first of two equal keys counts):
///   [PILOTAGE]  MAJ         1 upgrade, 2 install, 3 uninstall; anything else (default 4) does nothing
///   [SERVEUR]   Serveur     the instance's name, at most 100 characters; "kalmomanager" for the manager
///               Repertoire  the install directory, absolute, at most 260 characters (install only)
///               Port        the TCP port, default 4900 (install only)
struct STOrders {
    int nOperation = OP_NONE;
    CTString csServer;
    CFSPath clInstallDir;  ///< Ends in "/"; empty but for an installation.
    int nPort = 0;         ///< Of an installation.

    /// Whether the operation is one that does something.
    [[nodiscard]] bool bOperation() const noexcept {
        return nOperation >= OP_UPGRADE && nOperation <= OP_UNINSTALL;
    }

    /// Reads the file whole, traces what it orders, and judges all that can be judged without looking at the
    /// machine. Fills every field that the operation needs. False, and told, when there is no such file or
    /// none that can be read, or the operation lacks something; nOperation is 0 then. An operation that does
    /// nothing is told too, and is a success.
    bool bRead(const CTString& csPath, CTrace& rclTrace);

    /// The two halves of it. First the file's bytes; false, and told, when they cannot be had.
    static bool bLoad(const CTString& csPath, CTrace& rclTrace, std::string* pcsBytes);
    /// Then the orders in them, and all that keeps their operation from being begun, in the order in which
    /// it counts; not told. With none, the rest is as above.
    std::vector<STOrdersFault> tabTake(std::string_view svBytes, CTrace& rclTrace);
};

}  // namespace kalmo

#endif
