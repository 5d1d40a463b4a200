// The run of characters in uuencoded lines: a length character, then groups of four letters until that many bytes are
// made, then the next length character. Line ends do not reset it.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "codecs/file_blocks.h"

namespace vellobar::codecs {

class UuCharacters {
 public:
  explicit UuCharacters(OutputPieces& to) : to_(to) {}

  /// True when the next character is a length and no group is open.
  bool is_at_length() const { return !has_length_ && held_ == 0; }

  /// Reads the characters of one line.
  void take(std::string_view line);

  /// Writes what a line cut short has made, with three bytes for an open group, whatever its length said.
  void finish();

 private:
  void take_character(unsigned char character);
  void join_group();
  void write(std::size_t size);

  OutputPieces& to_;
  bool has_length_ = false;
  std::size_t length_ = 0;
  std::array<unsigned char, 4> group_{};
  std::size_t held_ = 0;
  std::array<unsigned char, 63 + 3> made_{};
  std::size_t made_size_ = 0;
};

}  // namespace vellobar::codecs
