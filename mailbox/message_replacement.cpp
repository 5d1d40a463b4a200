// The ways to give a message another text: from a file (Peek), a new body (Text), or everything at once (Body). Each
// ends with a message that reads from a file of its own.
#include <algorithm>
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

bool has_readable_headers(const std::shared_ptr<platform::File>& file, bool has_separator) {
  return CMessage(nullptr, nullptr, file, {0, file->size(), 0, has_separator}).load_headers() != nullptr;
}

}  // namespace

void CMessage::Peek(std::u16string_view filename) {
  read_from_own_file(platform::File::open(platform::process_bytes(filename)), false);
}

void CMessage::read_from_own_file(std::shared_ptr<platform::File> file, bool has_separator) {
  read_mail_info();
  drop_content();
  close_own_file();
  has_separator_ = first_line_is_separator_ = has_separator;
  changed_ = false;
  start_ = end_ = bytes_ = lines_ = body_offset_ = 0;
  // What was read or given before stays; the new file's separator line, if any, was written from it.
  mail_info_given_ = true;
  file_ = std::move(file);
  outline_.reset();
  if (file_) {
    has_own_file_ = true;
    end_ = file_->size();
    if (load_headers() != nullptr) {
      bytes_ = end_;
      // Not a count of lines: deliberate, see peek_reports_the_file_size_as_bytes_and_one_line.
      lines_ = 1;
      return;
    }
  }
  close_own_file();
  end_ = 0;
  throw Error(ErrorNumber::cannot_load_headers, Reporter::message);
}

void CMessage::SetText(std::u16string_view text) {
  load_body();
  // Without its headers the message could not be written whole.
  if (!loaded_headers()) throw Error(ErrorNumber::cannot_load_text, Reporter::message);
  std::string body = platform::process_bytes(text);
  if (body.size() <= platform::kLineEnd.size() || !body.ends_with(platform::kLineEnd)) body += platform::kLineEnd;
  load_tree();
  body_ = std::move(body);
  text_was_put_ = true;
  is_cut_short_ = false;
  mailbox::ScratchFile file;
  write_to_file(file.path());
  std::shared_ptr<platform::File> opened = platform::File::open(file.path());
  const bool has_separator = separator_line_for(own_place()).has_value();
  if (!opened || !has_readable_headers(opened, has_separator)) {
    // With a header line too long to be read back the message stays in memory, new text and all.
    throw Error(ErrorNumber::cannot_load_headers, Reporter::message);
  }
  read_from_own_file(std::move(opened), has_separator);
  delete_temporary_file(kTextFile);
  temporary_files_[kTextFile] = file.keep();
}

void CMessage::SetBody(std::u16string_view body) {
  const std::string bytes = platform::process_bytes(body);
  mailbox::ScratchFile file;
  file.write(bytes);
  std::shared_ptr<platform::File> opened = platform::File::open(file.path());
  if (!opened) throw Error(ErrorNumber::cannot_reopen_temporary_file, Reporter::message);
  read_mail_info();
  mail_info_given_ = true;
  drop_content();
  close_own_file();
  has_separator_ = first_line_is_separator_ = false;
  has_own_file_ = true;
  file_ = std::move(opened);
  outline_.reset();
  start_ = body_offset_ = 0;
  end_ = bytes_ = file_->size();
  lines_ = count_lines(bytes);
  delete_temporary_file(kBodyFile);
  temporary_files_[kBodyFile] = file.keep();
  mark_changed(owner_);
}

}  // namespace vellobar
