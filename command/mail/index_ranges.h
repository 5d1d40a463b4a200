// Messages chosen by their numbers: "3", "0-9", "5-" (to the last one), several of them divided by commas.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace vellobar::command {

struct IndexRange {
  static constexpr std::int64_t kToTheLast = std::numeric_limits<std::int64_t>::max();

  std::int64_t first = 0;
  std::int64_t last = 0;  ///< the last one taken, or kToTheLast

  friend bool operator==(const IndexRange&, const IndexRange&) = default;
};

/// The ranges of one argument as they were written. Throws WrongUse for anything else.
std::vector<IndexRange> parse_index_ranges(std::string_view argument);

/// The ranges in ascending order, without one that touches or overlaps another.
std::vector<IndexRange> joined(std::vector<IndexRange> ranges);

}  // namespace vellobar::command
