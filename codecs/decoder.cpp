#include "codecs/decoder.h"

#include "codecs/base64.h"
#include "codecs/binhex.h"
#include "codecs/coding_calls.h"
#include "codecs/quoted_printable.h"
#include "codecs/strings.h"
#include "codecs/uuencode.h"
#include "platform/file.h"

namespace vellobar::codecs {

namespace {

using StreamDecoder = void (*)(platform::File&, std::int64_t, std::int64_t, platform::ByteSink&);

std::function<void(platform::File&, platform::ByteSink&)> whole_file(StreamDecoder decode) {
  return [decode](platform::File& from, platform::ByteSink& to) { decode(from, 0, from.size(), to); };
}

}  // namespace

void CDecoder::Base64(std::u16string_view in_file, std::u16string_view out_file) const {
  code_file(in_file, out_file, progress_, whole_file(decode_base64_stream));
}

void CDecoder::Uudecode(std::u16string_view in_file, std::u16string_view out_file) const {
  code_file(in_file, out_file, progress_, whole_file(decode_uu_stream));
}

void CDecoder::QuotedPrintable(std::u16string_view in_file, std::u16string_view out_file) const {
  code_file(in_file, out_file, progress_, whole_file(decode_quoted_printable_stream));
}

void CDecoder::BinHex4(std::u16string_view in_file, std::u16string_view out_file) const {
  code_file(in_file, out_file, progress_, whole_file(decode_binhex_stream));
}

std::vector<unsigned char> CDecoder::Base64Data(std::span<const unsigned char> in_data) const {
  return bytes_of_size(base64_decoded_room(in_data.size()),
                       [&](unsigned char* to) { return decode_base64(in_data.data(), in_data.size(), to); });
}

std::vector<unsigned char> CDecoder::QuotedPrintableData(std::span<unsigned char> in_data) const {
  return bytes_of_size(quoted_printable_decoded_room(view_of(in_data.data(), in_data.size())),
                       [&](unsigned char* to) { return decode_quoted_printable(in_data.data(), in_data.size(), to); });
}

std::vector<unsigned char> CDecoder::UudecodeData(std::span<const unsigned char> in_data) const {
  return bytes_of_size(uu_decoded_size(in_data.size()),
                       [&](unsigned char* to) { return decode_uu(in_data.data(), in_data.size(), to); });
}

std::u16string CDecoder::Base64Text(std::u16string_view in_text) const {
  return text_of_bytes(decode_base64(bytes_of_text(in_text)));
}

std::u16string CDecoder::UudecodeText(std::u16string_view in_text) const {
  return text_of_bytes(decode_uu(bytes_of_text(in_text)));
}

std::u16string CDecoder::QuotedPrintableText(std::u16string_view in_text) const {
  return text_of_bytes(decode_quoted_printable(bytes_of_text(in_text)));
}

}  // namespace vellobar::codecs
