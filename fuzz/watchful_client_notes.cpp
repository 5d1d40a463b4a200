#include "fuzz/watchful_client.h"

#include <any>

#include "attachments/attachment.h"
#include "attachments/attachments.h"
#include "errors/error.h"
#include "fuzz/mailbox_laws.h"
#include "fuzz/reading.h"
#include "fuzz/scratch.h"
#include "headers/header.h"
#include "headers/headers.h"
#include "mailbox/message.h"
#include "mailbox/messages.h"
#include "platform/code_page.h"

namespace vellobar::fuzz {

std::string WatchfulClient::shown(std::u16string_view text) { return platform::narrow(platform::kUtf8CodePage, text); }

void WatchfulClient::note(const char* what, const std::function<std::string()>& call) {
  seen_ += std::string("  ") + what + ": ";
  try {
    seen_ += with_plain_boundaries(call());
  } catch (const Error& error) {
    seen_ += "error " + std::to_string(static_cast<int>(error.number())) + " status " +
             std::to_string(static_cast<int>(error.status()));
  }
  seen_ += '\n';
}

void WatchfulClient::note_file(const CVellobar& control) {
  note("file", [&] { return tests::read_file(tests::plain(control.Filename())); });
}

void WatchfulClient::note_message(CMessage& message) {
  note("tree", [&] { return told_by_tree(message); });
  note("texts", [&] { return has_made_boundary(shown(message.Body())) ? "not alike" : told_by_texts(message); });
  if (reads_attachments_) note("attachments", [&] { return told_by_attachments(message); });
  note("index", [&] { return std::to_string(message.Index()); });
  note("changed", [&] { return std::to_string(message.Changed()); });
  note_tag(message);
}

void WatchfulClient::note_tag(CMessage& message) {
  note("tag", [&] {
    const std::any& tag = message.Tag();
    return tag.has_value() ? std::to_string(std::any_cast<int>(tag)) : "none";
  });
}

void WatchfulClient::note_attachment(const CAttachment& attachment) {
  const CodedRange& range = attachment.range();
  note("attachment", [&] {
    return shown(attachment.Name()) + ' ' + shown(attachment.Type()) + ' ' + std::to_string(attachment.Encoding()) +
           ' ' + std::to_string(attachment.Size()) + " from " + std::to_string(range.start) + " to " +
           std::to_string(range.end);
  });
  note("its part", [&] { return messages_.place_of(attachment.Part()); });
}

void WatchfulClient::note_all_held() {
  for (const Message& message : messages_.all()) note_message(*message);
  for (const auto& parts : collections_.all()) {
    note("parts", [&] { return std::to_string(parts->Count()) + ' ' + shown(parts->separator()); });
    for (const Message& part : parts) note_message(*part);
  }
  for (const auto& headers : headers_.all()) {
    note("headers", [&] { return shown(headers->ToString()); });
  }
  for (const auto& header : single_headers_.all()) {
    note("header", [&] { return shown(header->ToString()); });
  }
  for (const auto& attachments : attachments_.all()) {
    note("attachments", [&] { return std::to_string(attachments->Count()); });
    note("each", [&] {
      for (const auto& attachment : attachments) note_attachment(*attachment);
      return "seen";
    });
  }
  for (const auto& attachment : single_attachments_.all()) note_attachment(*attachment);
}

}  // namespace vellobar::fuzz
