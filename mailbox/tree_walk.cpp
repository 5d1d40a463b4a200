#include "mailbox/tree_walk.h"

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <utility>

#include "mailbox/messages.h"

namespace vellobar::mailbox {

namespace {

/// A message on the way down whose parts are being walked.
struct Level {
  std::u16string separator;
  std::shared_ptr<CMessage> message;  ///< null for the top
  CMessage::Held held;
  CMessages* parts;  ///< null when none is left to begin with
  std::int64_t next = 0;

  std::shared_ptr<CMessage> take_part() {
    std::shared_ptr<CMessage> part = parts->for_walking(next++);
    if (next == parts->Count()) let_go_above(*part);
    return part;
  }

 private:
  void let_go_above(CMessage& last_part) {
    // A part that was made for the walk alone may outlive its collection now.
    if (parts->position_of(last_part) < 0) last_part.forget_collection(*parts);
    if (message) message->drop_what_walking_read(held);
    message.reset();
    parts = nullptr;
  }
};

}  // namespace

void walk_parts(CMessage& top, TreeVisitor& visitor) {
  std::deque<Level> levels;
  const auto push = [&levels](std::shared_ptr<CMessage> message, CMessage::Held held, CMessages& parts) {
    levels.push_back({parts.separator(), std::move(message), held, &parts});
  };
  push(nullptr, {}, *top.existing_parts());
  while (!levels.empty()) {
    Level& level = levels.back();
    if (level.parts == nullptr) {
      visitor.parts_end(level.separator);
      levels.pop_back();
      continue;
    }
    visitor.part_begins(level.separator);
    std::shared_ptr<CMessage> part = level.take_part();
    const CMessage::Held held = part->held();
    if (visitor.visit(*part, CMessage::Place::part)) {
      CMessages& parts = *part->existing_parts();
      push(std::move(part), held, parts);
    } else {
      part->drop_what_walking_read(held);
    }
  }
}

}  // namespace vellobar::mailbox
