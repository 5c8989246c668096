#ifndef KALMO_FRAMEWORK_PROFILE_READER_H
#define KALMO_FRAMEWORK_PROFILE_READER_H

#include <string>

#include "framework/profile_encoding.h"

namespace kalmo {

/// A line of a profile file and the stretch of the file it takes.
struct STProfileLine {
    CTString csText;            ///< With its line feed, which only the last line may lack.
    std::int64_t i64Start = 0;  ///< Position of its first byte.
    std::int64_t i64End = 0;    ///< Position behind its last byte.
};

/// Walks once through the lines of a profile file.
///
/// Made for one walk by CProfileFile. Borrows the stream, moves its position, and must not be used further
/// once the stream is written to. Reads no further than the stream's length at the start, so that a device
/// that never ends is an empty file. Half a unit at the end of a wide file belongs to no line, nor do nulls
/// at the end of any file: a write that was killed leaves them, and so may a power cut.
class CProfileReader {
  public:
    /// Begins behind the mark, at the first line.
    explicit CProfileReader(IXStream& rclStream);

    /// Moves to the next line. False at the end of the file and when it cannot be read (bFailed).
    bool bNext(STProfileLine* pstLine);
    [[nodiscard]] bool bFailed() const noexcept { return m_bFailed; }
    /// Where the next line begins. At the end of the file: where text can be appended.
    [[nodiscard]] std::int64_t i64GetPosition() const noexcept { return m_i64Position; }

    /// The length of the file without the nulls at its end.
    [[nodiscard]] std::int64_t i64GetLength() const noexcept { return m_i64Length; }
    [[nodiscard]] eENCODAGE eGetEncodage() const noexcept { return m_eEncodage; }
    /// A name as its characters would be read from this file.
    [[nodiscard]] CTString csAsRead(std::wstring_view svName) const;

  private:
    /// The bytes read from the stream and not handed out yet.
    [[nodiscard]] std::string_view __svPending() const noexcept;
    /// Reads on. False when nothing more comes.
    bool __bFill();

    IXStream& m_rclStream;
    eENCODAGE m_eEncodage = eENCODAGE::Octets;
    std::string m_csBuffer;
    std::size_t m_nTaken = 0;  ///< How many bytes at the buffer's start have been handed out.
    std::int64_t m_i64Length;
    std::int64_t m_i64Position = 0;
    bool m_bFailed = false;
};

}  // namespace kalmo

#endif
