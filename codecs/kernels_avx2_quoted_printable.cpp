#include "codecs/kernels_avx2.h"

#if defined(__x86_64__) || defined(__i386__)

#include <bit>
#include <cstdint>

#include "codecs/hex_digits.h"
#include "codecs/kernel_steps.h"

VELLOBAR_AVX2_BEGIN

namespace vellobar::codecs::avx2 {

namespace {

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

/// Copies 64 bytes.
void copy_step(const unsigned char* from, unsigned char* to) {
  store(to, load(from));
  store(to + 32, load(from + 32));
}

}  // namespace

// Eight bytes at a time: all their characters are stored, and as many count as lie before a CR. Where the line could
// end inside the eight, the plain form goes on.
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

// 64 characters at a time: what stands between their equals signs is copied in steps of fixed length, each over the
// excess of the one before.
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

}  // namespace vellobar::codecs::avx2

VELLOBAR_AVX2_END

#endif
