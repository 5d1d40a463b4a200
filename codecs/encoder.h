// `CEncoder`: the encoders as a stand-alone object for files, byte arrays and texts. Every call is complete
// in itself. File names and texts cross to bytes with the process code page. Every failure is
// `Error(Status::fail)`: an empty name, a file that cannot be opened, read or written, the same file as source and
// target (which then is not touched), an empty text.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "codecs/progress.h"

namespace vellobar::codecs {

class CEncoder {
 public:
  /// `progress` hears how far the file calls have come; it may be empty.
  explicit CEncoder(ProgressListener progress = {}) : progress_(std::move(progress)) {}

  /// Encode the whole of `in_file` into `out_file`, which is created or emptied. `Uuencode` puts a "begin 666" line
  /// with the base name of `in_file` and an "end" line around the data, `BinHex4` the banner line and colons.
  void Base64(std::u16string_view in_file, std::u16string_view out_file) const;
  void Uuencode(std::u16string_view in_file, std::u16string_view out_file) const;
  void QuotedPrintable(std::u16string_view in_file, std::u16string_view out_file) const;
  void BinHex4(std::u16string_view in_file, std::u16string_view out_file) const;

  /// Encode bytes without lines, but for the soft breaks of quoted-printable; no bytes give none.
  std::vector<unsigned char> Base64Data(std::span<const unsigned char> in_data) const;
  std::vector<unsigned char> QuotedPrintableData(std::span<const unsigned char> in_data) const;
  std::vector<unsigned char> UuencodeData(std::span<const unsigned char> in_data) const;

  /// Encode a text likewise.
  std::u16string Base64Text(std::u16string_view in_text) const;
  std::u16string UuencodeText(std::u16string_view in_text) const;
  std::u16string QuotedPrintableText(std::u16string_view in_text) const;

 private:
  ProgressListener progress_;
};

}  // namespace vellobar::codecs
