#ifndef KALMO_FRAMEWORK_PLAIN_LETTER_H
#define KALMO_FRAMEWORK_PLAIN_LETTER_H

namespace kalmo {

/// What stands for a character where only ASCII can be shown, one column wide: the base letter of an accented
/// one, the nearest sign for the punctuation of our languages, itself when it is ASCII, else "?".
wchar_t cPlainLetter(wchar_t c) noexcept;

}  // namespace kalmo

#endif
