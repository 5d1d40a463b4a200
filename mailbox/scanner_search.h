// The inner loop of every split into lines: from a line to the next one that begins with a given text, counting the
// lines passed. The plain form states the rule; the others do the same with vector masks and are named by instruction
// set.
#pragma once

#include <cstdint>

namespace vellobar::mailbox {

/// The forms of the search, each level faster than the one before.
enum class SearchLevel { scalar, sse2, avx2, avx512 };

/// The best level that this processor has.
SearchLevel best_search_level() noexcept;

/// A text to find at the start of a line: not empty, without CR and LF.
struct LinePrefix {
  const char* bytes;
  std::int64_t size;
};

/// The next line that begins with the prefix, and how many lines lie before it.
struct FoundLine {
  const char* line;
  std::int64_t lines_before;
};

/// Looks through the whole lines from `begin`, the first byte of a line, to `end`, just behind a line feed. The line at
/// `begin` is counted but not compared. Gives `end` and the count of all lines when no later line begins with the
/// prefix.
using LineSearch = FoundLine (*)(const char* begin, const char* end, LinePrefix prefix);

/// The search of a level, which the processor must have.
LineSearch line_search(SearchLevel level) noexcept;

}  // namespace vellobar::mailbox
