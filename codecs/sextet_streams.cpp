#include "codecs/sextet_streams.h"

namespace vellobar::codecs {

LastLine encode_full_lines(platform::File& from, OutputPieces& to, const SextetKernels& kernels, LineLayout layout) {
  FileBlocks blocks(from, 0, kToEndOfFile, FileBlocks::kCapacity / layout.bytes * layout.bytes);
  LastLine last;
  for (auto block = blocks.next(); !block.empty(); block = blocks.next()) {
    const std::size_t lines = block.size() / layout.bytes;
    const std::size_t characters = lines * layout.characters;
    kernels.encode_lines(block.data(), lines, to.room_for(characters));
    to.add(characters);
    last.follows_others = last.follows_others || lines > 0;
    last.size = block.size() % layout.bytes;
    std::copy(block.end() - static_cast<std::ptrdiff_t>(last.size), block.end(), last.bytes.begin());
  }
  return last;
}

void decode_blocks(FileBlocks& from, SextetDecoder& decoder, platform::ByteSink& to) {
  OutputPieces pieces(to);
  for (auto block = from.next(); !block.empty() && !decoder.has_ended(); block = from.next()) {
    pieces.add(decoder.decode(block.data(), block.size(), pieces.room_for(started_groups_decoded(block.size()) + 3)));
  }
  pieces.add(decoder.finish(pieces.room_for(3)));
  pieces.flush();
}

}  // namespace vellobar::codecs
