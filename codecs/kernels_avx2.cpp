#include "codecs/kernels.h"

#if defined(__x86_64__) || defined(__i386__)

#include <immintrin.h>

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#include "codecs/hex_digits.h"
#include "codecs/kernel_steps.h"
#include "codecs/sextets.h"

// Everything above is compiled for the plain processor: an inline function of a header must not leave this file with
// instructions that not every machine has.
#if defined(__clang__)
#pragma clang attribute push(__attribute__((target("avx2,bmi,popcnt"))), apply_to = function)
#else
#pragma GCC push_options
#pragma GCC target("avx2,bmi,popcnt")
#endif

namespace vellobar::codecs {

namespace {

constexpr std::size_t kLettersAStep = 32;
constexpr std::size_t kBytesAStep = 24;

/// So many letters must be left for a step: it stores 32 bytes where 24 are meant, and the room is 3/4 of the letters.
constexpr std::size_t kLettersForRoom = 44;

__m256i load(const unsigned char* from) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from)); }
void store(unsigned char* to, __m256i bytes) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), bytes); }
__m128i load_half(const unsigned char* from) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from)); }
__m256i all(int byte) { return _mm256_set1_epi8(static_cast<char>(byte)); }

/// A table of 16 bytes; the look-up uses it for both halves of a register.
using Entries = std::array<unsigned char, 16>;
__m256i table(const Entries& entries) { return _mm256_broadcastsi128_si256(load_half(entries.data())); }

/// Splits 24 bytes into 32 values. Reads exactly 24 bytes.
__m256i split_bytes(const unsigned char* from) {
  const __m256i bytes = _mm256_set_m128i(load_half(from + 8), load_half(from));
  const __m256i order = _mm256_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10,  //
                                         5, 4, 6, 5, 8, 7, 9, 8, 11, 10, 12, 11, 14, 13, 15, 14);
  const __m256i groups = _mm256_shuffle_epi8(bytes, order);
  const __m256i odd =
      _mm256_mulhi_epu16(_mm256_and_si256(groups, _mm256_set1_epi32(0x0FC0FC00)), _mm256_set1_epi32(0x04000040));
  const __m256i even =
      _mm256_mullo_epi16(_mm256_and_si256(groups, _mm256_set1_epi32(0x003F03F0)), _mm256_set1_epi32(0x01000010));
  return _mm256_or_si256(odd, even);
}

/// Joins 32 values to 24 bytes and stores them, with 8 more of no meaning.
void join_values(__m256i values, unsigned char* to) {
  const __m256i pairs = _mm256_maddubs_epi16(values, _mm256_set1_epi32(0x01400140));
  const __m256i groups = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
  const __m256i order = _mm256_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1,  //
                                         2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1);
  const __m256i bytes = _mm256_shuffle_epi8(groups, order);
  store(to, _mm256_permutevar8x32_epi32(bytes, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7)));
}

/// Finds the strangers among letters below 128 by two look-ups: each high nibble has a bit, and a low nibble lists the
/// high nibbles with which it is none of the letters. Only six high nibbles can hold letters; the others share two
/// bits.
struct StrangerTables {
  Entries by_low{};
  Entries by_high{};
};

constexpr StrangerTables stranger_tables(const SextetCode& code) {
  StrangerTables tables;
  for (unsigned high = 0; high < 16; ++high) {
    tables.by_high[high] = static_cast<unsigned char>(high >= 2 && high < 8 ? 1 << (high - 2) : 0xC0);
  }
  for (unsigned low = 0; low < 16; ++low) {
    tables.by_low[low] = 0xC0;
    for (unsigned high = 2; high < 8; ++high) {
      if (code.values[high << 4 | low] > 63) tables.by_low[low] |= tables.by_high[high];
    }
  }
  return tables;
}

/// Letters and values of Base64.
struct Base64 {
  static constexpr std::size_t kLineBytes = kBase64LineBytes;
  static constexpr StrangerTables kStrangers = stranger_tables(kBase64Code);

