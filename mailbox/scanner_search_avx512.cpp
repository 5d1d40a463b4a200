#include "mailbox/scanner_search_forms.h"

#if defined(VELLOBAR_X86)

#include <immintrin.h>

#include "mailbox/scanner_search_blocks.h"

namespace vellobar::mailbox {

namespace {

struct CompareAvx512 {
  static std::uint64_t equal(const char* bytes, char byte) {
    return _mm512_cmpeq_epi8_mask(_mm512_loadu_si512(bytes), _mm512_set1_epi8(byte));
  }
};

}  // namespace

FoundLine search_lines_avx512(const char* begin, const char* end, LinePrefix prefix) {
  return search_blocks<CompareAvx512>(begin, end, prefix);
}

}  // namespace vellobar::mailbox

#endif
