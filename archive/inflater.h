#ifndef KALMO_ARCHIVE_INFLATER_H
#define KALMO_ARCHIVE_INFLATER_H

#include <memory>
#include <span>

namespace kalmo {

class IInflateEngine;

/// Inflates one raw deflate stream (RFC 1951, without any wrapper) after the other.
///
/// The reader, which owns it, does not know which library does the work: that of the CMake option
/// KALMO_INFLATE, zlib (the reference, default of a plain build) or ISA-L (what is delivered: two to three
/// times as fast). On a processor that ISA-L has no code for it is zlib in any case. See
/// archive/inflate_engine.h.
class CInflater {
  public:
    enum class eETAT {
        Going,   ///< Goes on: give more input, or more room.
        Ended,   ///< The stream's end has been reached.
        Failed,  ///< The data is no deflate stream.
    };

    CInflater();
    CInflater(const CInflater&) = delete;
    CInflater& operator=(const CInflater&) = delete;
    ~CInflater();

    /// Begins a stream; one that was under way is dropped. False when there is no memory for it.
    bool bStart();
    /// Inflates from the front of the input into the front of the room and takes from both what it used;
    /// behind a stream's end it may take up to eight bytes more.
    /// Where nothing can be used any more the result is Failed: the caller has no input left where the stream
    /// needs some. After Failed neither input nor room has changed size, and the stream is lost.
    /// Precondition: bStart() succeeded, and the room is not empty.
    eETAT eInflate(std::span<const unsigned char>& rtabInput, std::span<unsigned char>& rtabRoom);
    /// Drops the stream that is under way, if any; its memory is kept for the next one.
    void End() noexcept;

  private:
    std::unique_ptr<IInflateEngine> m_pclEngine;
    bool m_bStarted = false;
};

}  // namespace kalmo

#endif
