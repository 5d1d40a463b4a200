#include "mailbox/tree_walk.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "headers/room.h"
#include "mailbox/messages.h"

namespace vellobar::mailbox {

namespace {

/// The separators of all collections that the walk is in. Those of which only the last part is left are no more than
/// this any longer, so all of them stand in one text.
class Separators {
 public:
  std::size_t count() const { return begins_.size(); }
  std::u16string_view last() const { return std::u16string_view(text_).substr(begins_.back()); }
  void push(std::u16string_view separator) {
    begins_.push_back(text_.size());
    headers::make_room(text_, separator.size());
    text_ += separator;
  }
  void pop() {
    text_.resize(begins_.back());
    begins_.pop_back();
  }

 private:
  std::u16string text_;
  std::deque<std::size_t> begins_;
};

/// A message on the way down that has parts left.
struct Level {
  std::shared_ptr<CMessage> message;  ///< null for the top
  CMessage::Held held;
  CMessages& parts;
  std::size_t separators;  ///< how many there are, with its own
  std::int64_t next = 0;

  std::shared_ptr<CMessage> take_part() { return parts.for_walking(next++); }
  bool is_over() const { return next == parts.Count(); }
  void let_go(CMessage& last_part) {
    // A part that was made for the walk alone may outlive its collection now.
    if (parts.position_of(last_part) < 0) last_part.forget_collection(parts);
    if (message) message->drop_what_walking_read(held);
  }
};

}  // namespace

void walk_parts(CMessage& top, TreeVisitor& visitor) {
  Separators separators;
  std::deque<Level> levels;
  const auto push = [&](std::shared_ptr<CMessage> message, CMessage::Held held, CMessages& parts) {
    separators.push(parts.separator());
    levels.push_back({std::move(message), held, parts, separators.count()});
  };
  const auto end_all_but = [&](std::size_t count) {
    for (; separators.count() > count; separators.pop()) visitor.parts_end(separators.last());
  };
  push(nullptr, {}, *top.existing_parts());
  while (!levels.empty()) {
    Level& level = levels.back();
    end_all_but(level.separators);
    visitor.part_begins(separators.last());
    std::shared_ptr<CMessage> part = level.take_part();
    if (level.is_over()) {
      level.let_go(*part);
      levels.pop_back();
    }
    const CMessage::Held held = part->held();
    if (visitor.visit(*part, CMessage::Place::part)) {
      CMessages& parts = *part->existing_parts();
      push(std::move(part), held, parts);
    } else {
      part->drop_what_walking_read(held);
    }
  }
  end_all_but(0);
}

}  // namespace vellobar::mailbox
