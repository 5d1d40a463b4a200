#include "codecs/quoted_printable.h"

#include <algorithm>

#include "codecs/file_blocks.h"
#include "codecs/quoted_printable_decoder.h"
#include "codecs/quoted_printable_encoder.h"
#include "codecs/strings.h"

namespace vellobar::codecs {

namespace {

// Memory and files break their lines at different lengths (tests: memory_is_broken_after_73_characters and
// a_file_is_broken_after_76_characters).
constexpr std::size_t kMemoryLimit = 73;
constexpr std::size_t kFileLimit = 76;

}  // namespace

std::size_t encode_quoted_printable(const unsigned char* from, std::size_t size, unsigned char* to) {
  return QuotedPrintableEncoder(kMemoryLimit).encode(from, size, to);
}

std::string encode_quoted_printable(std::string_view bytes) {
  return string_of_size(quoted_printable_encoded_room(bytes.size()),
                        [&](unsigned char* to) { return encode_quoted_printable(bytes_of(bytes), bytes.size(), to); });
}

std::size_t quoted_printable_decoded_room(std::string_view text) {
  return text.size() + 2 * static_cast<std::size_t>(std::count(text.begin(), text.end(), '='));
}

std::size_t decode_quoted_printable(unsigned char* from, std::size_t size, unsigned char* to,
                                    bool underscore_is_space) {
  return QuotedPrintableDecoder(BrokenEscape::is_kept, underscore_is_space).decode(from, size, to);
}

std::string decode_quoted_printable(std::string_view text, bool underscore_is_space) {
  std::string own(text);
  auto* from = reinterpret_cast<unsigned char*>(own.data());
  return string_of_size(quoted_printable_decoded_room(text), [&](unsigned char* to) {
    return decode_quoted_printable(from, own.size(), to, underscore_is_space);
  });
}

void encode_quoted_printable_stream(platform::File& from, platform::ByteSink& to) {
  constexpr std::size_t kBlock = 12 * 1024;
  constexpr std::size_t kRoom = quoted_printable_encoded_room(kBlock) + 3;
  static_assert(kRoom <= OutputPieces::kCapacity);
  FileBlocks blocks(from, 0, kToEndOfFile, kBlock);
  OutputPieces pieces(to);
  QuotedPrintableEncoder encoder(kFileLimit);
  for (auto block = blocks.next(); !block.empty(); block = blocks.next()) {
    pieces.add(encoder.encode(block.data(), block.size(), pieces.room_for(kRoom)));
  }
  pieces.flush();
}

void decode_quoted_printable_stream(platform::File& from, std::int64_t start, std::int64_t end,
                                    platform::ByteSink& to) {
  FileBlocks blocks(from, start, end);
  OutputPieces pieces(to);
  QuotedPrintableDecoder decoder(BrokenEscape::gives_one_byte);
  for (auto block = blocks.next(); !block.empty(); block = blocks.next()) {
    pieces.add(decoder.decode(block.data(), block.size(), pieces.room_for(block.size())));
  }
  pieces.flush();
}

}  // namespace vellobar::codecs
