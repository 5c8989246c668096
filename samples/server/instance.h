#ifndef KALMO_SAMPLES_SERVER_INSTANCE_H
#define KALMO_SAMPLES_SERVER_INSTANCE_H

#include <span>
#include <string_view>

#include "framework/fs_path.h"
#include "framework/xy_string.h"

namespace kalmo::sample {

/// What a server program knows about the instance it belongs to: its own directory and the settings of
/// "ZDConf.ini" there.
struct STInstance {
    CFSPath clDirectory;     ///< The program's directory, with its trailing "/".
    CTString csName;         ///< Key "Name" of section "INIT".
    int nPort = 0;           ///< Key "AccessPort"; 4900 without one.
    CTString csDaemonUser;   ///< Key "DaemonUser"; empty: root.
    CFSPath clDatabaseRoot;  ///< Key "DBRootPath" with "%%EXE%%" replaced by the directory.
};

/// Reads the instance of the running program. False when a path is too long.
bool bReadInstance(STInstance* pstOut);

/// True when a name can be part of a service's name: 1 to 100 letters, digits, "_" and "-".
bool bNameAllowed(std::wstring_view svName);

/// The arguments of a program, without its name.
using CArguments = std::span<const std::string_view>;

/// What a program is asked to do: its first argument, or "".
inline std::string_view svModeOf(CArguments tabArgument) {
    return tabArgument.empty() ? std::string_view() : tabArgument.front();
}

/// What a program's main does: prepares the process and calls fnMain.
int nRunProgram(int nArgc, char** ppszArgv, int (*fnMain)(CArguments));

}  // namespace kalmo::sample

#endif
