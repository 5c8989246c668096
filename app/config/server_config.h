#ifndef KALMO_APP_CONFIG_SERVER_CONFIG_H
#define KALMO_APP_CONFIG_SERVER_CONFIG_H

#include <string_view>

#include "framework/fs_path.h"
#include "framework/xy_string.h"

namespace kalmo {

class CService;

/// An instance's configuration file "ZDConf.ini": where it lies, and the few keys the installer touches.
///
/// The file belongs to the instance's server; the installer writes section "INIT" when it installs and
/// "ACTIVE" of section "TELEMETRY" with the operator's choice. A key that cannot be written (false, with the
/// reason in errno) is missing, and the server falls back to its default.
/// Called by the install engine, the upgrade and the dialogs. Paths: at most 260 characters.

inline constexpr const wchar_t* PSZ_SECTION_INIT = L"INIT";
inline constexpr const wchar_t* PSZ_KEY_DAEMON_USER = L"DaemonUser";
inline constexpr const wchar_t* PSZ_KEY_PORT = L"AccessPort";
inline constexpr int PORT_DEFAUT = 4900;

/// The shared manager's service and program, and what the name of an instance's service begins with.
inline constexpr const wchar_t* PSZ_MANAGER_SERVICE = L"KalmoManager";
inline constexpr const wchar_t* PSZ_MANAGER_PROGRAM = L"kalmomanager";
inline constexpr const wchar_t* PSZ_SERVICE_PREFIX = L"ZDCS-";
/// The program of an instance; the manager's name begins with it too.
inline constexpr const wchar_t* PSZ_SERVER_PROGRAM = L"kalmo";

/// Whether an instance's service can have that name and be worked with: not empty, not too long; under
/// systemd what unit names are made of, under SysV nothing that means something to a shell.
bool bServiceCanBeNamed(const CTString& csName);

/// Whether the machine knows a service of that instance, also one whose unit is masked.
bool bInstanceKnown(const CTString& csName);
/// Whether a unit of that name is masked (systemd.unit(5)): it is no service, but its name is taken.
bool bUnitMasked(const CTString& csService);

/// What an instance's configuration says about telemetry.
enum class ETelemetryState : int {
    Unknown = -1,  ///< The key is missing or holds anything but 0 or 1.
    Off = 0,
    On = 1,
};

bool WriteDBRootPath(const wchar_t* pszConfPath, const wchar_t* pszValue);
/// The port as the decimal digits that were entered.
bool WriteServerPort(const wchar_t* pszConfPath, const wchar_t* pszValue);
bool WriteServerName(const wchar_t* pszConfPath, const wchar_t* pszValue);
/// Writes "1" for any non-zero nOn, else "0".
void WriteTelemetryOn(const wchar_t* pszConfPath, int nOn);
ETelemetryState eReadTelemetry(const wchar_t* pszConfPath);
/// The service of the instance that the configuration file in a directory, which ends in "/", belongs to.
/// Empty when there is none, or it has no name that a service can have.
CTString csServiceConfiguredIn(const CTString& csDirectory);
/// The port, PORT_DEFAUT when the file does not tell any.
int nReadServerPort(const wchar_t* pszConfPath);
/// The same of the configuration that lies beside a service's program.
int nServerPort(CService& rclService);

/// The account that needs no looking up, and no key in the file.
inline constexpr const wchar_t* PSZ_ROOT = L"root";
/// Whether the system knows an account of that name.
bool bSystemAccountExists(const CTString& csUser);

/// True for the shared manager's service, whatever the letter case of its name.
bool bIsManager(const CService& rclService);

/// The instance's name in that of its service.
std::wstring_view svInstanceName(const CService& rclService);

/// What a service is called on the screen: its description or, without one, its name.
CTString csGetDisplayName(CService& rclService);

/// The program of a service: its command line cut before the first " --", without spaces at the end.
/// Empty when the service tells none.
CTString csGetProgramWithoutArg(CService* pclService);

/// The directory of a service's program, with its trailing "/". Empty when the service tells no program, or
/// one whose path is not absolute or longer than 260 characters.
CTString csGetProgramDirectory(CService* pclService);

/// The configuration file in an instance's directory. False, and rszOut empty, when that is longer than 260
/// characters.
bool bConfPath(std::wstring_view svDirectory, CPathBuffer& rszOut);
/// The configuration file of an installed instance: beside its program. Empty when its directory is unknown
/// or the path would be longer than 260 characters.
void GetZDConfPath(CService* pclService, CPathBuffer& rszOut);

/// The version that a program file carries in its version information, "?" without one.
CTString csGetProgramVersion(std::wstring_view svProgram);

/// The same of the running program.
CTString csGetOwnVersion();

}  // namespace kalmo

#endif
