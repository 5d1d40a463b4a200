#include "attachments/copied_range.h"

#include "codecs/file_blocks.h"
#include "codecs/strings.h"
#include "platform/file.h"

namespace vellobar::attachments {

void copy_range(platform::File& from, std::int64_t start, std::int64_t end, platform::ByteSink& to) {
  codecs::FileBlocks blocks(from, start, end);
  for (auto block = blocks.next(); !block.empty(); block = blocks.next()) {
    to.write(codecs::view_of(block.data(), block.size()));
  }
}

}  // namespace vellobar::attachments
