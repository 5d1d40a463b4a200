// Decoding of a code of six-bit letters, fed piece by piece: the rule of groups and their yield, which Base64 and
// BinHex 4.0 keep in files and in memory alike, and the group rule of uuencode in memory. The decoder owns the open
// group.
#pragma once

#include <array>
#include <cstddef>

#include "codecs/kernels.h"
#include "codecs/sextets.h"

namespace vellobar::codecs {

class SextetDecoder {
 public:
  SextetDecoder(const SextetCode& code, const SextetKernels& kernels) : code_(code), decode_whole_(kernels.decode) {}

  /// Decodes the next piece. `to` has room for started_groups_decoded(size) + 3 bytes, all of which may be written to;
  /// the 3 are not needed for the first piece. Returns the number of bytes decoded.
  std::size_t decode(const unsigned char* from, std::size_t size, unsigned char* to);

  /// Decodes the group that the last piece left open, to at most three bytes.
  std::size_t finish(unsigned char* to);

  /// True when a group with a stranger has ended the data.
  bool has_ended() const { return has_ended_; }

 private:
  std::size_t close_group(unsigned char* to);

  const SextetCode& code_;
  Progress (*decode_whole_)(const unsigned char*, std::size_t, unsigned char*);
  std::array<unsigned char, 4> group_{};
  std::size_t held_ = 0;
  bool has_ended_ = false;
};

}  // namespace vellobar::codecs
