#include "mailbox/message_snapshot.h"

#include <cstdint>
#include <utility>

#include "mailbox/messages.h"

namespace vellobar::mailbox {

MessageSnapshot::MessageSnapshot(std::shared_ptr<CMessages> collection)
    : collection_(std::move(collection)), size_(static_cast<std::size_t>(collection_->Count())) {}

MessageSnapshot::~MessageSnapshot() = default;

std::shared_ptr<CMessage> MessageSnapshot::operator[](std::size_t index) const {
  return collection_ ? collection_->Item(static_cast<std::int64_t>(index)) : items_[index];
}

void MessageSnapshot::hold_items() {
  std::vector<std::shared_ptr<CMessage>> items;
  items.reserve(size_);
  for (std::size_t i = 0; i < size_; ++i) items.push_back((*this)[i]);
  items_ = std::move(items);
  collection_.reset();
}

}  // namespace vellobar::mailbox
