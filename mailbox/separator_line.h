// The line that introduces each message of a mailbox.
#pragma once

#include <string_view>

namespace vellobar::mailbox {

/// How it begins, as bytes and as text.
inline constexpr std::string_view kSeparator = "From ";
inline constexpr std::u16string_view kWideSeparator = u"From ";

/// False when the process code page turns "From " into other bytes, or into none: what is written with it would be no
/// mailbox.
bool can_write_separator_lines();

}  // namespace vellobar::mailbox
