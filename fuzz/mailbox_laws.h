// What must be true of a mailbox whatever a client does to it, told from outside: by what its objects say, by the bytes
// of its file, and by the second telling of how mailboxes are read.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vellobar {
class CMessage;
class CMessages;
}  // namespace vellobar

namespace vellobar::fuzz {

/// True while no line is so long that positions of the scan run ahead of the file or a header block is unreadable.
bool has_short_lines(std::string_view file);

/// A freshly scanned collection against the bytes it was scanned from: the messages tile the file, and each has the
/// separator line, the headers and (without parts) the body that the literal reading finds.
void require_as_in_file(CMessages& messages, std::string_view file);

/// The bytes that one message should be written as, told from its headers, texts and parts. Everything of it is read.
std::string expected_bytes(CMessage& message);

/// The bytes of a whole mailbox, message by message.
struct ExpectedMailbox {
  std::vector<std::string> messages;
  std::string bytes;
  /// Every message begins with a separator line and holds no other, so that as many are read as were written.
  bool is_read_as_written = true;
};
ExpectedMailbox expected_mailbox(CMessages& messages);

/// How many messages stand in a tree, at most `most` + 1.
std::size_t tree_size(CMessage& message, std::size_t most);

/// Boundaries that the component makes hold an address of memory; here they hold none.
std::string with_plain_boundaries(std::string file);

/// Whether such a boundary stands in the bytes. Once it is decoded it cannot be told from other text.
bool has_made_boundary(std::string_view bytes);

}  // namespace vellobar::fuzz
