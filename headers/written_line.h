// Header lines that are written must be read again, so none may be as long as the reader's limit where that can be had
// without another name or value: a line that came from a file fits without the CR and the blank that writing adds.
#pragma once

#include <cstddef>
#include <string>

namespace vellobar::headers {

/// Shortens the header "Name: Value" CR LF that stands at the end of a text, from `begin` on. A line that is too long
/// with its CR ends with LF alone, and where that is not enough the first one has no blank behind its colon. What is
/// too long even so is left as it is: a value is never folded.
void keep_readable(std::string& text, std::size_t begin);

}  // namespace vellobar::headers
