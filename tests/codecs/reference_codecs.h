// A second telling of the codecs' rules, byte by byte and as slow as it may be, for the tests to hold every form of the
// codecs against. It shares nothing with them, not even a table.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vellobar::codecs::reference {

std::string encode_base64(std::string_view bytes);
std::string encode_base64_file(std::string_view bytes);
std::string decode_base64(std::string_view text);

std::string encode_uu(std::string_view bytes);
std::string encode_uu_file(std::string_view bytes);
std::string decode_uu(std::string_view text);
std::string decode_uu_file(std::string_view file, std::size_t start, std::size_t end);

std::string encode_binhex_file(std::string_view bytes);
std::string decode_binhex_file(std::string_view text);

/// `limit` is 73 for memory and 76 for files.
std::string encode_quoted_printable(std::string_view bytes, std::size_t limit);
std::string decode_quoted_printable(std::string_view text, bool underscore_is_space);
std::string decode_quoted_printable_file(std::string_view text);

}  // namespace vellobar::codecs::reference
