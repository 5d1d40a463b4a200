#include "codecs/quoted_printable_decoder.h"

#include "codecs/hex_digits.h"
#include "codecs/kernels.h"

namespace vellobar::codecs {

namespace {

/// -1 for what is no digit.
int digit_value(unsigned char digit) {
  const unsigned value = kHexPairs.low[digit];
  return value > 15 ? -1 : static_cast<int>(value);
}

}  // namespace

std::size_t QuotedPrintableDecoder::decode(unsigned char* from, std::size_t size, unsigned char* to) {
  const auto decode_run = kernels().decode_quoted_printable;
  Progress done;
  while (done.read < size) {
    if (last_ != '=' && before_last_ != '=' && !underscore_is_space_) {
      const Progress run = decode_run(from + done.read, size - done.read, to + done.written);
      done.read += run.read;
      done.written += run.written;
      if (done.read == size) break;
    }
    done.written += decode_character(from[done.read++], to + done.written);
  }
  return done.written;
}

std::size_t QuotedPrintableDecoder::decode_character(unsigned char& character, unsigned char* to) {
  unsigned char first = last_;
  std::size_t written = 0;
  if (before_last_ == '=') {
    if (first != '\r' || character != '\n') {
      first = to_upper(first);
      // The caller's text changes here (test: the_second_character_of_an_escape_is_stored_back_in_upper_case).
      character = to_upper(character);
      written = decode_escape(first, character, to);
    }
  } else if (first != '=' && character != '=') {
    *to = underscore_is_space_ && character == '_' ? ' ' : character;
    written = 1;
  }
  // An "=" that ended an escape also starts the next one (test: equals_signs_in_a_row_are_no_escape).
  before_last_ = first;
  last_ = character;
  return written;
}

std::size_t QuotedPrintableDecoder::decode_escape(unsigned char first, unsigned char second, unsigned char* to) const {
  const int high = digit_value(first);
  const int low = digit_value(second);
  if (broken_ == BrokenEscape::gives_one_byte || (high >= 0 && low >= 0)) {
    to[0] = static_cast<unsigned char>(16 * high + low);
    return 1;
  }
  to[0] = '=';
  to[1] = first;
  to[2] = second;
  return 3;
}

}  // namespace vellobar::codecs
