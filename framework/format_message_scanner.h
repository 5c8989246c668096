#ifndef KALMO_FRAMEWORK_FORMAT_MESSAGE_SCANNER_H
#define KALMO_FRAMEWORK_FORMAT_MESSAGE_SCANNER_H

#include <cstddef>
#include <string_view>

namespace kalmo {

/// How an insert is printed: a printf conversion taken apart. Only well-formed ones exist (see
/// CMessageScanner).
struct STInsertFormat {
    static constexpr int ABSENT = -1;
    static constexpr int ARGUMENT = -2;  ///< A "*": the number is an argument of its own.

    bool bLeft = false;       ///< "-"
    bool bZero = false;       ///< "0", integers only
    bool bAlternate = false;  ///< "#", conversions o x X only
    wchar_t cSign = 0;        ///< '+' or ' ' for conversions d i, else 0
    int nWidth = ABSENT;      ///< columns: ABSENT, ARGUMENT or 0 to CMessageScanner::MAX_WIDTH
    int nPrecision = ABSENT;  ///< characters or digits: as nWidth
    int nBits = 0;            ///< integers: 8 or 16 for the modifiers hh and h, 0 for the argument's own size
    wchar_t cConversion = L's';  ///< one of d i o u x X c s p; C and S are stored as c and s
};

/// One piece of a message template.
struct STMessagePiece {
    enum class eKIND {
        Text,    ///< svText goes into the message as it is.
        Insert,  ///< An argument goes here.
        End,     ///< The template is used up, or "%0" ended it.
        Broken,  ///< The template is malformed; nothing follows.
    };
    eKIND eKind = eKIND::End;
    std::wstring_view
        svText;       ///< Text: part of the template or a constant. Insert: what stood between the "!".
    int nInsert = 0;  ///< Insert: 1 to 99
    STInsertFormat stFormat;  ///< Insert
};

/// Takes a message template in the Windows manner apart.
///
/// %1 to %99     an insert, printed as text
/// %1!format!    an insert with a printf conversion without its percent sign:
///               flags "-+ #0", width, "." precision, a size (h hh l ll w I I32 I64), a conversion (d i u o x
///               X c C s S p). A "*" takes width or precision from an argument. Combinations that printf
///               leaves undefined are malformed, and so are widths and precisions over MAX_WIDTH.
/// %0            ends the message
/// %n %r %t      line end (CR LF), carriage return, tab
/// %% %. %! %    the sign itself, the last one a blank
///
/// Any other use of the percent sign is malformed. Everything else stands for itself, line ends included.
/// Used by FormatMessage on every message, and by the compiler of the text catalogues.
class CMessageScanner {
  public:
    static constexpr int MAX_WIDTH = 1024;

    /// The template must outlive the scanner and the pieces.
    explicit CMessageScanner(std::wstring_view svTemplate) noexcept : m_sv(svTemplate) {}
    /// The next piece; after End or Broken always that again.
    STMessagePiece stNext() noexcept;

  private:
    STMessagePiece __stEscape() noexcept;
    STMessagePiece __stInsert() noexcept;
    STMessagePiece __stEnd(STMessagePiece::eKIND eKind) noexcept;

    std::wstring_view m_sv;  ///< What is not scanned yet.
    bool m_bBroken = false;
};

}  // namespace kalmo

#endif
