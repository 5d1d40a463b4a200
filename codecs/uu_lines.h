// Lines of a range of a file as the UU decoder reads them: at most 254 characters at a time, line feed included, as
// long as the line begins inside the range. The last one may run past the end of the range.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace vellobar::platform {
class File;
}

namespace vellobar::codecs {

class UuLines {
 public:
  UuLines(platform::File& file, std::int64_t start, std::int64_t end) : file_(file), position_(start), end_(end) {}

  /// Makes sure that the next line is at hand. False when the range, or the file, has no more lines.
  bool advance();

  /// Takes the next line, cut at its first CR or LF. Valid until the next `advance`.
  std::string_view take();

  /// The bytes at hand that lie inside the range; whole lines at their front can be taken with `skip`.
  std::span<const unsigned char> complete_ahead() const;
  void skip(std::size_t size);

 private:
  static constexpr std::size_t kLongestLine = 254;
  static constexpr std::size_t kCapacity = 32 * 1024;

  std::string_view at_hand() const;

  platform::File& file_;
  std::int64_t position_;  ///< of the next line
  std::int64_t end_;
  std::size_t first_ = 0;  ///< of the next line, in bytes_
  std::size_t filled_ = 0;
  std::array<unsigned char, kCapacity> bytes_;
};

}  // namespace vellobar::codecs
