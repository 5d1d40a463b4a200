// An input divided in two: its last bytes decide what is done, one byte a decision, and what stands before them is the
// text it is done to. So the text of an input reads as it is, and stays in place when more decisions follow.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vellobar::fuzz {

class Choices {
 public:
  explicit Choices(std::string_view input) : rest_(input) {}

  /// The next decision: a number below `limit`, which is at most 256. 0 when no byte is left.
  std::size_t below(std::size_t limit) {
    if (rest_.empty() || limit == 0) return 0;
    const auto byte = static_cast<unsigned char>(rest_.back());
    rest_.remove_suffix(1);
    return byte % limit;
  }
  bool flip() { return below(2) != 0; }
  template <typename Item, std::size_t kCount>
  const Item& among(const Item (&items)[kCount]) {
    return items[below(kCount)];
  }
  /// An item of a collection; an empty one is asked for its first.
  template <typename Collection>
  auto item_of(Collection& collection) {
    return collection.Item(static_cast<std::int64_t>(below(256)) % std::max<std::int64_t>(collection.Count(), 1));
  }
  /// A piece of a text, at most 255 bytes long.
  std::string_view piece_of(std::string_view text) {
    const std::size_t from = below(64) * text.size() / 64;
    return text.substr(from, below(256));
  }
  bool has_more() const { return !rest_.empty(); }

  /// Takes up to `count` bytes from the end.
  std::string_view take(std::size_t count) {
    count = count < rest_.size() ? count : rest_.size();
    const std::string_view taken = rest_.substr(rest_.size() - count);
    rest_.remove_suffix(count);
    return taken;
  }

  /// What was not decided with: the text.
  std::string_view text() const { return rest_; }

 private:
  std::string_view rest_;
};

}  // namespace vellobar::fuzz