  static __m256i letters(__m256i values) {
    const __m256i distances = _mm256_setr_epi8(71, -4, -4, -4, -4, -4, -4, -4, -4, -4, -4, -19, -16, 65, 0, 0,  //
                                               71, -4, -4, -4, -4, -4, -4, -4, -4, -4, -4, -19, -16, 65, 0, 0);
    const __m256i is_upper = _mm256_cmpgt_epi8(all(26), values);
    const __m256i run = _mm256_or_si256(_mm256_subs_epu8(values, all(51)), _mm256_and_si256(is_upper, all(13)));
    return _mm256_add_epi8(values, _mm256_shuffle_epi8(distances, run));
  }

  /// Values of letters; `high` are their high nibbles.
  static __m256i values(__m256i letters, __m256i high) {
    const __m256i distances = _mm256_setr_epi8(0, 16, 19, 4, -65, -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0,  //
                                               0, 16, 19, 4, -65, -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0);
    const __m256i is_slash = _mm256_cmpeq_epi8(letters, all('/'));
    return _mm256_add_epi8(letters, _mm256_shuffle_epi8(distances, _mm256_add_epi8(is_slash, high)));
  }
};

/// The letters of 16 values from `first` on.
constexpr Entries letters_from(const SextetCode& code, std::size_t first) {
  Entries part{};
  for (std::size_t i = 0; i < part.size(); ++i) part[i] = code.letters[first + i];
  return part;
}

/// What to add to a letter for its value, by the letter's upper five bits. Holds for codes of which no run of letters
/// ends inside eight characters.
constexpr Entries distances_by_eight(const SextetCode& code) {
  Entries by_eight{};
  for (unsigned value = 0; value < 64; ++value) {
    const unsigned letter = code.letters[value];
    by_eight[letter >> 3] = static_cast<unsigned char>(value - letter);
  }
  return by_eight;
}

/// Letters and values of BinHex 4.0.
struct BinHex {
  static constexpr std::size_t kLineBytes = kBinHexLineBytes;
  static constexpr StrangerTables kStrangers = stranger_tables(kBinHexCode);

  static constexpr Entries kQuarters[] = {letters_from(kBinHexCode, 0), letters_from(kBinHexCode, 16),
                                          letters_from(kBinHexCode, 32), letters_from(kBinHexCode, 48)};
  static constexpr Entries kDistances = distances_by_eight(kBinHexCode);

  static __m256i letters(__m256i values) {
    const __m256i bit4 = _mm256_slli_epi16(values, 3);
    const __m256i bit5 = _mm256_slli_epi16(values, 2);
    const __m256i lower = _mm256_blendv_epi8(_mm256_shuffle_epi8(table(kQuarters[0]), values),
                                             _mm256_shuffle_epi8(table(kQuarters[1]), values), bit4);
    const __m256i upper = _mm256_blendv_epi8(_mm256_shuffle_epi8(table(kQuarters[2]), values),
                                             _mm256_shuffle_epi8(table(kQuarters[3]), values), bit4);
    return _mm256_blendv_epi8(lower, upper, bit5);
  }

  static __m256i values(__m256i letters, __m256i) {
    const __m256i eights = _mm256_and_si256(_mm256_srli_epi16(letters, 3), all(15));
    return _mm256_add_epi8(letters, _mm256_shuffle_epi8(table(kDistances), eights));
  }
};

/// Letters of uuencode.
struct Uuencode {
  static constexpr std::size_t kLineBytes = kUuLineBytes;

  static __m256i letters(__m256i values) {
    const __m256i is_zero = _mm256_cmpeq_epi8(values, _mm256_setzero_si256());
    return _mm256_or_si256(_mm256_add_epi8(values, all(' ')), _mm256_and_si256(is_zero, all('`' - ' ')));
  }

  static __m256i values(__m256i letters) { return _mm256_and_si256(_mm256_sub_epi8(letters, all(' ')), all(63)); }
};

