#include "mailbox/scanner_search_forms.h"

#if defined(VELLOBAR_X86)

#include <immintrin.h>

#include "mailbox/scanner_search_blocks.h"

namespace vellobar::mailbox {

namespace {

struct CompareAvx2 {
  static std::uint64_t equal(__m256i low, __m256i high, char byte) {
    const __m256i wanted = _mm256_set1_epi8(byte);
    const auto low_mask = static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(low, wanted)));
    const auto high_mask = static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(high, wanted)));
    return std::uint64_t{high_mask} << 32 | low_mask;
  }

  static BlockMasks masks(const char* bytes, char first_byte) {
    const __m256i* at = reinterpret_cast<const __m256i*>(bytes);
    const __m256i low = _mm256_loadu_si256(at);
    const __m256i high = _mm256_loadu_si256(at + 1);
    return {equal(low, high, '\n'), equal(low, high, first_byte)};
  }
};

}  // namespace

FoundLine search_lines_avx2(const char* begin, const char* end, LinePrefix prefix) {
  return search_blocks<CompareAvx2>(begin, end, prefix);
}

}  // namespace vellobar::mailbox

#endif
