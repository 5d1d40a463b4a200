#include "fuzz/watchful_client.h"

#include "attachments/attachments.h"
#include "fuzz/reachable.h"
#include "fuzz/scratch.h"
#include "headers/headers.h"
#include "mailbox/message.h"
#include "mailbox/messages.h"
#include "platform/code_page.h"

namespace vellobar::fuzz {

WatchfulClient::Message WatchfulClient::top(Choices& choices) {
  constexpr std::size_t kWays = 5;
  const std::size_t way = choices.below(kWays);
  if (way < 2 && !messages_.all().empty()) return messages_.any(choices);
  if (way == 2 && !collections_.all().empty()) return choices.item_of(*collections_.any(choices));
  const CVellobar& control = choices.below(8) == 7 ? other_ : control_;
  return choices.item_of(*control.Messages());
}

WatchfulClient::Message WatchfulClient::message(Choices& choices) {
  constexpr std::size_t kDepths[] = {0, 0, 1, 1, 2, 3, 7, 40};
  Message chosen = top(choices);
  std::size_t depth = choices.among(kDepths);
  if (depth == 0) return chosen;
  for (const std::size_t child = choices.below(4); depth > 0; --depth) {
    const std::shared_ptr<CMessages> parts = chosen->Parts();
    if (parts->Count() == 0) break;
    chosen = parts->Item(static_cast<std::int64_t>(child) % parts->Count());
  }
  return chosen;
}

WatchfulClient::Message WatchfulClient::message_to_change(Choices& choices) {
  Message chosen = message(choices);
  find_attachments_above(chosen.get());
  return chosen;
}

std::shared_ptr<CMessages> WatchfulClient::parts_to_change(Choices& choices) {
  std::shared_ptr<CMessages> chosen = parts(choices);
  find_attachments_above(chosen->parent());
  return chosen;
}

WatchfulClient::Message WatchfulClient::loaded_message(Choices& choices) {
  Message chosen = message_to_change(choices);
  chosen->Load();
  return chosen;
}

std::shared_ptr<CHeaders> WatchfulClient::headers(Choices& choices) {
  if (choices.flip() && !headers_.all().empty()) return headers_.any(choices);
  return loaded_message(choices)->Headers();
}

std::shared_ptr<CMessages> WatchfulClient::parts(Choices& choices) {
  if (choices.flip() && !collections_.all().empty()) return collections_.any(choices);
  return message(choices)->Parts();
}

std::shared_ptr<CAttachment> WatchfulClient::attachment(Choices& choices) {
  const std::size_t way = choices.below(3);
  if (way == 0 && !single_attachments_.all().empty()) return single_attachments_.any(choices);
  const bool is_held = way == 1 && !attachments_.all().empty();
  const auto all = is_held ? attachments_.any(choices) : message(choices)->Attachments();
  return choices.item_of(*all);
}

void WatchfulClient::find_attachments_above(CMessage* message) const {
  if (!reads_attachments_) return;
  // What is between a mailbox and the message may have been let go; what is in no mailbox has its way up.
  const Reachable reachable({control_.Messages(), other_.Messages()});
  for (const Message& each : reachable.messages()) each->Attachments()->Count();
  while (message != nullptr) {
    message->Attachments()->Count();
    const CMessages* const collection = message->collection();
    message = collection != nullptr ? collection->parent() : nullptr;
  }
}

std::u16string WatchfulClient::piece(Choices& choices) const { return platform::widen(0, choices.piece_of(content_)); }

std::u16string WatchfulClient::piece_in_file(Choices& choices) {
  const std::string path = in_scratch("files/" + std::to_string(files_++));
  tests::write_file(path, platform::narrow(0, piece(choices)));
  return tests::wide(path);
}

}  // namespace vellobar::fuzz
