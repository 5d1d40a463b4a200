// Quoted-printable, near RFC 2045, section 6.7, with rules of the component's own. Encoding escapes "=" and bytes above
// 127 and nothing else; line ends and white space before them stay as they are. Decoding of memory passes a broken
// escape on as it stands, decoding of a file makes one byte of it. Only "=" CR LF is a soft line break. All state is on
// the stack; source and target memory must not overlap.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace vellobar::platform {
class ByteSink;
class File;
}  // namespace vellobar::platform

namespace vellobar::codecs {

/// Room that `encode_quoted_printable` needs for `size` bytes: three characters for each byte, and three for each soft
/// break. At least 25 bytes stand before a break: 24 of them fill no more than 72 characters.
constexpr std::size_t quoted_printable_encoded_room(std::size_t size) { return 3 * size + 3 * (size / 25); }

/// Room that `decode_quoted_printable` needs at the most for `size` characters, and what it needs for this text. Equals
/// signs in a row, and broken escapes that share one, are passed on in threes, so that the text can grow.
constexpr std::size_t quoted_printable_decoded_room(std::size_t size) { return 3 * size; }
std::size_t quoted_printable_decoded_room(std::string_view text);

/// Encodes with at most 73 characters before a soft break. `to` has room for quoted_printable_encoded_room(size)
/// characters. Returns the number of characters written.
std::size_t encode_quoted_printable(const unsigned char* from, std::size_t size, unsigned char* to);
std::string encode_quoted_printable(std::string_view bytes);

/// Decodes. The second character of every escape is stored back into `from` in upper case. `to` has room for
/// either quoted_printable_decoded_room. With `underscore_is_space`, "_" gives a space (RFC 2047, section 4.2).
/// Returns the number of bytes written.
std::size_t decode_quoted_printable(unsigned char* from, std::size_t size, unsigned char* to,
                                    bool underscore_is_space = false);
std::string decode_quoted_printable(std::string_view text, bool underscore_is_space = false);

/// Encodes a file from its first byte to its end, with at most 76 characters before a soft break.
void encode_quoted_printable_stream(platform::File& from, platform::ByteSink& to);

/// Decodes the range of a file, not a byte beyond `end`. Every escape that is not a soft break gives one byte: the low
/// eight bits of 16 x first + second, a character that is no hex digit counting as -1.
void decode_quoted_printable_stream(platform::File& from, std::int64_t start, std::int64_t end, platform::ByteSink& to);

}  // namespace vellobar::codecs
