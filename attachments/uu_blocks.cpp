#include "attachments/uu_blocks.h"

#include <algorithm>

namespace vellobar::attachments {

namespace {

constexpr std::string_view kBegin = "begin";
constexpr std::string_view kEnd = "end";

/// Blanks, control characters and bytes above 127 end a name.
bool ends_name(char c) {
  const unsigned char byte = static_cast<unsigned char>(c);
  return byte < 33 || byte > 127;
}

}  // namespace

std::optional<std::string_view> name_on_begin_line(std::string_view line) {
  if (!line.starts_with(kBegin)) return std::nullopt;
  // Whatever stands between the word and the mode is not looked at, see
  // the_character_behind_begin_is_not_looked_at.
  std::string_view rest = line.substr(std::min(line.size(), kBegin.size() + 1));
  rest.remove_prefix(std::min(rest.find_first_not_of("0123456789"), rest.size()));
  if (!rest.starts_with(' ')) return std::nullopt;
  rest.remove_prefix(1);
  return rest.substr(0, static_cast<std::size_t>(std::find_if(rest.begin(), rest.end(), ends_name) - rest.begin()));
}

std::optional<std::string_view> UuBlocks::take_line() {
  if (rest_.empty()) return std::nullopt;
  const std::size_t feed = rest_.find('\n');
  std::string_view line = rest_.substr(0, feed);
  if (feed == rest_.npos) {
    rest_ = {};
    return line;
  }
  rest_.remove_prefix(feed + 1);
  if (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

std::optional<UuBlock> UuBlocks::next() {
  std::optional<UuBlock> block;
  while (const std::optional<std::string_view> line = take_line()) {
    if (!block) {
      const std::optional<std::string_view> name = name_on_begin_line(*line);
      if (!name) continue;
      block = UuBlock{std::string(*name), {}};
    }
    block->lines.append(*line).append("\r\n");
    if (!line->starts_with(kEnd)) continue;
    // Deliberate: the line behind "end" begins no block, see a_begin_line_right_behind_an_end_line_is_missed.
    take_line();
    return block;
  }
  return std::nullopt;
}

}  // namespace vellobar::attachments
