#ifndef KALMO_SAMPLES_SERVER_INSTANCE_H
#define KALMO_SAMPLES_SERVER_INSTANCE_H

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

/// The version that the running program carries, "?" without one.
CXYString<char> csOwnVersion();

/// What a program's main does: prepares the process and calls fnMain with the first argument, or "".
int nRunProgram(int nArgc, char** ppszArgv, int (*fnMain)(std::string_view));

}  // namespace kalmo::sample

#endif
