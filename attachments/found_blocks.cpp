#include "attachments/found_blocks.h"

#include <utility>

#include "attachments/attachment.h"
#include "headers/room.h"

namespace vellobar::attachments {

namespace {

constexpr std::string_view kSeparators = "/\\";

/// Puts more behind the first `end` characters.
template <typename Character>
void append(std::basic_string<Character>& to, std::size_t end, std::basic_string_view<Character> more) {
  to.resize(end);
  headers::make_room(to, more.size());
  to.append(more);
}

}  // namespace

void FoundBlocks::add(std::u16string_view name, const CodedRange& range) {
  std::string_view file = range.reopened_from;
  const std::string_view folder = file.substr(0, file.find_last_of(kSeparators) + 1);
  if (folder_.empty()) folder_ = folder;
  if (folder == folder_) file.remove_prefix(folder.size());
  const Ends before = ends_before(size());
  append(names_, before.name, name);
  append(files_, before.file, file);
  blocks_.push_back({names_.size(), files_.size(), before.size + range.end - range.start});
}

std::u16string FoundBlocks::name(std::size_t index) const {
  const std::size_t begin = ends_before(index).name;
  return names_.substr(begin, blocks_[index].name - begin);
}

CodedRange FoundBlocks::range(std::size_t index) const {
  const Ends before = ends_before(index);
  const Ends& ends = blocks_[index];
  std::string path = files_.substr(before.file, ends.file - before.file);
  if (path.find_first_of(kSeparators) == path.npos) path.insert(0, folder_);
  return {.file = nullptr, .start = 0, .end = ends.size - before.size, .reopened_from = std::move(path)};
}

}  // namespace vellobar::attachments
