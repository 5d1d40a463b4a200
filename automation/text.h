// Automation strings and the component's texts. Both are counted UTF-16 and may hold NULs. A null automation string and
// an empty one are the same text inside; an empty text goes out as a null string.
#pragma once

#include <ole2.h>

#include <string_view>

namespace vellobar::automation {

/// The characters of an automation string, valid as long as the string.
std::u16string_view text_of(BSTR string);

/// A new automation string, for the caller to free; null for an empty text. Throws std::bad_alloc.
BSTR new_string(std::u16string_view text);

}  // namespace vellobar::automation
