#include "fuzz/watchful_client.h"

#include <algorithm>
#include <any>
#include <filesystem>
#include <utility>

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
#include "platform/clock.h"
#include "platform/code_page.h"
#include "platform/file.h"

namespace vellobar::fuzz {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kMailbox = "box/test.mbox";
constexpr std::string_view kOther = "box/other.mbox";

constexpr std::u16string_view kNames[] = {u"Subject", u"X-New", u"content-type", u"From", u"Content-Disposition"};
constexpr std::u16string_view kValues[] = {u"",
                                           u"yes",
                                           u"a\r\n\tb",
                                           u"multipart/mixed; boundary=\"new\"",
                                           u"attachment; filename=put.txt",
                                           u"text/html",
                                           u"multipart/mixed; boundary=\"level10\""};

std::string in_scratch(std::string_view name) { return scratch_folder().path(name); }

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

std::string told_by_tag(CMessage& message) {
  return message.Tag().has_value() ? std::to_string(std::any_cast<int>(message.Tag())) : "none";
}

/// Decoded, a boundary that holds an address of memory cannot be told from other text.
bool has_made_boundary(std::string_view bytes) { return bytes.find("----=_NextPart_") != bytes.npos; }
bool has_made_boundary(CMessage& message) {
  return has_made_boundary(platform::narrow(platform::kUtf8CodePage, message.Body()));
}
bool has_made_boundary(const CodedRange& range) {
  if (!range.file) return false;
  std::string bytes(static_cast<std::size_t>(std::max<std::int64_t>(range.end - range.start, 0)), '\0');
  bytes.resize(range.file->read(range.start, bytes.data(), bytes.size()));
  return has_made_boundary(bytes);
}

std::string shown(std::u16string_view text) { return platform::narrow(platform::kUtf8CodePage, text); }
std::string shown(std::int64_t number) { return std::to_string(number); }

}  // namespace

WatchfulClient::WatchfulClient(std::string_view content, bool reads_attachments)
    : content_(content), reads_attachments_(reads_attachments), temporary_(in_scratch("temporary/")) {
  for (const char* folder : {"box", "temporary", "files"}) make_empty_scratch_folder(folder);
  tests::write_file(in_scratch(kMailbox), content_);
  tests::write_file(in_scratch(kOther), "From other\nSubject: other\n\ntext of the other\n");
  control_.SetFilename(tests::wide(in_scratch(kMailbox)));
  control_.Lock();
  other_.SetFilename(tests::wide(in_scratch(kOther)));
  other_.Lock();
}

WatchfulClient::~WatchfulClient() = default;

template <typename Call>
void WatchfulClient::note(const char* what, Call call) {
  seen_ += std::string("  ") + what + ": ";
  try {
    seen_ += with_plain_boundaries(call());
  } catch (const Error& error) {
    seen_ += "error " + shown(static_cast<int>(error.number())) + " status " + shown(static_cast<int>(error.status()));
  }
  seen_ += '\n';
}

void WatchfulClient::step(Choices& choices) {
  const std::vector<Step>& all = steps();
  const Step chosen = all[choices.below(all.size())];
  // Boundaries that are made hold the ticks: no two of them are the same.
  const platform::FixedClock clock({}, ticks_++);
  seen_ += std::string(chosen.name) + '\n';
  note("done", [&] {
    (this->*chosen.take)(choices);
    return std::string("yes");
  });
  // Each of these may have closed a file of a message's own.
  using Client = WatchfulClient;
  for (const auto closes : {&Client::put_text, &Client::put_body, &Client::peek, &Client::unload}) {
    if (chosen.take == closes) let_go_of_strays();
  }
  seen_ += "  changed " + shown(std::int64_t{control_.Changed()}) + " count " + shown(control_.Messages()->Count()) +
           " and " + shown(std::int64_t{other_.Changed()}) + " count " + shown(other_.Messages()->Count()) + '\n';
}

void WatchfulClient::finish() {
  const platform::FixedClock clock({}, ticks_++);
  let_go_of_strays();
  for (CVellobar* control : {&control_, &other_}) {
    note("updated", [&] {
      control->Update();
      return std::string("yes");
    });
    note_file(*control);
  }
  note_all_held();
  for (const Message& message : control_.Messages()) note_message(*message);
}

// ---- What is seen ----

void WatchfulClient::note_file(const CVellobar& control) {
  note("file", [&] { return tests::read_file(tests::plain(control.Filename())); });
}

void WatchfulClient::note_message(CMessage& message) {
  note("tree", [&] { return told_by_tree(message); });
  note("texts", [&] { return has_made_boundary(message) ? "not alike" : told_by_texts(message); });
  if (reads_attachments_) note("attachments", [&] { return told_by_attachments(message); });
  note("index", [&] { return shown(message.Index()); });
  note("changed", [&] { return shown(std::int64_t{message.Changed()}); });
  note("tag", [&] { return told_by_tag(message); });
}

