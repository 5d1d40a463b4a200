// Bytes of a file passed on as they are: what 7bit does in place of coding.
#pragma once

#include <cstdint>

namespace vellobar::platform {
class ByteSink;
class File;
}  // namespace vellobar::platform

namespace vellobar::attachments {

/// Copies from `start` to just before `end`, or to the end of the file.
void copy_range(platform::File& from, std::int64_t start, std::int64_t end, platform::ByteSink& to);

}  // namespace vellobar::attachments
