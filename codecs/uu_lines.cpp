#include "codecs/uu_lines.h"

#include <algorithm>

#include "codecs/strings.h"
#include "platform/file.h"

namespace vellobar::codecs {

bool UuLines::advance() {
  if (position_ >= end_) return false;
  const std::size_t held = filled_ - first_;
  if (held < kLongestLine) {
    std::copy(bytes_.begin() + first_, bytes_.begin() + filled_, bytes_.begin());
    first_ = 0;
    filled_ = held + file_.read(position_ + static_cast<std::int64_t>(held), bytes_.data() + held, kCapacity - held);
  }
  return filled_ > first_;
}

std::string_view UuLines::take() {
  std::string_view line = at_hand().substr(0, kLongestLine);
  line = line.substr(0, line.find('\n'));
  const bool has_line_feed = line.size() < std::min(at_hand().size(), kLongestLine);
  skip(line.size() + (has_line_feed ? 1 : 0));
  return line.substr(0, line.find('\r'));
}

std::span<const unsigned char> UuLines::complete_ahead() const {
  const auto inside = std::min<std::int64_t>(end_ - position_, static_cast<std::int64_t>(at_hand().size()));
  return {bytes_.data() + first_, static_cast<std::size_t>(inside)};
}

void UuLines::skip(std::size_t size) {
  first_ += size;
  position_ += static_cast<std::int64_t>(size);
}

std::string_view UuLines::at_hand() const { return view_of(bytes_.data() + first_, filled_ - first_); }

}  // namespace vellobar::codecs
