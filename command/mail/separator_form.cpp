#include "command/mail/separator_form.h"

#include <algorithm>
#include <cstddef>

#include "mailbox/separator_line.h"

namespace vellobar::command {

namespace {

bool is_digit(char c) { return c >= '0' && c <= '9'; }

/// A digit or two, a colon and two digits, as a word of its own or before more of the time.
bool begins_with_time_of_day(std::string_view text) {
  std::size_t at = 0;
  while (at < text.size() && at < 2 && is_digit(text[at])) ++at;
  return at > 0 && text.size() >= at + 3 && text[at] == ':' && is_digit(text[at + 1]) && is_digit(text[at + 2]);
}

}  // namespace

bool looks_like_separator_line(std::string_view line) {
  if (!line.starts_with(mailbox::kSeparator)) return false;
  line.remove_prefix(mailbox::kSeparator.size());
  // The sender may hold anything but blanks.
  for (std::size_t blank = line.find(' '); blank != line.npos; blank = line.find(' ', blank + 1)) {
    if (begins_with_time_of_day(line.substr(blank + 1))) return true;
  }
  return false;
}

bool looks_like_header_line(std::string_view line) {
  const std::size_t colon = line.find(':');
  if (colon == line.npos || colon == 0) return false;
  return std::all_of(line.begin(), line.begin() + static_cast<std::ptrdiff_t>(colon),
                     [](char c) { return c > ' ' && c < 0x7F; });
}

}  // namespace vellobar::command
