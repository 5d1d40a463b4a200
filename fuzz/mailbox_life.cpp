#include "fuzz/mailbox_life.h"

#include <filesystem>

#include "attachments/attachments.h"
#include "fuzz/mailbox_laws.h"
#include "fuzz/reading.h"
#include "fuzz/scratch.h"
#include "fuzz/target.h"
#include "headers/header.h"
#include "headers/headers.h"
#include "mailbox/message.h"
#include "mailbox/messages.h"
#include "platform/code_page.h"

namespace vellobar::fuzz {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kMostHeld = 8;

std::size_t count_files(const std::string& folder) {
  return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

}  // namespace

MailboxLife::MailboxLife(std::string_view content, Client client)
    : content_(content), client_(client), path_(in_scratch("box/test.mbox")), temporary_(in_scratch("temporary/")) {
  for (const char* folder : {"box", "temporary", "files"}) make_empty_scratch_folder(folder);
  tests::write_file(path_, content_);
  control_.SetFilename(tests::wide(path_));
  control_.Lock();
  locked();
}

MailboxLife::~MailboxLife() { platform::set_process_code_page(0); }

std::string MailboxLife::file() const { return tests::read_file(path_); }

void MailboxLife::step(Choices& choices) {
  const std::vector<Step>& all = client_ == Client::is_careless ? careless_steps() : steps();
  const Step chosen = all[choices.below(all.size())];
  const bool changed_before = control_.Changed();
  succeeds([&] { (this->*chosen)(choices); });
  if (client_ == Client::is_careless) {
    // A code page that cannot name the file keeps it from being locked afresh.
    platform::set_process_code_page(control_.Locked() ? platform::process_code_page() : 0);
    control_.Lock();
  }
  require(control_.Locked(), "a mailbox stays locked");
  if (chosen == &MailboxLife::read || chosen == &MailboxLife::load || chosen == &MailboxLife::save) {
    require(control_.Changed() == changed_before || control_.AutoUpdate(), "reading changes no mailbox");
  }
  if (client_ == Client::reads_everything) require_reading_changes_nothing();
}

void MailboxLife::locked() {
  delivered_.clear();
  if (client_ != Client::reads_everything) return;
  const std::string bytes = file();
  require_as_in_file(*control_.Messages(), bytes);
  require_same(file(), bytes, "reading changes no byte of the file");
  require(!control_.Changed(), "reading changes no mailbox");
}

void MailboxLife::require_reading_changes_nothing() {
  const std::string before = file();
  const bool changed_before = control_.Changed();
  const std::string expected = expected_mailbox(*control_.Messages()).bytes;
  require_same(expected_mailbox(*control_.Messages()).bytes, expected, "reading changes nothing that is written");
  require_same(file(), before, "reading changes no byte of the file");
  require(control_.Changed() == changed_before, "reading changes no mailbox");
}

void MailboxLife::update() {
  if (client_ == Client::is_careless) {
    update_carelessly();
  } else if (client_ == Client::reads_everything) {
    require_foretold_update();
  } else {
    control_.Update();
  }
  if (client_ == Client::is_careless) return;
  held_.clear();
  require(!control_.Changed(), "an update leaves nothing changed");
  require(count_files(in_scratch("box")) == 1, "an update leaves no file beside the mailbox");
  locked();
}

void MailboxLife::require_foretold_update() {
  const ExpectedMailbox expected = expected_mailbox(*control_.Messages());
  std::vector<std::string> before;
  for (const auto& message : held_) before.push_back(told_by_tree(*message));
  control_.Update();
  require_same(file(), expected.bytes + delivered_, "an update writes what its messages say");
  for (std::size_t i = 0; i < held_.size(); ++i) {
    require_same(told_by_tree(*held_[i]), before[i], "what a client holds reads after an update as before");
  }
  if (!expected.is_read_as_written || !delivered_.empty()) return;
  require(control_.Messages()->Count() == static_cast<std::int64_t>(expected.messages.size()),
          "as many messages are read as were written");
}

void MailboxLife::update_carelessly() {
  const std::string before = file();
  if (succeeds([&] { control_.Update(); })) {
    require(count_files(in_scratch("box")) == 1, "an update leaves no file beside the mailbox");
    return;
  }
  require_same(file(), before, "an update that is refused leaves the file as it was");
  require(control_.Locked(), "an update that is refused leaves the mailbox locked");
}

// ---- What a client may do ----

const std::vector<MailboxLife::Step>& MailboxLife::steps() {
  static const std::vector<Step> all = {&MailboxLife::read,
                                        &MailboxLife::add_header,
                                        &MailboxLife::remove_header,
                                        &MailboxLife::put_header,
                                        &MailboxLife::put_named_header,
                                        &MailboxLife::put_text,
                                        &MailboxLife::put_body,
                                        &MailboxLife::put_mail_info,
                                        &MailboxLife::add_message,
                                        &MailboxLife::add_file,
                                        &MailboxLife::add_object,
                                        &MailboxLife::remove_message,
                                        &MailboxLife::remove_all,
                                        &MailboxLife::add_part,
                                        &MailboxLife::add_part_object,
                                        &MailboxLife::remove_part,
                                        &MailboxLife::attach,
                                        &MailboxLife::load,
                                        &MailboxLife::unload,
                                        &MailboxLife::peek,
                                        &MailboxLife::save,
                                        &MailboxLife::hold,
                                        &MailboxLife::let_go,
                                        &MailboxLife::deliver,
                                        &MailboxLife::update_and_lock,
                                        &MailboxLife::lock_again};
  return all;
}

const std::vector<MailboxLife::Step>& MailboxLife::careless_steps() {
  static const std::vector<Step> all = [] {
    std::vector<Step> more = steps();
    more.insert(more.end(), {&MailboxLife::turn_auto_update, &MailboxLife::change_code_page, &MailboxLife::cut_file});
    return more;
  }();
  return all;
}

std::shared_ptr<CMessage> MailboxLife::message(Choices& choices) { return choices.item_of(*control_.Messages()); }

std::shared_ptr<CMessage> MailboxLife::loaded_message(Choices& choices) {
  const auto chosen = message(choices);
  chosen->Load();
  return chosen;
}

std::shared_ptr<CMessage> MailboxLife::any_message(Choices& choices) {
  if (held_.empty() || choices.flip()) return message(choices);
  return held_[choices.below(held_.size())];
}

std::u16string MailboxLife::piece(Choices& choices) { return platform::widen(0, choices.piece_of(content_)); }

std::u16string MailboxLife::piece_in_file(Choices& choices) {
  const std::string path = in_scratch("files/" + std::to_string(count_files(in_scratch("files"))));
  tests::write_file(path, platform::narrow(0, piece(choices)));
  return tests::wide(path);
}

namespace {

constexpr std::u16string_view kNames[] = {u"Subject", u"X-New", u"content-type", u"Date", u"From"};
constexpr std::u16string_view kValues[] = {u"",
                                           u"yes",
                                           u"multipart/mixed; boundary=\"new\"",
                                           u"a\r\n\tb",
                                           u"\x00E9t\x00E9 <a@b>",
                                           u"Sun, 7 Jan 2024 17:05:09 +0000",
                                           u"multipart/mixed; boundary=x"};

}  // namespace

void MailboxLife::read(Choices& choices) {
  CMessage& chosen = *message(choices);
  if (choices.flip()) told_by_tree(chosen);
  if (choices.flip()) told_by_properties(chosen);
}

void MailboxLife::add_header(Choices& choices) {
  // Arguments are put together in any order; decisions are taken in one.
  const auto headers = loaded_message(choices)->Headers();
  const std::u16string_view name = choices.among(kNames);
  headers->Add(name, choices.among(kValues));
}

void MailboxLife::remove_header(Choices& choices) {
  loaded_message(choices)->Headers()->Remove(static_cast<std::int64_t>(choices.below(5)));
}

void MailboxLife::put_header(Choices& choices) {
  const auto header = loaded_message(choices)->Headers()->Item(static_cast<std::int64_t>(choices.below(5)));
  if (choices.flip()) {
    header->SetName(choices.among(kNames));
  } else {
    header->SetValue(choices.among(kValues));
  }
}

void MailboxLife::put_named_header(Choices& choices) {
  // A block that was not read yet gets a second header of the name, deliberately.
  const auto chosen = loaded_message(choices);
  using Put = void (CMessage::*)(std::u16string_view);
  static constexpr Put kPuts[] = {&CMessage::SetSubject, &CMessage::SetTo, &CMessage::SetContentType};
  (*chosen.*choices.among(kPuts))(choices.among(kValues));
}

void MailboxLife::put_text(Choices& choices) { message(choices)->SetText(piece(choices)); }

void MailboxLife::put_body(Choices& choices) { message(choices)->SetBody(piece(choices)); }

void MailboxLife::put_mail_info(Choices& choices) {
  static constexpr std::u16string_view kLines[] = {u"From new", u"From \x00E9", u"", u"from nobody"};
  message(choices)->SetMailInfo(choices.among(kLines));
}

void MailboxLife::add_message(Choices&) { control_.Messages()->Add(); }

void MailboxLife::add_file(Choices& choices) { control_.Messages()->Add(piece_in_file(choices)); }

void MailboxLife::add_object(Choices& choices) { control_.Messages()->Add(any_message(choices)); }

void MailboxLife::remove_message(Choices& choices) { control_.Messages()->Remove(*any_message(choices)); }

void MailboxLife::remove_all(Choices& choices) {
  if (choices.below(4) == 3) control_.Messages()->RemoveAll();
}

void MailboxLife::add_part(Choices& choices) {
  const auto chosen = any_message(choices);
  if (choices.flip()) {
    chosen->Parts()->Add();
  } else {
    chosen->Parts()->Add(piece_in_file(choices));
  }
}

void MailboxLife::add_part_object(Choices& choices) {
  constexpr std::size_t kMostInTree = 60;
  const auto chosen = any_message(choices), added = any_message(choices);
  if (tree_size(*chosen, kMostInTree) + tree_size(*added, kMostInTree) < kMostInTree) chosen->Parts()->Add(added);
}

void MailboxLife::remove_part(Choices& choices) {
  const auto parts = message(choices)->Parts();
  parts->Remove(*parts->Item(static_cast<std::int64_t>(choices.below(3))));
}

void MailboxLife::attach(Choices& choices) {
  const auto chosen = any_message(choices);
  const std::u16string file = piece_in_file(choices);
  chosen->Attachments()->Add(file, static_cast<int>(choices.below(6)));
}

void MailboxLife::load(Choices& choices) { any_message(choices)->Load(); }

void MailboxLife::unload(Choices& choices) { any_message(choices)->Unload(); }

void MailboxLife::peek(Choices& choices) { message(choices)->Peek(piece_in_file(choices)); }

void MailboxLife::save(Choices& choices) {
  const auto chosen = any_message(choices);
  const std::string path = in_scratch("files/saved");
  if (!succeeds([&] { chosen->Save(tests::wide(path)); }) || client_ == Client::is_careless) return;
  require_same(tests::read_file(path), expected_bytes(*chosen), "a message is saved as it says");
}

void MailboxLife::hold(Choices& choices) {
  if (held_.size() < kMostHeld) held_.push_back(message(choices));
}

void MailboxLife::let_go(Choices& choices) {
  if (!held_.empty()) held_.erase(held_.begin() + static_cast<std::ptrdiff_t>(choices.below(held_.size())));
}

void MailboxLife::deliver(Choices&) {
  constexpr std::string_view kMail = "From mailer\nSubject: delivered\n\nnew mail\n";
  tests::append_to_file(path_, kMail);
  delivered_ += kMail;
}

void MailboxLife::update_and_lock(Choices&) { update(); }

void MailboxLife::lock_again(Choices&) {
  if (client_ != Client::is_careless) held_.clear();
  control_.Unlock();
  control_.Lock();
  // What is lost with the messages stays noted as a change.
  if (control_.Changed()) control_.Update();
  locked();
}

void MailboxLife::turn_auto_update(Choices&) { control_.SetAutoUpdate(!control_.AutoUpdate()); }

void MailboxLife::change_code_page(Choices& choices) {
  static constexpr int kCodePages[] = {0, 65001, 1251, 65000, 1200};
  platform::set_process_code_page(choices.among(kCodePages));
}

void MailboxLife::cut_file(Choices& choices) {
  const std::string whole = file();
  tests::write_file(path_, std::string_view(whole).substr(0, choices.below(256)));
}

}  // namespace vellobar::fuzz
