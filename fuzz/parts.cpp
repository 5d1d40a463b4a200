// The parts of a message: found in one pass or level by level they are the same, they lie within the message one behind
// the other, and reading everything twice tells the same.
#include <memory>
#include <string>
#include <vector>

#include "fuzz/choices.h"
#include "fuzz/reading.h"
#include "fuzz/scratch.h"
#include "fuzz/target.h"
#include "fuzz/targets.h"
#include "mailbox/message.h"
#include "mailbox/messages.h"
#include "mime/part_outline.h"
#include "platform/clock.h"

namespace vellobar::fuzz {

namespace {

/// A block that runs on to an empty line behind its message's end leaves nothing for parts.
void require_parts_within(CMessage& top) {
  std::vector<std::shared_ptr<CMessage>> waiting{top.shared_from_this()};
  while (!waiting.empty()) {
    const std::shared_ptr<CMessage> held = std::move(waiting.back());
    CMessage& message = *held;
    waiting.pop_back();
    const std::shared_ptr<CMessages> parts = message.Parts();
    std::int64_t position = message.body_offset();
    for (std::int64_t i = 0; i < parts->Count(); ++i) {
      const std::shared_ptr<CMessage> held_part = parts->Item(i);
      CMessage& part = *held_part;
      require(i == 0 ? part.StartPosition() >= position : part.StartPosition() == position,
              "a part begins where the one before it ends");
      require(part.EndPosition() >= part.StartPosition(), "a part does not end before it begins");
      require(part.EndPosition() <= message.EndPosition(), "a part ends within its message");
      require(part.Index() == i, "a part knows its place");
      position = part.EndPosition();
      waiting.push_back(held_part);
    }
  }
}

std::shared_ptr<CMessage> message_in(const std::shared_ptr<platform::File>& file) {
  return std::make_shared<CMessage>(nullptr, nullptr, file, mailbox::Extent{0, file->size(), 0, false});
}

}  // namespace

void fuzz_parts(std::string_view input) {
  Choices choices(input);
  const platform::FixedClock clock({}, 0);
  const bool has_properties = choices.flip();
  const std::string mail = maybe_stretched(choices);
  const bool has_long_lines = mail.size() > choices.text().size();
  const auto file = file_of(mail);
  const auto message = message_in(file);
  const std::string tree = told_by_tree(*message);
  {
    const mime::PlainSplitting level_by_level;
    require_same(told_by_tree(*message_in(file)), tree, "one pass over the file finds the parts of every level");
  }
  // Behind lines longer than a chunk of the scan, positions run ahead.
  if (!has_long_lines) require_parts_within(*message);
  // Text and Body of an unreadable block are refused, deliberately, until something has loaded it.
  if (!has_properties || message->load_headers() == nullptr) return;
  const std::string properties = told_by_properties(*message);
  require_same(told_by_properties(*message), properties, "reading twice tells the same");
  require_same(told_by_tree(*message), tree, "reading changes nothing");
  message->Unload();
  require_same(told_by_properties(*message), properties, "what was dropped is read again");
}

}  // namespace vellobar::fuzz
