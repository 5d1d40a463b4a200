// The UU blocks that were found in a text: the name of each, its size and the path of its file, in little more than
// these take, since a text can hold a hundred thousand blocks of 25 bytes. The objects are made of it when somebody
// asks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "mailbox/made_on_use.h"

namespace vellobar {
struct CodedRange;
}

namespace vellobar::attachments {

class FoundBlocks {
 public:
  std::size_t size() const { return blocks_.size(); }

  /// Appends a block. Done wholly or, where memory ends, not at all.
  void add(std::u16string_view name, const CodedRange& range);

  std::u16string name(std::size_t index) const;
  /// What the block is decoded from; only where that is not kept open.
  CodedRange range(std::size_t index) const;

 private:
  /// Where that of a block ends; it begins where that of the block before ends.
  struct Ends {
    std::size_t name = 0, file = 0;
    std::int64_t size = 0;
  };

  Ends ends_before(std::size_t index) const { return index == 0 ? Ends() : blocks_[index - 1]; }

  mailbox::MadeOnUse<Ends> blocks_;
  std::u16string names_;
  std::string folder_;  ///< of the first file, with its separator
  std::string files_;   ///< each by its name in that folder, or by its whole path where it is in another one
};

}  // namespace vellobar::attachments
