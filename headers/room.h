// How the memory of a header block grows: a short one by itself again, a long one by a quarter.
#pragma once

#include <cstddef>

namespace vellobar::headers {

inline constexpr std::size_t kLong = std::size_t{1} << 18;

/// Makes room for so many elements more.
template <typename Sequence>
void make_room(Sequence& sequence, std::size_t more) {
  const std::size_t needed = sequence.size() + more;
  if (needed > kLong && needed > sequence.capacity()) sequence.reserve(needed + needed / 4);
}

/// Gives back what will hardly be needed any more.
template <typename Sequence>
void give_back_room(Sequence& sequence) {
  if (sequence.capacity() - sequence.size() > kLong / 4) sequence.shrink_to_fit();
}

}  // namespace vellobar::headers
