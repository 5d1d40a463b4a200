#include "mailbox/scanner_search_forms.h"

#if defined(VELLOBAR_X86)

#include <immintrin.h>

#include "mailbox/scanner_search_blocks.h"

namespace vellobar::mailbox {

namespace {

struct CompareAvx2 {
  static __m256i equal(const char* bytes, char byte) {
    return _mm256_cmpeq_epi8(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes)), _mm256_set1_epi8(byte));
  }

  static std::uint64_t bits(__m256i low, __m256i high) {
    const auto low_bits = static_cast<std::uint32_t>(_mm256_movemask_epi8(low));
    const auto high_bits = static_cast<std::uint32_t>(_mm256_movemask_epi8(high));
    return std::uint64_t{high_bits} << 32 | low_bits;
  }

  static BlockMasks masks(const char* block, char first_byte) {
    const __m256i low_starts = equal(block - 1, '\n');
    const __m256i high_starts = equal(block + 31, '\n');
    const __m256i low_candidates = _mm256_and_si256(low_starts, equal(block, first_byte));
    const __m256i high_candidates = _mm256_and_si256(high_starts, equal(block + 32, first_byte));
    const __m256i any = _mm256_or_si256(low_candidates, high_candidates);
    const bool none = _mm256_testz_si256(any, any) != 0;
    return {bits(low_starts, high_starts), none ? 0 : bits(low_candidates, high_candidates)};
  }
};

}  // namespace

FoundLine search_lines_avx2(const char* begin, const char* end, LinePrefix prefix) {
  return search_blocks<CompareAvx2>(begin, end, prefix);
}

}  // namespace vellobar::mailbox

#endif
