#include "mailbox/scanner_search_forms.h"

#if defined(VELLOBAR_X86)

#include <emmintrin.h>

#include "mailbox/scanner_search_blocks.h"

namespace vellobar::mailbox {

namespace {

struct CompareSse2 {
  static std::uint64_t equal(const char* bytes, char byte) {
    const __m128i wanted = _mm_set1_epi8(byte);
    std::uint64_t mask = 0;
    for (int i = 3; i >= 0; --i) {
      const __m128i piece = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes) + i);
      mask = mask << 16 | static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(piece, wanted)));
    }
    return mask;
  }
};

}  // namespace

FoundLine search_lines_sse2(const char* begin, const char* end, LinePrefix prefix) {
  return search_blocks<CompareSse2>(begin, end, prefix);
}

}  // namespace vellobar::mailbox

#endif
