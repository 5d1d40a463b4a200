// The line rule of the quoted-printable encoders, fed piece by piece: how many characters a line holds before a soft
// break, and what resets the count. The limit is all in which encoding a file and encoding memory differ.
#pragma once

#include <cstddef>

namespace vellobar::codecs {

class QuotedPrintableEncoder {
 public:
  explicit QuotedPrintableEncoder(std::size_t limit) : limit_(limit) {}

  /// Encodes the next piece. `to` has room for 3 * size + 3 * (size / 25 + 1) characters. Returns how many were
  /// written.
  std::size_t encode(const unsigned char* from, std::size_t size, unsigned char* to);

 private:
  std::size_t encode_byte(unsigned char byte, unsigned char* to);

  std::size_t limit_;
  std::size_t on_line_ = 0;     ///< characters that count against the limit
  unsigned char previous_ = 0;  ///< the byte before; matters when it is CR
};

}  // namespace vellobar::codecs
