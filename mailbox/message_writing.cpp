// How one message is written: to a mailbox by an update, and to a file by Save.
#include <algorithm>
#include <deque>
#include <system_error>
#include <vector>

#include "errors/error.h"
#include "headers/header_block.h"
#include "headers/headers.h"
#include "mailbox/collections_below.h"
#include "mailbox/line_sink.h"
#include "mailbox/message.h"
#include "mailbox/messages.h"
#include "mailbox/separator_line.h"
#include "mailbox/spool.h"
#include "mailbox/tree_walk.h"
#include "mailbox/vellobar.h"
#include "platform/ascii.h"
#include "platform/code_page.h"
#include "platform/file.h"

namespace vellobar {

namespace {

[[noreturn]] void refuse_cut_message() {
  throw std::system_error(std::make_error_code(std::errc::io_error), "the message cannot be read whole");
}

/// A mailbox's "From " is never written between messages; their own separator lines are. Deliberate for a delimiter
/// that is no longer; see a_delimiter_of_five_characters_is_not_written.
bool is_delimiter(std::u16string_view separator) { return separator.size() > mailbox::kSeparator.size(); }

}  // namespace

void CMessage::Save(std::u16string_view filename) {
  const std::string path = platform::process_bytes(filename);
  const bool is_mailbox = owner_ && owner_->control != nullptr && owner_->control->is_locked_file(path);
  if (is_mailbox) throw Error(ErrorNumber::cannot_update_mailbox, Reporter::message);
  write_to_file(path);
}

void CMessage::write_to_file(const std::string& path) {
  if (!mailbox::can_write_separator_lines()) throw Error(ErrorNumber::cannot_update_mailbox, Reporter::message);
  try {
    // Put together before the file is emptied: the message or one of its parts may be read from it, and a message that
    // cannot be read whole must not cost what the file held.
    mailbox::Spool whole;
    load_tree(false);
    write(whole, own_place(), false);
    const std::unique_ptr<platform::OutputFile> output = platform::OutputFile::create(path);
    if (!output) throw Error(ErrorNumber::cannot_update_mailbox, Reporter::message);
    whole.move_to(*output);
    output->close();
  } catch (const std::system_error&) {
    throw Error(ErrorNumber::cannot_update_mailbox, Reporter::message);
  }
}

void CMessage::write(platform::ByteSink& sink, Place place, bool keeps) {
  struct Writer final : mailbox::TreeVisitor {
    explicit Writer(platform::ByteSink& to) : sink(to) {}
    bool visit(CMessage& message, Place at) override { return message.write_own_text(sink, at); }
    void part_begins(std::u16string_view separator) override { write_delimiter(separator, platform::kLineEnd); }
    void parts_end(std::u16string_view separator) override {
      write_delimiter(separator, "--\r\n");
      sink.write(platform::kLineEnd);
    }
    void write_delimiter(std::u16string_view separator, std::string_view end) {
      if (!is_delimiter(separator)) return;
      sink.end_line();
      sink.write(platform::process_bytes(separator).append(end));
    }

    mailbox::LineSink sink;
  };
  if (keeps) load_tree(true);
  Writer writer(sink);
  if (writer.visit(*this, place)) mailbox::walk_parts(*this, writer);
}

bool CMessage::write_own_text(platform::ByteSink& sink, Place place) {
  if (file_) file_->forget_failure();
  // What could not be read before may be readable now.
  constexpr auto kParts = mailbox::Below::going_with_it;
  if (is_cut_short_ && has_body_of_file(kParts) && !has_held_parts(kParts)) drop_body();
  const bool is_readable = load_headers() != nullptr;
  Load();
  if (file_ && file_->failed()) refuse_cut_message();
  if (!is_readable || has_misplaced_parts_) {
    if (!is_as_read()) refuse_cut_message();
    write_own_bytes(sink, place);
    return false;
  }
  if (is_cut_short_) refuse_cut_message();
  write_separator_line(sink, place);
  headers_->write_to(sink);
  sink.write(platform::kLineEnd);
  sink.write(*body_);
  return parts_ && parts_->Count() > 0;
}

bool CMessage::is_as_read() { return has_headers_of_file() && has_body_of_file(mailbox::Below::everything); }

bool CMessage::has_body_of_file(mailbox::Below which) {
  const auto is_changed = [](CMessage& part) { return part.text_was_put_ || !part.has_headers_of_file(); };
  if (text_was_put_) return false;
  return !mailbox::CollectionsBelow(*this, which).has_any([&](const std::shared_ptr<CMessages>& parts) {
    return !parts->is_as_scanned() || parts->any_object(is_changed);
  });
}

bool CMessage::has_headers_of_file() {
  if (!headers_) return true;
  CMessage in_file(nullptr, nullptr, file_, {start_, end_, lines_, has_separator_});
  return in_file.load_headers() != nullptr && in_file.headers_->to_bytes() == headers_->to_bytes();
}

bool CMessage::is_read_from(const platform::File* file, const mailbox::Extent& extent) const {
  return file_.get() == file && start_ == extent.start && end_ == extent.end;
}

bool CMessage::has_held_parts() const { return has_held_parts(mailbox::Below::everything); }

bool CMessage::has_held_parts(mailbox::Below which) const {
  return mailbox::CollectionsBelow(*this, which).has_any([](const std::shared_ptr<CMessages>& parts) {
    return parts.use_count() > 1 || parts->has_held_items();
  });
}

bool CMessage::has_below(const CMessages& wanted) const {
  return mailbox::CollectionsBelow(*this).has_any(
      [&](const std::shared_ptr<CMessages>& parts) { return parts.get() == &wanted; });
}

CMessage::Place CMessage::own_place() const {
  return collection_ != nullptr && collection_->is_of_message() ? Place::part : Place::alone;
}

std::optional<std::string> CMessage::separator_line_for(Place place) const {
  if (place == Place::part) return std::nullopt;
  std::string line = platform::process_bytes(mail_info_);
  if (!line.starts_with(mailbox::kSeparator)) return std::nullopt;
  return line;
}

void CMessage::write_separator_line(platform::ByteSink& sink, Place place) const {
  const std::optional<std::string> line = separator_line_for(place);
  if (!line) return;
  sink.write(*line);
  // A line that just can be read whole is written so that it can be read again.
  const bool has_room_for_cr = line->size() + 1 != headers::kLongestLine;
  sink.write(has_room_for_cr ? platform::kLineEnd : "\n");
}

void CMessage::write_own_bytes(platform::ByteSink& sink, Place place) {
  if (!file_) return;
  std::int64_t position = start_;
  if (place == Place::part || mail_info_given_) {
    // The client's separator line, or the delimiter of the collection, takes the place of the one in the file.
    write_separator_line(sink, place);
    if (first_line_is_separator_) {
      headers::LineReader reader(*file_, start_);
      reader.next();
      position = reader.position();
    }
  }
  platform::copy_bytes(*file_, position, std::min(end_, file_->size()), sink);
}

void CMessage::load_tree(bool for_good) {
  struct Level {
    std::shared_ptr<CMessage> message;  ///< null for the top
    CMessages& parts;
    std::int64_t next = 0;
  };
  const auto load = [for_good](CMessage& message) {
    message.Load();
    // Of a block that runs on behind the end the headers may have been dropped, and the text kept.
    if (for_good) message.load_headers();
    message.stays_whole_ = message.stays_whole_ || for_good;
  };
  std::deque<Level> levels;
  const auto push = [&levels](std::shared_ptr<CMessage> message, CMessage& with) {
    const auto& parts = with.parts_;
    if (parts && parts->Count() > 0) levels.push_back({std::move(message), *parts});
  };
  load(*this);
  push(nullptr, *this);
  while (!levels.empty()) {
    Level& level = levels.back();
    std::shared_ptr<CMessage> part = level.parts.Item(level.next++);
    // What is above the last part of each need not be held any longer, however deep that goes.
    if (level.next == level.parts.Count()) levels.pop_back();
    load(*part);
    push(part, *part);
  }
}

}  // namespace vellobar
