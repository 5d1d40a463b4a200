#include "codecs/kernels_avx2.h"

#if defined(__x86_64__) || defined(__i386__)

#include <bit>
#include <cstdint>
#include <cstring>

#include "codecs/kernel_steps.h"
#include "codecs/sextets.h"

VELLOBAR_AVX2_BEGIN

namespace vellobar::codecs::avx2 {

namespace {

/// Values of letters, and which bytes are no letters, in a form that each code can read.
struct Values {
  __m256i values;
  __m256i strangers;
};

// Base64 joins the low nibble and the upper five bits of a byte to a hash of four bits, the average of a number that a
// table has for the nibble and of the five bits. Its letters fall into 16 places so that all of one place lie at the
// same distance from their values, and every stranger below 128 lies below the letters of its place.

/// For each low nibble a number for the hash.
constexpr Entries kForDistance = {1, 1, 1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0, 15};
constexpr Entries kForBound = {13, 1, 1, 1, 1, 1, 1, 1, 1, 1, 3, 7, 11, 11, 11, 15};

constexpr unsigned place_of(const Entries& by_low, unsigned byte) { return (by_low[byte & 15] + (byte >> 3) + 1) / 2; }

/// A NUL byte, which has a value, is left to the plain form.
constexpr bool is_letter(unsigned byte) { return byte > 0 && kBase64Code.values[byte] < 64; }

/// What to add to the letters of each place for their values.
constexpr Entries distances_by_place() {
  Entries distances{};
  for (unsigned value = 0; value < 64; ++value) {
    const unsigned letter = kBase64Code.letters[value];
    distances[place_of(kForDistance, letter)] = static_cast<unsigned char>(value - letter);
  }
  return distances;
}

/// What to add to the bytes of each place so that letters stay below 128 and strangers below 128 pass it.
constexpr Entries bounds_by_place() {
  Entries bounds{};
  bounds.fill(0x80);
  for (unsigned byte = 128; byte-- > 0;) {
    if (is_letter(byte)) bounds[place_of(kForBound, byte)] = static_cast<unsigned char>(-byte);
  }
  return bounds;
}

constexpr Entries kDistances = distances_by_place();
constexpr Entries kBounds = bounds_by_place();

constexpr bool hold_for_all_bytes_below_128() {
  for (unsigned byte = 0; byte < 128; ++byte) {
    const bool passes = ((byte + kBounds[place_of(kForBound, byte)]) & 0x80) == 0;
    const unsigned value = (byte + kDistances[place_of(kForDistance, byte)]) & 0xFF;
    if (passes != is_letter(byte) || (passes && value != kBase64Code.values[byte])) return false;
  }
  return true;
}
static_assert(hold_for_all_bytes_below_128());

struct Base64 {
  static constexpr std::size_t kLineBytes = kBase64LineBytes;

  static __m256i letters(__m256i values) {
    const __m256i distances = _mm256_setr_epi8(71, -4, -4, -4, -4, -4, -4, -4, -4, -4, -4, -19, -16, 65, 0, 0,  //
                                               71, -4, -4, -4, -4, -4, -4, -4, -4, -4, -4, -19, -16, 65, 0, 0);
    const __m256i is_upper = _mm256_cmpgt_epi8(all(26), values);
    const __m256i run = _mm256_or_si256(_mm256_subs_epu8(values, all(51)), _mm256_and_si256(is_upper, all(13)));
    return _mm256_add_epi8(values, _mm256_shuffle_epi8(distances, run));
  }

  /// Strangers have their top bit set. A look-up of an average reads its low four bits, to which the bits that the
  /// shift takes over from the next byte do not reach, and its top bit, which is clear for all bytes below 128; those
  /// above stay above whatever they find, as nothing positive is added to them.
  static Values values(__m256i letters) {
    const __m256i upper = _mm256_srli_epi32(letters, 3);
    const __m256i by_distance = _mm256_avg_epu8(_mm256_shuffle_epi8(table(kForDistance), letters), upper);
    const __m256i by_bound = _mm256_avg_epu8(_mm256_shuffle_epi8(table(kForBound), letters), upper);
    return {_mm256_add_epi8(letters, _mm256_shuffle_epi8(table(kDistances), by_distance)),
            _mm256_adds_epi8(letters, _mm256_shuffle_epi8(table(kBounds), by_bound))};
  }

  static std::uint32_t mask_of(__m256i strangers) {
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(strangers));
  }
};

// The letters of BinHex 4.0 have too many gaps for such a hash.

/// Finds the strangers below 128 by two look-ups: each high nibble has a bit, and a low nibble lists the high nibbles
/// with which it is none of the letters. Only six high nibbles can hold letters; the others share two bits.
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

struct BinHex {
  static constexpr std::size_t kLineBytes = kBinHexLineBytes;
  static constexpr StrangerTables kStrangers = stranger_tables(kBinHexCode);

  static constexpr Entries kQuarters[] = {letters_from(kBinHexCode, 0), letters_from(kBinHexCode, 16),
                                          letters_from(kBinHexCode, 32), letters_from(kBinHexCode, 48)};
  static constexpr Entries kByEight = distances_by_eight(kBinHexCode);

  static __m256i letters(__m256i values) {
    const __m256i bit4 = _mm256_slli_epi16(values, 3);
    const __m256i bit5 = _mm256_slli_epi16(values, 2);
    const __m256i lower = _mm256_blendv_epi8(_mm256_shuffle_epi8(table(kQuarters[0]), values),
                                             _mm256_shuffle_epi8(table(kQuarters[1]), values), bit4);
    const __m256i upper = _mm256_blendv_epi8(_mm256_shuffle_epi8(table(kQuarters[2]), values),
                                             _mm256_shuffle_epi8(table(kQuarters[3]), values), bit4);
    return _mm256_blendv_epi8(lower, upper, bit5);
  }

