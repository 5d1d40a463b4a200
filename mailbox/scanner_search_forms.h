// The forms of the line search, one file each. Only `line_search` chooses among them.
#pragma once

#include "mailbox/scanner_search.h"

#if defined(__x86_64__) || defined(__i386__)
#define VELLOBAR_X86 1
#endif

namespace vellobar::mailbox {

FoundLine search_lines_scalar(const char* begin, const char* end, LinePrefix prefix);

#if defined(VELLOBAR_X86)
FoundLine search_lines_sse2(const char* begin, const char* end, LinePrefix prefix);
FoundLine search_lines_avx2(const char* begin, const char* end, LinePrefix prefix);
FoundLine search_lines_avx512(const char* begin, const char* end, LinePrefix prefix);
#endif

}  // namespace vellobar::mailbox
