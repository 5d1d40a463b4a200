#include <array>
#include <cstring>

#include "codecs/hex_digits.h"
#include "codecs/kernels.h"
#include "codecs/sextets.h"

namespace vellobar::codecs {

namespace {

/// The two letters of twelve bits: half the look-ups of one letter at a time.
using LetterPairs = std::array<std::array<unsigned char, 2>, 64 * 64>;

constexpr LetterPairs letter_pairs(const SextetCode& code) {
  LetterPairs pairs{};
  for (std::size_t bits = 0; bits < pairs.size(); ++bits)
    pairs[bits] = {code.letters[bits / 64], code.letters[bits % 64]};
  return pairs;
}

template <const SextetCode& kCode>
constexpr LetterPairs kLetterPairs = letter_pairs(kCode);

template <const SextetCode& kCode>
void encode(const unsigned char* from, std::size_t groups, unsigned char* to) {
  for (; groups > 0; --groups, from += 3, to += 4) {
    const unsigned bits = static_cast<unsigned>(from[0] << 16 | from[1] << 8 | from[2]);
    std::memcpy(to, kLetterPairs<kCode>[bits >> 12].data(), 2);
    std::memcpy(to + 2, kLetterPairs<kCode>[bits & 0xFFF].data(), 2);
  }
}

template <const SextetCode& kCode, std::size_t kLineBytes>
void encode_lines(const unsigned char* from, std::size_t lines, unsigned char* to) {
  for (; lines > 0; --lines, from += kLineBytes) {
    encode<kCode>(from, kLineBytes / 3, to);
    to += kLineBytes / 3 * 4;
    *to++ = '\r';
    *to++ = '\n';
  }
}

void encode_uu_lines(const unsigned char* from, std::size_t lines, unsigned char* to) {
  for (; lines > 0; --lines, from += kUuLineBytes) {
    *to++ = kFullUuLine;
    encode_lines<kUuCode, kUuLineBytes>(from, 1, to);
    to += kUuLineBytes / 3 * 4 + 2;
  }
}

template <const SextetCode& kCode>
Progress decode(const unsigned char* from, std::size_t size, unsigned char* to) {
  Progress done;
  while (size - done.read >= 4) {
    const unsigned char* group = from + done.read;
    const unsigned first = kCode.values[group[0]], second = kCode.values[group[1]];
    const unsigned third = kCode.values[group[2]], fourth = kCode.values[group[3]];
    if ((first | second | third | fourth) > 63) {
      if (first != kSkipped) break;
      ++done.read;
      continue;
    }
    unsigned char* bytes = to + done.written;
    const unsigned bits = first << 18 | second << 12 | third << 6 | fourth;
    bytes[0] = static_cast<unsigned char>(bits >> 16);
    bytes[1] = static_cast<unsigned char>(bits >> 8);
    bytes[2] = static_cast<unsigned char>(bits);
    done.read += 4;
    done.written += 3;
  }
  return done;
}

Progress decode_uu_lines(const unsigned char* from, std::size_t size, unsigned char* to) {
  constexpr std::size_t kLetters = kUuLineBytes / 3 * 4;
  Progress done;
  while (size - done.read >= kLetters + 3 && from[done.read] == kFullUuLine) {
    const unsigned char* letters = from + done.read + 1;
    for (std::size_t i = 0; i < kLetters; ++i) {
      if (letters[i] < ' ') return done;
    }
    const unsigned char* end = letters + kLetters;
    const std::size_t line_end = end[0] == '\n' ? 1 : end[0] == '\r' && end[1] == '\n' ? 2 : 0;
    if (line_end == 0) return done;
    decode<kUuCode>(letters, kLetters, to + done.written);
    done.read += 1 + kLetters + line_end;
    done.written += kUuLineBytes;
  }
  return done;
}

Progress encode_quoted_printable(const unsigned char* from, std::size_t size, std::size_t room, unsigned char* to) {
  Progress done;
  while (done.read < size && done.written < room && from[done.read] != '\r') {
    done.written += write_quoted(from[done.read++], to + done.written);
  }
  return done;
}

/// Characters before the next "=".
std::size_t plain_size(const unsigned char* from, std::size_t size) {
  const void* sign = size > 0 ? std::memchr(from, '=', size) : nullptr;
  return sign == nullptr ? size : static_cast<std::size_t>(static_cast<const unsigned char*>(sign) - from);
}

Progress decode_quoted_printable(const unsigned char* from, std::size_t size, unsigned char* to) {
  Progress done;
  while (done.read < size) {
    if (from[done.read] != '=') {
      const std::size_t plain = plain_size(from + done.read, size - done.read);
      std::memcpy(to + done.written, from + done.read, plain);
      done.read += plain;
      done.written += plain;
    }
    if (size - done.read < 3) break;
    const unsigned value = kHexPairs.high[from[done.read + 1]] | kHexPairs.low[from[done.read + 2]];
    if (value > 255 && value != kSoftBreak) break;
    to[done.written] = static_cast<unsigned char>(value);
    done.written += value <= 255 ? 1 : 0;
    done.read += 3;
  }
  return done;
}

}  // namespace

const Kernels kScalarKernels = {
    .base64 = {encode<kBase64Code>, encode_lines<kBase64Code, kBase64LineBytes>, decode<kBase64Code>},
    .uuencode = {encode<kUuCode>, encode_uu_lines, decode<kUuCode>},
    .binhex = {encode<kBinHexCode>, encode_lines<kBinHexCode, kBinHexLineBytes>, decode<kBinHexCode>},
    .decode_uu_lines = decode_uu_lines,
    .encode_quoted_printable = encode_quoted_printable,
    .decode_quoted_printable = decode_quoted_printable,
};

}  // namespace vellobar::codecs
