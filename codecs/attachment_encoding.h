// The transfer encodings an attachment can have, by the numbers that clients see, and the one place that knows which
// stream decoder undoes which of them.
#pragma once

#include <cstdint>

namespace vellobar::platform {
class ByteSink;
class File;
}  // namespace vellobar::platform

namespace vellobar::codecs {

enum class AttachmentEncoding {
  unknown = 0,
  base64 = 1,
  binhex4 = 2,
  uuencode = 3,
  quoted_printable = 4,
  seven_bit = 5
};

/// Decodes the bytes from `start` to `end` of a file; how far a block may run past the end is the decoder's own rule.
/// False, with nothing written, for an encoding without a decoder: unknown, seven_bit, and any other number. Throws
/// what `to` throws.
bool decode_stream(AttachmentEncoding encoding, platform::File& from, std::int64_t start, std::int64_t end,
                   platform::ByteSink& to);

}  // namespace vellobar::codecs
