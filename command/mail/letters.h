// Text compared without regard to case, the same on every system: the letters of the Latin, Greek and Cyrillic
// alphabets, one to one.
#pragma once

#include <string>
#include <string_view>

namespace vellobar::command {

/// Capital letters in lower case, everything else as it stands.
std::u16string lower_letters(std::u16string_view text);

/// True when `wanted`, which is in lower case, stands anywhere in the text.
bool contains_ignoring_case(std::u16string_view text, std::u16string_view wanted);

}  // namespace vellobar::command
