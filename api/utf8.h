// UTF-8 at the edge of a program that works with it: the component's texts are UTF-16.
#pragma once

#include <string>
#include <string_view>

namespace vellobar {

/// UTF-16 as UTF-8, and back. What is not well formed becomes U+FFFD; NUL characters are kept.
std::string to_utf8(std::u16string_view text);
std::u16string from_utf8(std::string_view text);

}  // namespace vellobar
