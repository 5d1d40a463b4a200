// The text of a "Q" word (RFC 2047, section 4.2) inside a working text, decoded where decoding changes something and
// nowhere else. Words within words have the innermost text decoded at every level; most of it no longer changes after
// the first, and a broken escape with no lower-case letter in it never changes again. What does change is restless:
// each time it gets shorter or comes to rest, apart from equals signs next to each other, whose number grows.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vellobar::mime {

class WorkingText;

/// How many characters before a character decide with it whether it is restless.
inline constexpr std::size_t kRestlessLooksBack = 2;

/// True when decoding changes something that begins at this position: an underscore, an escape, a NUL, which ends the
/// decoded text. Positions outside the text are taken for something else than an equals sign.
bool is_restless(std::string_view text, std::size_t position);

/// One edit of a working text.
struct Change {
  std::size_t position;
  std::size_t removed;
  std::string inserted;
};

/// What decoding changes between two positions, of which the second is that of a "?=": in their order, with the
/// positions that hold before the first is made.
std::vector<Change> changes_by_decoding_quoted_text(const WorkingText& text, std::size_t begin, std::size_t end);

}  // namespace vellobar::mime
