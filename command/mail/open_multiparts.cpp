#include "command/mail/open_multiparts.h"

#include <utility>

namespace vellobar::command {

void OpenMultiparts::open(std::string delimiter) {
  delimiters_.push(delimiter);
  levels_.push_back({std::move(delimiter)});
}

OpenMultiparts::Line OpenMultiparts::take(std::string_view line) {
  if (levels_.empty() || !line.starts_with("--")) return Line::text;
  const std::size_t match = delimiters_.outermost_match(line);
  if (match == mime::DelimiterSet::kNone) return Line::text;
  leave_down_to(match + 1);
  Level& level = levels_[match];
  // Behind the closing line there are no more parts.
  if (level.is_closed) return Line::text;
  level.has_parts = true;
  level.is_closed = line.substr(level.delimiter.size()).starts_with("--");
  return level.is_closed ? Line::parts_end : Line::part_begins;
}

void OpenMultiparts::leave_down_to(std::size_t count) {
  while (levels_.size() > count) {
    const Level level = std::move(levels_.back());
    levels_.pop_back();
    delimiters_.pop();
    if (!level.is_closed) not_closed_(level.delimiter, level.has_parts);
  }
}

}  // namespace vellobar::command
