#include "codecs/binhex.h"

#include "codecs/sextet_encoder.h"
#include "codecs/sextet_streams.h"

namespace vellobar::codecs {

void encode_binhex_stream(platform::File& from, platform::ByteSink& to) {
  constexpr std::size_t kLine = kBinHexLineBytes / 3 * 4 + 2;
  OutputPieces pieces(to);
  const LastLine last = encode_full_lines(from, pieces, kernels().binhex, {kBinHexLineBytes, kLine});
  pieces.add(
      encode_sextets(kBinHexCode, kernels().binhex, kNoPadding, last.bytes.data(), last.size, pieces.room_for(kLine)));
  pieces.flush();
}

namespace {

/// Position behind the first colon of the range, or `start` when it has none.
std::int64_t start_of_data(platform::File& from, std::int64_t start, std::int64_t end) {
  FileBlocks blocks(from, start, end);
  std::int64_t position = start;
  for (auto block = blocks.next(); !block.empty(); block = blocks.next()) {
    const auto colon = std::find(block.begin(), block.end(), ':');
    if (colon != block.end()) return position + (colon - block.begin()) + 1;
    position += static_cast<std::int64_t>(block.size());
  }
  return start;
}

}  // namespace

void decode_binhex_stream(platform::File& from, std::int64_t start, std::int64_t end, platform::ByteSink& to) {
  const std::int64_t last = end_of_started_blocks(start, end);
  FileBlocks blocks(from, start_of_data(from, start, last), last);
  SextetDecoder decoder(kBinHexCode, kernels().binhex);
  decode_blocks(blocks, decoder, to);
}

}  // namespace vellobar::codecs
