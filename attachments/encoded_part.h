// The text of a part that carries a file: its headers, an empty line and the coded bytes, in the exact form of each
// encoding. The forms differ from each other in more than the encoding's name; what is written is what mail already
// made this way looks like.
#pragma once

#include <string_view>

namespace vellobar::platform {
class ByteSink;
class File;
}  // namespace vellobar::platform

namespace vellobar::attachments {

/// Writes the part for a file under this name (bytes, used as they stand). `encoding` is a number of
/// codecs::AttachmentEncoding; false, with nothing written, when it names no coding.
bool write_encoded_part(int encoding, std::string_view name, platform::File& file, platform::ByteSink& to);

}  // namespace vellobar::attachments
