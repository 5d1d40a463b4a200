// How separator lines of mailboxes look.
#pragma once

#include <string_view>

namespace vellobar::command {

/// True for "From sender date" where the date has a time of day ("10:00"), as every program writes it.
bool looks_like_separator_line(std::string_view line);

/// True for a line that may stand in a header block: a name of printable characters, a colon, and anything.
bool looks_like_header_line(std::string_view line);

}  // namespace vellobar::command
