#include "command/mail/index_ranges.h"

#include <algorithm>
#include <charconv>

#include "command/output/failure.h"

namespace vellobar::command {

namespace {

[[noreturn]] void refuse(std::string_view argument) {
  throw WrongUse("\"" + std::string(argument) +
                 "\" chooses no messages: write 3, 0-9, 5- or several divided by commas");
}

std::int64_t number(std::string_view digits, std::string_view argument) {
  std::int64_t value = 0;
  const char* end = digits.data() + digits.size();
  const auto [behind, problem] = std::from_chars(digits.data(), end, value);
  if (problem != std::errc() || behind != end || digits.front() == '-') refuse(argument);
  return value;
}

IndexRange parse_range(std::string_view range, std::string_view argument) {
  const std::size_t dash = range.find('-');
  const std::int64_t first = number(range.substr(0, dash), argument);
  if (dash == range.npos) return {first, first};
  const std::string_view last = range.substr(dash + 1);
  const IndexRange parsed{first, last.empty() ? IndexRange::kToTheLast : number(last, argument)};
  if (parsed.last < parsed.first) refuse(argument);
  return parsed;
}

}  // namespace

std::vector<IndexRange> parse_index_ranges(std::string_view argument) {
  std::vector<IndexRange> ranges;
  for (std::string_view rest = argument;;) {
    const std::size_t comma = rest.find(',');
    ranges.push_back(parse_range(rest.substr(0, comma), argument));
    if (comma == rest.npos) return ranges;
    rest.remove_prefix(comma + 1);
  }
}

std::vector<IndexRange> joined(std::vector<IndexRange> ranges) {
  std::sort(ranges.begin(), ranges.end(),
            [](const IndexRange& left, const IndexRange& right) { return left.first < right.first; });
  std::vector<IndexRange> whole;
  for (const IndexRange& range : ranges) {
    if (!whole.empty() && range.first - 1 <= whole.back().last) {
      whole.back().last = std::max(whole.back().last, range.last);
    } else {
      whole.push_back(range);
    }
  }
  return whole;
}

}  // namespace vellobar::command
