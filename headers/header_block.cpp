#include "headers/header_block.h"

#include <algorithm>
#include <cstring>

#include "errors/error.h"
#include "headers/headers.h"
#include "mailbox/message.h"
#include "mailbox/messages.h"
#include "platform/code_page.h"
#include "platform/file.h"

namespace vellobar::headers {

namespace {

constexpr std::size_t kFirstPiece = 4096;
/// Takes no more memory than the object of the message.
constexpr std::size_t kShortBlock = 512;

}  // namespace

std::string_view LineReader::next() {
  for (std::size_t searched = 0;;) {
    const std::string_view held(buffer_.data() + begin_, end_ - begin_);
    const void* feed =
        held.size() > searched ? std::memchr(held.data() + searched, '\n', held.size() - searched) : nullptr;
    std::size_t size = held.size();
    if (feed != nullptr) {
      size = static_cast<std::size_t>(static_cast<const char*>(feed) - held.data()) + 1;
    } else if (held.size() < kLongestLine) {
      searched = held.size();
      fill();
      if (end_ - begin_ > searched) continue;
    }
    const std::string_view line(buffer_.data() + begin_, size);
    begin_ += size;
    position_ += static_cast<std::int64_t>(size);
    return line;
  }
}

void LineReader::fill() {
  std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
  end_ -= begin_;
  begin_ = 0;
  // What came to the file after it was opened belongs to no message.
  const std::int64_t from = position_ + static_cast<std::int64_t>(end_);
  // Most header blocks are short: the first piece is, too.
  const std::int64_t room = static_cast<std::int64_t>(end_ == 0 ? kFirstPiece : buffer_.size() - end_);
  const std::int64_t left = std::max<std::int64_t>(file_.size() - from, 0);
  const std::size_t wanted = static_cast<std::size_t>(std::min(room, left));
  const std::size_t got = file_.read(from, buffer_.data() + end_, wanted);
  failed_ = got < wanted && file_.failed();
  end_ += got;
}

std::string_view cut_line(std::string_view line) {
  if (line.ends_with('\n')) line.remove_suffix(1);
  return line.substr(0, std::min(line.find('\r'), line.size()));
}

}  // namespace vellobar::headers

namespace vellobar {

std::shared_ptr<CHeaders> CMessage::Headers() {
  read_again();
  if (load_headers() == nullptr) throw Error(ErrorNumber::cannot_load_headers, Reporter::message);
  return headers_;
}

CHeaders* CMessage::load_headers() {
  if (headers_) return headers_.get();
  auto block = std::make_shared<CHeaders>(owner_);
  if (!file_) {
    headers_ = std::move(block);
    return headers_.get();
  }
  headers::LineReader reader(*file_, start_);
  if (has_separator_) {
    const std::string_view separator = headers::cut_line(reader.next());
    if (!mail_info_given_) mail_info_ = platform::widen(platform::kThreadCodePage, separator);
  }
  // A block that ends before it began is read as body: nothing of it is lost.
  body_offset_ = reader.position();
  block->start_reading();
  for (;;) {
    const std::string_view whole = reader.next();
    if (whole.size() == headers::kLongestLine || reader.failed()) return nullptr;
    const std::string_view line = headers::cut_line(whole);
    if (line.empty()) break;
    if (line.front() != ' ' && line.front() != '\t') {
      block->add_line(line);
    } else if (block->Count() > 0) {
      block->continue_last(line);
    } else {
      block->finish_reading();
      headers_ = std::move(block);
      return headers_.get();
    }
  }
  body_offset_ = reader.position();
  changed_ = false;
  block->finish_reading();
  headers_ = std::move(block);
  const bool is_long = headers_->most_bytes() > headers::kShortBlock;
  if (is_long && headers_run_on() && collection_ != nullptr) collection_->keep_headers_that_run_on(*this);
  return headers_.get();
}

}  // namespace vellobar
