// The ways to give a message another text: from a file (Peek), a new body (Text), or everything at once (Body). Each
// ends with a message that reads from a file of its own.
#include <algorithm>
#include <new>
#include <utility>

#include "errors/error.h"
#include "headers/headers.h"
#include "mailbox/message.h"
#include "mailbox/messages.h"
#include "mailbox/scratch_file.h"
#include "platform/ascii.h"
#include "platform/code_page.h"
#include "platform/file.h"

namespace vellobar {

namespace {

std::int64_t count_lines(std::string_view text) {
  const std::int64_t feeds = std::count(text.begin(), text.end(), '\n');
  return text.empty() || text.ends_with('\n') ? feeds : feeds + 1;
}

}  // namespace

/// A file and what its header block holds, read before a message is given up for it.
struct CMessage::OwnFile {
  std::shared_ptr<platform::File> file;
  std::shared_ptr<CHeaders> headers;  ///< null when they are unreadable or there is no file
  std::int64_t body_offset = 0;
  bool has_separator = false;
};

CMessage::OwnFile CMessage::own_file(std::shared_ptr<platform::File> file, bool has_separator) const {
  if (!file) return {};
  CMessage in_file(owner_, nullptr, file, {0, file->size(), 0, has_separator});
  in_file.load_headers();
  return {std::move(file), in_file.headers_, in_file.body_offset_, has_separator};
}

void CMessage::Peek(std::u16string_view filename) {
  OwnFile own = own_file(platform::File::open(platform::process_bytes(filename)), false);
  read_mail_info();
  leave_tree();
  if (own.headers) return read_from(std::move(own));
  read_from({});
  throw Error(ErrorNumber::cannot_load_headers, Reporter::message);
}

void CMessage::read_from(OwnFile own) noexcept {
  drop_content();
  close_own_file();
  has_separator_ = first_line_is_separator_ = own.has_separator;
  changed_ = false;
  // What was read or given before stays; the new file's separator line, if any, was written from it.
  mail_info_given_ = true;
  has_own_file_ = own.file != nullptr;
  start_ = 0;
  end_ = own.file ? own.file->size() : 0;
  // Not a count of lines: deliberate, see peek_reports_the_file_size_as_bytes_and_one_line.
  lines_ = own.file ? 1 : 0;
  body_offset_ = own.body_offset;
  headers_ = std::move(own.headers);
  file_ = std::move(own.file);
}

void CMessage::SetText(std::u16string_view text) {
  load_body();
  // Without its headers the message could not be written whole.
  if (load_headers() == nullptr) throw Error(ErrorNumber::cannot_load_text, Reporter::message);
  std::string body = platform::process_bytes(text);
  if (body.size() <= platform::kLineEnd.size() || !body.ends_with(platform::kLineEnd)) body += platform::kLineEnd;
  load_tree(false);
  const bool was_put = std::exchange(text_was_put_, true);
  const bool was_cut_short = std::exchange(is_cut_short_, false);
  body_->swap(body);
  try {
    move_to_own_file();
  } catch (const std::bad_alloc&) {
    // The new text is gone with the failure, so the old one has to be there.
    body_->swap(body);
    text_was_put_ = was_put;
    is_cut_short_ = was_cut_short;
    throw;
  }
}

void CMessage::move_to_own_file() {
  make_room_for_temporary_files();
  mailbox::ScratchFile file;
  write_to_file(file.path());
  OwnFile own = own_file(platform::File::open(file.path()), separator_line_for(own_place()).has_value());
  // With a header line too long to be read back the message stays in memory, new text and all.
  if (!own.headers) throw Error(ErrorNumber::cannot_load_headers, Reporter::message);
  read_mail_info();
  leave_tree();
  read_from(std::move(own));
  delete_temporary_file(kTextFile);
  (*temporary_files_)[kTextFile] = file.keep();
}

void CMessage::SetBody(std::u16string_view body) {
  make_room_for_temporary_files();
  const std::string bytes = platform::process_bytes(body);
  mailbox::ScratchFile file;
  file.write(bytes);
  std::shared_ptr<platform::File> opened = platform::File::open(file.path());
  if (!opened) throw Error(ErrorNumber::cannot_reopen_temporary_file, Reporter::message);
  read_mail_info();
  leave_tree();
  mail_info_given_ = true;
  drop_content();
  close_own_file();
  has_separator_ = first_line_is_separator_ = false;
  has_own_file_ = true;
  file_ = std::move(opened);
  start_ = body_offset_ = 0;
  end_ = file_->size();
  lines_ = count_lines(bytes);
  delete_temporary_file(kBodyFile);
  (*temporary_files_)[kBodyFile] = file.keep();
  mark_changed(owner_);
}

}  // namespace vellobar
