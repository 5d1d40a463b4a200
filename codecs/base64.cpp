#include "codecs/base64.h"

#include "codecs/sextet_decoder.h"
#include "codecs/sextet_encoder.h"
#include "codecs/strings.h"

namespace vellobar::codecs {

std::size_t encode_base64(const unsigned char* from, std::size_t size, unsigned char* to) {
  return encode_sextets(kBase64Code, kernels().base64, '=', from, size, to);
}

std::string encode_base64(std::string_view bytes) {
  return string_of_size(base64_encoded_size(bytes.size()),
                        [&](unsigned char* to) { return encode_base64(bytes_of(bytes), bytes.size(), to); });
}

std::size_t decode_base64(const unsigned char* from, std::size_t size, unsigned char* to) {
  SextetDecoder decoder(kBase64Code, kernels().base64);
  const std::size_t written = decoder.decode(from, size, to);
  return written + decoder.finish(to + written);
}

std::string decode_base64(std::string_view text) {
  return string_of_size(base64_decoded_room(text.size()),
                        [&](unsigned char* to) { return decode_base64(bytes_of(text), text.size(), to); });
}

}  // namespace vellobar::codecs
