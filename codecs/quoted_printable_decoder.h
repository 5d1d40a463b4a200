// The state machine of the quoted-printable decoders, fed piece by piece. It remembers the two characters before the
// current one; an "=" two characters back makes the current one the end of an escape.
#pragma once

#include <cstddef>

namespace vellobar::codecs {

/// What becomes of an escape whose two characters are neither hex digits nor CR LF.
enum class BrokenEscape {
  is_kept,        ///< its three characters are passed on
  gives_one_byte  ///< the low eight bits of 16 x first + second, where a character that is no digit counts as -1
};

class QuotedPrintableDecoder {
 public:
  explicit QuotedPrintableDecoder(BrokenEscape broken, bool underscore_is_space = false)
      : broken_(broken), underscore_is_space_(underscore_is_space) {}

  /// Decodes the next piece; the second character of an escape is stored back in upper case. `to` has room for `size`
  /// bytes where broken escapes give one byte, otherwise for two more for each "=". Returns the number of bytes
  /// decoded.
  std::size_t decode(unsigned char* from, std::size_t size, unsigned char* to);

 private:
  std::size_t decode_character(unsigned char& character, unsigned char* to);
  std::size_t decode_escape(unsigned char first, unsigned char second, unsigned char* to) const;

  BrokenEscape broken_;
  bool underscore_is_space_;
  unsigned char before_last_ = 0;  ///< matters when it is "="
  unsigned char last_ = 0;         ///< matters when it, or the one before, is "="
};

}  // namespace vellobar::codecs
