#include "mailbox/collections_below.h"

#include "mailbox/message.h"
#include "mailbox/messages.h"
#include "mailbox/part_tree.h"

namespace vellobar::mailbox {

CollectionsBelow::CollectionsBelow(const CMessage& message, Below which) {
  add_parts_of(message);
  const std::shared_ptr<PartTree> tree = which == Below::everything ? message.tree() : nullptr;
  if (tree) tree->append_detached(message.StartPosition(), message.EndPosition(), waiting_);
}

const std::shared_ptr<CMessages>* CollectionsBelow::next() {
  if (waiting_.empty()) return nullptr;
  const std::shared_ptr<CMessages>* const parts = waiting_.back();
  waiting_.pop_back();
  messages_.clear();
  (*parts)->append_existing(messages_);
  for (const CMessage* message : messages_) add_parts_of(*message);
  return parts;
}

void CollectionsBelow::add_parts_of(const CMessage& message) {
  if (!message.existing_parts()) return;
  waiting_.push_back(&message.existing_parts());
  const PartTree* const tree = message.existing_parts()->own_tree();
  if (tree != nullptr) tree->append_detached(waiting_);
}

}  // namespace vellobar::mailbox
