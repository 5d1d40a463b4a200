// The six-bit layer of BinHex 4.0 (RFC 1741, appendix A): its letters, lines of 64 of them, and the colons around the
// data. No header, no run lengths, no checksums. Tolerance is that of Base64: CR and LF are passed over, a NUL byte
// reads as zero bits, and the first group with any other byte, the closing colon included, ends the data. Banner and
// colons are written by the caller. All state is on the stack.
#pragma once

#include <cstdint>

namespace vellobar::platform {
class ByteSink;
class File;
}  // namespace vellobar::platform

namespace vellobar::codecs {

/// Encodes a file from its first byte to its end, in lines of 64 characters, each with CR LF but the last, shorter one.
void encode_binhex_stream(platform::File& from, platform::ByteSink& to);

/// Decodes what follows the first colon in the range of a file; the whole range when it has no colon. The source counts
/// in blocks of 1024 bytes from `start`: a block that begins before `end` is used whole, up to the end of the file.
void decode_binhex_stream(platform::File& from, std::int64_t start, std::int64_t end, platform::ByteSink& to);

}  // namespace vellobar::codecs
