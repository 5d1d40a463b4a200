#include "attachments/made_attachments.h"

#include <algorithm>
#include <utility>

#include "attachments/attachment.h"
#include "platform/file.h"

namespace vellobar::attachments {

std::shared_ptr<CAttachment> MadeAttachments::find(std::size_t position) const {
  const auto found = by_position_.find(position);
  return found == by_position_.end() ? nullptr : found->second.object;
}

void MadeAttachments::keep(std::size_t position, std::shared_ptr<CAttachment> object) {
  by_position_.insert_or_assign(position, Made{std::move(object), true});
}

void MadeAttachments::lend(std::size_t position, std::shared_ptr<CAttachment> object) {
  if (by_position_.size() >= most_) let_go();
  by_position_.insert_or_assign(position, Made{std::move(object), false});
}

bool MadeAttachments::is_held_or_changed(const Made& made) noexcept {
  return made.object.use_count() > 1 || made.object->is_changed();
}

bool MadeAttachments::has_held_or_changed() const noexcept {
  return std::any_of(by_position_.begin(), by_position_.end(),
                     [](const auto& made) { return is_held_or_changed(made.second); });
}

void MadeAttachments::let_go() {
  std::erase_if(by_position_, [](const auto& entry) {
    const Made& made = entry.second;
    // What is read from a closed file can never be read again.
    const platform::File* const file = made.object->range().file.get();
    return !made.stays && !is_held_or_changed(made) && (file == nullptr || file->is_open());
  });
  most_ = std::max(kFew, by_position_.size() * 2);
}

}  // namespace vellobar::attachments
