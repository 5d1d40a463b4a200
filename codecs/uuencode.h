// Unix-to-Unix encoding, with rules of the component's own. In memory it is a bare run of letters without lines. In
// files it has lines of a length character and up to 60 letters; the last line of whole groups has neither a length of
// its own nor a line end. Decoding a file reads one run of characters across its lines, in which lengths and letters
// follow each other. The framing lines are the caller's. All state is on the stack; source and target memory must not
// overlap.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "codecs/sextets.h"

namespace vellobar::platform {
class ByteSink;
class File;
}  // namespace vellobar::platform

namespace vellobar::codecs {

/// Room that `encode_uu` needs for `size` bytes.
constexpr std::size_t uu_encoded_room(std::size_t size) { return whole_groups_encoded(size); }

/// Bytes that `decode_uu` writes for `size` characters: three for each started group.
constexpr std::size_t uu_decoded_size(std::size_t size) { return started_groups_decoded(size); }

/// Encodes to letters alone; a last group of 1 or 2 bytes gives 2 or 3 of them. `to` has room for uu_encoded_room(size)
/// characters. Returns the number of characters written.
std::size_t encode_uu(const unsigned char* from, std::size_t size, unsigned char* to);
std::string encode_uu(std::string_view bytes);

/// Decodes every character as a letter, line ends included; a last incomplete group gives three bytes. `to` has room
/// for uu_decoded_size(size) bytes. Returns the number of bytes written.
std::size_t decode_uu(const unsigned char* from, std::size_t size, unsigned char* to);
std::string decode_uu(std::string_view text);

/// Encodes a file from its first byte to its end, in lines. An empty file gives one grave accent.
void encode_uu_stream(platform::File& from, platform::ByteSink& to);

/// Decodes the lines that begin in the range of a file, from behind the first line that holds "begin" to the first one
/// that starts with "end"; the whole range when no line holds "begin". A piece of 254 characters counts as a line.
void decode_uu_stream(platform::File& from, std::int64_t start, std::int64_t end, platform::ByteSink& to);

}  // namespace vellobar::codecs
