#ifndef KALMO_APP_ENGINE_INSTALL_STEPS_H
#define KALMO_APP_ENGINE_INSTALL_STEPS_H

#include <string>
#include <string_view>

#include "framework/fs_path.h"

/// What the interactive and the unattended run do alike to a machine, one step a function. Each tells the
/// trace what it did and what came of it.
namespace kalmo {

class CTrace;
class CXError;

/// Creates a directory with those above it; an existing one is a success. A failure fills the error object.
bool bCreateDirectory(std::wstring_view svDir, CTrace& rclTrace, CXError* pclError);
/// Writes database root, port (decimal digits) and name, in this order, into an instance's configuration
/// file. A key that cannot be written is missing, no more: the server starts with its default. False, with
/// errno set, only when one still holds what an earlier instance had: the server would register that one.
bool bWriteNewConfiguration(const wchar_t* pszConfPath, const wchar_t* pszDbRoot, const CTString& csPort,
                            const CTString& csName, CTrace& rclTrace);

/// The longest command line of the server's programs in an interactive installation, in bytes: a buffer of
/// 261 with its terminating zero.
inline constexpr std::size_t MAX_SERVER_COMMAND = 260;

/// The shell's command line of one of the server's programs in the install directory, which ends in "/":
/// svShown is the program's name with its arguments, svHidden more of them. Its standard error is dropped.
std::string csServerCommand(const CFSPath& rclDir, std::string_view svShown, std::string_view svHidden);

/// Runs such a command; the trace does not show svHidden. A command line of more than nMaxBytes is cut, and
/// the trace says so. Returns the status as system() does.
int nRunServerProgram(const CFSPath& rclDir, std::string_view svShown, std::string_view svHidden,
                      std::size_t nMaxBytes, CTrace& rclTrace);

/// Creates an account that nobody can log in with. True when it exists afterwards.
bool bCreateSystemAccount(const CTString& csUser, CTrace& rclTrace);

}  // namespace kalmo

#endif