template <typename Code, const SextetKernels Kernels::*kPlain>
void encode(const unsigned char* from, std::size_t groups, unsigned char* to) {
  for (; groups >= kBytesAStep / 3; groups -= kBytesAStep / 3) {
    store(to, Code::letters(split_bytes(from)));
    from += kBytesAStep;
    to += kLettersAStep;
  }
  (kScalarKernels.*kPlain).encode(from, groups, to);
}

/// The letters of one full line; steps overlap where the line is no multiple of them. Returns the end of the letters.
template <typename Code>
unsigned char* encode_line(const unsigned char* from, unsigned char* to) {
  constexpr std::size_t kLetters = Code::kLineBytes / 3 * 4;
  store(to, Code::letters(split_bytes(from)));
  if constexpr (kLetters > 2 * kLettersAStep) {
    store(to + kLettersAStep, Code::letters(split_bytes(from + kBytesAStep)));
  }
  store(to + kLetters - kLettersAStep, Code::letters(split_bytes(from + Code::kLineBytes - kBytesAStep)));
  return to + kLetters;
}

template <typename Code, bool kHasLength>
void encode_lines(const unsigned char* from, std::size_t lines, unsigned char* to) {
  for (; lines > 0; --lines, from += Code::kLineBytes) {
    if (kHasLength) *to++ = kFullUuLine;
    to = encode_line<Code>(from, to);
    std::memcpy(to, "\r\n", 2);
    to += 2;
  }
}

struct Values {
  __m256i values;
  __m256i strangers;  ///< not zero where a byte is no letter
};

template <typename Code>
Values look_up(__m256i letters) {
  const __m256i high = _mm256_and_si256(_mm256_srli_epi16(letters, 4), all(15));
  const __m256i low = _mm256_and_si256(letters, all(15));
  return {Code::values(letters, high), _mm256_and_si256(_mm256_shuffle_epi8(table(Code::kStrangers.by_low), low),
                                                        _mm256_shuffle_epi8(table(Code::kStrangers.by_high), high))};
}

bool any(__m256i bytes) { return _mm256_testz_si256(bytes, bytes) == 0; }

/// Decodes full lines of letters alone, as the stream encoder makes them.
template <typename Code>
void decode_lines(const unsigned char* from, std::size_t size, unsigned char* to, Progress& done) {
  constexpr std::size_t kLetters = Code::kLineBytes / 3 * 4;
  constexpr std::size_t kLast = kLetters - kLettersAStep;
  constexpr std::size_t kMiddle = kLetters > 2 * kLettersAStep ? kLettersAStep : kLast;
  while (size - done.read >= kLast + kLettersForRoom) {
    const unsigned char* line = from + done.read;
    const std::size_t line_end = line_end_size(line + kLetters);
    if (line_end == 0) return;
    const Values first = look_up<Code>(load(line));
    const Values middle = look_up<Code>(load(line + kMiddle));
    const Values last = look_up<Code>(load(line + kLast));
    if (any(_mm256_or_si256(_mm256_or_si256(first.strangers, middle.strangers), last.strangers))) return;
    unsigned char* bytes = to + done.written;
    join_values(first.values, bytes);
    join_values(middle.values, bytes + kMiddle / 4 * 3);
    join_values(last.values, bytes + kLast / 4 * 3);
    done.read += kLetters + line_end;
    done.written += Code::kLineBytes;
  }
}

/// Decodes the whole groups before the first stranger. Returns false when too little is left to go on.
template <typename Code>
bool decode_run(const unsigned char* from, std::size_t size, unsigned char* to, Progress& done) {
  while (size - done.read >= kLettersForRoom) {
    const Values next = look_up<Code>(load(from + done.read));
    join_values(next.values, to + done.written);
    if (any(next.strangers)) {
      const __m256i is_letter = _mm256_cmpeq_epi8(next.strangers, _mm256_setzero_si256());
      const auto groups =
          static_cast<std::size_t>(std::countr_one(static_cast<std::uint32_t>(_mm256_movemask_epi8(is_letter))) / 4);
      done.read += groups * 4;
      done.written += groups * 3;
      return true;
    }
    done.read += kLettersAStep;
    done.written += kBytesAStep;
  }
  return false;
}

