// Text for people: in the character set of their locale, and without the control characters by which mail could move
// the cursor or rename the window.
#pragma once

#include <string>
#include <string_view>

namespace vellobar::command {

/// The code page of the locale: of text at the terminal, of arguments, and of file names.
int terminal_code_page();

#ifdef _WIN32
/// Makes the console take UTF-8, in which this program writes there, until the object dies.
class Utf8Console {
 public:
  Utf8Console();
  ~Utf8Console();
  Utf8Console(const Utf8Console&) = delete;
  Utf8Console& operator=(const Utf8Console&) = delete;

 private:
  unsigned before_;
};
#endif

/// Text of one line: line ends and other control characters show as one blank each.
std::string shown_line(std::u16string_view text);

/// Text of several lines: tabs and line ends stay, a CR LF becomes a line feed, other control characters show as "?".
std::string shown_text(std::u16string_view text);

}  // namespace vellobar::command
