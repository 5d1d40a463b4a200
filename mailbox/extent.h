// Where one message lies in a file, as a scan found it.
#pragma once

#include <cstdint>

namespace vellobar::mailbox {

struct Extent {
  std::int64_t start = 0;      ///< byte position of the first line
  std::int64_t end = 0;        ///< byte position just behind the last line; bytes counted are always end - start
  std::int64_t lines = 0;      ///< lines, the separator line included
  bool has_separator = false;  ///< the first line is a separator line
};

}  // namespace vellobar::mailbox
