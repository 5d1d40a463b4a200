// Six bits at a time: the layer that Base64, UUencode and BinHex 4.0 share. Three bytes are split into four values of
// six bits, and a code gives each value a letter; decoding joins values to bytes again. A code here is a pair of
// tables: the letter of each value, and what each byte means when decoding. Nothing is owned; everything is a constant.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace vellobar::codecs {

/// Meanings of a byte that is not a letter of the code.
inline constexpr unsigned char kSkipped = 254;   ///< passed over: a line end
inline constexpr unsigned char kStranger = 255;  ///< ends the data at its group

/// The mark of a value whose input byte is missing.
inline constexpr unsigned char kAbsent = 255;

struct SextetCode {
  std::array<unsigned char, 64> letters;
  std::array<unsigned char, 256> values;  ///< 0 to 63, kSkipped or kStranger
};

/// A code in which line ends are passed over, a NUL byte reads as zero bits, and every other byte that is not a letter
/// is a stranger.
constexpr SextetCode code_of_letters(std::string_view letters) {
  SextetCode code{};
  code.values.fill(kStranger);
  code.values[0] = 0;
  code.values['\r'] = kSkipped;
  code.values['\n'] = kSkipped;
  for (std::size_t value = 0; value < 64; ++value) {
    const auto letter = static_cast<unsigned char>(letters[value]);
    code.letters[value] = letter;
    code.values[letter] = static_cast<unsigned char>(value);
  }
  return code;
}

/// RFC 2045, table 1.
inline constexpr SextetCode kBase64Code =
    code_of_letters("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/");

/// RFC 1741, appendix A.
inline constexpr SextetCode kBinHexCode =
    code_of_letters("!\"#$%&'()*+,-012345689@ABCDEFGHIJKLMNPQRSTUVXYZ[`abcdefhijklmpqr");

/// The letters of uuencode: 32 more than the value, but a grave accent for 0. Every byte has a value.
constexpr SextetCode code_of_uuencode() {
  SextetCode code{};
  for (unsigned value = 0; value < 64; ++value) code.letters[value] = static_cast<unsigned char>(value + 32);
  code.letters[0] = '`';
  for (unsigned byte = 0; byte < 256; ++byte) code.values[byte] = static_cast<unsigned char>((byte - 32) & 63);
  return code;
}
inline constexpr SextetCode kUuCode = code_of_uuencode();

/// Splits 1 to 3 bytes into four values; those that no byte reaches are kAbsent.
constexpr std::array<unsigned char, 4> split(const unsigned char* bytes, std::size_t count) {
  const unsigned first = bytes[0];
  const unsigned second = count > 1 ? bytes[1] : 0;
  const unsigned third = count > 2 ? bytes[2] : 0;
  return {static_cast<unsigned char>(first >> 2), static_cast<unsigned char>((first & 3) << 4 | second >> 4),
          count > 1 ? static_cast<unsigned char>((second & 15) << 2 | third >> 6) : kAbsent,
          count > 2 ? static_cast<unsigned char>(third & 63) : kAbsent};
}

/// Joins 1 to 4 values to three bytes. Bits that no value reaches are zero.
constexpr std::array<unsigned char, 3> join(const unsigned char* values, std::size_t count) {
  const unsigned second = count > 1 ? values[1] : 0;
  const unsigned third = count > 2 ? values[2] : 0;
  const unsigned fourth = count > 3 ? values[3] : 0;
  return {static_cast<unsigned char>(values[0] << 2 | (second >> 4 & 3)),
          static_cast<unsigned char>(second << 4 | (third >> 2 & 15)),
          static_cast<unsigned char>(third << 6 | (fourth & 63))};
}

/// Characters that code `size` bytes when the last group is filled up.
constexpr std::size_t whole_groups_encoded(std::size_t size) { return (size + 2) / 3 * 4; }

/// The most bytes that `size` characters decode to: three for each started group of four.
constexpr std::size_t started_groups_decoded(std::size_t size) { return (size + 3) / 4 * 3; }

}  // namespace vellobar::codecs
