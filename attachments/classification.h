// Which parts of a message are attachments, told from their headers alone. Headers are taken in their order, and the
// order counts: a Content-Disposition without a file name makes an attachment only when the transfer encoding stood
// before it. Names and values come as bytes; nothing here knows a message.
#pragma once

#include <string_view>

#include "codecs/attachment_encoding.h"

namespace vellobar::attachments {

/// What the headers of one part, as far as they were taken, say about it.
class Classification {
 public:
  /// True for the names (lower-cased) that `take` looks at.
  static bool reads(std::string_view lower_name) noexcept;

  /// Takes the next header. True when it is a multipart Content-Type.
  bool take(std::string_view lower_name, std::string_view value);

  /// True when the headers make an attachment: something says so, and the transfer encoding is known.
  bool is_attachment() const noexcept { return is_marked_ && encoding_ != codecs::AttachmentEncoding::unknown; }
  codecs::AttachmentEncoding encoding() const noexcept { return encoding_; }

 private:
  void take_transfer_encoding(std::string_view lower_value);
  void take_disposition(std::string_view lower_value);
  bool take_content_type(std::string_view lower_value);

  codecs::AttachmentEncoding encoding_ = codecs::AttachmentEncoding::unknown;
  bool is_marked_ = false;
};

}  // namespace vellobar::attachments
