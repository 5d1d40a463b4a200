#include "fuzz/watchful_client.h"

#include "fuzz/reachable.h"
#include "headers/headers.h"
#include "mailbox/message.h"

namespace vellobar::fuzz {

void WatchfulClient::hold_message(Choices& choices) {
  const Message chosen = message(choices);
  note("which", [&] { return messages_.place_of(chosen); });
  messages_.hold(chosen);
}

void WatchfulClient::hold_parts(Choices& choices) {
  const auto parts = message(choices)->Parts();
  note("which", [&] { return collections_.place_of(parts); });
  collections_.hold(parts);
}

void WatchfulClient::hold_headers(Choices& choices) {
  const auto headers = loaded_message(choices)->Headers();
  note("which", [&] { return headers_.place_of(headers); });
  headers_.hold(headers);
}

void WatchfulClient::hold_header(Choices& choices) {
  const auto all = headers(choices);
  const auto header = all->Item(static_cast<std::int64_t>(choices.below(5)));
  note("which", [&] { return single_headers_.place_of(header); });
  single_headers_.hold(header);
}

void WatchfulClient::hold_attachments(Choices& choices) {
  if (!reads_attachments_) return;
  const auto attachments = message(choices)->Attachments();
  note("which", [&] { return attachments_.place_of(attachments); });
  attachments_.hold(attachments);
}

void WatchfulClient::hold_attachment(Choices& choices) {
  if (!reads_attachments_) return;
  const auto chosen = attachment(choices);
  note("which", [&] { return single_attachments_.place_of(chosen); });
  single_attachments_.hold(chosen);
}

void WatchfulClient::let_go(Choices& choices) {
  switch (choices.below(8)) {
    case 0:
      return messages_.let_go(choices);
    case 1:
      return collections_.let_go(choices);
    case 2:
      return headers_.let_go(choices);
    case 3:
      return single_headers_.let_go(choices);
    case 4:
      return attachments_.let_go(choices);
    case 5:
      return single_attachments_.let_go(choices);
    case 6:
      return walks_.let_go(choices);
    default:
      return messages_.clear();
  }
}

void WatchfulClient::let_go_of_strays() {
  const Reachable reachable({control_.Messages(), other_.Messages()});
  messages_.let_go_if([&](CMessage& message) { return !reachable.has(message); });
  collections_.let_go_if([&](CMessages& parts) { return !reachable.has(parts); });
  walks_.let_go_if([&](Walk& walk) { return walk.of.lock() != control_.Messages(); });
}

}  // namespace vellobar::fuzz
