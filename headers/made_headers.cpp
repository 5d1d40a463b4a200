#include "headers/made_headers.h"

#include <algorithm>

namespace vellobar::headers {

MadeHeaders::~MadeHeaders() {
  for (const auto& [place, made] : by_place_) {
    if (const std::shared_ptr<CHeader> header = made.lock()) header->leave();
  }
}

std::shared_ptr<CHeader> MadeHeaders::find(std::size_t place) const {
  const auto found = by_place_.find(place);
  return found == by_place_.end() ? nullptr : found->second.lock();
}

std::optional<std::size_t> MadeHeaders::place_of(const CHeader& header) const {
  const auto found = std::find_if(by_place_.begin(), by_place_.end(),
                                  [&](const auto& made) { return made.second.lock().get() == &header; });
  if (found == by_place_.end()) return std::nullopt;
  return found->first;
}

bool MadeHeaders::is_changed(std::size_t place) const {
  const std::shared_ptr<CHeader> header = find(place);
  return header && header->is_kept();
}

void MadeHeaders::add(std::size_t place, const std::shared_ptr<CHeader>& header) {
  if (by_place_.size() >= most_) forget_ended();
  by_place_.insert_or_assign(place, header);
  header->join();
}

void MadeHeaders::erase(std::size_t place) {
  const auto found = by_place_.find(place);
  if (found == by_place_.end()) return;
  const std::shared_ptr<CHeader> header = found->second.lock();
  by_place_.erase(found);
  if (header) header->leave();
}

void MadeHeaders::forget_ended() {
  std::erase_if(by_place_, [](const auto& made) { return made.second.expired(); });
  most_ = std::max(kFew, by_place_.size() * 2);
}

}  // namespace vellobar::headers
