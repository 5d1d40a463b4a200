#include "codecs/kernels.h"

#if defined(__x86_64__) || defined(__i386__)

#include <immintrin.h>

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#include "codecs/kernel_steps.h"
#include "codecs/sextets.h"

// Everything above is compiled for the plain processor: an inline function of a header must not leave this file with
// instructions that not every machine has.
#if defined(VELLOBAR_IMITATED_AVX512)
// The tests compile this file once more, for a machine of their own making.
#include "tests/codecs/imitated_avx512.h"
#elif defined(__clang__)
#pragma clang attribute push(__attribute__((target("avx512f,avx512bw,avx512vbmi,bmi,prfchw"))), apply_to = function)
#else
// The compiler's own definitions of these instructions start from registers that are not set.
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC push_options
#pragma GCC target("avx512f,avx512bw,avx512vbmi,bmi,prfchw")
#endif

namespace vellobar::codecs {

namespace {

constexpr std::size_t kLettersAStep = 64;
constexpr std::size_t kBytesAStep = 48;
constexpr __mmask64 kStepOfBytes = 0xFFFFFFFFFFFF;

/// So many letters must be left for a decoding step: it stores 64 bytes where 48 are meant, and the room is 3/4 of the
/// letters.
constexpr std::size_t kLettersForRoom = 88;

/// The first 64 bytes of a table.
__m512i table(const void* entries) { return _mm512_loadu_si512(entries); }

/// Where the bytes of each group stand so that every value lies inside two neighbouring ones: 1, 0, 2, 1.
constexpr std::array<unsigned char, 64> split_order() {
  std::array<unsigned char, 64> order{};
  for (unsigned group = 0; group < 16; ++group) {
    order[4 * group] = static_cast<unsigned char>(3 * group + 1);
    order[4 * group + 1] = static_cast<unsigned char>(3 * group);
    order[4 * group + 2] = static_cast<unsigned char>(3 * group + 2);
    order[4 * group + 3] = static_cast<unsigned char>(3 * group + 1);
  }
  return order;
}
constexpr std::array<unsigned char, 64> kSplitOrder = split_order();

/// Where the three bytes of each joined group stand, the highest first; the last 16 places have no meaning.
constexpr std::array<unsigned char, 64> join_order() {
  std::array<unsigned char, 64> order{};
  for (unsigned byte = 0; byte < kBytesAStep; ++byte) {
    order[byte] = static_cast<unsigned char>(byte / 3 * 4 + 2 - byte % 3);
  }
  return order;
}
constexpr std::array<unsigned char, 64> kJoinOrder = join_order();

constexpr unsigned char kNoLetter = 0x80;

/// The value of each byte below 128, or kNoLetter.
constexpr std::array<unsigned char, 128> values_of_letters(const SextetCode& code) {
  std::array<unsigned char, 128> values{};
  values.fill(kNoLetter);
  for (unsigned value = 0; value < 64; ++value) values[code.letters[value]] = static_cast<unsigned char>(value);
  return values;
}

/// The letters of 48 bytes. Reads exactly 48 bytes.
template <const SextetCode& kCode>
__m512i encode_step(const unsigned char* from) {
  const __m512i bytes = _mm512_maskz_loadu_epi8(kStepOfBytes, from);
  const __m512i groups = _mm512_permutexvar_epi8(table(kSplitOrder.data()), bytes);
  // Each value ends up in the low six bits of its byte; the look-up does not see the others.
  const __m512i values = _mm512_multishift_epi64_epi8(_mm512_set1_epi64(0x3036242A1016040A), groups);
  return _mm512_permutexvar_epi8(values, table(kCode.letters.data()));
}

/// The values of 64 letters, kNoLetter for strangers below 128.
template <const SextetCode& kCode>
__m512i look_up(__m512i letters) {
  static constexpr std::array<unsigned char, 128> kValues = values_of_letters(kCode);
  return _mm512_permutex2var_epi8(table(kValues.data()), letters, table(kValues.data() + 64));
}

/// Joins 64 values to 48 bytes and stores them, with 16 more of no meaning.
void join_values(__m512i values, unsigned char* to) {
  const __m512i pairs = _mm512_maddubs_epi16(values, _mm512_set1_epi32(0x01400140));
  const __m512i groups = _mm512_madd_epi16(pairs, _mm512_set1_epi32(0x00011000));
  _mm512_storeu_si512(to, _mm512_permutexvar_epi8(table(kJoinOrder.data()), groups));
}

template <const SextetCode& kCode, const SextetKernels Kernels::*kPlain>
void encode(const unsigned char* from, std::size_t groups, unsigned char* to) {
  for (; groups >= kBytesAStep / 3; groups -= kBytesAStep / 3) {
    fetch_ahead(from, to);
    _mm512_storeu_si512(to, encode_step<kCode>(from));
    from += kBytesAStep;
    to += kLettersAStep;
  }
  (kScalarKernels.*kPlain).encode(from, groups, to);
}

template <std::size_t kLineBytes>
constexpr std::size_t kLineSize = kLineBytes / 3 * 4 + 2;

/// A line of 64 to 128 letters: two steps, the second over the end of the first.
template <const SextetCode& kCode, std::size_t kLineBytes>
void encode_line(const unsigned char* from, unsigned char* to) {
  constexpr std::size_t kLetters = kLineBytes / 3 * 4;
  _mm512_storeu_si512(to, encode_step<kCode>(from));
  if constexpr (kLetters > kLettersAStep) {
    _mm512_storeu_si512(to + kLetters - kLettersAStep, encode_step<kCode>(from + kLineBytes - kBytesAStep));
  }
  std::memcpy(to + kLetters, "\r\n", 2);
}

template <const SextetCode& kCode, std::size_t kLineBytes>
void encode_lines(const unsigned char* from, std::size_t lines, unsigned char* to) {
  for (; lines > 0; --lines, from += kLineBytes, to += kLineSize<kLineBytes>) {
    fetch_ahead(from, to);
    encode_line<kCode, kLineBytes>(from, to);
  }
}

/// Decodes full lines of letters alone, as the stream encoder makes them.
template <const SextetCode& kCode, std::size_t kLineBytes, typename LineEnd>
Progress decode_lines_ended_by(const unsigned char* from, std::size_t size, unsigned char* to) {
  constexpr std::size_t kLetters = kLineBytes / 3 * 4;
  constexpr std::size_t kLast = kLetters - kLettersAStep;
  Progress done;
  while (size - done.read >= kLast + kLettersForRoom) {
    const unsigned char* line = from + done.read;
    if (!LineEnd::is_at(line + kLetters)) break;
    const __m512i first = table(line);
    const __m512i last = table(line + kLast);
    const __m512i first_values = look_up<kCode>(first);
    const __m512i last_values = look_up<kCode>(last);
    const __m512i all = _mm512_or_si512(_mm512_or_si512(first, last), _mm512_or_si512(first_values, last_values));
    if (_mm512_movepi8_mask(all) != 0) break;
    join_values(first_values, to + done.written);
    if constexpr (kLast > 0) join_values(last_values, to + done.written + kLast / 4 * 3);
    done.read += kLetters + LineEnd::kSize;
    done.written += kLineBytes;
  }
  return done;
}

template <const SextetCode& kCode, std::size_t kLineBytes>
Progress decode_lines(const unsigned char* from, std::size_t size, unsigned char* to) {
  constexpr std::size_t kLetters = kLineBytes / 3 * 4;
  const bool ends_with_line_feed = size > kLetters && LineFeed::is_at(from + kLetters);
  return ends_with_line_feed ? decode_lines_ended_by<kCode, kLineBytes, LineFeed>(from, size, to)
                             : decode_lines_ended_by<kCode, kLineBytes, CrLf>(from, size, to);
}

/// Decodes the whole groups before the first stranger. Returns false when too little is left to go on.
template <const SextetCode& kCode>
bool decode_run(const unsigned char* from, std::size_t size, unsigned char* to, Progress& done) {
  while (size - done.read >= kLettersForRoom) {
    const __m512i letters = table(from + done.read);
    const __m512i values = look_up<kCode>(letters);
    const std::uint64_t strangers = _mm512_movepi8_mask(_mm512_or_si512(letters, values));
    join_values(values, to + done.written);
    if (strangers != 0) {
      const auto groups = static_cast<std::size_t>(std::countr_zero(strangers) / 4);
      done.read += groups * 4;
      done.written += groups * 3;
      return true;
    }
    done.read += kLettersAStep;
    done.written += kBytesAStep;
  }
  return false;
}

template <const SextetCode& kCode, std::size_t kLineBytes, const SextetKernels Kernels::*kPlain>
constexpr SextetKernels kSextetKernels = {
    encode<kCode, kPlain>, encode_lines<kCode, kLineBytes>,
    decode_lines_and_runs<decode_lines<kCode, kLineBytes>, decode_run<kCode>, kPlain>};

}  // namespace

#if defined(VELLOBAR_IMITATED_AVX512)
#elif defined(__clang__)
#pragma clang attribute pop
#else
#pragma GCC pop_options
#endif

namespace {

/// Quoted-printable and uuencode stay with AVX2: the one would gain nothing, and the other keeps pace with the memory.
Kernels with_wide_sextets(Kernels kernels) noexcept {
  kernels.base64 = kSextetKernels<kBase64Code, kBase64LineBytes, &Kernels::base64>;
  kernels.binhex = kSextetKernels<kBinHexCode, kBinHexLineBytes, &Kernels::binhex>;
  return kernels;
}

#if defined(VELLOBAR_IMITATED_AVX512)
bool is_offered() noexcept { return true; }
#else
bool is_offered() noexcept {
  return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
         __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("bmi");
}
#endif

}  // namespace

#if defined(VELLOBAR_IMITATED_AVX512)
const Kernels* imitated_avx512_kernels() noexcept {
#else
const Kernels* avx512_kernels() noexcept {
#endif
  const Kernels* narrower = avx2_kernels();
  if (narrower == nullptr || !is_offered()) return nullptr;
  static const Kernels kernels = with_wide_sextets(*narrower);
  return &kernels;
}

}  // namespace vellobar::codecs

#elif !defined(VELLOBAR_IMITATED_AVX512)

namespace vellobar::codecs {

const Kernels* avx512_kernels() noexcept { return nullptr; }

}  // namespace vellobar::codecs

#endif
