// Lines that the component's scan counts twice: those that hold a whole read of it. Its reads begin at the front of the
// file with 16,384 bytes and double until they have 16 MB.
#pragma once

#include <cstdint>
#include <vector>

namespace vellobar::platform {
class File;
}

namespace vellobar::command {

/// Says of lines, in the order of the file, whether a read lies wholly inside.
class ReadsOfTheScan {
 public:
  /// `start` to just before `feed`, the position of the line's line feed or the end of the file.
  bool have_one_inside(std::int64_t start, std::int64_t feed);

 private:
  std::int64_t position_ = 0;
  std::int64_t size_ = 16384;
};

/// The positions of such lines.
std::vector<std::int64_t> lines_counted_twice(platform::File& file);

}  // namespace vellobar::command
