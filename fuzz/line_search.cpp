// The forms of the search for a line with a prefix: each finds what the plain form finds, whatever the text and
// wherever it begins in memory, which ends where the text ends.
#include <algorithm>
#include <memory>
#include <string>

#include "fuzz/choices.h"
#include "fuzz/target.h"
#include "fuzz/targets.h"
#include "mailbox/scanner_search.h"

namespace vellobar::fuzz {

using mailbox::FoundLine;
using mailbox::LinePrefix;
using mailbox::SearchLevel;

namespace {

/// The whole lines of a text, each time they are all there are of it.
std::string whole_lines(std::string_view text) { return std::string(text.substr(0, text.rfind('\n') + 1)); }

}  // namespace

void fuzz_line_search(std::string_view input) {
  Choices choices(input);
  static constexpr std::string_view kPrefixes[] = {"From ", "--b", "F", "-", "a\xFF", "--0123456789abcdef"};
  const std::string_view prefix = choices.among(kPrefixes);
  const std::size_t shift = choices.below(64);
  std::string text = whole_lines(choices.text());
  // Long texts without long inputs.
  for (std::size_t times = choices.below(8); times > 0 && text.size() < 8192; --times) text += text;
  const std::unique_ptr<char[]> memory(new char[shift + text.size()]);
  char* const begin = std::copy_n(text.data(), text.size(), memory.get() + shift) - text.size();
  const char* const end = begin + text.size();
  const LinePrefix wanted{prefix.data(), static_cast<std::int64_t>(prefix.size())};
  for (const char* from = begin; from != end;) {
    const FoundLine plain = mailbox::line_search(SearchLevel::scalar)(from, end, wanted);
    for (const SearchLevel level : {SearchLevel::sse2, SearchLevel::avx2, SearchLevel::avx512}) {
      if (level > mailbox::best_search_level()) continue;
      const FoundLine found = mailbox::line_search(level)(from, end, wanted);
      require(found.line == plain.line, "every form of the line search finds the same line");
      require(found.lines_before == plain.lines_before, "every form of the line search counts the same lines");
    }
    require(plain.line == end ||
                std::string_view(plain.line, static_cast<std::size_t>(end - plain.line)).starts_with(prefix),
            "what is found begins with the prefix");
    require(std::count(from, plain.line, '\n') == plain.lines_before, "the lines passed are counted");
    from = plain.line;
  }
}

}  // namespace vellobar::fuzz
