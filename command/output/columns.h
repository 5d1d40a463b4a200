// Text in columns of a terminal. A column is as wide as a Latin letter; characters of East Asian scripts and emoji take
// two, combining marks and joiners none.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vellobar::command {

/// How many columns a text takes.
std::size_t display_width(std::u16string_view text);

/// The text in at most `width` columns, with an ellipsis where it was cut. A cut never splits a character or takes it
/// from its combining marks.
std::u16string cut_to(std::u16string_view text, std::size_t width);

/// The same, filled up with blanks to exactly `width` columns.
std::u16string fitted(std::u16string_view text, std::size_t width);

}  // namespace vellobar::command
