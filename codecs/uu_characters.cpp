#include "codecs/uu_characters.h"

#include <algorithm>

#include "codecs/sextets.h"

namespace vellobar::codecs {

void UuCharacters::take(std::string_view line) {
  for (const char character : line) take_character(static_cast<unsigned char>(character));
}

void UuCharacters::finish() {
  if (held_ > 0) join_group();
  write(made_size_);
}

void UuCharacters::take_character(unsigned char character) {
  const unsigned char value = kUuCode.values[character];
  if (!has_length_) {
    length_ = value;
    has_length_ = true;
    return;
  }
  group_[held_++] = value;
  if (held_ == group_.size()) join_group();
  // A length of 0 is settled by the character behind it, which stays in the open group
  // (test: the_character_that_settles_a_length_of_0_stays_in_the_open_group).
  if (made_size_ >= length_) write(length_);
}

void UuCharacters::join_group() {
  const auto bytes = join(group_.data(), held_);
  std::copy(bytes.begin(), bytes.end(), made_.begin() + static_cast<std::ptrdiff_t>(made_size_));
  made_size_ += bytes.size();
  held_ = 0;
}

void UuCharacters::write(std::size_t size) {
  std::copy_n(made_.begin(), size, to_.room_for(size));
  to_.add(size);
  made_size_ = 0;
  has_length_ = false;
}

}  // namespace vellobar::codecs
