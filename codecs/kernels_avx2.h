// The AVX2 forms of the codec loops, one file a code, and the steps that they share. All of it is compiled for AVX2
// between VELLOBAR_AVX2_BEGIN and VELLOBAR_AVX2_END, and may run only where avx2_kernels() says so. What is included
// stands before them: an inline function of another header must not leave such a file with instructions that not every
// machine has.
#pragma once

#if defined(__x86_64__) || defined(__i386__)

#include <immintrin.h>

#include <array>
#include <cstddef>

#include "codecs/kernel_steps.h"
#include "codecs/kernels.h"

#if defined(__clang__)
#define VELLOBAR_AVX2_BEGIN \
  _Pragma("clang attribute push(__attribute__((target(\"avx2,bmi,popcnt,prfchw\"))), apply_to = function)")
#define VELLOBAR_AVX2_END _Pragma("clang attribute pop")
#else
#define VELLOBAR_AVX2_BEGIN _Pragma("GCC push_options") _Pragma("GCC target(\"avx2,bmi,popcnt,prfchw\")")
#define VELLOBAR_AVX2_END _Pragma("GCC pop_options")
#endif

namespace vellobar::codecs::avx2 {

SextetKernels base64_kernels();
SextetKernels binhex_kernels();
SextetKernels uuencode_kernels();
Progress decode_uu_lines(const unsigned char* from, std::size_t size, unsigned char* to);
Progress encode_quoted_printable(const unsigned char* from, std::size_t size, std::size_t room, unsigned char* to);
Progress decode_quoted_printable(const unsigned char* from, std::size_t size, unsigned char* to);

inline constexpr std::size_t kLettersAStep = 32;
inline constexpr std::size_t kBytesAStep = 24;

/// So many letters must be left for a decoding step: it stores 32 bytes where 24 are meant, and the room is 3/4 of the
/// letters.
inline constexpr std::size_t kLettersForRoom = 44;

/// A table of 16 bytes; a look-up uses it for both halves of a register.
using Entries = std::array<unsigned char, 16>;

VELLOBAR_AVX2_BEGIN

inline __m256i load(const unsigned char* from) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from)); }
inline __m128i load_half(const unsigned char* from) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from)); }
inline __m256i load_halves(const unsigned char* low, const unsigned char* high) {
  return _mm256_set_m128i(load_half(high), load_half(low));
}
inline void store(unsigned char* to, __m256i bytes) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), bytes); }
inline void store_half(unsigned char* to, __m128i bytes) { _mm_storeu_si128(reinterpret_cast<__m128i*>(to), bytes); }
inline __m256i all(int byte) { return _mm256_set1_epi8(static_cast<char>(byte)); }
inline __m256i table(const Entries& entries) { return _mm256_broadcastsi128_si256(load_half(entries.data())); }

/// Splits twelve bytes of each half into 16 values; those of the lower half begin at byte `kLow`, those of the upper
/// half at byte `kHigh` of it.
template <int kLow, int kHigh>
__m256i split_bytes(__m256i bytes) {
  const __m256i order =
      _mm256_setr_epi8(kLow + 1, kLow, kLow + 2, kLow + 1, kLow + 4, kLow + 3, kLow + 5, kLow + 4,          //
                       kLow + 7, kLow + 6, kLow + 8, kLow + 7, kLow + 10, kLow + 9, kLow + 11, kLow + 10,   //
                       kHigh + 1, kHigh, kHigh + 2, kHigh + 1, kHigh + 4, kHigh + 3, kHigh + 5, kHigh + 4,  //
                       kHigh + 7, kHigh + 6, kHigh + 8, kHigh + 7, kHigh + 10, kHigh + 9, kHigh + 11, kHigh + 10);
  const __m256i groups = _mm256_shuffle_epi8(bytes, order);
  const __m256i odd =
      _mm256_mulhi_epu16(_mm256_and_si256(groups, _mm256_set1_epi32(0x0FC0FC00)), _mm256_set1_epi32(0x04000040));
  const __m256i even =
      _mm256_mullo_epi16(_mm256_and_si256(groups, _mm256_set1_epi32(0x003F03F0)), _mm256_set1_epi32(0x01000010));
  return _mm256_or_si256(odd, even);
}

/// Splits 24 bytes into 32 values. Reads exactly 24 bytes.
inline __m256i split_step(const unsigned char* from) { return split_bytes<0, 4>(load_halves(from, from + 8)); }

/// Joins the 16 values of each half to 12 bytes at its front.
inline __m256i join_halves(__m256i values) {
  const __m256i pairs = _mm256_maddubs_epi16(values, _mm256_set1_epi32(0x01400140));
  const __m256i groups = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
  const __m256i order = _mm256_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1,  //
                                         2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1);
  return _mm256_shuffle_epi8(groups, order);
}

/// Joins 32 values to 24 bytes and stores them, with 8 more of no meaning.
inline void join_step(__m256i values, unsigned char* to) {
  store(to, _mm256_permutevar8x32_epi32(join_halves(values), _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7)));
}

/// Encodes whole groups. `Code::letters` gives the letters of values.
template <typename Code, const SextetKernels Kernels::*kPlain>
void encode(const unsigned char* from, std::size_t groups, unsigned char* to) {
  for (; groups >= kBytesAStep / 3; groups -= kBytesAStep / 3) {
    fetch_ahead(from, to);
    store(to, Code::letters(split_step(from)));
    from += kBytesAStep;
    to += kLettersAStep;
  }
  (kScalarKernels.*kPlain).encode(from, groups, to);
}

VELLOBAR_AVX2_END

}  // namespace vellobar::codecs::avx2

#endif
