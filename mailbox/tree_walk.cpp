#include "mailbox/tree_walk.h"

#include <cstdint>
#include <deque>
#include <memory>
#include <utility>

#include "mailbox/messages.h"

namespace vellobar::mailbox {

namespace {

/// A message on the way down whose parts are being walked.
struct Level {
  std::shared_ptr<CMessage> message;  ///< null for the top
  CMessage::Held held;
  CMessages& parts;
  std::int64_t next = 0;
};

}  // namespace

void walk_parts(CMessage& top, TreeVisitor& visitor) {
  std::deque<Level> levels;
  levels.push_back({nullptr, {}, *top.existing_parts()});
  while (!levels.empty()) {
    Level& level = levels.back();
    if (level.next == level.parts.Count()) {
      visitor.parts_end(level.parts);
      if (level.message) level.message->drop_what_walking_read(level.held);
      levels.pop_back();
      continue;
    }
    visitor.part_begins(level.parts);
    std::shared_ptr<CMessage> part = level.parts.for_walking(level.next++);
    const CMessage::Held held = part->held();
    if (visitor.visit(*part, CMessage::Place::part)) {
      CMessages& parts = *part->existing_parts();
      levels.push_back({std::move(part), held, parts});
    } else {
      part->drop_what_walking_read(held);
    }
  }
}

}  // namespace vellobar::mailbox