  /// Strangers are not zero.
  static Values values(__m256i letters) {
    const __m256i eights = _mm256_and_si256(_mm256_srli_epi16(letters, 3), all(15));
    const __m256i high = _mm256_and_si256(_mm256_srli_epi16(letters, 4), all(15));
    const __m256i low = _mm256_and_si256(letters, all(15));
    return {_mm256_add_epi8(letters, _mm256_shuffle_epi8(table(kByEight), eights)),
            _mm256_and_si256(_mm256_shuffle_epi8(table(kStrangers.by_low), low),
                             _mm256_shuffle_epi8(table(kStrangers.by_high), high))};
  }

  static std::uint32_t mask_of(__m256i strangers) {
    const __m256i is_letter = _mm256_cmpeq_epi8(strangers, _mm256_setzero_si256());
    return ~static_cast<std::uint32_t>(_mm256_movemask_epi8(is_letter));
  }
};

/// The letters of one full line; steps overlap where the line is no multiple of them. Returns the end of the letters.
template <typename Code>
unsigned char* encode_line(const unsigned char* from, unsigned char* to) {
  constexpr std::size_t kLetters = Code::kLineBytes / 3 * 4;
  store(to, Code::letters(split_step(from)));
  if constexpr (kLetters > 2 * kLettersAStep) {
    store(to + kLettersAStep, Code::letters(split_step(from + kBytesAStep)));
  }
  store(to + kLetters - kLettersAStep, Code::letters(split_step(from + Code::kLineBytes - kBytesAStep)));
  return to + kLetters;
}

template <typename Code>
void encode_lines(const unsigned char* from, std::size_t lines, unsigned char* to) {
  for (; lines > 0; --lines, from += Code::kLineBytes) {
    fetch_ahead(from, to);
    to = encode_line<Code>(from, to);
    std::memcpy(to, "\r\n", 2);
    to += 2;
  }
}

/// Decodes full lines of letters alone, as the stream encoder makes them, two at a time: two whole steps of each, and
/// one of the 16 letters at the end of both. Each store overwrites the excess of the one before.
template <typename Code, typename LineEnd>
Progress decode_pairs_of_lines(const unsigned char* from, std::size_t size, unsigned char* to) {
  constexpr std::size_t kLetters = Code::kLineBytes / 3 * 4;
  constexpr std::size_t kLine = kLetters + LineEnd::kSize;
  constexpr bool kHasRest = kLetters > 2 * kLettersAStep;
  constexpr std::size_t kRest = kLetters - kLettersAStep / 2;
  // The last store goes up to 8 bytes beyond what is meant.
  constexpr std::size_t kForRoom = 2 * kLine + 12;
  Progress done;
  for (; size - done.read >= kForRoom; done.read += 2 * kLine, done.written += 2 * Code::kLineBytes) {
    const unsigned char* line = from + done.read;
    const unsigned char* next = line + kLine;
    if (!LineEnd::is_at(line + kLetters) || !LineEnd::is_at(next + kLetters)) break;
    const Values first = Code::values(load(line));
    const Values second = Code::values(load(line + kLettersAStep));
    const Values next_first = Code::values(load(next));
    const Values next_second = Code::values(load(next + kLettersAStep));
    __m256i strangers = _mm256_or_si256(_mm256_or_si256(first.strangers, second.strangers),
                                        _mm256_or_si256(next_first.strangers, next_second.strangers));
    Values rests{};
    if constexpr (kHasRest) {
      rests = Code::values(load_halves(line + kRest, next + kRest));
      strangers = _mm256_or_si256(strangers, rests.strangers);
    }
    if (Code::mask_of(strangers) != 0) break;
    unsigned char* bytes = to + done.written;
    unsigned char* next_bytes = bytes + Code::kLineBytes;
    const __m256i joined = join_halves(rests.values);
    join_step(first.values, bytes);
    join_step(second.values, bytes + kBytesAStep);
    if constexpr (kHasRest) store_half(bytes + kRest / 4 * 3, _mm256_castsi256_si128(joined));
    join_step(next_first.values, next_bytes);
    join_step(next_second.values, next_bytes + kBytesAStep);
    if constexpr (kHasRest) store_half(next_bytes + kRest / 4 * 3, _mm256_extracti128_si256(joined, 1));
  }
  return done;
}

template <typename Code>
Progress decode_lines(const unsigned char* from, std::size_t size, unsigned char* to) {
  constexpr std::size_t kLetters = Code::kLineBytes / 3 * 4;
  if (size > kLetters && LineFeed::is_at(from + kLetters)) return decode_pairs_of_lines<Code, LineFeed>(from, size, to);
  return decode_pairs_of_lines<Code, CrLf>(from, size, to);
}

/// Decodes the whole groups before the first stranger. Returns false when too little is left to go on.
template <typename Code>
bool decode_run(const unsigned char* from, std::size_t size, unsigned char* to, Progress& done) {
  while (size - done.read >= kLettersForRoom) {
    const Values next = Code::values(load(from + done.read));
    join_step(next.values, to + done.written);
    const std::uint32_t strangers = Code::mask_of(next.strangers);
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

template <typename Code, const SextetKernels Kernels::*kPlain>
constexpr SextetKernels kKernels = {encode<Code, kPlain>, encode_lines<Code>,
                                    decode_lines_and_runs<decode_lines<Code>, decode_run<Code>, kPlain>};

}  // namespace

SextetKernels base64_kernels() { return kKernels<Base64, &Kernels::base64>; }
SextetKernels binhex_kernels() { return kKernels<BinHex, &Kernels::binhex>; }

}  // namespace vellobar::codecs::avx2

VELLOBAR_AVX2_END

#endif
