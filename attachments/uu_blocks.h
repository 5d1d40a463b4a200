// UU blocks that stand in the text of a message: from a line "begin <mode> <name>" to a line that starts with "end".
// Works on bytes; one pass over the text, whatever it holds.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vellobar::attachments {

/// The file name on a line that starts a block; none when the line does not. Mode and name may be empty.
std::optional<std::string_view> name_on_begin_line(std::string_view line);

struct UuBlock {
  std::string name;
  std::string lines;  ///< from the "begin" line to the "end" line, each ended by CR LF
};

/// The complete blocks of a text, from front to back. The text must outlive this.
class UuBlocks {
 public:
  explicit UuBlocks(std::string_view text) : rest_(text) {}

  /// The next block; none when no complete one is left.
  std::optional<UuBlock> next();

 private:
  /// The next line without its line end; none at the end of the text.
  std::optional<std::string_view> take_line();

  std::string_view rest_;
};

}  // namespace vellobar::attachments