void WatchfulClient::note_attachment(const CAttachment& attachment) {
  const CodedRange& range = attachment.range();
  note("attachment", [&] {
    return shown(attachment.Name()) + ' ' + shown(attachment.Type()) + ' ' + shown(attachment.Encoding()) + ' ' +
           shown(attachment.Size()) + " from " + shown(range.start) + " to " + shown(range.end);
  });
  note("its part", [&] { return messages_.place_of(attachment.Part()); });
}

void WatchfulClient::note_all_held() {
  for (const Message& message : messages_.all()) note_message(*message);
  for (const auto& parts : collections_.all()) {
    note("parts", [&] { return shown(parts->Count()) + ' ' + shown(parts->separator()); });
    for (const Message& part : parts) note_message(*part);
  }
  for (const auto& headers : headers_.all()) {
    note("headers", [&] { return shown(headers->ToString()); });
  }
  for (const auto& header : single_headers_.all()) {
    note("header", [&] { return shown(header->ToString()); });
  }
  for (const auto& attachments : attachments_.all()) {
    note("attachments", [&] { return shown(attachments->Count()); });
    note("each", [&] {
      for (const auto& attachment : attachments) note_attachment(*attachment);
      return std::string("seen");
    });
  }
  for (const auto& attachment : single_attachments_.all()) note_attachment(*attachment);
}

// ---- What is chosen ----

