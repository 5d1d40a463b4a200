// Base64 with the alphabet and padding of RFC 2045, section 6.8. Line layout and tolerance are the component's own:
// decoding passes over CR and LF wherever they stand, reads a NUL byte as zero bits, and ends at the first group of
// four that holds any other byte, "=" included. A last group cut short still gives three bytes; bits that nothing
// reaches are zero. All state is on the stack; source and target memory must not overlap.
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

/// Characters that `encode_base64` writes for `size` bytes.
constexpr std::size_t base64_encoded_size(std::size_t size) { return whole_groups_encoded(size); }

/// Room that `decode_base64` needs for `size` characters: three bytes for each started group.
constexpr std::size_t base64_decoded_room(std::size_t size) { return started_groups_decoded(size); }

/// Encodes to one unbroken line, padded, without a line end. `to` has room for base64_encoded_size(size) characters.
/// Returns the number of characters written.
std::size_t encode_base64(const unsigned char* from, std::size_t size, unsigned char* to);
std::string encode_base64(std::string_view bytes);

/// Decodes up to the first incomplete or strange group. `to` has room for base64_decoded_room(size) bytes.
/// Returns the number of bytes written.
std::size_t decode_base64(const unsigned char* from, std::size_t size, unsigned char* to);
std::string decode_base64(std::string_view text);

/// Encodes a file from its first byte to its end, in lines of 76 characters, each with CR LF. The last line is written
/// even when it is empty: no bytes give one line end, a multiple of 57 bytes ends with an empty line.
void encode_base64_stream(platform::File& from, platform::ByteSink& to);

/// Decodes the range of a file. The source counts in blocks of 1024 bytes from `start`: a block that begins before
/// `end` is used whole, up to the end of the file.
void decode_base64_stream(platform::File& from, std::int64_t start, std::int64_t end, platform::ByteSink& to);

}  // namespace vellobar::codecs
