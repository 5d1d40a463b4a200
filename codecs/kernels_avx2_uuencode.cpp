#include "codecs/kernels_avx2.h"

#if defined(__x86_64__) || defined(__i386__)

#include "codecs/kernel_steps.h"

VELLOBAR_AVX2_BEGIN

namespace vellobar::codecs::avx2 {

namespace {

constexpr std::size_t kLetters = kUuLineBytes / 3 * 4;

struct Uuencode {
  /// 32 more than the value, but 96 for 0: 0 less 1 wraps around and is held at 63.
  static __m256i letters(__m256i values) {
    return _mm256_add_epi8(_mm256_min_epu8(_mm256_sub_epi8(values, all(1)), all(63)), all(33));
  }
};

/// The lines between the first and the last one. Each step reads four bytes before and four behind the 24 that it
/// takes. The second one stores the line end and the length character of the next line with its letters, and a byte
/// that the first letter of that line overwrites.
void encode_inner_lines(const unsigned char* from, std::size_t lines, unsigned char* to) {
  const __m256i frame = _mm256_set1_epi32('\r' | '\n' << 8 | kFullUuLine << 16);
  *to++ = kFullUuLine;
  for (; lines > 0; --lines, from += kUuLineBytes, to += 1 + kLetters + 2) {
    fetch_ahead(from, to);
    const __m256i first = split_bytes<4, 0>(load(from - 4));
    const __m256i second = split_bytes<4, 0>(load(from + kBytesAStep - 4));
    store(to, Uuencode::letters(first));
    store(to + kLettersAStep, _mm256_blend_epi32(Uuencode::letters(second), frame, 0x80));
  }
}

void encode_lines(const unsigned char* from, std::size_t lines, unsigned char* to) {
  const auto encode_plainly = kScalarKernels.uuencode.encode_lines;
  if (lines < 3) return encode_plainly(from, lines, to);
  const std::size_t last = lines - 1;
  encode_plainly(from, 1, to);
  encode_inner_lines(from + kUuLineBytes, last - 1, to + 1 + kLetters + 2);
  encode_plainly(from + last * kUuLineBytes, 1, to + last * (1 + kLetters + 2));
}

/// 32 less than the letters; the low six bits are the values.
__m256i lowered(__m256i letters) { return _mm256_sub_epi8(letters, all(' ')); }

void join_lowered(__m256i letters, unsigned char* to) { join_step(_mm256_and_si256(letters, all(63)), to); }

Progress decode(const unsigned char* from, std::size_t size, unsigned char* to) {
  Progress done;
  while (size - done.read >= kLettersForRoom) {
    join_lowered(lowered(load(from + done.read)), to + done.written);
    done.read += kLettersAStep;
    done.written += kBytesAStep;
  }
  return go_on(done, kScalarKernels.uuencode.decode, from, size, to);
}

template <typename LineEnd>
Progress decode_lines_ended_by(const unsigned char* from, std::size_t size, unsigned char* to) {
  constexpr std::size_t kLast = kLetters - kLettersAStep;
  constexpr std::size_t kLine = 1 + kLetters + LineEnd::kSize;
  Progress done;
  for (; size - done.read >= 1 + kLast + kLettersForRoom; done.read += kLine, done.written += kUuLineBytes) {
    const unsigned char* letters = from + done.read + 1;
    const __m256i first = lowered(load(letters));
    const __m256i last = lowered(load(letters + kLast));
    // Characters below 32 have wrapped around to 224 and more.
    const __m256i control = _mm256_subs_epu8(_mm256_max_epu8(first, last), all(223));
    if (from[done.read] != kFullUuLine || !LineEnd::is_at(letters + kLetters)) break;
    if (_mm256_testz_si256(control, control) == 0) break;
    join_lowered(first, to + done.written);
    join_lowered(last, to + done.written + kLast / 4 * 3);
  }
  return done;
}

}  // namespace

SextetKernels uuencode_kernels() { return {encode<Uuencode, &Kernels::uuencode>, encode_lines, decode}; }

Progress decode_uu_lines(const unsigned char* from, std::size_t size, unsigned char* to) {
  const bool ends_with_line_feed = size > 1 + kLetters && LineFeed::is_at(from + 1 + kLetters);
  const auto decode_lines = ends_with_line_feed ? decode_lines_ended_by<LineFeed> : decode_lines_ended_by<CrLf>;
  return go_on(decode_lines(from, size, to), kScalarKernels.decode_uu_lines, from, size, to);
}

}  // namespace vellobar::codecs::avx2

VELLOBAR_AVX2_END

#endif
