#include "mailbox/scanner_search_forms.h"

#if defined(VELLOBAR_X86)

#include <immintrin.h>

#include "mailbox/scanner_search_blocks.h"

namespace vellobar::mailbox {

namespace {

struct CompareAvx2 {
  static std::uint64_t equal_half(const char* bytes, char byte) {
    const __m256i half = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes));
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(half, _mm256_set1_epi8(byte))));
  }

  static std::uint64_t equal(const char* bytes, char byte) {
    return equal_half(bytes, byte) | equal_half(bytes + 32, byte) << 32;
  }
};

}  // namespace

FoundLine search_lines_avx2(const char* begin, const char* end, LinePrefix prefix) {
  return search_blocks<CompareAvx2>(begin, end, prefix);
}

}  // namespace vellobar::mailbox

#endif
