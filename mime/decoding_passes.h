// A header value decoded as the rule says, pass by pass: every pass chooses a code page by the prefixes that are left
// anywhere in the value and then removes a fold, or decodes the first word and puts its text in its place. For values
// in which a pass changes what a later one reads: words that decode to words, UTF-7 to be repaired.
#pragma once

#include <string_view>

#include "mime/encoded_word.h"

namespace vellobar::mime {

/// Decodes a value of any form. Costs n log n for n bytes read and added.
DecodedValue decode_pass_by_pass(std::string_view value);

}  // namespace vellobar::mime
