#include "mailbox/scanner_search.h"

#include <cstring>

#include "mailbox/scanner_search_forms.h"

namespace vellobar::mailbox {

SearchLevel best_search_level() noexcept {
#if defined(VELLOBAR_X86)
  static const SearchLevel best =
      __builtin_cpu_supports("avx2") && __builtin_cpu_supports("popcnt") ? SearchLevel::avx2 : SearchLevel::sse2;
  return best;
#else
  return SearchLevel::scalar;
#endif
}

LineSearch line_search(SearchLevel level) noexcept {
#if defined(VELLOBAR_X86)
  if (level == SearchLevel::avx2) return search_lines_avx2;
  if (level == SearchLevel::sse2) return search_lines_sse2;
#endif
  static_cast<void>(level);
  return search_lines_scalar;
}

FoundLine search_lines_scalar(const char* begin, const char* end, LinePrefix prefix) {
  const char* line = begin;
  std::int64_t lines = 0;
  while (line < end) {
    line = static_cast<const char*>(std::memchr(line, '\n', static_cast<std::size_t>(end - line))) + 1;
    ++lines;
    const bool fits = end - line >= prefix.size;
    if (fits && std::memcmp(line, prefix.bytes, static_cast<std::size_t>(prefix.size)) == 0) break;
  }
  return {line, lines};
}

}  // namespace vellobar::mailbox
