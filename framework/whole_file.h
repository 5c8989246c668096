#ifndef KALMO_FRAMEWORK_WHOLE_FILE_H
#define KALMO_FRAMEWORK_WHOLE_FILE_H

#include <string_view>

namespace kalmo {

/// Files that somebody else may read at any moment: there is the old one or the new one, and never half of
/// it.

/// Puts these bytes, as a file of mode 0600, in the place that a path names: a file beside it is written, put
/// onto the disk and renamed. What stands at the place must be a regular file, which is replaced and not
/// written to, or nothing: a directory (errno EISDIR), a symbolic link (ELOOP) and anything else (EEXIST) is
/// refused. Signals that would end the process wait meanwhile. False, with errno set and nothing left beside
/// the place, when that failed. Where only the folder could not be put onto the disk the new file is there
/// all the same.
bool bReplaceFile(std::wstring_view svPath, std::string_view svBytes);

/// Whether bReplaceFile could do so, as far as can be seen without changing anything: the folder is there and
/// may be written, and nothing stands in the way. False with the errno that it would have.
bool bReplaceable(std::wstring_view svPath);

}  // namespace kalmo

#endif
