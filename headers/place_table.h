// Where each header of a block is, in order: 32 bits a header, and 16 more for each as soon as one place does not fit,
// so that a block of a million tiny headers takes little more than its text. Places only grow from one header to the
// next.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vellobar::headers {

class PlaceTable {
 public:
  /// Fits 48 bits.
  using Place = std::uint64_t;

  std::size_t size() const { return low_.size(); }
  Place operator[](std::size_t position) const {
    return high_.empty() ? low_[position] : Place{high_[position]} << kLowBits | low_[position];
  }

  /// Appends a place behind all others. Done wholly or, where memory ends, not at all.
  void push_back(Place place);
  void erase(std::size_t position);
  /// Forgets what is behind the first `size` headers.
  void cut(std::size_t size);
  void clear() { *this = {}; }
  void reserve(std::size_t size) { low_.reserve(size); }

  /// The position of a place that is there.
  std::size_t position_of(Place place) const;

 private:
  static constexpr int kLowBits = 32;

  std::vector<std::uint32_t> low_;
  std::vector<std::uint16_t> high_;  ///< empty while all places fit `low_`
};

}  // namespace vellobar::headers
