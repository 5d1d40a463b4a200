// UTF-8 and UTF-7 as Windows converts them with flags 0: nothing fails, and what is malformed ends as the functions
// below say.
#pragma once

#include <string>
#include <string_view>

namespace vellobar::platform {

/// UTF-8 (RFC 3629). Each longest well-formed beginning of a sequence that is not completed, and each other stray byte,
/// becomes one U+FFFD. Appends to `text`.
void append_from_utf8(std::string_view bytes, std::u16string& text);

/// UTF-8 (RFC 3629). A surrogate without its other half becomes U+FFFD (EF BF BD). Appends to `bytes`.
void append_to_utf8(std::u16string_view text, std::string& bytes);

/// UTF-7 (RFC 2152). Bytes from 0x80 on stand for themselves; a "-" that ends a run of Base64 is dropped, and bits that
/// do not fill a unit are discarded.
std::u16string from_utf7(std::string_view bytes);

/// UTF-7 (RFC 2152). The characters that may stand for themselves are those of RFC 2152's set D, space, TAB, CR, LF and
/// NUL; every other run is Base64 between "+" and "-", the "-" always written.
std::string to_utf7(std::u16string_view text);

}  // namespace vellobar::platform
