// The charset name in a Content-Type value, and the Windows code page that a charset name stands for. Only UTF-8, UTF-7
// and "windows-" names are known; every other name stands for the system's ANSI code page, on purpose.
#pragma once

#include <string_view>

namespace vellobar::mime {

/// The Windows code page of a charset name: 65001, 65000, the number of a "windows-" name, else 0.
int code_page_of_charset(std::string_view name);

/// The charset name in a decoded Content-Type value: from the first letter behind the "=" that follows "charset" up to
/// a space, an apostrophe or a double quote. A ";" belongs to it. Empty when there is none. The result points into the
/// argument.
std::string_view charset_in_content_type(std::string_view content_type);

}  // namespace vellobar::mime
