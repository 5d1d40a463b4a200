// How one message is written: to a mailbox by an update, and to a file by Save.
#include <algorithm>
#include <system_error>
#include <vector>

#include "errors/error.h"
#include "headers/header_block.h"
#include "headers/headers.h"
#include "mailbox/message.h"
#include "mailbox/messages.h"
#include "mailbox/vellobar.h"
#include "platform/code_page.h"
#include "platform/file.h"

namespace vellobar {

namespace {

constexpr std::string_view kSeparator = "From ";
constexpr std::string_view kLineEnd = "\r\n";
constexpr std::size_t kCopyBlock = 64 * 1024;

[[noreturn]] void refuse_cut_message() {
  throw std::system_error(std::make_error_code(std::errc::io_error), "the message cannot be read whole");
}

}  // namespace

void CMessage::Save(std::u16string_view filename) {
  const std::string path = platform::narrow(platform::process_code_page(), filename);
  Load();
  load_parts();
  const bool is_mailbox = owner_ && owner_->control != nullptr && owner_->control->is_locked_file(path);
  if (is_mailbox) throw Error(ErrorNumber::cannot_update_mailbox, Reporter::message);
  write_to_file(path);
}

void CMessage::write_to_file(const std::string& path) {
  try {
    const std::unique_ptr<platform::OutputFile> output = platform::OutputFile::create(path);
    if (!output) throw Error(ErrorNumber::cannot_update_mailbox, Reporter::message);
    write(*output, own_place());
    output->close();
  } catch (const std::system_error&) {
    throw Error(ErrorNumber::cannot_update_mailbox, Reporter::message);
  }
}

void CMessage::write(platform::ByteSink& sink, Place place) {
  if (load_headers() == nullptr) {
    write_own_bytes(sink, place);
    return;
  }
  Load();
  if (is_cut_short_) refuse_cut_message();
  write_separator_line(sink, place);
  sink.write(headers_->to_bytes());
  sink.write(kLineEnd);
  sink.write(*body_);
  if (parts_) parts_->write(sink);
}

CMessage::Place CMessage::own_place() const {
  return collection_ != nullptr && collection_->parent() != nullptr ? Place::part : Place::alone;
}

std::optional<std::string> CMessage::separator_line_for(Place place) const {
  if (place == Place::part) return std::nullopt;
  std::string line = platform::narrow(platform::process_code_page(), mail_info_);
  if (!line.starts_with(kSeparator)) return std::nullopt;
  return line;
}

void CMessage::write_separator_line(platform::ByteSink& sink, Place place) const {
  const std::optional<std::string> line = separator_line_for(place);
  if (!line) return;
  sink.write(*line);
  sink.write(kLineEnd);
}

void CMessage::write_own_bytes(platform::ByteSink& sink, Place place) {
  if (!file_) return;
  std::int64_t position = start_;
  if (mail_info_given_) {
    // The client's separator line takes the place of the one in the file.
    write_separator_line(sink, place);
    if (has_separator_) {
      headers::LineReader reader(*file_, start_);
      reader.next();
      position = reader.position();
    }
  }
  const std::int64_t end = std::min(end_, file_->size());
  std::string block(kCopyBlock, '\0');
  while (position < end) {
    const std::size_t wanted = static_cast<std::size_t>(std::min<std::int64_t>(end - position, kCopyBlock));
    const std::size_t got = file_->read(position, block.data(), wanted);
    if (got == 0) refuse_cut_message();
    sink.write(std::string_view(block).substr(0, got));
    position += static_cast<std::int64_t>(got);
  }
}

void CMessage::load_parts() {
  std::vector<CMessages*> waiting;
  if (parts_) waiting.push_back(parts_.get());
  while (!waiting.empty()) {
    CMessages& parts = *waiting.back();
    waiting.pop_back();
    for (std::int64_t i = 0; i < parts.Count(); ++i) {
      const std::shared_ptr<CMessage> part = parts.Item(i);
      part->Load();
      if (part->parts_) waiting.push_back(part->parts_.get());
    }
  }
}

}  // namespace vellobar
