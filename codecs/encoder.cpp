#include "codecs/encoder.h"

#include "codecs/base64.h"
#include "codecs/binhex.h"
#include "codecs/coding_calls.h"
#include "codecs/quoted_printable.h"
#include "codecs/uuencode.h"
#include "platform/code_page.h"
#include "platform/file.h"

namespace vellobar::codecs {

namespace {

/// What follows the last separator of either kind; the whole name when it has none.
std::u16string_view base_name(std::u16string_view name) { return name.substr(name.find_last_of(u"\\/") + 1); }

}  // namespace

void CEncoder::Base64(std::u16string_view in_file, std::u16string_view out_file) const {
  code_file(in_file, out_file, progress_, encode_base64_stream);
}

void CEncoder::Uuencode(std::u16string_view in_file, std::u16string_view out_file) const {
  code_file(in_file, out_file, progress_, [in_file](platform::File& from, platform::ByteSink& to) {
    to.write("begin 666 " + platform::process_bytes(base_name(in_file)) + "\r\n");
    encode_uu_stream(from, to);
    to.write("end\r\n");
  });
}

void CEncoder::QuotedPrintable(std::u16string_view in_file, std::u16string_view out_file) const {
  code_file(in_file, out_file, progress_, encode_quoted_printable_stream);
}

void CEncoder::BinHex4(std::u16string_view in_file, std::u16string_view out_file) const {
  code_file(in_file, out_file, progress_, [](platform::File& from, platform::ByteSink& to) {
    to.write("(This file must be converted with BinHex 4.0)\r\n:");
    encode_binhex_stream(from, to);
    to.write(":\r\n");
  });
}

std::vector<unsigned char> CEncoder::Base64Data(std::span<const unsigned char> in_data) const {
  return bytes_of_size(base64_encoded_size(in_data.size()),
                       [&](unsigned char* to) { return encode_base64(in_data.data(), in_data.size(), to); });
}

std::vector<unsigned char> CEncoder::QuotedPrintableData(std::span<const unsigned char> in_data) const {
  return bytes_of_size(quoted_printable_encoded_room(in_data.size()),
                       [&](unsigned char* to) { return encode_quoted_printable(in_data.data(), in_data.size(), to); });
}

std::vector<unsigned char> CEncoder::UuencodeData(std::span<const unsigned char> in_data) const {
  return bytes_of_size(uu_encoded_room(in_data.size()),
                       [&](unsigned char* to) { return encode_uu(in_data.data(), in_data.size(), to); });
}

std::u16string CEncoder::Base64Text(std::u16string_view in_text) const {
  return text_of_letters(encode_base64(bytes_of_text(in_text)));
}

std::u16string CEncoder::UuencodeText(std::u16string_view in_text) const {
  return text_of_letters(encode_uu(bytes_of_text(in_text)));
}

std::u16string CEncoder::QuotedPrintableText(std::u16string_view in_text) const {
  return text_of_bytes(encode_quoted_printable(bytes_of_text(in_text)));
}

}  // namespace vellobar::codecs
