#include "command/mail/long_lines.h"

#include <cstring>
#include <string>

#include "mailbox/scanner.h"
#include "platform/file.h"

namespace vellobar::command {

bool ReadsOfTheScan::have_one_inside(std::int64_t start, std::int64_t feed) {
  const mailbox::ScanOptions rule;
  while (position_ < start) {
    position_ += size_;
    if (size_ < rule.chunk_doubles_below) size_ *= 2;
  }
  return position_ + size_ <= feed;
}

std::vector<std::int64_t> lines_counted_twice(platform::File& file) {
  std::vector<std::int64_t> positions;
  ReadsOfTheScan reads;
  std::string block(std::size_t{256} * 1024, '\0');
  std::int64_t line = 0;
  for (std::int64_t at = 0; at < file.size();) {
    const std::size_t got = file.read(at, block.data(), block.size());
    if (got == 0) break;
    for (std::size_t from = 0; from < got;) {
      const void* found = std::memchr(block.data() + from, '\n', got - from);
      if (found == nullptr) break;
      const std::size_t feed = static_cast<std::size_t>(static_cast<const char*>(found) - block.data());
      const std::int64_t position = at + static_cast<std::int64_t>(feed);
      const bool is_long = position - line >= mailbox::ScanOptions().first_chunk;
      if (is_long && reads.have_one_inside(line, position)) positions.push_back(line);
      line = position + 1;
      from = feed + 1;
    }
    at += static_cast<std::int64_t>(got);
  }
  return positions;
}

}  // namespace vellobar::command
