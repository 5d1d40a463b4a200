#include "attachments/attachments.h"

#include <algorithm>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "attachments/attachment.h"
#include "attachments/block_source.h"
#include "attachments/classification.h"
#include "attachments/description.h"
#include "attachments/uu_blocks.h"
#include "codecs/attachment_encoding.h"
#include "errors/error.h"
#include "headers/headers.h"
#include "mailbox/message.h"
#include "mailbox/messages.h"
#include "platform/code_page.h"
#include "platform/file.h"

namespace vellobar {

namespace {

using attachments::Classification;

std::optional<std::string> first_value(const CHeaders& headers, std::string_view name) {
  const std::size_t position = headers.find(name);
  if (position == CHeaders::npos) return std::nullopt;
  return headers.narrow_value(position);
}

/// `text` is read for what the attachment says of itself.
std::shared_ptr<CAttachment> make_attachment(const OwnerLink& owner, CMessage& text, HoldingPart part, int encoding) {
  auto attachment = std::make_shared<CAttachment>(
      owner, std::move(part), CodedRange{text.file(), text.body_offset(), text.EndPosition()}, encoding);
  if (const CHeaders* const headers = text.loaded_headers()) {
    attachments::Description description =
        attachments::describe(first_value(*headers, "content-type"), first_value(*headers, "content-disposition"));
    attachment->describe(std::move(description.name), std::move(description.type));
  }
  return attachment;
}

/// A part that is looked at, and those of its own parts that are left to be.
struct Visit {
  std::shared_ptr<CMessage> part;
  std::shared_ptr<CMessages> collection;  ///< that it is in; null for the message itself
  CMessage::Held before = part->held();
  Classification classification{};
  std::size_t multipart_headers = 0;
  std::shared_ptr<CMessages> parts{};
  std::int64_t next_part = 0;
  std::size_t first_found = 0;  ///< of the attachments found in its parts

  /// Reads what its headers say, and its parts when one says that there are any.
  void begin(std::size_t found) {
    read_headers();
    if (multipart_headers > 0) parts = part->Parts();
    first_found = found;
  }
  void end() { part->drop_headers_that_run_on(before); }

  bool has_part() const { return parts && next_part < parts->Count(); }
  Visit take_part() { return {parts->Item(next_part++), parts}; }
  /// True when nothing is left to do with it.
  bool is_over() const { return !has_part() && multipart_headers == 1 && !classification.is_attachment(); }

 private:
  void read_headers() {
    const CHeaders* const headers = part->load_headers();
    const std::int64_t count = headers != nullptr ? headers->Count() : 0;
    for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
      const std::string name = headers->narrow_lower_name(i);
      if (!Classification::reads(name)) continue;
      if (classification.take(name, headers->narrow_value(i))) ++multipart_headers;
    }
  }
};

/// The plain text as bytes; empty where the part that holds it cannot be read.
std::string readable_text(CMessage& message) {
  try {
    return platform::process_bytes(message.PlainText());
  } catch (const Error& error) {
    if (error.status() != Status::numbered || error.number() != ErrorNumber::cannot_load_text) throw;
    return {};
  }
}

}  // namespace

CAttachments::CAttachments() = default;

CAttachments::CAttachments(OwnerLink owner, CMessage& message) : owner_(std::move(owner)), message_(&message) {}

CAttachments::~CAttachments() = default;

std::int64_t CAttachments::Count() {
  find_attachments();
  return static_cast<std::int64_t>(items_.size() + blocks_.size());
}

std::shared_ptr<CAttachment> CAttachments::Item(std::int64_t index) {
  const std::int64_t count = Count();
  if (index < 0 || index >= count) throw Error(Status::invalid_argument);
  return object_at(static_cast<std::size_t>(index));
}

std::shared_ptr<mailbox::Snapshot<CAttachments, CAttachment>> CAttachments::snapshot() {
  return std::make_shared<mailbox::Snapshot<CAttachments, CAttachment>>(shared_from_this());
}

std::shared_ptr<CAttachment> CAttachments::object_at(std::size_t position) {
  std::shared_ptr<CAttachment> object = made_.find(position);
  if (object) return object;
  const std::size_t block = position - items_.size();
  object = position < items_.size() ? made(items_[position]) : made(blocks_.name(block), blocks_.range(block));
  made_.lend(position, object);
  return object;
}

std::shared_ptr<CAttachment> CAttachments::made(const Found& found) const {
  CMessage in_file(owner_, nullptr, file_, found.part.extent());
  in_file.load_headers();
  return make_attachment(owner_, in_file, {{}, parts_[found.parts], found.part.start()}, found.encoding);
}

std::shared_ptr<CAttachment> CAttachments::made(std::u16string name, CodedRange block) const {
  constexpr int kEncoding = static_cast<int>(codecs::AttachmentEncoding::uuencode);
  auto attachment = std::make_shared<CAttachment>(owner_, HoldingPart{with_blocks_}, std::move(block), kEncoding);
  attachment->describe(std::move(name), {});
  return attachment;
}