template <typename Code, const SextetKernels Kernels::*kPlain>
constexpr auto decode = decode_lines_and_runs<decode_lines<Code>, decode_run<Code>, kPlain>;

Progress decode_uu(const unsigned char* from, std::size_t size, unsigned char* to) {
  Progress done;
  while (size - done.read >= kLettersForRoom) {
    join_values(Uuencode::values(load(from + done.read)), to + done.written);
    done.read += kLettersAStep;
    done.written += kBytesAStep;
  }
  return go_on(done, kScalarKernels.uuencode.decode, from, size, to);
}

Progress decode_uu_lines(const unsigned char* from, std::size_t size, unsigned char* to) {
  constexpr std::size_t kLetters = kUuLineBytes / 3 * 4;
  constexpr std::size_t kLast = kLetters - kLettersAStep;
  Progress done;
  while (size - done.read >= 1 + kLast + kLettersForRoom && from[done.read] == kFullUuLine) {
    const unsigned char* letters = from + done.read + 1;
    const std::size_t line_end = line_end_size(letters + kLetters);
    const __m256i first = load(letters);
    const __m256i last = load(letters + kLast);
    const __m256i control = _mm256_subs_epu8(all(' '), _mm256_min_epu8(first, last));
    if (line_end == 0 || any(control)) return done;
    join_values(Uuencode::values(first), to + done.written);
    join_values(Uuencode::values(last), to + done.written + kLast / 4 * 3);
    done.read += 1 + kLetters + line_end;
    done.written += kUuLineBytes;
  }
  return go_on(done, kScalarKernels.decode_uu_lines, from, size, to);
}

/// Where the characters of eight bytes come from when those in a mask are escaped. Entries 0 to 7 name a byte or the
/// "=" in its place, 8 to 15 its first hex digit, and 0x80 to 0x87 its second one.
using EscapeOrder = std::array<std::array<unsigned char, 32>, 256>;

constexpr EscapeOrder escape_order() {
  EscapeOrder order{};
  for (unsigned mask = 0; mask < 256; ++mask) {
    std::size_t place = 0;
    for (unsigned byte = 0; byte < 8; ++byte) {
      order[mask][place++] = static_cast<unsigned char>(byte);
      if ((mask >> byte & 1) == 0) continue;
      order[mask][place++] = static_cast<unsigned char>(8 + byte);
      order[mask][place++] = static_cast<unsigned char>(0x80 + byte);
    }
  }
  return order;
}
constexpr EscapeOrder kEscapeOrder = escape_order();

/// How many of eight bytes count, and how many characters they make.
struct Counted {
  std::size_t bytes;
  std::size_t characters;
};

Counted count_before(unsigned returns, unsigned escaped) {
  const auto bytes = static_cast<unsigned>(std::countr_zero(returns));
  const unsigned counted = escaped & ((1U << bytes) - 1);
  return {bytes, bytes + 2 * static_cast<std::size_t>(std::popcount(counted))};
}

