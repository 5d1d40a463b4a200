#include "attachments/attachment.h"

#include <system_error>
#include <utility>

#include "attachments/copied_range.h"
#include "attachments/safe_name.h"
#include "codecs/attachment_encoding.h"
#include "errors/error.h"
#include "mailbox/messages.h"
#include "mailbox/vellobar.h"
#include "platform/code_page.h"
#include "platform/file.h"

namespace vellobar {

namespace {

using codecs::AttachmentEncoding;

constexpr int kFirstEncoding = static_cast<int>(AttachmentEncoding::base64);
constexpr int kLastEncoding = static_cast<int>(AttachmentEncoding::seven_bit);

bool is_coded_in_sextets(int encoding) {
  return encoding == static_cast<int>(AttachmentEncoding::base64) ||
         encoding == static_cast<int>(AttachmentEncoding::binhex4) ||
         encoding == static_cast<int>(AttachmentEncoding::uuencode);
}

}  // namespace

CAttachment::CAttachment() = default;

CAttachment::CAttachment(OwnerLink owner, HoldingPart part, CodedRange range, int encoding)
    : owner_(std::move(owner)), part_(std::move(part)), range_(std::move(range)), encoding_(encoding) {}

void CAttachment::describe(std::u16string name, std::u16string type) {
  name_ = std::move(name);
  type_ = std::move(type);
}

std::shared_ptr<CAttachment> CAttachment::another() const {
  auto attachment = std::make_shared<CAttachment>(owner_, part_, range_, encoding_);
  attachment->describe(name_, type_);
  return attachment;
}

void CAttachment::SetName(std::u16string_view name) {
  name_ = name;
  name_given_ = is_changed_ = true;
}

void CAttachment::SetType(std::u16string_view type) {
  type_ = type;
  is_changed_ = true;
}

void CAttachment::SetEncoding(int encoding) {
  encoding_ = encoding;
  is_changed_ = true;
}

std::shared_ptr<CMessage> CAttachment::Part() const {
  if (const std::shared_ptr<CMessages> parts = part_.parts.lock()) return parts->found_at(part_.start);
  return part_.object.lock();
}

std::int64_t CAttachment::Size() const {
  const std::int64_t coded = range_.end - range_.start;
  return is_coded_in_sextets(encoding_) ? coded / 4 * 3 : coded;
}

void CAttachment::Save() {
  save_to(name_given_ ? name_ : attachments::safe_file_name(name_, platform::process_code_page()));
}

void CAttachment::Save(std::u16string_view filename) { save_to(filename); }

void CAttachment::save_to(std::u16string_view filename) {
  if (filename.empty()) throw Error(ErrorNumber::filename_not_given, Reporter::attachment);
  if (encoding_ < kFirstEncoding || encoding_ > kLastEncoding) {
    throw Error(ErrorNumber::unknown_encoder, Reporter::attachment);
  }
  const std::string path = platform::process_bytes(filename);
  try {
    const std::shared_ptr<platform::File> source = open_source();
    // What is read must not be emptied first, nor the mailbox that other parts are read from.
    if ((source && source->is_same_file(path)) || is_mailbox(path)) {
      throw Error(ErrorNumber::cannot_access_destination, Reporter::attachment);
    }
    const std::unique_ptr<platform::OutputFile> output = platform::OutputFile::create(path);
    if (!output) throw Error(ErrorNumber::cannot_access_destination, Reporter::attachment);
    if (source) decode(*source, *output);
    output->close();
  } catch (const std::system_error&) {
    throw Error(ErrorNumber::cannot_access_destination, Reporter::attachment);
  }
}

void CAttachment::decode_to(platform::ByteSink& sink) const {
  if (const std::shared_ptr<platform::File> source = open_source()) decode(*source, sink);
}

/// Null when there is none. Throws std::system_error when it cannot be opened.
std::shared_ptr<platform::File> CAttachment::open_source() const {
  if (range_.reopened_from.empty()) return range_.file;
  std::shared_ptr<platform::File> file = platform::File::open(range_.reopened_from);
  if (!file) throw std::system_error(std::make_error_code(std::errc::io_error), "open attachment");
  return file;
}

void CAttachment::decode(platform::File& source, platform::ByteSink& sink) const {
  if (encoding_ == static_cast<int>(AttachmentEncoding::seven_bit)) {
    attachments::copy_range(source, range_.start, range_.end, sink);
  } else {
    codecs::decode_stream(static_cast<AttachmentEncoding>(encoding_), source, range_.start, range_.end, sink);
  }
  if (source.failed()) throw std::system_error(std::make_error_code(std::errc::io_error), "read attachment");
}

bool CAttachment::is_mailbox(const std::string& path) const {
  return owner_ && owner_->control != nullptr && owner_->control->is_locked_file(path);
}

}  // namespace vellobar
