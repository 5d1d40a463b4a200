// `CDecoder`: the decoders as a stand-alone object for files, byte arrays and texts. Every call is complete
// in itself. File names and texts cross to bytes with the process code page. Every failure is
// `Error(Status::fail)`: an empty name, a file that cannot be opened, read or written, the same file as source and
// target (which then is not touched), an empty text. Bad content is no failure; see the codec's own header for what
// becomes of it.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "codecs/progress.h"

namespace vellobar::codecs {

class CDecoder {
 public:
  /// `progress` hears how far the file calls have come; it may be empty.
  explicit CDecoder(ProgressListener progress = {}) : progress_(std::move(progress)) {}

  /// Decode the whole of `in_file` into `out_file`, which is created or emptied.
  void Base64(std::u16string_view in_file, std::u16string_view out_file) const;
  void Uudecode(std::u16string_view in_file, std::u16string_view out_file) const;
  void QuotedPrintable(std::u16string_view in_file, std::u16string_view out_file) const;
  void BinHex4(std::u16string_view in_file, std::u16string_view out_file) const;

  /// Decode bytes; no bytes give none.
  std::vector<unsigned char> Base64Data(std::span<const unsigned char> in_data) const;
  /// Stores the second character of each escape back into `in_data` in upper case.
  std::vector<unsigned char> QuotedPrintableData(std::span<unsigned char> in_data) const;
  std::vector<unsigned char> UudecodeData(std::span<const unsigned char> in_data) const;

  /// Decode a text, and read the result with the process code page.
  std::u16string Base64Text(std::u16string_view in_text) const;
  std::u16string UudecodeText(std::u16string_view in_text) const;
  std::u16string QuotedPrintableText(std::u16string_view in_text) const;

 private:
  ProgressListener progress_;
};

}  // namespace vellobar::codecs