/// Eight bytes at a time: all their characters are stored, and as many count as lie before a CR. Where the line could
/// end inside the eight, the plain form goes on.
Progress encode_quoted_printable(const unsigned char* from, std::size_t size, std::size_t room, unsigned char* to) {
  constexpr std::size_t kBytes = 8;
  constexpr std::size_t kBytesForRoom = 11;  // 32 characters are stored, and each byte has room for three
  const __m128i digits = load_half(kHexDigits);
  const __m128i nibble = _mm_set1_epi8(15);
  const __m128i equals = _mm_set1_epi8('=');
  Progress done;
  while (size - done.read >= kBytesForRoom) {
    const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(from + done.read));
    const auto escaped =
        static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(bytes, _mm_cmpeq_epi8(bytes, equals)))) & 0xFF;
    const auto returns = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('\r'))));
    const __m128i plain = _mm_blendv_epi8(bytes, equals, bytes);
    const __m128i first = _mm_shuffle_epi8(digits, _mm_and_si128(_mm_srli_epi16(bytes, 4), nibble));
    const __m128i second = _mm_shuffle_epi8(digits, _mm_and_si128(bytes, nibble));
    const __m256i order = load(kEscapeOrder[escaped].data());
    const __m256i second_order = _mm256_xor_si256(order, all(0x80));
    store(to + done.written,
          _mm256_or_si256(_mm256_shuffle_epi8(_mm256_broadcastsi128_si256(_mm_unpacklo_epi64(plain, first)), order),
                          _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(second), second_order)));
    if (returns != 0) {
      const Counted counted = count_before(returns, escaped);
      if (done.written + counted.characters > room) break;
      return {done.read + counted.bytes, done.written + counted.characters};
    }
    // Not by way of `count_before`: the next address must not wait for what is found here.
    const std::size_t characters = kBytes + 2 * static_cast<std::size_t>(std::popcount(escaped));
    if (done.written + characters > room) break;
    done.read += kBytes;
    done.written += characters;
  }
  const Progress rest = kScalarKernels.encode_quoted_printable(from + done.read, size - done.read, room - done.written,
                                                               to + done.written);
  return {done.read + rest.read, done.written + rest.written};
}

/// Copies 64 bytes.
void copy_step(const unsigned char* from, unsigned char* to) {
  store(to, load(from));
  store(to + 32, load(from + 32));
}

/// 64 characters at a time: what stands between their equals signs is copied in steps of fixed length, each over the
/// excess of the one before.
Progress decode_quoted_printable(const unsigned char* from, std::size_t size, unsigned char* to) {
  constexpr std::size_t kStep = 64;
  constexpr std::size_t kLookAhead = kStep + 3 + kStep;
  const __m256i equals = all('=');
  Progress done;
  while (size - done.read >= kLookAhead) {
    const unsigned char* block = from + done.read;
    const auto low = static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(load(block), equals)));
    const auto high = static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(load(block + 32), equals)));
    std::uint64_t signs = low | static_cast<std::uint64_t>(high) << 32;
    std::size_t taken = 0;
    for (; signs != 0; signs &= signs - 1) {
      const auto sign = static_cast<std::size_t>(std::countr_zero(signs));
      copy_step(block + taken, to + done.written);
      done.written += sign - taken;
      taken = sign;
      const unsigned value = kHexPairs.high[block[sign + 1]] | kHexPairs.low[block[sign + 2]];
      if (value > 255 && value != kSoftBreak) return {done.read + taken, done.written};
      to[done.written] = static_cast<unsigned char>(value);
      done.written += value <= 255 ? 1 : 0;
      taken += 3;
    }
    if (taken < kStep) {
      copy_step(block + taken, to + done.written);
      done.written += kStep - taken;
      taken = kStep;
    }
    done.read += taken;
  }
  return go_on(done, kScalarKernels.decode_quoted_printable, from, size, to);
}

const Kernels kAvx2Kernels = {
    .base64 = {encode<Base64, &Kernels::base64>, encode_lines<Base64, false>, decode<Base64, &Kernels::base64>},
    .uuencode = {encode<Uuencode, &Kernels::uuencode>, encode_lines<Uuencode, true>, decode_uu},
    .binhex = {encode<BinHex, &Kernels::binhex>, encode_lines<BinHex, false>, decode<BinHex, &Kernels::binhex>},
    .decode_uu_lines = decode_uu_lines,
    .encode_quoted_printable = encode_quoted_printable,
    .decode_quoted_printable = decode_quoted_printable,
};

}  // namespace

#if defined(__clang__)
#pragma clang attribute pop
#else
#pragma GCC pop_options
#endif

const Kernels* avx2_kernels() noexcept {
  static const bool is_offered = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi");
  return is_offered ? &kAvx2Kernels : nullptr;
}

}  // namespace vellobar::codecs

#else

namespace vellobar::codecs {

const Kernels* avx2_kernels() noexcept { return nullptr; }

}  // namespace vellobar::codecs

#endif
