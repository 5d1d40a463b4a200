// Text for people: in the character set of their locale, and without the control characters by which mail could move
// the cursor or rename the window.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vellobar::command {

/// The code page of the locale: of text at the terminal, of arguments, and of file names.
int terminal_code_page();

/// An argument as text.
std::u16string core_text(std::string_view argument);
/// Text in the code page of the locale, as it stands.
std::string terminal_bytes(std::u16string_view text);

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

/// Text of one line: line ends and other control characters show as one blank each. The second form leaves it as text.
std::string shown_line(std::u16string_view text);
std::u16string without_controls(std::u16string_view text);

/// How many columns standard output has; 0 when it is no terminal and lines may have any length. COLUMNS, where it is
/// set, says what a terminal has.
std::size_t columns();

/// What makes a word of standard output, or of standard error, stand out, and what ends that. Empty where no terminal
/// is, and where NO_COLOR is set.
enum class Emphasis { heading, warning };
std::string emphasised(Emphasis how, const std::string& text);
std::string emphasised_error(const std::string& text);

/// Text of several lines: tabs and line ends stay, a CR LF becomes a line feed, other control characters show as "?".
std::string shown_text(std::u16string text);

}  // namespace vellobar::command
