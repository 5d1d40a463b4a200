#include "headers/place_table.h"

#include <algorithm>

#include "headers/room.h"

namespace vellobar::headers {

namespace {

/// For most messages doubled once at most.
constexpr std::size_t kUsual = 12;

}  // namespace

void PlaceTable::push_back(Place place) {
  const auto high = static_cast<std::uint16_t>(place >> kLowBits);
  if (low_.capacity() == 0) low_.reserve(kUsual);
  make_room(low_, 1);
  if (high != 0 || !high_.empty()) {
    make_room(high_, low_.size() + 1 - high_.size());
    high_.resize(low_.size() + 1);
    high_.back() = high;
  }
  low_.push_back(static_cast<std::uint32_t>(place));
}

void PlaceTable::erase(std::size_t position) {
  const auto at = static_cast<std::ptrdiff_t>(position);
  low_.erase(low_.begin() + at);
  if (!high_.empty()) high_.erase(high_.begin() + at);
}

void PlaceTable::cut(std::size_t size) {
  low_.resize(size);
  if (!high_.empty()) high_.resize(size);
}

std::size_t PlaceTable::position_of(Place place) const {
  std::size_t first = 0;
  for (std::size_t count = size(); count > 0;) {
    const std::size_t half = count / 2;
    if ((*this)[first + half] < place) {
      first += half + 1;
      count -= half + 1;
    } else {
      count = half;
    }
  }
  return first;
}

}  // namespace vellobar::headers
