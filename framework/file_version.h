#ifndef KALMO_FRAMEWORK_FILE_VERSION_H
#define KALMO_FRAMEWORK_FILE_VERSION_H

#include "framework/x_stream.h"
#include "framework/xy_string.h"

namespace kalmo {

/// The version information of a program or library file.
///
/// It lives in an ELF note (owner "FDO", type 0xcafe1a7e) whose description is an object in JSON, as
/// systemd's "Package Metadata for ELF Files" describes; the build puts one into every program. Made on the
/// stack by whoever wants to know a version. Any file at all may be given: one without readable information
/// is a failure, never a danger.
class CFileVersion {
  public:
    /// Reads a file's information; what was read before is forgotten. False when there is none.
    bool bInit(std::wstring_view svPath);
    /// The same from a stream, whose position moves.
    bool bInit(IXStream& rclStream);

    /// Gives a string of the information. The one there is: "\StringFileInfo\000004E4\VersionVI", the note's
    /// "version". False for any other name and when the information was not read.
    bool bGetString(std::wstring_view svName, CTString* pcsValue) const;

  private:
    CTString m_csVersion;  ///< Never empty once read.
};

}  // namespace kalmo

#endif
