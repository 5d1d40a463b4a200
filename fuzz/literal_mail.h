// A second telling of how the messages of a mailbox are found, read and written, on texts in memory and as slow as it
// may be. It knows nothing of parts. Bytes stand for themselves, as they do in the default code page.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vellobar::fuzz {

struct LiteralBlock {
  std::vector<std::pair<std::string, std::string>> headers = {};  ///< names and values
  std::size_t body_offset = 0;
  bool is_readable = true;  ///< false with a line of 16,384 bytes or more
};

/// The header block that begins here: up to an empty line or the end of the file.
LiteralBlock read_block(std::string_view file, std::size_t from);

/// Headers as they are written.
std::string written(const std::vector<std::pair<std::string, std::string>>& headers);

struct LiteralMessage {
  std::size_t start = 0;
  std::size_t end = 0;
  bool has_separator = false;
  std::string separator_line = {};
  LiteralBlock block = {};
  std::string body = {};
};

/// The messages of a mailbox whose lines are all shorter than 16,384 bytes.
std::vector<LiteralMessage> read_mailbox(std::string_view file);

/// What an update makes of a mailbox without edits, as long as no message has parts or an unreadable block.
std::string rewritten(const std::vector<LiteralMessage>& messages);

}  // namespace vellobar::fuzz
