// The part tree of a message: its text is read and split when somebody asks for it, and kept until it is dropped.
#include <algorithm>
#include <memory>
#include <new>
#include <string_view>
#include <utility>
#include <vector>

#include "errors/error.h"
#include "headers/headers.h"
#include "mailbox/message.h"
#include "mailbox/messages.h"
#include "mailbox/part_tree.h"
#include "mailbox/scanner.h"
#include "mime/body_text.h"
#include "mime/boundary.h"
#include "mime/part_outline.h"
#include "platform/code_page.h"
#include "platform/file.h"

namespace vellobar {

namespace {

/// Null also where there is no memory for it: the plain form needs less.
std::shared_ptr<mime::PartOutline> read_outline(platform::File& file, std::int64_t from, std::int64_t limit,
                                                std::string_view separator) {
  try {
    return mime::PartOutline::read(file, from, limit, separator);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

/// Whether the line at that position is this and nothing else.
bool is_line(platform::File& file, std::int64_t position, std::string_view line) {
  std::string bytes(line.size() + 2, '\0');
  bytes.resize(file.read(position, bytes.data(), bytes.size()));
  if (!bytes.starts_with(line)) return false;
  const std::string_view behind = std::string_view(bytes).substr(line.size());
  return behind.empty() || behind.starts_with('\n') || behind == "\r\n";
}

bool is_scan_out_of_memory(const Error& error) {
  return error.status() == Status::numbered && error.number() == ErrorNumber::scan_out_of_memory;
}

}  // namespace

void CMessage::load_body() {
  if (body_) return;
  parts_boundary_.clear();
  if (load_headers() == nullptr) return;
  if (take_up_parts()) {
    changed_ = false;
    return;
  }
  const std::string delimiter = mime::delimiter_of(*headers_);
  parts_boundary_ = platform::widen(platform::kThreadCodePage, delimiter);
  if (!load_from_outline(delimiter)) {
    mime::BodyText text;
    // A body that would start behind the end is empty.
    if (file_ && body_offset_ < end_) text = mime::read_body_text(*file_, body_offset_, end_, delimiter);
    // A closed file reads as empty, and must not be written as if the message were.
    is_cut_short_ = text.is_cut_short || (file_ && !file_->is_open());
    if (text.parts_start) split_parts(*text.parts_start);
    body_ = std::move(text.bytes);
  }
  changed_ = false;
}

/// Takes up the parts that were left in the tree when the message was let go. True when there are some; they stay
/// there, and the text is not loaded, when it cannot be read whole.
bool CMessage::take_up_parts() {
  const std::shared_ptr<mailbox::PartTree> tree = tree_.lock();
  const std::shared_ptr<CMessages> parts = tree ? tree->detached_at(start_) : nullptr;
  if (!parts) return false;
  const mime::PartOutline::Multipart* const known = tree->outline().find(start_, body_offset_);
  std::string text(known != nullptr ? static_cast<std::size_t>(known->opening - body_offset_) : 0, '\0');
  const std::size_t got = file_->read(body_offset_, text.data(), text.size());
  if (known == nullptr || got < text.size()) return true;
  parts_boundary_ = parts->separator();
  // From here on nothing needs memory.
  drop_parts();
  parts_ = tree->take(start_);
  parts_->attach_to(*this);
  body_ = std::move(text);
  return true;
}

bool CMessage::load_from_outline(std::string_view delimiter) {
  const std::shared_ptr<mailbox::PartTree> tree = tree_.lock();
  if (!tree || !file_ || delimiter.empty()) return false;
  const mime::PartOutline::Multipart* const known = tree->outline().find(start_, body_offset_);
  if (known == nullptr || !is_line(*file_, known->opening, delimiter)) return false;
  std::string text(static_cast<std::size_t>(known->opening - body_offset_), '\0');
  // A file that has less by now, or is closed, is read as it is.
  if (file_->read(body_offset_, text.data(), text.size()) < text.size()) return false;
  ensure_parts();
  parts_->split(
      file_, parts_boundary_, [&](mailbox::ExtentSink& sink) { tree->outline().parts(*known, sink); }, tree);
  body_ = std::move(text);
  return true;
}

void CMessage::split_parts(std::int64_t from) {
  ensure_parts();
  const std::string separator = platform::narrow(platform::process_code_page(), parts_boundary_);
  auto outline = read_outline(*file_, from, end_, separator);
  if (!outline) {
    split_level(from);
    return;
  }
  is_cut_short_ = is_cut_short_ || (!outline->is_whole() && outline->end() < std::min(end_, file_->size()));
  // Had before anything is split. Without parts below its own the outline has done what it is for.
  const bool is_in_mailbox = collection_ != nullptr && !collection_->is_of_parts() && !has_left_;
  const auto tree = outline->has_multiparts() ? std::make_shared<mailbox::PartTree>(outline, is_in_mailbox) : nullptr;
  parts_->split(
      file_, parts_boundary_, [&](mailbox::ExtentSink& sink) { outline->take_parts(sink); }, tree);
  parts_->own(tree);
}

void CMessage::split_level(std::int64_t from) {
  const mailbox::ScanResult scanned = parts_->split(file_, from, end_, parts_boundary_);
  has_misplaced_parts_ = scanned.ran_ahead;
  if (!scanned.whole && scanned.position < std::min(end_, file_->size())) is_cut_short_ = true;
}

void CMessage::ensure_parts() {
  if (parts_) return;
  parts_ = std::make_shared<CMessages>(owner_, *this);
  if (parts_were_read_) parts_->count_as_read();
}

const std::u16string& CMessage::PartsBoundary() {
  if (body_was_read_ && !body_ && load_headers() != nullptr) {
    parts_boundary_ = platform::widen(platform::kThreadCodePage, mime::delimiter_of(*headers_));
  }
  return parts_boundary_;
}

CMessages* CMessage::parts_if_any() {
  if (!body_ && (load_headers() == nullptr || mime::delimiter_of(*headers_).empty())) return nullptr;
  load_body();
  return parts_.get();
}

void CMessage::load_parts() {
  load_body();
  ensure_parts();
}

std::shared_ptr<CMessages> CMessage::Parts() {
  try {
    load_parts();
  } catch (const Error& error) {
    if (!is_scan_out_of_memory(error)) throw;
    // The parts found so far are there to be read. The text counts as not loaded, so that the next call splits it
    // again.
    ensure_parts();
  }
  return parts_;
}

}  // namespace vellobar
