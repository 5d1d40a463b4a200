// Reading header lines out of a file. A line is at most 16,384 bytes, its line feed included; a longer one comes in
// pieces of that size, which is how a reader learns that it is too long.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace vellobar::platform {
class File;
}

namespace vellobar::headers {

inline constexpr std::size_t kLongestLine = 16384;

class LineReader {
 public:
  LineReader(platform::File& file, std::int64_t position) : file_(file), position_(position) {}

  /// The next line with its line feed, a piece of kLongestLine bytes without one, or, at the end of the file, what is
  /// left (nothing at last). Valid until the next call.
  std::string_view next();

  /// True once a read failed; what is handed out then ends early.
  bool failed() const { return failed_; }

  /// File position behind the lines handed out so far.
  std::int64_t position() const { return position_; }

 private:
  void fill();

  platform::File& file_;
  std::int64_t position_;
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
  bool failed_ = false;
  alignas(64) std::array<char, kLongestLine> buffer_;  // the system copies to aligned memory several times as fast
};

/// The line up to its first CR or LF.
std::string_view cut_line(std::string_view line);

}  // namespace vellobar::headers
