#include "mailbox/message.h"

#include <algorithm>
#include <utility>

#include "errors/error.h"
#include "headers/header_block.h"
#include "headers/headers.h"
#include "mailbox/messages.h"
#include "mailbox/separator_line.h"
#include "mailbox/tree_walk.h"
#include "platform/ascii.h"
#include "platform/code_page.h"
#include "platform/file.h"

namespace vellobar {

CMessage::CMessage() = default;

CMessage::CMessage(OwnerLink owner, CMessages* collection, std::shared_ptr<platform::File> file,
                   const mailbox::Extent& extent)
    : start_(extent.start),
      end_(extent.end),
      lines_(extent.lines),
      has_separator_(extent.has_separator),
      first_line_is_separator_(extent.has_separator),
      collection_(collection),
      owner_(std::move(owner)),
      file_(std::move(file)) {}

CMessage::CMessage(OwnerLink owner, CMessages* collection, std::shared_ptr<platform::File> own_file, std::int64_t size)
    : end_(size),
      // Not a count of lines: deliberate, see a_message_added_from_a_file_reports_its_size_as_lines.
      lines_(size),
      has_own_file_(own_file != nullptr),
      collection_(collection),
      owner_(std::move(owner)),
      file_(std::move(own_file)),
      temporary_files_(has_own_file_ ? std::make_unique<TemporaryFiles>() : nullptr) {}

CMessage::~CMessage() {
  drop_attachments();
  drop_parts();
  file_.reset();
  delete_temporary_file(kTextFile);
  delete_temporary_file(kBodyFile);
}

std::int64_t CMessage::Index() const {
  const std::int64_t position = collection_ != nullptr ? collection_->position_of(*this) : -1;
  if (position < 0) throw Error(Status::fail);
  return position;
}

std::u16string CMessage::MailInfo() {
  read_mail_info();
  return mail_info_;
}

void CMessage::SetMailInfo(std::u16string_view mail_info) {
  // Reading later would make the message unchanged.
  read_again();
  store_mail_info(std::u16string(mail_info));
  changed_ = true;
  mark_changed(owner_);
}

void CMessage::store_mail_info(std::u16string mail_info) noexcept {
  mail_info_ = std::move(mail_info);
  mail_info_given_ = true;
}

void CMessage::read_mail_info() {
  if (mail_info_given_ || !has_separator_ || !file_ || !mail_info_.empty()) return;
  headers::LineReader reader(*file_, start_);
  mail_info_ = platform::widen(platform::kThreadCodePage, headers::cut_line(reader.next()));
}

void CMessage::recognise_separator_line() {
  char line[mailbox::kSeparator.size()];
  has_separator_ = file_ && file_->read(start_, line, sizeof line) == sizeof line &&
                   std::string_view(line, sizeof line) == mailbox::kSeparator;
  first_line_is_separator_ = has_separator_;
}

void CMessage::make_missing_separator_line() {
  if (MailInfo().starts_with(mailbox::kWideSeparator)) return;
  const std::u16string sender = FromEmail();
  std::u16string line =
      std::u16string(mailbox::kWideSeparator) + (sender.empty() ? std::u16string(u"<unknown>") : sender);
  const std::size_t date = headers_ ? headers_->find(std::string_view("date")) : CHeaders::npos;
  if (date != CHeaders::npos) line += u" " + headers_->value(date);
  store_mail_info(std::move(line));
}

void CMessage::Load() {
  load_body();
  if (!body_) {
    body_.emplace();
    // Its header block may be readable later, and then this is not its body.
    is_cut_short_ = true;
  }
  changed_ = false;
}

void CMessage::Unload() {
  // The boundary stays known.
  PartsBoundary();
  leave_tree();
  drop_content();
  body_offset_ = 0;
  mail_info_.clear();
  mail_info_given_ = false;
  // Deliberate: the next load takes the separator line for a header line, see
  // a_message_that_was_unloaded_comes_back_without_its_first_line.
  has_separator_ = false;
  close_own_file();
  for (const std::size_t slot : {kTextFile, kBodyFile, kAttachmentFile}) delete_temporary_file(slot);
}

void CMessage::drop_content() {
  drop_attachments();
  drop_body();
  headers_.reset();
  headers_were_read_ = body_was_read_ = parts_were_read_ = scans_text_ = false;
}

void CMessage::drop_body() {
  body_.reset();
  text_was_put_ = false;
  is_cut_short_ = false;
  has_misplaced_parts_ = false;
  stays_whole_ = false;
  drop_parts();
}

void CMessage::drop_parts() { CMessages::release(give_up_parts()); }

void CMessage::drop_what_walking_read(Held before) {
  // What was taken up from the tree was there before.
  if (!before.body && body_ && !(parts_ && parts_->must_be_kept())) drop_body();
  if (!before.headers) headers_.reset();
}

void CMessage::drop_headers_that_run_on(Held before) {
  if (!before.headers && headers_run_on()) headers_.reset();
}

void CMessage::drop_unchanged_headers() noexcept {
  if (stays_whole_ || !headers_ || headers_.use_count() > 1 || headers_->is_changed()) return;
  headers_.reset();
  headers_were_read_ = true;
}

void CMessage::close_own_file() {
  if (!has_own_file_) return;
  file_->close();
  file_.reset();
  has_own_file_ = false;
}

void CMessage::delete_temporary_file(std::size_t slot) {
  if (!temporary_files_ || (*temporary_files_)[slot].empty()) return;
  platform::remove_file((*temporary_files_)[slot]);
  (*temporary_files_)[slot].clear();
}

void CMessage::make_room_for_temporary_files() {
  if (!temporary_files_) temporary_files_ = std::make_unique<TemporaryFiles>();
}

void CMessage::forget_collection(const CMessages& collection) {
  if (collection_ == &collection) collection_ = nullptr;
}

std::u16string CMessage::Text() {
  load_body();
  if (!body_) throw Error(ErrorNumber::cannot_load_text, Reporter::message);
  return platform::process_text(*body_);
}

std::u16string CMessage::Body() {
  struct Joiner final : mailbox::TreeVisitor {
    bool visit(CMessage& message, Place) override {
      // An unreadable part leaves its delimiter line alone.
      if (message.load_headers() == nullptr) return false;
      message.load_body();
      message.append_own_body(text);
      return message.parts_ && message.parts_->Count() > 0;
    }
    void part_begins(std::u16string_view separator) override { text.append(separator).append(u"\r\n"); }
    void parts_end(std::u16string_view separator) override { text.append(separator).append(u"--\r\n"); }

    std::u16string text;
  };
  load_body();
  if (!body_) throw Error(ErrorNumber::cannot_load_text, Reporter::message);
  load_headers();
  Joiner joiner;
  // About what it will be, because a long text that grows is there twice. Line ends may be longer than they were.
  const std::int64_t in_file = file_ ? std::clamp<std::int64_t>(Size(), 0, file_->size()) : 0;
  const std::int64_t longer = parts_ ? std::max(in_file / 8, parts_->Count() * 4) : 0;
  const std::size_t own = (headers_ ? headers_->most_bytes() : 0) + platform::kLineEnd.size() + body_->size();
  joiner.text.reserve(std::max(own, static_cast<std::size_t>(parts_ ? in_file + longer : 0)));
  append_own_body(joiner.text);
  if (parts_ && parts_->Count() > 0) mailbox::walk_parts(*this, joiner);
  return std::move(joiner.text);
}

void CMessage::append_own_body(std::u16string& to) const {
  if (headers_) headers_->append_text(to);
  to += u"\r\n";
  platform::append_widened(platform::process_code_page(), *body_, to);
}

}  // namespace vellobar
