#include "mailbox/part_tree.h"

namespace vellobar::mailbox {

std::shared_ptr<CMessages> PartTree::detached_at(std::int64_t message) const {
  const auto found = detached_.find(message);
  return found != detached_.end() ? found->second : nullptr;
}

std::shared_ptr<CMessages> PartTree::take(std::int64_t message) noexcept {
  const auto found = detached_.extract(message);
  return found ? std::move(found.mapped()) : nullptr;
}

std::shared_ptr<CMessages> PartTree::take_any() noexcept {
  return detached_.empty() ? nullptr : take(detached_.begin()->first);
}

bool PartTree::has_detached(std::int64_t start, std::int64_t end) const {
  const auto first = detached_.lower_bound(start);
  return first != detached_.end() && first->first < end;
}

void PartTree::append_detached(std::int64_t start, std::int64_t end, List& to) const {
  for (auto at = detached_.lower_bound(start); at != detached_.end() && at->first < end; ++at) {
    to.push_back(&at->second);
  }
}

void PartTree::append_detached(List& to) const {
  for (const auto& [message, parts] : detached_) to.push_back(&parts);
}

}  // namespace vellobar::mailbox
