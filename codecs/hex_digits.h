// The hex digits of quoted-printable escapes, for writing and for reading. Upper case only: whoever reads lower-case
// digits raises them first.
#pragma once

#include <array>
#include <cstddef>

namespace vellobar::codecs {

inline constexpr unsigned char kHexDigits[] = "0123456789ABCDEF";

/// Marks in a joined pair. Larger than any byte, so that a pair without a value is recognised by its size.
inline constexpr unsigned short kNoHexDigit = 0x100;
inline constexpr unsigned short kSoftBreak = 0xC00;  ///< CR and LF

/// For each byte what it adds to an escaped value as first and as second digit. A pair joined by "|" is the value, or
/// kSoftBreak, or something else.
struct HexPairs {
  std::array<unsigned short, 256> high;
  std::array<unsigned short, 256> low;
};

constexpr HexPairs make_hex_pairs() {
  HexPairs pairs{};
  pairs.high.fill(kNoHexDigit);
  pairs.low.fill(kNoHexDigit);
  for (unsigned value = 0; value < 16; ++value) {
    pairs.high[kHexDigits[value]] = static_cast<unsigned short>(value << 4);
    pairs.low[kHexDigits[value]] = static_cast<unsigned short>(value);
  }
  pairs.high['\r'] = 0x400;
  pairs.low['\n'] = 0x800;
  return pairs;
}
inline constexpr HexPairs kHexPairs = make_hex_pairs();

/// True for a byte that is written as an escape.
constexpr bool is_escaped(unsigned char byte) { return byte > 127 || byte == '='; }

/// Writes one byte by the rule of quoted-printable; returns the number of characters, 1 or 3.
constexpr std::size_t write_quoted(unsigned char byte, unsigned char* to) {
  if (!is_escaped(byte)) {
    to[0] = byte;
    return 1;
  }
  to[0] = '=';
  to[1] = kHexDigits[byte >> 4];
  to[2] = kHexDigits[byte & 15];
  return 3;
}

/// ASCII letters in upper case; every other byte as it is.
constexpr unsigned char to_upper(unsigned char byte) {
  return byte >= 'a' && byte <= 'z' ? static_cast<unsigned char>(byte - 32) : byte;
}

}  // namespace vellobar::codecs
