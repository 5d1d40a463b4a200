// What the stream routines of Base64, UUencode and BinHex 4.0 share: encoding a file in full lines up to the bytes that
// do not fill one, and decoding a range with the group rule.
#pragma once

#include <array>
#include <cstddef>

#include "codecs/file_blocks.h"
#include "codecs/kernels.h"
#include "codecs/sextet_decoder.h"

namespace vellobar::codecs {

/// The bytes behind the last full line of a file.
struct LastLine {
  std::array<unsigned char, kBase64LineBytes> bytes;
  std::size_t size = 0;
  bool follows_others = false;
};

/// How long a full line is on both sides.
struct LineLayout {
  std::size_t bytes;
  std::size_t characters;  ///< line end and length character included
};

/// Encodes the full lines of a file, from its first byte, and hands back what remains.
LastLine encode_full_lines(platform::File& from, OutputPieces& to, const SextetKernels& kernels, LineLayout layout);

/// Decodes all blocks, or up to the group that ends the data, and writes everything.
void decode_blocks(FileBlocks& from, SextetDecoder& decoder, platform::ByteSink& to);

}  // namespace vellobar::codecs
