// Editing the headers of a message in its bytes: every line that is not edited stays as it stands, folds, order, line
// ends and all.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vellobar::command {

struct HeaderEdits {
  struct Header {
    std::string name;
    std::string value;
  };
  std::vector<std::string> removed;  ///< every header of the name goes
  std::vector<Header> set;           ///< takes the place of the first header of its name, and of the others
  std::vector<Header> added;         ///< comes behind the last header

  bool is_empty() const { return removed.empty() && set.empty() && added.empty(); }
};

/// "Name: value" as the command line gives it, the value as a person wrote it. It is stored as ASCII: other text
/// becomes UTF-8 encoded words (RFC 2047), in an address header those of the names only. Throws WrongUse for a name
/// that no header can have, and for a value of several lines or too long a line.
HeaderEdits::Header parse_header(const std::string& argument);
/// Throws WrongUse for a name that no header can have.
void check_header_name(std::string_view name);

/// A header block without its empty line, edited: first what is removed, then what is set, then what is added. New
/// lines end like the first line of the block, or like `line_end` where it has none. Nothing for a block that begins
/// with a continuation line, which belongs to no header.
std::optional<std::string> edited_headers(std::string_view block, const HeaderEdits& edits, std::string_view line_end);

}  // namespace vellobar::command