WatchfulClient::Message WatchfulClient::top(Choices& choices) {
  constexpr std::size_t kWays = 5;
  const std::size_t way = choices.below(kWays);
  if (way < 2 && !messages_.all().empty()) return messages_.any(choices);
  if (way == 2 && !collections_.all().empty()) {
    const auto parts = collections_.any(choices);
    return parts->Item(static_cast<std::int64_t>(choices.below(256)) % std::max<std::int64_t>(parts->Count(), 1));
  }
  const auto& messages = choices.below(8) == 7 ? other_.Messages() : control_.Messages();
  return messages->Item(static_cast<std::int64_t>(choices.below(256)) % std::max<std::int64_t>(messages->Count(), 1));
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

/// Everything that can be reached from the mailboxes. It is held for the while, so that no address is used again.
class WatchfulClient::Reachable {
 public:
  explicit Reachable(const WatchfulClient& client) {
    for (const auto& messages : {client.control_.Messages(), client.other_.Messages()})
      collections_.push_back(messages);
    for (std::size_t i = 0; i < collections_.size(); ++i) {
      for (const Message& part : std::shared_ptr(collections_[i])) {
        messages_.push_back(part);
        collections_.push_back(part->Parts());
      }
    }
  }
  bool has(const CMessage& message) const { return has(messages_, message); }
  bool has(const CMessages& parts) const { return has(collections_, parts); }
  const std::vector<Message>& messages() const { return messages_; }

 private:
  template <typename Object>
  static bool has(const std::vector<std::shared_ptr<Object>>& all, const Object& wanted) {
    return std::ranges::find(all, &wanted, [](const auto& object) { return object.get(); }) != all.end();
  }

  std::vector<Message> messages_;
  std::vector<std::shared_ptr<CMessages>> collections_;
};

void WatchfulClient::find_attachments_above(CMessage* message) const {
  if (!reads_attachments_) return;
  // What is between a mailbox and the message may have been let go; what is in no mailbox has its way up.
  const Reachable reachable(*this);
  for (const Message& each : reachable.messages()) each->Attachments()->Count();
  while (message != nullptr) {
    message->Attachments()->Count();
    const CMessages* const collection = message->collection();
    message = collection != nullptr ? collection->parent() : nullptr;
  }
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
  return all->Item(static_cast<std::int64_t>(choices.below(256)) % std::max<std::int64_t>(all->Count(), 1));
}

std::u16string WatchfulClient::piece(Choices& choices) const {
  const std::size_t from = choices.below(64) * content_.size() / 64;
  return platform::widen(0, std::string_view(content_).substr(from, choices.below(256)));
}

std::u16string WatchfulClient::piece_in_file(Choices& choices) {
  const std::string path = in_scratch("files/" + std::to_string(files_++));
  tests::write_file(path, platform::narrow(0, piece(choices)));
  return tests::wide(path);
}

// ---- What is done ----

const std::vector<WatchfulClient::Step>& WatchfulClient::steps() {
  using Client = WatchfulClient;
  static const std::vector<Step> all = {{"glance", &Client::glance},
                                        {"glance", &Client::glance},
                                        {"read tree", &Client::read_tree},
                                        {"read headers of all", &Client::read_headers_of_all},
                                        {"read headers of all", &Client::read_headers_of_all},
                                        {"read parts of all", &Client::read_parts_of_all},
                                        {"read parts of all", &Client::read_parts_of_all},
                                        {"hold message", &Client::hold_message},
                                        {"hold message", &Client::hold_message},
                                        {"hold parts", &Client::hold_parts},
                                        {"hold headers", &Client::hold_headers},
                                        {"hold header", &Client::hold_header},
                                        {"hold attachments", &Client::hold_attachments},
                                        {"hold attachment", &Client::hold_attachment},
                                        {"begin walk", &Client::begin_walk},
                                        {"walk on", &Client::walk_on},
                                        {"read held", &Client::read_held},
                                        {"let go", &Client::let_go},
                                        {"let go", &Client::let_go},
                                        {"let go", &Client::let_go},
                                        {"add header", &Client::add_header},
                                        {"remove header", &Client::remove_header},
                                        {"put header", &Client::put_header},
                                        {"put named header", &Client::put_named_header},
                                        {"put text", &Client::put_text},
                                        {"put body", &Client::put_body},
                                        {"put mail info", &Client::put_mail_info},
                                        {"put tag", &Client::put_tag},
                                        {"add message", &Client::add_message},
                                        {"add object", &Client::add_object},
                                        {"remove message", &Client::remove_message},
                                        {"add part", &Client::add_part},
                                        {"add part object", &Client::add_part_object},
                                        {"remove part", &Client::remove_part},
                                        {"remove all", &Client::remove_all},
                                        {"attach", &Client::attach},
                                        {"change attachment", &Client::change_attachment},
                                        {"save attachment", &Client::save_attachment},
                                        {"scan text", &Client::scan_text},
                                        {"load", &Client::load},
                                        {"unload", &Client::unload},
                                        {"peek", &Client::peek},
                                        {"save", &Client::save},
                                        {"deliver", &Client::deliver},
                                        {"update", &Client::update},
                                        {"update other", &Client::update_other},
                                        {"lock again", &Client::lock_again}};
  return all;
}

void WatchfulClient::glance(Choices& choices) {
  const Message chosen = message(choices);
  note("which", [&] { return messages_.place_of(chosen); });
  note("tag", [&] { return told_by_tag(*chosen); });
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
      return note("parts", [&] { return shown(chosen->Parts()->Count()); });
    case 5:
      if (!reads_attachments_) return;
      return note("attachments", [&] { return shown(chosen->Attachments()->Count()); });
    case 6:
      return note("plain text", [&] { return shown(chosen->PlainText()); });
    case 7:
      return note("headers", [&] { return shown(chosen->Headers()->ToString()); });
    case 8:
      return note("numbers", [&] {
        return shown(chosen->StartPosition()) + ' ' + shown(chosen->Bytes()) + ' ' + shown(chosen->Lines()) + ' ' +
               shown(chosen->Size());
      });
    default:
      return note("index", [&] { return shown(chosen->Index()); });
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

void WatchfulClient::save_attachment(Choices& choices) {
  if (!reads_attachments_) return;
  const auto chosen = attachment(choices);
  note_attachment(*chosen);
  const std::string path = in_scratch("files/attachment");
  chosen->Save(tests::wide(path));
  note("saved", [&] { return has_made_boundary(chosen->range()) ? "not alike" : tests::read_file(path); });
}

void WatchfulClient::scan_text(Choices& choices) {
  if (!reads_attachments_) return;
  const auto chosen = message_to_change(choices)->Attachments();
  note("before", [&] { return shown(std::int64_t{chosen->ScanText()}); });
  chosen->SetScanText(choices.flip());
}

void WatchfulClient::load(Choices& choices) { message(choices)->Load(); }

void WatchfulClient::unload(Choices& choices) { message_to_change(choices)->Unload(); }

void WatchfulClient::peek(Choices& choices) {
  const Message chosen = message_to_change(choices);
  chosen->Peek(piece_in_file(choices));
}

void WatchfulClient::let_go_of_strays() {
  const Reachable reachable(*this);
  messages_.let_go_if([&](CMessage& message) { return !reachable.has(message); });
  collections_.let_go_if([&](CMessages& parts) { return !reachable.has(parts); });
  walks_.let_go_if([&](Walk& walk) { return walk.of.lock() != control_.Messages(); });
}

void WatchfulClient::save(Choices& choices) {
  const Message chosen = message(choices);
  const std::string path = in_scratch("files/saved");
  chosen->Save(tests::wide(path));
  note("saved", [&] { return tests::read_file(path); });
}

void WatchfulClient::deliver(Choices&) {
  tests::append_to_file(in_scratch(kMailbox), "From mailer\nSubject: delivered\n\nnew mail\n");
}

void WatchfulClient::update(Choices&) {
  let_go_of_strays();
  control_.Update();
  note_file(control_);
}

void WatchfulClient::update_other(Choices&) {
  let_go_of_strays();
  other_.Update();
  note_file(other_);
}

/// What messages of a closed mailbox say depends on what was read of them, so none of them is held.
void WatchfulClient::lock_again(Choices&) {
  messages_.clear();
  collections_.clear();
  headers_.clear();
  single_headers_.clear();
  attachments_.clear();
  single_attachments_.clear();
  walks_.clear();
  control_.Unlock();
  control_.Lock();
}

}  // namespace vellobar::fuzz
