#ifndef KALMO_ARCHIVE_INFLATER_H
#define KALMO_ARCHIVE_INFLATER_H

#include <memory>
#include <span>

struct z_stream_s;

namespace kalmo {

/// Inflates one raw deflate stream (RFC 1951, without any wrapper) after the other.
///
/// The one place that knows which inflate the system uses; a faster one can take its place without a change
/// to the reader, which owns it.
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
    /// Inflates from the front of the input into the front of the room and takes from both what it used.
    /// With no input at all the result is Failed: the caller has none left where the stream needs some.
    /// Precondition: bStart() succeeded, and the room is not empty.
    eETAT eInflate(std::span<const unsigned char>& rtabInput, std::span<unsigned char>& rtabRoom);
    /// Drops the stream that is under way, if any.
    void End() noexcept;

  private:
    std::unique_ptr<z_stream_s> m_pstStream;
    bool m_bStarted = false;
};

}  // namespace kalmo

#endif
