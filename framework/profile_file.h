#ifndef KALMO_FRAMEWORK_PROFILE_FILE_H
#define KALMO_FRAMEWORK_PROFILE_FILE_H

#include <string>
#include <string_view>

#include "framework/x_stream.h"
#include "framework/xy_string.h"

namespace kalmo {

class CProfileReader;

/// What can be done with one open profile file.
///
/// Made by the calls of profile.h around the stream they opened, which it borrows. Each operation starts at
/// the beginning of the file, so operations may follow each other.
///
/// Reading accepts blanks before headers and keys, skips comments (lines that begin with ":"), and takes a
/// section to end at the next line "[...]". Writing is stricter, on purpose: a header or key is seen only in
/// the first column, and every line that begins with "[" ends a section. A key line with blanks before it is
/// therefore found when reading and not when writing, which adds a second line.
class CProfileFile {
  public:
    explicit CProfileFile(IXStream& rclStream) noexcept : m_rclStream(rclStream) {}

    /// The value of a key. False when there is none.
    bool bGetValue(std::wstring_view svSection, std::wstring_view svKey, CTString* pcsValue);
    /// The names of all sections, each followed by "\r\n". Stops once nMax characters are reached, with a
    /// list that may be longer by what is left of the last name. False when there is no section.
    bool bListSections(std::size_t nMax, CTString* pcsList);
    /// The names of a section's keys in the same form. False when there is no key.
    bool bListKeys(std::wstring_view svSection, std::size_t nMax, CTString* pcsList);

    /// True when these texts can be written: none holds a line feed, a carriage return or a null, none of
    /// which could be read back.
    static bool bWritable(std::wstring_view svSection, std::wstring_view svKey, std::wstring_view svValue);
    /// Gives a key a value: replaces its line, or adds one before the first empty line of the section or at
    /// its end, or adds the section at the end of the file. A file whose last line has no line feed gets one
    /// before text is added behind it. False when a text is not writable, and when the file cannot be read or
    /// written.
    bool bSetValue(std::wstring_view svSection, std::wstring_view svKey, std::wstring_view svValue);
    /// Removes a key's line. True too when there is none; false when the file cannot be read or written.
    bool bRemoveKey(std::wstring_view svSection, std::wstring_view svKey);
    /// Removes a section from its header up to the next line that begins with "[". Results as above.
    bool bRemoveSection(std::wstring_view svSection);

  private:
    /// The stretch of the file that a write concerns.
    struct STPlace {
        bool bSection = false;  ///< The section exists.
        bool bKey = false;      ///< The stretch is the key's line; otherwise it is empty, where one can go.
        bool bLineFeed = true;  ///< What stands before the stretch ends with a line feed.
        std::int64_t i64Start = 0;
        std::int64_t i64End = 0;
    };

    STPlace __stFindKey(CProfileReader& rclReader, std::wstring_view svSection, std::wstring_view svKey);
    bool __bReplace(const CProfileReader& rclReader, std::int64_t i64Start, std::int64_t i64End,
                    std::string_view svNew);

    IXStream& m_rclStream;
};

}  // namespace kalmo

#endif
