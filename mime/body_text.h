// A message's own text, read from the file: the whole body, or in a multipart message the lines before the opening
// delimiter. Every byte is read once and kept as it stands, whatever the length of a line.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vellobar::platform {
class File;
}

namespace vellobar::mime {

struct BodyText {
  std::string bytes;
  /// File position just behind the opening delimiter line; nothing when there is none.
  std::optional<std::int64_t> parts_start;
  /// The file ended before it should have.
  bool is_cut_short = false;
};

/// Reads the lines that begin between the file positions `from` and `end`, up to the first that is exactly `delimiter`;
/// an empty delimiter is never found. What came to the file after it was opened is not read.
BodyText read_body_text(platform::File& file, std::int64_t from, std::int64_t end, std::string_view delimiter);

}  // namespace vellobar::mime
