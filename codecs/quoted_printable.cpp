#include "codecs/quoted_printable.h"

#include "codecs/hex_digits.h"
#include "codecs/kernels.h"
#include "codecs/quoted_printable_decoder.h"
#include "codecs/quoted_printable_encoder.h"
#include "codecs/strings.h"

namespace vellobar::codecs {

namespace {

constexpr std::size_t kBufferLimit = 73;

}  // namespace

std::size_t encode_quoted_printable(const unsigned char* from, std::size_t size, unsigned char* to) {
  return QuotedPrintableEncoder(kBufferLimit).encode(from, size, to);
}

std::string encode_quoted_printable(std::string_view bytes) {
  return string_of_size(quoted_printable_encoded_room(bytes.size()),
                        [&](unsigned char* to) { return encode_quoted_printable(bytes_of(bytes), bytes.size(), to); });
}

std::size_t decode_quoted_printable(unsigned char* from, std::size_t size, unsigned char* to,
                                    bool underscore_is_space) {
  return QuotedPrintableDecoder(BrokenEscape::is_kept, underscore_is_space).decode(from, size, to);
}

std::string decode_quoted_printable(std::string_view text, bool underscore_is_space) {
  std::string own(text);
  auto* from = reinterpret_cast<unsigned char*>(own.data());
  return string_of_size(quoted_printable_decoded_room(own.size()), [&](unsigned char* to) {
    return decode_quoted_printable(from, own.size(), to, underscore_is_space);
  });
}

}  // namespace vellobar::codecs
