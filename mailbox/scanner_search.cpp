#include "mailbox/scanner_search.h"

#include <cstring>

#include "mailbox/scanner_search_forms.h"

namespace vellobar::mailbox {

namespace {

#if defined(VELLOBAR_X86)
SearchLevel supported_search_level() noexcept {
  if (!__builtin_cpu_supports("popcnt")) return SearchLevel::sse2;
  if (__builtin_cpu_supports("avx512bw")) return SearchLevel::avx512;
  return __builtin_cpu_supports("avx2") ? SearchLevel::avx2 : SearchLevel::sse2;
}
#endif

}  // namespace

SearchLevel best_search_level() noexcept {
#if defined(VELLOBAR_X86)
  static const SearchLevel best = supported_search_level();
  return best;
#else
  return SearchLevel::scalar;
#endif
}

LineSearch line_search(SearchLevel level) noexcept {
#if defined(VELLOBAR_X86)
  if (level == SearchLevel::avx512) return search_lines_avx512;
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
