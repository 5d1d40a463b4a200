#include "codecs/quoted_printable_encoder.h"

#include "codecs/hex_digits.h"
#include "codecs/kernels.h"

namespace vellobar::codecs {

std::size_t QuotedPrintableEncoder::encode(const unsigned char* from, std::size_t size, unsigned char* to) {
  // A run never takes a CR, so only bytes that went the careful way matter as the previous one.
  const auto encode_run = kernels().encode_quoted_printable;
  Progress done;
  while (done.read < size) {
    if (previous_ != '\r' && on_line_ < limit_) {
      const Progress run = encode_run(from + done.read, size - done.read, limit_ - on_line_, to + done.written);
      done.read += run.read;
      done.written += run.written;
      on_line_ += run.written;
      if (done.read == size) break;
    }
    done.written += encode_byte(from[done.read++], to + done.written);
  }
  return done.written;
}

std::size_t QuotedPrintableEncoder::encode_byte(unsigned char byte, unsigned char* to) {
  const bool ends_line = previous_ == '\r' && byte == '\n';
  previous_ = byte;
  if (on_line_ < limit_ || byte == '\r' || ends_line) {
    const std::size_t written = write_quoted(byte, to);
    on_line_ = ends_line ? 0 : on_line_ + written;
    return written;
  }
  to[0] = '=';
  to[1] = '\r';
  to[2] = '\n';
  // The byte behind a soft break belongs to the flushed line and does not count on the next one
  // (test: the_byte_behind_a_soft_break_does_not_count_on_its_line).
  on_line_ = 0;
  return 3 + write_quoted(byte, to + 3);
}

}  // namespace vellobar::codecs