void CAttachments::find_attachments() {
  if (message_ == nullptr) throw Error(Status::fail);
  if (is_scanned_) return;
  // Set first: a search that fails is not made again.
  is_scanned_ = true;
  searched_text_ = scan_text_;
  find_in_parts(*message_);
  if (scan_text_) find_in_text(*message_);
  is_whole_ = true;
}

bool CAttachments::can_be_found_again() const noexcept {
  if (!is_scanned_) return true;
  if (!is_whole_ || has_blocks_ || searched_text_ != scan_text_) return false;
  return !made_.has_held_or_changed();
}

void CAttachments::find_in_parts(CMessage& message) {
  std::deque<Visit> visits;
  const auto push = [&](Visit visit) {
    visit.begin(items_.size());
    visits.push_back(std::move(visit));
  };
  const auto pop = [&] {
    visits.back().end();
    visits.pop_back();
  };
  // The caller holds this message itself, which need not be a shared one.
  push({{std::shared_ptr<CMessage>(), &message}, nullptr});
  while (!visits.empty()) {
    Visit& visit = visits.back();
    if (visit.has_part()) {
      Visit below = visit.take_part();
      // What is above the last part of each need not be held any longer, however deep that goes.
      if (visit.is_over()) pop();
      push(std::move(below));
      continue;
    }
    const std::size_t behind_found = items_.size();
    for (std::size_t i = 1; i < visit.multipart_headers; ++i) list_again(visit.first_found, behind_found);
    if (visit.classification.is_attachment()) {
      list(*visit.part, static_cast<int>(visit.classification.encoding()), visit.collection);
    }
    pop();
  }
}

void CAttachments::list(CMessage& part, int encoding, const std::shared_ptr<CMessages>& parts) {
  if (!parts || items_.size() < kMostMadeAtOnce || !reads_as_listed(part)) {
    made_.keep(items_.size(), make_attachment(owner_, part, {part.weak_from_this()}, encoding));
    items_.push_back({});
    part.note_attachment();
    return;
  }
  file_ = part.file();
  if (parts_.empty() || parts_.back().lock() != parts) parts_.push_back(parts);
  parts->keep_for_attachments();
  const mailbox::Extent extent{part.StartPosition(), part.EndPosition(), part.Lines(), part.has_separator()};
  items_.push_back({mailbox::PackedExtent(extent), static_cast<std::uint32_t>(parts_.size() - 1), encoding});
}

/// Whether all that is said of the part is what its file says, which is the one of all the others.
bool CAttachments::reads_as_listed(CMessage& part) const {
  const bool is_scanned = part.remembered_index() >= 0 && part.file() && part.file() == message_->file();
  return is_scanned && !part.loaded_headers()->is_changed();
}

/// A second multipart header lists what its parts hold once more. Mail in which such headers nest would multiply its
/// attachments without end, so a long list is not lengthened by what it holds already.
void CAttachments::list_again(std::size_t first, std::size_t behind) {
  if (items_.size() + (behind - first) > kMostWithRepetitions) return;
  for (std::size_t i = first; i < behind; ++i) {
    if (const auto object = made_.find(i)) made_.keep(items_.size(), object->another());
    items_.push_back(items_[i]);
  }
}

void CAttachments::find_in_text(CMessage& message) {
  with_blocks_ = message.weak_from_this();
  const std::string text = readable_text(message);
  attachments::UuBlocks blocks(text);
  try {
    while (const std::optional<attachments::UuBlock> block = blocks.next()) {
      has_blocks_ = true;
      const bool has_file = attachments::make_block_source(
          block->lines, [&](const CodedRange& range) { list(platform::process_text(block->name), range); });
      // Without room for the block the search ends quietly.
      if (!has_file) return;
    }
  } catch (const Error&) {
    if (!has_control()) throw Error(Status::fail);
    throw;
  }
}

/// Most blocks are no objects before somebody asks for them; what is kept open is.
void CAttachments::list(const std::u16string& name, const CodedRange& block) {
  const std::size_t position = items_.size() + blocks_.size();
  if (block.file) made_.keep(position, made(name, block));
  try {
    blocks_.add(name, block);
  } catch (...) {
    // What is not listed must not keep its file open.
    made_.drop(position);
    throw;
  }
}

std::shared_ptr<CAttachments> CMessage::Attachments() {
  load_body();
  if (!body_) throw Error(ErrorNumber::cannot_load_text, Reporter::message);
  if (!attachments_) {
    attachments_ = std::make_shared<CAttachments>(owner_, *this);
    attachments_->SetScanText(scans_text_);
  }
  return attachments_;
}

void CMessage::drop_attachments() {
  if (attachments_) attachments_->forget_message();
  attachments_.reset();
}

}  // namespace vellobar
