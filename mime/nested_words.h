// Words within words: "Q" words whose decoded text is again the beginning of a word, level below level. Decoding such
// text at every level would cost its length each time although it no longer changes, so the levels are taken off at
// once.
#pragma once

#include <string>

#include "mime/working_text.h"

namespace vellobar::mime {

/// Takes the levels off a decoded "Q" text that belongs at `position` of the working text, as far as it is certain that
/// each is one pass of decoding: takes the beginnings of words from the front of `decoded` (what stands before them
/// goes into the text) and their ends from the text behind the position. `code_page` becomes that of the last pass
/// which saw a charset prefix. Returns the position where the rest of `decoded` then belongs.
std::size_t take_off_levels(WorkingText& text, std::size_t position, std::string& decoded, int& code_page);

}  // namespace vellobar::mime
