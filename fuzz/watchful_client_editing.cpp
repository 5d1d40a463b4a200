#include "fuzz/watchful_client.h"

#include <filesystem>
#include <utility>

#include "attachments/attachment.h"
#include "attachments/attachments.h"
#include "fuzz/mailbox_laws.h"
#include "fuzz/scratch.h"
#include "headers/header.h"
#include "headers/headers.h"
#include "mailbox/message.h"
#include "mailbox/messages.h"

namespace vellobar::fuzz {

namespace fs = std::filesystem;

namespace {

constexpr std::u16string_view kNames[] = {u"Subject", u"X-New", u"content-type", u"From", u"Content-Disposition"};
constexpr std::u16string_view kValues[] = {u"",
                                           u"yes",
                                           u"a\r\n\tb",
                                           u"multipart/mixed; boundary=\"new\"",
                                           u"attachment; filename=put.txt",
                                           u"text/html",
                                           u"multipart/mixed; boundary=\"level10\""};

/// While it lives a folder is not where it belongs.
class WithoutFolder {
 public:
  explicit WithoutFolder(std::string path) : path_(std::move(path)) { fs::rename(path_, path_ + "_away"); }
  ~WithoutFolder() { fs::rename(path_ + "_away", path_); }
  WithoutFolder(const WithoutFolder&) = delete;
  WithoutFolder& operator=(const WithoutFolder&) = delete;

 private:
  std::string path_;
};

}  // namespace

void WatchfulClient::add_header(Choices& choices) {
  const auto all = headers(choices);
  const std::u16string_view name = choices.among(kNames);
  const auto added = all->Add(name, choices.among(kValues));
  if (choices.flip()) single_headers_.hold(added);
}

void WatchfulClient::remove_header(Choices& choices) {
  const auto all = headers(choices);
  if (choices.flip() && !single_headers_.all().empty()) return all->Remove(*single_headers_.any(choices));
  all->Remove(static_cast<std::int64_t>(choices.below(5)));
}

void WatchfulClient::put_header(Choices& choices) {
  const bool is_held = choices.flip() && !single_headers_.all().empty();
  const auto header =
      is_held ? single_headers_.any(choices) : headers(choices)->Item(static_cast<std::int64_t>(choices.below(5)));
  if (choices.flip()) {
    header->SetName(choices.among(kNames));
  } else {
    header->SetValue(choices.among(kValues));
  }
}

void WatchfulClient::put_named_header(Choices& choices) {
  const Message chosen = loaded_message(choices);
  using Put = void (CMessage::*)(std::u16string_view);
  static constexpr Put kPuts[] = {&CMessage::SetSubject, &CMessage::SetTo, &CMessage::SetContentType};
  const Put put = choices.among(kPuts);
  (*chosen.*put)(choices.among(kValues));
}

void WatchfulClient::put_text(Choices& choices) {
  const Message chosen = message_to_change(choices);
  const std::u16string text = piece(choices);
  if (choices.below(4) != 3) return chosen->SetText(text);
  // A text that no file can be made for stays in memory.
  const WithoutFolder without(in_scratch("temporary"));
  chosen->SetText(text);
}

void WatchfulClient::put_body(Choices& choices) {
  const Message chosen = message_to_change(choices);
  chosen->SetBody(piece(choices));
}

void WatchfulClient::put_mail_info(Choices& choices) {
  static constexpr std::u16string_view kLines[] = {u"From new", u"From other", u"", u"from nobody"};
  const Message chosen = loaded_message(choices);
  chosen->SetMailInfo(choices.among(kLines));
}

void WatchfulClient::put_tag(Choices& choices) {
  const Message chosen = message(choices);
  chosen->Tag() = static_cast<int>(choices.below(256));
}

void WatchfulClient::add_message(Choices& choices) {
  const Message added = choices.flip() ? control_.Messages()->Add() : control_.Messages()->Add(piece_in_file(choices));
  if (choices.flip()) messages_.hold(added);
}

void WatchfulClient::add_object(Choices& choices) {
  const Message chosen = message(choices);
  (choices.flip() ? control_ : other_).Messages()->Add(chosen);
}

void WatchfulClient::remove_message(Choices& choices) {
  const Message chosen = top(choices);
  if (control_.Messages()->Count() > 1) control_.Messages()->Remove(*chosen);
}

void WatchfulClient::add_part(Choices& choices) {
  const auto chosen = parts_to_change(choices);
  const Message added = choices.flip() ? chosen->Add() : chosen->Add(piece_in_file(choices));
  if (choices.flip()) messages_.hold(added);
}

void WatchfulClient::add_part_object(Choices& choices) {
  constexpr std::size_t kMostInTree = 150;
  const Message chosen = message_to_change(choices);
  const Message added = message_to_change(choices);
  if (tree_size(*chosen, kMostInTree) + tree_size(*added, kMostInTree) < kMostInTree) chosen->Parts()->Add(added);
}

void WatchfulClient::remove_part(Choices& choices) {
  const auto chosen = parts_to_change(choices);
  if (choices.flip() && !messages_.all().empty()) return chosen->Remove(*messages_.any(choices));
  chosen->Remove(*chosen->Item(static_cast<std::int64_t>(choices.below(3))));
}

void WatchfulClient::remove_all(Choices& choices) {
  switch (choices.below(32)) {
    case 31:
      return control_.Messages()->RemoveAll();
    case 1:
      return headers(choices)->RemoveAll();
    case 2:
      return parts_to_change(choices)->RemoveAll();
    default:
      return;
  }
}

void WatchfulClient::attach(Choices& choices) {
  const Message chosen = message_to_change(choices);
  const std::u16string file = piece_in_file(choices);
  const Message added = chosen->Attachments()->Add(file, static_cast<int>(choices.below(6)));
  if (choices.flip()) messages_.hold(added);
}

void WatchfulClient::change_attachment(Choices& choices) {
  if (!reads_attachments_) return;
  const auto chosen = attachment(choices);
  switch (choices.below(3)) {
    case 0:
      return chosen->SetName(u"put.bin");
    case 1:
      return chosen->SetType(u"put/type");
    default:
      return chosen->SetEncoding(static_cast<int>(choices.below(6)));
  }
}

void WatchfulClient::scan_text(Choices& choices) {
  if (!reads_attachments_) return;
  const auto chosen = message_to_change(choices)->Attachments();
  note("before", [&] { return std::to_string(chosen->ScanText()); });
  chosen->SetScanText(choices.flip());
}

void WatchfulClient::unload(Choices& choices) { message_to_change(choices)->Unload(); }

void WatchfulClient::peek(Choices& choices) {
  const Message chosen = message_to_change(choices);
  chosen->Peek(piece_in_file(choices));
}

}  // namespace vellobar::fuzz
