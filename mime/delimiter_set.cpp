#include "mime/delimiter_set.h"

#include <algorithm>
#include <iterator>

namespace vellobar::mime {

void DelimiterSet::push(std::string_view delimiter) {
  const std::size_t outermost = std::min(outermost_match(delimiter), pushed_.size());
  const auto [added, is_new] = sorted_.try_emplace(std::string(delimiter), outermost);
  pushed_.push_back(is_new ? added : sorted_.end());
}

void DelimiterSet::pop() {
  if (pushed_.back() != sorted_.end()) sorted_.erase(pushed_.back());
  pushed_.pop_back();
}

std::size_t DelimiterSet::outermost_match(std::string_view line) const {
  // Every delimiter that the line begins with also begins the last one that sorts in front of the line.
  for (std::string_view start = line;;) {
    const auto behind = sorted_.upper_bound(start);
    if (behind == sorted_.begin()) return kNone;
    const auto& [delimiter, outermost] = *std::prev(behind);
    if (start.starts_with(delimiter)) return outermost;
    const auto differ = std::mismatch(start.begin(), start.end(), delimiter.begin(), delimiter.end());
    start = start.substr(0, static_cast<std::size_t>(differ.first - start.begin()));
  }
}

}  // namespace vellobar::mime
