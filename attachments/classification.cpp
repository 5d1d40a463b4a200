#include "attachments/classification.h"

#include <algorithm>
#include <string>

#include "platform/ascii.h"

namespace vellobar::attachments {

namespace {

using codecs::AttachmentEncoding;

constexpr std::string_view kTransferEncoding = "content-transfer-encoding";
constexpr std::string_view kDisposition = "content-disposition";
constexpr std::string_view kContentType = "content-type";

struct NamedEncoding {
  std::string_view name;
  AttachmentEncoding encoding;
};

constexpr NamedEncoding kEncodings[] = {
    {"base64", AttachmentEncoding::base64},
    {"uuencode", AttachmentEncoding::uuencode},
    {"x-uuencode", AttachmentEncoding::uuencode},
    {"7bit", AttachmentEncoding::seven_bit},
    {"quoted-printable", AttachmentEncoding::quoted_printable},
    {"binhex", AttachmentEncoding::binhex4},
};

bool contains(std::string_view text, std::string_view wanted) { return text.find(wanted) != text.npos; }

std::string lower(std::string_view text) {
  std::string lowered(text);
  std::transform(text.begin(), text.end(), lowered.begin(), platform::lower_ascii<char>);
  return lowered;
}

}  // namespace

bool Classification::reads(std::string_view lower_name) noexcept {
  return lower_name == kTransferEncoding || lower_name == kDisposition || lower_name == kContentType;
}

bool Classification::take(std::string_view lower_name, std::string_view value) {
  if (!reads(lower_name)) return false;
  const std::string lower_value = lower(value);
  if (lower_name == kContentType) return take_content_type(lower_value);
  if (lower_name == kTransferEncoding) {
    take_transfer_encoding(lower_value);
  } else {
    take_disposition(lower_value);
  }
  return false;
}

void Classification::take_transfer_encoding(std::string_view lower_value) {
  for (const NamedEncoding& entry : kEncodings) {
    if (entry.name == lower_value) encoding_ = entry.encoding;
  }
}

void Classification::take_disposition(std::string_view lower_value) {
  if (contains(lower_value, "filename=")) {
    is_marked_ = true;
    return;
  }
  // Deliberate: only an encoding that stood before this header counts, see
  // a_disposition_before_the_encoding_makes_no_attachment.
  if (encoding_ != AttachmentEncoding::base64 && encoding_ != AttachmentEncoding::seven_bit) return;
  if (contains(lower_value, "attachment") || contains(lower_value, "inline")) is_marked_ = true;
}

bool Classification::take_content_type(std::string_view lower_value) {
  if (lower_value.starts_with("message/rfc822")) {
    is_marked_ = true;
    if (encoding_ == AttachmentEncoding::unknown) encoding_ = AttachmentEncoding::seven_bit;
  }
  const bool is_named_data = contains(lower_value, "image/") || contains(lower_value, "application/");
  if (is_named_data && contains(lower_value, "name=")) is_marked_ = true;
  return contains(lower_value, "boundary=") && contains(lower_value, "multipart");
}

}  // namespace vellobar::attachments
