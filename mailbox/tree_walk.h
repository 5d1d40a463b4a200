// A message and the tree of parts below it, front to back, with a stack of its own: mail may nest its parts a hundred
// thousand deep. Parts that nobody asked for yet are made for the walk alone and dropped behind it, so that a walk
// holds no more than the messages above the one it is at, and of those no more than their separators once only their
// last part is left.
#pragma once

#include <string_view>

#include "mailbox/message.h"

namespace vellobar::mailbox {

class TreeVisitor {
 public:
  virtual ~TreeVisitor() = default;
  /// A message or part. True when the walk goes on into its parts, of which there is at least one then.
  virtual bool visit(CMessage& message, CMessage::Place place) = 0;
  /// In front of each part, and behind the last one of a collection, with the collection's separator.
  virtual void part_begins(std::u16string_view separator) = 0;
  virtual void parts_end(std::u16string_view separator) = 0;
};

/// Walks the parts below `top`, which itself was visited. What the walk reads into objects that exist already is
/// dropped behind it.
void walk_parts(CMessage& top, TreeVisitor& visitor);

}  // namespace vellobar::mailbox
