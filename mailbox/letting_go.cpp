// Which messages are let go when others are read: those that nobody holds, and that read the same when they are made
// again. What shows of earlier reading is left in the collection.
#include <algorithm>
#include <new>
#include <utility>
#include <vector>

#include "attachments/attachments.h"
#include "headers/headers.h"
#include "mailbox/collections_below.h"
#include "mailbox/message.h"
#include "mailbox/messages.h"
#include "mailbox/part_tree.h"
#include "mailbox/recent_messages.h"
#include "platform/file.h"

namespace vellobar {

namespace mailbox {

namespace {

/// What `FewRecentMessages` says; 0 without one.
std::size_t few_recent_messages = 0;

}  // namespace

void RecentMessages::allow_for(std::int64_t bytes) noexcept {
  most_ = std::max(kMost, static_cast<std::size_t>(bytes / kBytesForEach));
  if (few_recent_messages > 0) most_ = few_recent_messages;
}

void RecentMessages::make_room() {
  if (messages_.size() == messages_.capacity()) messages_.reserve(std::max<std::size_t>(2 * messages_.size(), 8));
}

void RecentMessages::add(const std::shared_ptr<CMessage>& message) noexcept {
  constexpr std::size_t kLooksForEachMade = 16;
  patience_ = std::min(patience_ + kLooksForEachMade, 4 * std::max(most_, kMost));
  if (messages_.size() < most_) {
    messages_.push_back(message);
    return;
  }
  const std::shared_ptr<CMessage> oldest = std::exchange(messages_[oldest_], message).lock();
  oldest_ = (oldest_ + 1) % most_;
  if (oldest && oldest->collection() != nullptr) oldest->collection()->let_go(oldest, patience_);
}

FewRecentMessages::FewRecentMessages(std::size_t most) { few_recent_messages = most; }

FewRecentMessages::~FewRecentMessages() { few_recent_messages = 0; }

}  // namespace mailbox

void CMessages::let_go(const std::shared_ptr<CMessage>& message, std::size_t& patience) noexcept {
  constexpr long kHereAndWithTheCaller = 2;
  if (message.use_count() > kHereAndWithTheCaller || !file_) return;
  const std::int64_t position = position_of(*message);
  if (position < 0) return;
  Entry& entry = items_[static_cast<std::size_t>(position)];
  if (!message->is_read_from(file_.get(), entry.extent())) return;
  const mailbox::Traces traces = message->traces();
  if (!message->reads_the_same_again(patience) && !message->detach_parts()) return;
  entry.leave(traces);
  entry.give_up_object();
  message->forget_collection(*this);
  has_lasting_traces_ = has_lasting_traces_ || traces.was_unloaded || traces.scans_text;
  if (is_detached()) end_unless_kept();
}

void CMessages::detach_from(std::int64_t message) noexcept {
  parent_ = nullptr;
  detached_from_ = message;
}

void CMessages::attach_to(CMessage& message) noexcept {
  parent_ = &message;
  detached_from_ = kAttached;
}

void CMessages::end_unless_kept() noexcept {
  const std::shared_ptr<mailbox::PartTree> tree = tree_.lock();
  if (!tree || must_be_kept()) return;
  const std::shared_ptr<CMessages> ends_here = tree->take(detached_from_);
}

bool CMessages::must_be_kept() const {
  if (is_edited_ || is_kept_for_attachments_ || has_lasting_traces_) return true;
  while (first_object_ < items_.size() && !items_[first_object_].object()) ++first_object_;
  return first_object_ < items_.size();
}

bool CMessages::is_as_made_anew(bool with_attachments) const {
  if (has_lasting_traces_ || (is_kept_for_attachments_ && !with_attachments)) return false;
  return is_as_scanned() && !has_held_items();
}

void CMessages::append_ways_down(std::vector<std::shared_ptr<CMessage>>& to) {
  const std::shared_ptr<mailbox::PartTree> tree = tree_.lock();
  for (std::size_t i = 0; i < items_.size(); ++i) {
    const Entry& entry = items_[i];
    const bool leads_down = tree && tree->has_detached(entry.start(), entry.extent().end);
    if (entry.object() || leads_down) to.push_back(object_at(i));
  }
}

void CMessages::leave_tree() noexcept {
  tree_.reset();
  for (const Entry& entry : items_) {
    if (entry.object()) entry.object()->be_in({});
  }
}

std::shared_ptr<CMessage> CMessages::found_at(std::int64_t start) {
  // Scanned messages stand in the order of the file, and in front of those that were added.
  const auto found = std::lower_bound(items_.begin(), items_.end(), start, [](const Entry& entry, std::int64_t wanted) {
    return !entry.is_added() && entry.start() < wanted;
  });
  if (found != items_.end() && !(*found).is_added() && (*found).start() == start) {
    return object_at(static_cast<std::size_t>(found - items_.begin()));
  }
  for (const std::weak_ptr<CMessage>& removed : removed_) {
    std::shared_ptr<CMessage> message = removed.lock();
    if (message && message->file() == file_ && message->StartPosition() == start) return message;
  }
  return nullptr;
}

bool CMessage::reads_the_same_again(std::size_t& patience) const noexcept {
  // Attachments know their parts: all go together with the message, or none.
  const bool is_part = collection_->is_of_parts();
  const auto is_as_found_when_seen = [&](const CMessage& message) {
    if (patience == 0) return false;
    --patience;
    return message.is_as_found() && !(is_part && message.has_attachment_);
  };
  const auto differs = [&](const CMessage& part) {
    return !is_as_found_when_seen(part) || part.is_unloaded() || part.scans_text();
  };
  if (!is_as_found_when_seen(*this)) return false;
  try {
    const auto stays = [&](const std::shared_ptr<CMessages>& parts) {
      return parts.use_count() > 1 || !parts->is_as_made_anew(!is_part) || parts->any_object(differs);
    };
    return !mailbox::CollectionsBelow(*this, mailbox::Below::going_with_it).has_any(stays);
  } catch (const std::bad_alloc&) {
    return false;
  }
}

/// Because something of them stays, although the message is let go.
bool CMessage::detach_parts() noexcept {
  const std::shared_ptr<mailbox::PartTree> tree = tree_.lock();
  if (!tree || !tree->may_detach() || !parts_ || parts_.use_count() > 1) return false;
  if (!is_as_found() || is_unloaded() || has_attachment_) return false;
  // Attachments are found once, whatever becomes of the parts.
  if (attachments_ && attachments_->were_found()) return false;
  // What was split otherwise would be split otherwise again.
  if (parts_->tree() != tree || tree->outline().find(start_, body_offset_) == nullptr) return false;
  try {
    tree->detach(start_, parts_);
  } catch (const std::bad_alloc&) {
    return false;
  }
  parts_->detach_from(start_);
  std::exchange(parts_, nullptr)->end_unless_kept();
  return true;
}

void CMessage::leave_tree() {
  has_left_ = true;
  const auto may_detach = [](const std::shared_ptr<mailbox::PartTree>& tree) { return tree && tree->may_detach(); };
  if (!may_detach(tree_.lock()) && !(parts_ && may_detach(parts_->tree()))) return;
  // All are held for the while, so that none is let go.
  std::vector<std::shared_ptr<CMessage>> below;
  take_up_detached();
  if (parts_) parts_->append_ways_down(below);
  for (std::size_t i = 0; i < below.size(); ++i) {
    const std::shared_ptr<CMessage> part = below[i];
    part->take_up_detached();
    if (part->parts_) part->parts_->append_ways_down(below);
  }
  for (const std::shared_ptr<CMessage>& part : below) {
    if (part->parts_) part->parts_->leave_tree();
  }
  if (parts_) parts_->leave_tree();
  tree_.reset();
}

/// Loads the parts when some below stand by themselves.
void CMessage::take_up_detached() {
  const std::shared_ptr<mailbox::PartTree> tree = tree_.lock();
  if (!tree || !tree->has_detached(start_, end_)) return;
  // A text that could not be read stands in the way.
  if (is_cut_short_ && (!parts_ || tree->detached_at(start_))) drop_body();
  load_body();
}

bool CMessage::is_as_found() const noexcept {
  // What is read from a closed file can never be read again.
  if (!file_ || !file_->is_open() || has_own_file_) return false;
  if (tag_.has_value() || changed_ || mail_info_given_ || text_was_put_ || is_cut_short_ || stays_whole_) return false;
  if (remembered_index_ == kSeveralPlaces || (parts_ && !body_)) return false;
  if (temporary_files_ || (headers_ && (headers_.use_count() > 1 || headers_->is_changed()))) return false;
  return !attachments_ || (attachments_.use_count() == 1 && attachments_->can_be_found_again());
}

mailbox::Traces CMessage::traces() const {
  return {.headers_were_read = headers_ != nullptr || headers_were_read_,
          .body_was_read = body_.has_value() || body_was_read_,
          .parts_were_read = parts_were_read_ || (parts_ && parts_->has_traces()),
          .was_unloaded = is_unloaded(),
          .scans_text = scans_text()};
}

void CMessage::bear(const mailbox::Traces& traces) noexcept {
  headers_were_read_ = traces.headers_were_read;
  body_was_read_ = traces.body_was_read;
  parts_were_read_ = traces.parts_were_read;
  if (traces.was_unloaded) has_separator_ = false;
  scans_text_ = traces.scans_text;
}

void CMessage::read_again() {
  if (is_unloaded()) return;
  if (headers_were_read_) load_headers();
  // The parts are those of the boundary that the headers named then.
  if (body_was_read_) load_body();
}

bool CMessage::scans_text() const { return attachments_ ? attachments_->ScanText() : scans_text_; }

bool CMessages::has_traces() const {
  return parts_were_read_ || std::any_of(items_.begin(), items_.end(), [](const Entry& entry) {
           return entry.object() || entry.traces().headers_were_read || entry.traces().body_was_read;
         });
}

}  // namespace vellobar
