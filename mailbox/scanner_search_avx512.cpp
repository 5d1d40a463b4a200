#include "mailbox/scanner_search_forms.h"

#if defined(VELLOBAR_X86)

#include <immintrin.h>

#include "mailbox/scanner_search_blocks.h"

namespace vellobar::mailbox {

namespace {

struct CompareAvx512 {
  static BlockMasks masks(const char* block, char first_byte) {
    const __mmask64 starts = _mm512_cmpeq_epi8_mask(_mm512_loadu_si512(block - 1), _mm512_set1_epi8('\n'));
    return {starts, _mm512_mask_cmpeq_epi8_mask(starts, _mm512_loadu_si512(block), _mm512_set1_epi8(first_byte))};
  }
};

}  // namespace

FoundLine search_lines_avx512(const char* begin, const char* end, LinePrefix prefix) {
  return search_blocks<CompareAvx512>(begin, end, prefix);
}

}  // namespace vellobar::mailbox

#endif
