// The instructions of the widest form of the codec loops, told byte by byte, so that its logic can be held against the
// other forms on a machine that does not have them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vellobar::codecs::imitated {

struct Register {
  std::array<unsigned char, 64> bytes{};
};

template <typename Element>
std::array<Element, 64 / sizeof(Element)> elements(const Register& from) {
  std::array<Element, 64 / sizeof(Element)> values;
  std::memcpy(values.data(), from.bytes.data(), 64);
  return values;
}

template <typename Element>
Register of_elements(const std::array<Element, 64 / sizeof(Element)>& values) {
  Register made;
  std::memcpy(made.bytes.data(), values.data(), 64);
  return made;
}

template <typename Element>
Register set_all(Element value) {
  std::array<Element, 64 / sizeof(Element)> values;
  values.fill(value);
  return of_elements<Element>(values);
}

inline Register load_masked(std::uint64_t mask, const void* from) {
  Register made;
  for (std::size_t i = 0; i < 64; ++i) {
    if ((mask >> i & 1) != 0) made.bytes[i] = static_cast<const unsigned char*>(from)[i];
  }
  return made;
}
inline Register load(const void* from) { return load_masked(~std::uint64_t{0}, from); }

inline void store(void* to, const Register& from) { std::memcpy(to, from.bytes.data(), 64); }

/// Each byte of the index chooses one of 64 by its low six bits.
inline Register permute(const Register& index, const Register& from) {
  Register made;
  for (std::size_t i = 0; i < 64; ++i) made.bytes[i] = from.bytes[index.bytes[i] & 63];
  return made;
}

/// The same where the mask has a bit; elsewhere the bytes of `kept`.
inline Register permute_masked(const Register& kept, std::uint64_t mask, const Register& index, const Register& from) {
  Register made = permute(index, from);
  for (std::size_t i = 0; i < 64; ++i) {
    if ((mask >> i & 1) == 0) made.bytes[i] = kept.bytes[i];
  }
  return made;
}

/// Each byte of the index chooses one of 128 by its low seven bits.
inline Register permute_two(const Register& low, const Register& index, const Register& high) {
  Register made;
  for (std::size_t i = 0; i < 64; ++i) {
    const Register& from = (index.bytes[i] & 64) == 0 ? low : high;
    made.bytes[i] = from.bytes[index.bytes[i] & 63];
  }
  return made;
}

/// In each eight bytes, each byte of the control is the bit at which eight bits begin, wrapping at 64.
inline Register multishift(const Register& control, const Register& from) {
  const auto words = elements<std::uint64_t>(from);
  Register made;
  for (std::size_t i = 0; i < 64; ++i) {
    for (unsigned bit = 0; bit < 8; ++bit) {
      const unsigned place = (control.bytes[i] + bit) % 64;
      made.bytes[i] |= static_cast<unsigned char>((words[i / 8] >> place & 1) << bit);
    }
  }
  return made;
}

/// Products of unsigned bytes and signed bytes, neighbours added, held at the limits of 16 bits.
inline Register multiply_add_bytes(const Register& left, const Register& right) {
  std::array<std::int16_t, 32> sums;
  for (std::size_t i = 0; i < 32; ++i) {
    const int sum = left.bytes[2 * i] * static_cast<signed char>(right.bytes[2 * i]) +
                    left.bytes[2 * i + 1] * static_cast<signed char>(right.bytes[2 * i + 1]);
    sums[i] = static_cast<std::int16_t>(sum > 32767 ? 32767 : sum < -32768 ? -32768 : sum);
  }
  return of_elements<std::int16_t>(sums);
}

/// Products of signed words, neighbours added.
inline Register multiply_add_words(const Register& left, const Register& right) {
  const auto a = elements<std::int16_t>(left);
  const auto b = elements<std::int16_t>(right);
  std::array<std::int32_t, 16> sums;
  for (std::size_t i = 0; i < 16; ++i) sums[i] = a[2 * i] * b[2 * i] + a[2 * i + 1] * b[2 * i + 1];
  return of_elements<std::int32_t>(sums);
}

inline Register either(const Register& left, const Register& right) {
  Register made;
  for (std::size_t i = 0; i < 64; ++i) made.bytes[i] = left.bytes[i] | right.bytes[i];
  return made;
}

inline Register both(const Register& left, const Register& right) {
  Register made;
  for (std::size_t i = 0; i < 64; ++i) made.bytes[i] = left.bytes[i] & right.bytes[i];
  return made;
}

inline Register subtract_bytes(const Register& left, const Register& right) {
  Register made;
  for (std::size_t i = 0; i < 64; ++i) made.bytes[i] = static_cast<unsigned char>(left.bytes[i] - right.bytes[i]);
  return made;
}

/// A bit for each unsigned byte of `left` that is less than that of `right`.
inline std::uint64_t less_bytes(const Register& left, const Register& right) {
  std::uint64_t bits = 0;
  for (std::size_t i = 0; i < 64; ++i) bits |= static_cast<std::uint64_t>(left.bytes[i] < right.bytes[i]) << i;
  return bits;
}

inline std::uint64_t high_bits(const Register& from) {
  std::uint64_t bits = 0;
  for (std::size_t i = 0; i < 64; ++i) bits |= static_cast<std::uint64_t>(from.bytes[i] >> 7) << i;
  return bits;
}

}  // namespace vellobar::codecs::imitated

#define __m512i imitated::Register
#define __mmask64 std::uint64_t
#define _mm512_loadu_si512 imitated::load
#define _mm512_storeu_si512 imitated::store
#define _mm512_maskz_loadu_epi8 imitated::load_masked
#define _mm512_permutexvar_epi8 imitated::permute
#define _mm512_mask_permutexvar_epi8 imitated::permute_masked
#define _mm512_permutex2var_epi8 imitated::permute_two
#define _mm512_multishift_epi64_epi8 imitated::multishift
#define _mm512_set1_epi8 imitated::set_all<unsigned char>
#define _mm512_set1_epi64 imitated::set_all<std::uint64_t>
#define _mm512_set1_epi32 imitated::set_all<std::uint32_t>
#define _mm512_maddubs_epi16 imitated::multiply_add_bytes
#define _mm512_madd_epi16 imitated::multiply_add_words
#define _mm512_or_si512 imitated::either
#define _mm512_and_si512 imitated::both
#define _mm512_sub_epi8 imitated::subtract_bytes
#define _mm512_cmplt_epu8_mask imitated::less_bytes
#define _mm512_movepi8_mask imitated::high_bits
