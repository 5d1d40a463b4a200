#include "command/mail/part_places.h"

#include <deque>
#include <memory>
#include <utility>

#include "command/output/interruption.h"
#include "mailbox/message.h"
#include "mailbox/messages.h"

namespace vellobar::command {

namespace {

/// A collection that has parts left. The stack of them is the walk's own: mail can nest deeper than the program's.
struct Level {
  std::shared_ptr<CMessages> parts;
  std::size_t depth;  ///< of the parts; 1 for those of the message itself
  std::string place;  ///< what the places of its parts begin with; nothing where they are not listed
  std::int64_t next = 0;
};

}  // namespace

std::int64_t for_each_listed_part(CMessage& message,
                                  const std::function<void(CMessage& part, const std::string& place)>& visit) {
  std::int64_t too_deep = 0;
  std::deque<Level> levels;
  const auto push = [&](std::shared_ptr<CMessages> parts, std::size_t depth, std::string place) {
    if (parts->Count() > 0) levels.push_back({std::move(parts), depth, std::move(place)});
  };
  push(message.Parts(), 1, "");
  while (!levels.empty()) {
    stop_if_interrupted();
    Level& level = levels.back();
    const std::size_t depth = level.depth;
    const bool is_listed = depth <= kDeepestListed;
    std::string place = is_listed ? level.place + std::to_string(level.next) : std::string();
    const std::shared_ptr<CMessage> part = level.parts->Item(level.next++);
    // What is above the last part of each need not be held any longer, however deep that goes.
    if (level.next == level.parts->Count()) levels.pop_back();
    if (is_listed) {
      visit(*part, place);
      place += '.';
    } else {
      ++too_deep;
    }
    push(part->Parts(), depth + 1, std::move(place));
  }
  return too_deep;
}

}  // namespace vellobar::command
