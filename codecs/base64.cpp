#include "codecs/base64.h"

#include "codecs/sextet_decoder.h"
#include "codecs/sextet_encoder.h"
#include "codecs/sextet_streams.h"
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

void encode_base64_stream(platform::File& from, platform::ByteSink& to) {
  OutputPieces pieces(to);
  const LastLine last =
      encode_full_lines(from, pieces, kernels().base64, {kBase64LineBytes, kBase64LineBytes / 3 * 4 + 2});
  unsigned char* line = pieces.room_for(kBase64LineBytes / 3 * 4 + 2);
  const std::size_t letters = encode_base64(last.bytes.data(), last.size, line);
  // Written even when it is empty (test: a_file_of_57_bytes_ends_with_an_empty_line).
  line[letters] = '\r';
  line[letters + 1] = '\n';
  pieces.add(letters + 2);
  pieces.flush();
}

void decode_base64_stream(platform::File& from, std::int64_t start, std::int64_t end, platform::ByteSink& to) {
  FileBlocks blocks(from, start, end_of_started_blocks(start, end));
  SextetDecoder decoder(kBase64Code, kernels().base64);
  decode_blocks(blocks, decoder, to);
}

}  // namespace vellobar::codecs
