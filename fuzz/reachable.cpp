#include "fuzz/reachable.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "mailbox/message.h"
#include "mailbox/messages.h"

namespace vellobar::fuzz {

namespace {

template <typename Object>
bool is_among(const std::vector<std::shared_ptr<Object>>& all, const Object& wanted) {
  return std::ranges::find(all, &wanted, [](const auto& object) { return object.get(); }) != all.end();
}

}  // namespace

Reachable::Reachable(std::vector<std::shared_ptr<CMessages>> mailboxes) : collections_(std::move(mailboxes)) {
  for (std::size_t i = 0; i < collections_.size(); ++i) {
    for (const auto& part : std::shared_ptr(collections_[i])) {
      messages_.push_back(part);
      collections_.push_back(part->Parts());
    }
  }
}

bool Reachable::has(const CMessage& message) const { return is_among(messages_, message); }

bool Reachable::has(const CMessages& parts) const { return is_among(collections_, parts); }

}  // namespace vellobar::fuzz
