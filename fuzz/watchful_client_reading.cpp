#include "fuzz/watchful_client.h"

#include <algorithm>
#include <utility>

#include "attachments/attachment.h"
#include "attachments/attachments.h"
#include "fuzz/mailbox_laws.h"
#include "fuzz/scratch.h"
#include "headers/headers.h"
#include "mailbox/message.h"
#include "mailbox/messages.h"
#include "platform/file.h"

namespace vellobar::fuzz {

namespace {

std::string bytes_in(const CodedRange& range) {
  if (!range.file) return {};
  std::string bytes(static_cast<std::size_t>(std::max<std::int64_t>(range.end - range.start, 0)), '\0');
  bytes.resize(range.file->read(range.start, bytes.data(), bytes.size()));
  return bytes;
}

}  // namespace

void WatchfulClient::glance(Choices& choices) {
  const Message chosen = message(choices);
  note("which", [&] { return messages_.place_of(chosen); });
  note_tag(*chosen);
  switch (choices.below(10)) {
    case 0:
      return note("subject", [&] { return shown(chosen->Subject()); });
    case 1:
      return note("mail info", [&] { return shown(chosen->MailInfo()); });
    case 2:
      return note("text", [&] { return shown(chosen->Text()); });
    case 3:
      return note("body", [&] { return shown(chosen->Body()); });
    case 4:
      return note("parts", [&] { return std::to_string(chosen->Parts()->Count()); });
    case 5:
      if (!reads_attachments_) return;
      return note("attachments", [&] { return std::to_string(chosen->Attachments()->Count()); });
    case 6:
      return note("plain text", [&] { return shown(chosen->PlainText()); });
    case 7:
      return note("headers", [&] { return shown(chosen->Headers()->ToString()); });
    case 8:
      return note("numbers", [&] {
        return std::to_string(chosen->StartPosition()) + ' ' + std::to_string(chosen->Bytes()) + ' ' +
               std::to_string(chosen->Lines()) + ' ' + std::to_string(chosen->Size());
      });
    default:
      return note("index", [&] { return std::to_string(chosen->Index()); });
  }
}

void WatchfulClient::read_tree(Choices& choices) { note_message(*message(choices)); }

void WatchfulClient::read_headers_of_all(Choices&) {
  for (const Message& message : control_.Messages()) note("subject", [&] { return shown(message->Subject()); });
}

void WatchfulClient::read_parts_of_all(Choices&) {
  // As a client that holds the collections on its way alone.
  std::vector<std::pair<std::shared_ptr<CMessages>, std::int64_t>> way{{control_.Messages(), 0}};
  while (!way.empty()) {
    const std::shared_ptr<CMessages> parts = way.back().first;
    const std::int64_t position = way.back().second++;
    if (position >= parts->Count()) {
      way.pop_back();
      continue;
    }
    const Message part = parts->Item(position);
    note("subject", [&] { return shown(part->Subject()) + ' ' + messages_.place_of(part); });
    way.push_back({part->Parts(), 0});
  }
}

void WatchfulClient::begin_walk(Choices& choices) {
  const std::shared_ptr<CMessages> collection = choices.flip() ? control_.Messages() : parts(choices);
  walks_.hold(std::make_shared<Walk>(Walk{collection, collection->snapshot(), 0}));
}

void WatchfulClient::walk_on(Choices& choices) {
  const std::shared_ptr<Walk> walk = walks_.any(choices);
  if (!walk || walk->next >= walk->items->size()) return;
  const Message message = (*walk->items)[walk->next++];
  note("which", [&] { return messages_.place_of(message); });
  note_message(*message);
  if (choices.flip()) messages_.hold(message);
}

void WatchfulClient::read_held(Choices&) { note_all_held(); }

void WatchfulClient::load(Choices& choices) { message(choices)->Load(); }

void WatchfulClient::save(Choices& choices) {
  const Message chosen = message(choices);
  const std::string path = in_scratch("files/saved");
  chosen->Save(tests::wide(path));
  note("saved", [&] { return tests::read_file(path); });
}

void WatchfulClient::save_attachment(Choices& choices) {
  if (!reads_attachments_) return;
  const auto chosen = attachment(choices);
  note_attachment(*chosen);
  const std::string path = in_scratch("files/attachment");
  chosen->Save(tests::wide(path));
  note("saved", [&] { return has_made_boundary(bytes_in(chosen->range())) ? "not alike" : tests::read_file(path); });
}

}  // namespace vellobar::fuzz
